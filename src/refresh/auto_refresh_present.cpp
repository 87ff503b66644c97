#include "refresh/auto_refresh_present.h"

#include <chrono>
#include <initializer_list>
#include <thread>
#include <utility>

#include "base/number_text.h"
#include "refresh/workers.h"
#include "services/resource_manager.h"
#include "ticket/field_map.h"

namespace
{

using panelry::FieldOf;
using panelry::refresh::RefreshState;
using panelry::refresh::Visit;
using panelry::ticket::IsOne;

constexpr char kOrderNews[] = "auto_refresh_data";
constexpr char kCancelableTable[] = "chedan_table";
constexpr char kMarginCancelableTable[] = "rzrq_chedan_table";
constexpr char kHoldingsTable[] = "gupiao_table";
constexpr char kDealsTable[] = "chengjiao_table";
constexpr char kOrdersTable[] = "weituo_table";
constexpr char kMarginPrefix[] = "rzrq_";
// Never destroyed: a thread of the provider may outlive the end of main().
const std::string& kStockCode = *new std::string("stockcode");
const std::string& kLatestPrice = *new std::string("latest_price");
constexpr int kCoverDealsAndFunds = 1;
constexpr int kLogin = 0;
constexpr int kMarginLogin = 1;
constexpr int kNormalAuthority = 1;
constexpr int kMarginAuthority = 2;
constexpr std::chrono::seconds kPatienceAtExit{2};

int ReadSetting(const char* key)
{
    const ResourceManager* const settings = ResourceManager::Instance(false);
    return settings ? panelry::TextToInt(settings->ReadConfig("system", key)) : 0;
}

}  // namespace

AutoRefreshPresent::AutoRefreshPresent()
    : m_state(std::make_shared<RefreshState>()),
      m_tableForm(std::make_shared<TableFormInfo>()),
      m_funds(std::make_shared<ZiJinInfo>()),
      m_marginFunds(std::make_shared<RzrqZiJinInfo>())
{
}

AutoRefreshPresent::~AutoRefreshPresent()
{
    Stop();
}

void AutoRefreshPresent::Start()
{
    const std::shared_ptr<QuoteObserver> quoteSide = QuoteObserver::shared_from_this();
    const std::shared_ptr<TradeObserver> tradeSide = TradeObserver::shared_from_this();
    for (DataDealBase* const logic :
         std::initializer_list<DataDealBase*>{m_tableForm.get(), m_funds.get(), m_marginFunds.get()}) {
        logic->SetObservers(quoteSide, tradeSide);
    }
    m_linked = true;
    SubscribeKeys();
    StartTimer(m_afterOrderTimer, ReadSetting("auto_refresh_afterweituo"), &AutoRefreshPresent::FollowUp);
    const int intervalMs = ReadSetting("auto_refresh_interval");
    StartTimer(m_intervalTimer, intervalMs, &AutoRefreshPresent::Tick);
    if (intervalMs > 0) {
        StartWorkers();
    } else {  // nobody would ever take what is queued
        m_state->tables.Close();
        m_state->quotes.Close();
    }
}

void AutoRefreshPresent::SubscribeKeys()
{
    for (const char* const key : {kOrderNews, kCancelableTable, kMarginCancelableTable}) {
        SubscribeKey(key, true);
    }
}

// The task holds the object while it runs, so it never dies under its own task.
void AutoRefreshPresent::StartTimer(IntervalTimer& timer, int intervalMs, void (AutoRefreshPresent::*task)())
{
    if (intervalMs <= 0) {
        return;
    }
    const std::weak_ptr<QuoteObserver> self = QuoteObserver::shared_from_this();
    timer.Start(intervalMs, [self, task] {
        const std::shared_ptr<QuoteObserver> held = self.lock();
        if (held) {
            (static_cast<AutoRefreshPresent&>(*held).*task)();
        }
    });
}

void AutoRefreshPresent::StartWorkers()
{
    std::thread(&panelry::refresh::RunTableWorker, m_state,
                std::weak_ptr<QuoteObserver>(QuoteObserver::shared_from_this()))
        .detach();
    std::thread(&panelry::refresh::RunQuoteWorker, m_state).detach();
}

void AutoRefreshPresent::Stop()
{
    m_afterOrderTimer.Stop();
    m_intervalTimer.Stop();
    m_state->Stop();
}

void AutoRefreshPresent::StopForExit()
{
    m_state->Stop(kPatienceAtExit);
}

