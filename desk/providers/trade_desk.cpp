#include "desk/providers/trade_desk.h"

#include <algorithm>
#include <utility>

#include "desk/providers/account_tables.h"
#include "desk/providers/faults.h"
#include "desk/providers/host_words.h"
#include "desk/providers/stock_records.h"

namespace panelry::desk
{

namespace
{

constexpr int kDone = 0;
constexpr int kFailed = -1;
constexpr int kLogin = 0;
constexpr int kMarginLogin = 1;
constexpr int kLoginLost = 2;

constexpr char kOrderNews[] = "auto_refresh_data";
constexpr char kAuthority[] = "authority_";
constexpr const char* kServiceKeys[] = {kOrderNews, "chedan_table", "rzrq_chedan_table"};
constexpr char kBusy[] = "系统繁忙，请稍后再试";
constexpr char kBadDates[] = "日期格式不正确";

const char* OpenOrdersName(AccountKind account)
{
    switch (account) {
        case AccountKind::Normal:
            return "chedan_table";
        case AccountKind::Margin:
            return "rzrq_chedan_table";
        case AccountKind::Connect:
            return "ggt_chedan_table";
    }
    return "";
}

const char* MarginFlag(AccountKind account)
{
    return account == AccountKind::Margin ? "1" : "0";
}

const std::string& ContractOf(const ddsdk::TradeRequestParam& request)
{
    const std::string& contract = FieldOf(request.body, "htbh");
    return contract.empty() ? FieldOf(request.head, "pub_5_str") : contract;
}

}  // namespace

TradeDesk::TradeDesk(Simulation& market, Faults& faults, Announce announce)
    : m_market(market), m_faults(faults), m_announce(std::move(announce)), m_delivery(faults)
{
    PublishTheAccounts();
}

TradeDesk::~TradeDesk()
{
    Stop();
}

void TradeDesk::PublishTheAccounts()
{
    const Opening& opening = m_market.Started();
    m_texts = {{"account", opening.normal.number},      {"rzrq_account", opening.margin.number},
               {"ggt_account", opening.connect.number}, {kAuthority + std::string("0"), "1"},
               {kAuthority + std::string("1"), "1"},    {"Json_TZM_SBA", kTransferMasksA},
               {"Json_TZM_SBB", kTransferMasksB}};
    m_maps["scdm_range"] = MarketCodeRange(opening);
    for (const bool margin : {false, true}) {
        const std::string name = margin ? "rzrq_account_table" : "account_table";
        m_tables[name] = ShareholderTable(name, opening, margin);
    }
}

void TradeDesk::Stop()
{
    {
        const std::lock_guard guard(m_lock);
        m_stopped = true;
    }
    m_delivery.Stop();
    std::map<std::string, std::set<Client>> dropped;  // dies without the lock: a client's end may call back
    const std::lock_guard guard(m_lock);
    m_subscribers.swap(dropped);
    m_attached.clear();
}

// True where a call comes too late. Blocked calls wait here.
bool TradeDesk::IsCut()
{
    const bool isInTime = m_faults.WaitWhileBlocked();
    const std::lock_guard guard(m_lock);
    return !isInTime || m_stopped;
}

bool TradeDesk::IsLoggedIn()
{
    const std::lock_guard guard(m_lock);
    return m_loggedIn;
}

int TradeDesk::Attach(int /*kind*/, Client client)
{
    if (IsCut() || !client) {
        return kFailed;
    }
    const std::lock_guard guard(m_lock);
    std::erase_if(m_attached, [](const auto& one) { return one.first.expired(); });
    m_attached.try_emplace(client, false);
    return kDone;
}

int TradeDesk::SendTradeRequest(Client client, Request request)
{
    if (IsCut() || !client || !request) {
        return kFailed;
    }
    const std::optional<ClientRequest> asked = ReadRequest(*request);
    const bool taken = asked && IsLoggedIn();
    m_announce("request", {{"type", FieldOf(request->head, "type")},
                           {"cmd", FieldOf(request->body, "cmd")},
                           {"dataid", FieldOf(request->body, "dataid")},
                           {"table", FieldOf(request->local, "table_name")},
                           {"code", FieldOf(request->body, "zqdm")},
                           {"taken", taken}});
    if (!taken) {
        return kFailed;
    }
    m_delivery.Post([this, asked = *asked, client = std::move(client), request = std::move(request)] {
        Handle(asked, client, request);
    });
    return kDone;
}

void TradeDesk::Handle(const ClientRequest& asked, const Client& client, const Request& request)
{
    if (m_faults.Strikes(Fault::Failed)) {
        Refuse(client, request, kBusy);
        return;
    }
    switch (asked.ask) {
        case Ask::StockInfo:
            Answer(client, request, StockInfoReply(m_market, *request));
            break;
        case Ask::Order:
            PlaceOrder(client, request);
            break;
        case Ask::Cancel:
            CancelOrder(asked.account, client, request);
            break;
        case Ask::Setting:
            NoteSetting(*request);
            break;
        default:
            AnswerQuery(asked, client, request);
    }
}

void TradeDesk::PlaceOrder(const Client& client, const Request& request)
{
    const WantedOrder wanted = ReadOrder(*request, m_market.Securities(), m_market.Started());
    if (!wanted.refusal.empty()) {
        Refuse(client, request, wanted.refusal);
        return;
    }
    const Brokerage::Placed placed = m_market.Place(wanted.wish);
    ddsdk::TradeRequestParam reply;
    if (!placed.contract.empty()) {
        reply.body["htbh"] = placed.contract;
    }
    if (placed.refusal.empty()) {
        Answer(client, request, std::move(reply));
    } else {
        Refuse(client, request, placed.refusal, std::move(reply));
    }
}

void TradeDesk::CancelOrder(AccountKind account, const Client& client, const Request& request)
{
    const std::string& contract = ContractOf(*request);
    const std::string refusal = m_market.Cancel(account, contract);
    ddsdk::TradeRequestParam reply;
    reply.body["htbh"] = contract;
    if (refusal.empty()) {
        Answer(client, request, std::move(reply));
    } else {
        Refuse(client, request, refusal, std::move(reply));
    }
}

void TradeDesk::AnswerQuery(const ClientRequest& asked, const Client& client, const Request& request)
{
    const std::string& name = FieldOf(request->local, "table_name");
    if (asked.ask == Ask::Funds && asked.account == AccountKind::Normal && name.empty()) {
        Answer(client, request, FundsReply(m_market, asked.account));
        return;
    }
    const std::shared_ptr<MemoryTable> table = TableFor(asked, *request, name);
    if (!table) {
        Refuse(client, request, kBadDates);
    } else if (name.empty()) {
        Answer(client, request, {}, table);
    } else {
        Publish(table);
    }
}

std::shared_ptr<MemoryTable> TradeDesk::TableFor(const ClientRequest& asked,
                                                 const ddsdk::TradeRequestParam& request,
                                                 const std::string& name)
{
    switch (asked.ask) {
        case Ask::Holdings:
            return HoldingsTable(name, m_market, asked.account);
        case Ask::Orders:
            return OrdersTable(name, m_market, asked.account, false);
        case Ask::OpenOrders:
            return OrdersTable(name, m_market, asked.account, true);
        case Ask::Funds:
            return FundsTable(name, m_market, asked.account);
        default:
            break;
    }
    const std::optional<std::pair<int, int>> days = asked.ofThePast ? ReadDays(request) : std::nullopt;
    return asked.ofThePast && !days ? nullptr : DealsTable(name, m_market, asked.account, days);
}

void TradeDesk::NoteSetting(const ddsdk::TradeRequestParam& request)
{
    m_announce("setting", {{"module", FieldOf(request.body, "module")},
                           {"value", FieldOf(request.body, "notify_wtzz")}});
}

void TradeDesk::Answer(const Client& client, const Request& request, ddsdk::TradeRequestParam reply,
                       std::shared_ptr<MemoryTable> table)
{
    reply.head["type"] = FieldOf(request->head, "type");
    if (const std::string& command = FieldOf(request->body, "cmd"); !command.empty()) {
        reply.body["cmd"] = command;
    }
    reply.body.try_emplace("ret", "0");
    for (StringMap* const fields : {&reply.head, &reply.body, &reply.local}) {
        for (auto& [key, text] : *fields) {
            text = m_faults.Garbled(std::move(text));
        }
    }
    const auto answer = std::make_shared<StockInfoAnswer>();
    answer->request = request;
    answer->reply = std::make_shared<ddsdk::TradeRequestParam>(std::move(reply));
    if (table) {
        answer->table = std::make_shared<AnswerTable>(MemoryTable::WithFaults(std::move(table), m_faults));
    }
    m_delivery.Deliver([this, client, answer] {
        if (IsLoggedIn()) {
            client->OnFundsPush(answer);
        }
    });
}

void TradeDesk::Refuse(const Client& client, const Request& request, const std::string& reason,
                       ddsdk::TradeRequestParam reply)
{
    reply.body["ret"] = "-1";
    reply.body["ret_text"] = ToHostText(reason);
    Answer(client, request, std::move(reply));
}

void TradeDesk::Publish(std::shared_ptr<MemoryTable> table)
{
    const std::string name = table->Name();
    {
        const std::lock_guard guard(m_lock);
        m_tables[name] = table;
    }
    for (const Client& client : SubscribersOf(name)) {
        m_delivery.Deliver([this, name, client, table = MemoryTable::WithFaults(table, m_faults)] {
            if (IsSubscribed(name, client)) {
                client->OnTableChanged(name, table);
            }
        });
    }
}

void TradeDesk::PublishMap(const std::string& name, const StringMap& map)
{
    {
        const std::lock_guard guard(m_lock);
        m_maps[name] = map;
    }
    for (const Client& client : SubscribersOf(name)) {
        m_delivery.Deliver([this, name, client, map] {
            if (IsSubscribed(name, client)) {
                client->OnDataPush(name, std::make_shared<StringMap>(map));
            }
        });
    }
}

void TradeDesk::OnOrder(const Order& order, OrderEvent event)
{
    if (event != OrderEvent::Accepted && event != OrderEvent::Cancelled) {
        return;
    }
    StringMap news{{"rzrq", MarginFlag(order.wish.account)}};
    if (event == OrderEvent::Accepted) {
        news["htbh"] = order.contract;
    } else {
        news["chedan"] = "1";
    }
    m_delivery.Post([this, account = order.wish.account, news = std::move(news)] {
        if (!IsLoggedIn()) {
            return;
        }
        if (account != AccountKind::Connect) {
            PublishMap(kOrderNews, news);
        }
        PublishOpenOrders(account);
    });
}

// Not built for a name that nobody knows.
void TradeDesk::PublishOpenOrders(AccountKind account)
{
    const std::string name = OpenOrdersName(account);
    if (!SubscribersOf(name).empty() || FindTable(name)) {
        Publish(OrdersTable(name, m_market, account, true));
    }
}

void TradeDesk::LoseLogin()
{
    std::map<std::string, std::set<Client>> dropped;  // dies without the lock, as the next
    std::vector<Client> clients;
    {
        const std::lock_guard guard(m_lock);
        if (!std::exchange(m_loggedIn, false)) {
            return;
        }
        m_subscribers.swap(dropped);
        for (auto& [client, told] : m_attached) {
            told = false;
            clients.push_back(client.lock());
        }
    }
    TellState(kLoginLost, clients);
}

void TradeDesk::LogIn()
{
    {
        const std::lock_guard guard(m_lock);
        if (std::exchange(m_loggedIn, true)) {
            return;
        }
    }
    TellLogin();
}

// To all that don't know yet. One that is lost again by now isn't told, or they would miss the next.
void TradeDesk::TellLogin()
{
    std::vector<Client> clients;
    {
        const std::lock_guard guard(m_lock);
        if (!m_loggedIn) {
            return;
        }
        for (auto& [client, told] : m_attached) {
            if (!std::exchange(told, true)) {
                clients.push_back(client.lock());
            }
        }
    }
    TellState(kLogin, clients);
    TellState(kMarginLogin, clients);
}

void TradeDesk::TellState(int state, const std::vector<Client>& clients)
{
    m_announce("login", {{"state", state}});
    for (const Client& client : clients) {
        if (client) {
            m_delivery.Post([client, state] { client->OnLoginState(state); });
        }
    }
}

int TradeDesk::GetString(const std::string& key, std::shared_ptr<std::string>& value)
{
    value.reset();
    if (IsCut()) {
        return kFailed;
    }
    const std::lock_guard guard(m_lock);
    const auto found = m_texts.find(key);
    if (found == m_texts.end() || (!m_loggedIn && key.rfind(kAuthority, 0) == 0)) {
        return kFailed;
    }
    value = std::make_shared<std::string>(found->second);
    return kDone;
}

int TradeDesk::SubscribeKey(const std::string& name, bool on, Client client)
{
    if (IsCut() || !client || (on && m_faults.Strikes(Fault::Subscriptions))) {
        return kFailed;
    }
    bool tell = false;
    {
        const std::lock_guard guard(m_lock);
        if (!on) {
            m_subscribers[name].erase(client);
            return kDone;
        }
        if (!m_loggedIn || m_stopped) {
            return kFailed;
        }
        m_subscribers[name].insert(client);
        const auto attached = m_attached.find(client);
        tell = attached != m_attached.end() && !attached->second &&
               std::all_of(std::begin(kServiceKeys), std::end(kServiceKeys),
                           [&](const char* key) { return m_subscribers[key].count(client) == 1; });
    }
    if (tell) {
        TellLogin();
    }
    return kDone;
}

int TradeDesk::SetStringMap(const std::string& name, std::shared_ptr<StringMap> map)
{
    if (IsCut() || !map) {
        return kFailed;
    }
    PublishMap(name, *map);
    return kDone;
}

std::shared_ptr<StringMap> TradeDesk::GetStringMap(const std::string& name)
{
    if (IsCut()) {
        return nullptr;
    }
    const std::lock_guard guard(m_lock);
    const auto found = m_maps.find(name);
    return found == m_maps.end() ? nullptr : std::make_shared<StringMap>(found->second);
}

std::shared_ptr<HostTable> TradeDesk::GetTable(const std::string& name)
{
    if (IsCut()) {
        return nullptr;
    }
    return MemoryTable::WithFaults(FindTable(name), m_faults);
}

std::shared_ptr<MemoryTable> TradeDesk::FindTable(const std::string& name)
{
    const std::lock_guard guard(m_lock);
    const auto found = m_tables.find(name);
    return found == m_tables.end() ? nullptr : found->second;
}

std::set<TradeDesk::Client> TradeDesk::SubscribersOf(const std::string& name)
{
    const std::lock_guard guard(m_lock);
    const auto found = m_subscribers.find(name);
    return found == m_subscribers.end() ? std::set<Client>() : found->second;
}

bool TradeDesk::IsSubscribed(const std::string& name, const Client& client)
{
    const std::lock_guard guard(m_lock);
    const auto found = m_subscribers.find(name);
    return found != m_subscribers.end() && found->second.count(client) == 1;
}

}  // namespace panelry::desk
