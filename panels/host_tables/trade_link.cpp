#include "host_tables/trade_link.h"

#include <map>
#include <mutex>
#include <utility>
#include <vector>

#include "services/trade_observer.h"

namespace panelry
{

namespace
{

constexpr int kLogin = 0;
constexpr char kOrderNews[] = "auto_refresh_data";
constexpr int kOrdersSettleMs = 200;  // many orders at a time are one change

}  // namespace

// The host's threads leave their news here, as long as the link is there to take them.
class TradeLink::Observer : public TradeObserver
{
public:
    struct News {
        std::map<std::string, std::shared_ptr<HostTable>> tables;
        std::map<std::string, std::shared_ptr<StringMap>> maps;
        std::vector<std::shared_ptr<StockInfoAnswer>> answers;
        bool loggedIn = false;
        bool orders = false;
    };

    explicit Observer(WakeUp* reader) : m_reader(reader) {}

    void* ObserverSelf() override { return this; }
    void OnTableChanged(const std::string& name, std::shared_ptr<HostTable> table) override
    {
        if (table) {
            Leave([&](News& news) { news.tables[name] = std::move(table); });
        }
    }
    void OnDataPush(const std::string& name, std::shared_ptr<StringMap> map) override
    {
        if (map) {
            Leave([&](News& news) { news.maps[name] = std::move(map); });
        }
    }
    void OnFundsPush(std::shared_ptr<StockInfoAnswer> answer) override
    {
        if (answer) {
            Leave([&](News& news) { news.answers.push_back(std::move(answer)); });
        }
    }
    void OnLoginState(int state) override
    {
        if (state == kLogin) {
            Leave([](News& news) { news.loggedIn = true; });
        }
    }

    void LeaveOrderNews()
    {
        Leave([](News& news) { news.orders = true; });
    }

    // What the host has had all along. News that have come since the subscription are newer.
    void LeaveKnown(const std::string& name, const std::shared_ptr<HostTable>& table)
    {
        if (table) {
            Leave([&](News& news) { news.tables.try_emplace(name, table); });
        }
    }
    void LeaveKnown(const std::string& name, const std::shared_ptr<StringMap>& map)
    {
        if (map) {
            Leave([&](News& news) { news.maps.try_emplace(name, map); });
        }
    }

    News Take()
    {
        const std::lock_guard guard(m_lock);
        m_told = false;
        return std::exchange(m_news, {});
    }
    void Forget()
    {
        News unread;  // freed without the lock
        const std::lock_guard guard(m_lock);
        m_reader = nullptr;
        std::swap(unread, m_news);
    }

private:
    template <class Put>
    void Leave(Put put)
    {
        const std::lock_guard guard(m_lock);
        if (!m_reader) {
            return;
        }
        put(m_news);
        if (!std::exchange(m_told, true)) {
            m_reader->Post();
        }
    }

    std::mutex m_lock;  // guards the rest
    WakeUp* m_reader;
    News m_news;
    bool m_told = false;
};

// Hears of orders and cancels. An observer of its own, which isn't attached: a host may take whoever hears of them and
// of the orders that can be cancelled for the service that refreshes all panels, and tell it the log-in anew.
class TradeLink::OrderNews : public TradeObserver
{
public:
    explicit OrderNews(std::shared_ptr<Observer> reader) : m_reader(std::move(reader)) {}

    void* ObserverSelf() override { return this; }
    void OnDataPush(const std::string& /*name*/, std::shared_ptr<StringMap> /*map*/) override
    {
        m_reader->LeaveOrderNews();
    }

private:
    const std::shared_ptr<Observer> m_reader;
};

TradeLink::TradeLink(TradeProvider* provider, QObject* parent)
    : QObject(parent), m_reader([this] { TakeNews(); }), m_provider(provider)
{
    m_ordersSettle.setSingleShot(true);
    m_ordersSettle.setInterval(kOrdersSettleMs);
    connect(&m_ordersSettle, &QTimer::timeout, this, &TradeLink::OrdersChanged);
    if (!provider) {
        return;
    }
    m_observer = std::make_shared<Observer>(&m_reader);
    m_observer->SetProvider(provider);
    for (DataDealBase* const logic :
         std::initializer_list<DataDealBase*>{&m_form, &m_funds, &m_marginFunds}) {
        logic->SetObservers({}, m_observer);
    }
    m_orderNews = std::make_shared<OrderNews>(m_observer);
    FollowOrders(true);
}

TradeLink::~TradeLink()
{
    if (m_observer) {
        m_observer->Forget();
        m_observer->UnsubscribeAll();
        FollowOrders(false);
    }
}

void TradeLink::FollowOrders(bool on)
{
    m_provider->SubscribeKey(kOrderNews, on, m_orderNews);
}

void TradeLink::FollowTable(const std::string& name)
{
    m_tables.insert(name);
    if (m_observer) {
        m_observer->SubscribeKey(name, true);
        m_observer->LeaveKnown(name, m_observer->GetTable(name));
    }
}

void TradeLink::FollowMap(const std::string& name)
{
    m_maps.insert(name);
    if (m_observer) {
        m_observer->SubscribeKey(name, true);
        m_observer->LeaveKnown(name, m_observer->GetStringMap(name));
    }
}

void TradeLink::Ask(Query query, const std::string& table, bool margin)
{
    m_asked[table] = {query, margin};
    StringMap parameters{{"table_name", table}};
    if (margin) {
        parameters["rzrq"] = "1";
    }
    (static_cast<DataDealBase&>(m_form).*query)(parameters);
}

void TradeLink::AskFunds(bool margin)
{
    m_fundsAsked.insert(margin);
    StringMap none;
    (margin ? static_cast<DataDealBase&>(m_marginFunds) : m_funds).QueryFunds(none);
}

bool TradeLink::Cancel(const std::string& contract, bool margin)
{
    StringMap row{{"htbh", contract}, {"rzrq", margin ? "1" : "0"}};
    const auto request = std::make_shared<ddsdk::TradeRequestParam>();
    m_form.FillCancelRequest(request, row);
    return m_observer && m_observer->SendTradeRequest(request) >= 0;
}

void TradeLink::TakeNews()
{
    const Observer::News news = m_observer->Take();
    for (const auto& answer : news.answers) {
        TakeAnswer(answer);
    }
    for (const auto& [name, table] : news.tables) {
        Q_EMIT TableChanged(name, table);
    }
    for (const auto& [name, map] : news.maps) {
        Q_EMIT MapChanged(name, *map);
    }
    if (news.loggedIn) {
        Resume();
    }
    if (news.orders && !m_ordersSettle.isActive()) {
        m_ordersSettle.start();
    }
}

void TradeLink::Resume()
{
    FollowOrders(true);
    for (const std::string& name : m_tables) {
        FollowTable(name);
    }
    for (const std::string& name : m_maps) {
        FollowMap(name);
    }
    for (const auto& [table, how] : m_asked) {
        Ask(how.first, table, how.second);
    }
    for (const bool margin : m_fundsAsked) {
        AskFunds(margin);
    }
}

// Each of the two takes what answers its own question.
void TradeLink::TakeAnswer(const std::shared_ptr<StockInfoAnswer>& answer)
{
    for (DataDealBase* const funds : std::initializer_list<DataDealBase*>{&m_funds, &m_marginFunds}) {
        StringMap scratch;
        funds->OnFundsAnswer(answer, scratch);
    }
}

}  // namespace panelry