void AutoRefreshPresent::OnQuotePush(std::shared_ptr<QuotePushRecord> record)
{
    if (!record || record->rows.empty()) {
        return;
    }
    const StringMap& row = record->rows.front();
    const auto key = row.find(kStockCode);
    const auto price = row.find(kLatestPrice);
    if (key != row.end() && price != row.end() && !key->second.empty() && !price->second.empty()) {
        m_state->quotes.Push({key->second, price->second});
    }
}

void AutoRefreshPresent::OnTableChanged(const std::string& name, std::shared_ptr<HostTable> table)
{
    if (table && (name == kCancelableTable || name == kMarginCancelableTable)) {
        m_state->tables.Push(std::move(table));
    }
}

void AutoRefreshPresent::OnDataPush(const std::string& name, std::shared_ptr<StringMap> map)
{
    if (m_state->stopped || !map || name != kOrderNews) {
        return;
    }
    panelry::refresh::AccountState& account = m_state->Account(IsOne(*map, "rzrq"));
    if (const std::string& contract = FieldOf(*map, "htbh"); !contract.empty()) {
        account.pending.Add(contract);
    }
    if (!FieldOf(*map, "chedan").empty()) {
        account.refreshDue = 1;
    }
}

void AutoRefreshPresent::OnFundsPush(std::shared_ptr<StockInfoAnswer> answer)
{
    if (m_state->stopped || !m_linked || !answer) {
        return;
    }
    for (DataDealBase* const funds :
         std::initializer_list<DataDealBase*>{m_funds.get(), m_marginFunds.get()}) {
        StringMap scratch;
        funds->OnFundsAnswer(answer, scratch);
    }
}

void AutoRefreshPresent::OnLoginState(int state)
{
    if (m_state->stopped || (state != kLogin && state != kMarginLogin)) {
        return;
    }
    if (state == kLogin) {
        SubscribeKeys();
        FirstRefresh(false);
    }
    FirstRefresh(true);
}

// Log-ins may come on two threads at a time: one of them refreshes.
void AutoRefreshPresent::FirstRefresh(bool margin)
{
    std::atomic<bool>& done = m_state->Account(margin).firstDone;
    if (m_linked && !done && m_tableForm->HasAuthority(margin ? kMarginAuthority : kNormalAuthority) &&
        !done.exchange(true)) {
        RefreshAll(margin);
    }
}

void AutoRefreshPresent::Tick()
{
    const Visit visit(m_state->gate);
    for (const bool margin : {false, true}) {
        std::atomic<std::uint32_t>& due = m_state->Account(margin).refreshDue;
        if (visit && due > 0) {
            RefreshAll(margin);
            due = 0;
        }
    }
}

void AutoRefreshPresent::FollowUp()
{
    const Visit visit(m_state->gate);
    if (visit) {
        const bool covered = ReadSetting("autorefresh_mode_afterwt") == kCoverDealsAndFunds;
        FollowUp(false, covered);
        FollowUp(true, covered);
    }
}

void AutoRefreshPresent::FollowUp(bool margin, bool dealsAndFunds)
{
    panelry::refresh::PendingOrders& pending = m_state->Account(margin).pending;
    if (pending.Empty()) {
        return;
    }
    Query(&DataDealBase::QueryCancelableOrders, kCancelableTable, margin);
    pending.Clear();
    if (dealsAndFunds) {
        Query(&DataDealBase::QueryDeals, kDealsTable, margin);
        QueryFunds(margin);
    }
}

void AutoRefreshPresent::RefreshAll(bool margin)
{
    Query(&DataDealBase::QueryCancelableOrders, kCancelableTable, margin);
    Query(&DataDealBase::QueryPositions, kHoldingsTable, margin);
    Query(&DataDealBase::QueryDeals, kDealsTable, margin);
    Query(&DataDealBase::QueryOrders, kOrdersTable, margin);
    QueryFunds(margin);
}

void AutoRefreshPresent::Query(void (DataDealBase::*query)(StringMap&), const char* table, bool margin)
{
    StringMap parameters{{"table_name", margin ? std::string(kMarginPrefix) + table : table}};
    if (margin) {
        parameters["rzrq"] = "1";
    }
    (static_cast<DataDealBase&>(*m_tableForm).*query)(parameters);
}

void AutoRefreshPresent::QueryFunds(bool margin)
{
    StringMap none;
    (margin ? static_cast<DataDealBase&>(*m_marginFunds) : *m_funds).QueryFunds(none);
}
