#include "desk/providers/quote_desk.h"

#include <algorithm>
#include <utility>

#include "desk/providers/faults.h"
#include "desk/providers/host_words.h"
#include "desk/providers/stock_records.h"

namespace panelry::desk
{

namespace
{

constexpr int kDone = 0;
constexpr int kFailed = -1;
constexpr int kAskedDecimals = 4;

}  // namespace

QuoteDesk::QuoteDesk(const Simulation& market, Faults& faults)
    : m_market(market), m_faults(faults), m_feeds(market.Securities().securities.size()), m_delivery(faults)
{
}

QuoteDesk::~QuoteDesk()
{
    Stop();
}

void QuoteDesk::Stop()
{
    m_stopped = true;
    m_delivery.Stop();
    for (Feed& feed : m_feeds) {
        std::set<Subscriber> dropped;  // dies without the lock: a subscriber's end may call back
        const std::lock_guard guard(feed.lock);
        feed.wanted = false;
        feed.subscribers.swap(dropped);
    }
}

// True where a call comes too late. Blocked calls wait here.
bool QuoteDesk::IsCut()
{
    return !m_faults.WaitWhileBlocked() || m_stopped;
}

void QuoteDesk::OnQuote(std::size_t security)
{
    Feed& feed = m_feeds[security];
    if (feed.wanted && !feed.waiting.exchange(true)) {
        m_delivery.Post([this, security] {
            Feed& due = m_feeds[security];
            due.waiting = false;  // what changes from here on is pushed once more
            std::set<Subscriber> subscribers;
            {
                const std::lock_guard guard(due.lock);
                subscribers = due.subscribers;
            }
            Push(security, "pushdata", subscribers);
        });
    }
}

void QuoteDesk::OnPhase()
{
    for (std::size_t security = 0; security < m_feeds.size(); ++security) {
        OnQuote(security);
    }
}

void QuoteDesk::Push(std::size_t security, const char* type, const std::set<Subscriber>& subscribers)
{
    if (subscribers.empty()) {
        return;
    }
    const auto push = std::make_shared<QuotePushRecord>();
    push->head = {{"type", type}, {"pushflag", "1"}};
    push->rows.push_back(m_market.Read(
        [&](const Exchange& exchange, const Brokerage&) { return QuoteRow(exchange, security); }));
    std::string& name = push->rows.front()["stock_name"];
    name = m_faults.Garbled(std::move(name));
    for (const Subscriber& subscriber : subscribers) {
        subscriber->OnQuotePush(push);
    }
}

int QuoteDesk::Attach(int /*kind*/, Subscriber /*subscriber*/)
{
    return IsCut() ? kFailed : kDone;  // pushes come to subscribers alone
}

int QuoteDesk::QueryQuoteFields(int mask, StringMap& key, std::shared_ptr<StringMap>& fields)
{
    fields.reset();
    if (IsCut() || mask != kAskedDecimals) {
        return kFailed;
    }
    const auto security = SecurityMeant(m_market.Securities(), MarketNumber(key["market"]), key["stockcode"]);
    if (!security) {
        return kFailed;
    }
    const int decimals = m_market.Securities().securities[*security].decimals;
    fields = std::make_shared<StringMap>(StringMap{{"price_decimal", std::to_string(decimals)}});
    return kDone;
}

int QuoteDesk::SubscribeCodes(std::vector<MarketCode>& codes, bool on, Subscriber subscriber)
{
    if (IsCut() || !subscriber || (on && m_faults.Strikes(Fault::Subscriptions))) {
        return kFailed;
    }
    std::vector<std::size_t> securities;
    for (MarketCode& stock : codes) {
        if (const auto security = m_market.Securities().Find(stock.market, stock.code)) {
            securities.push_back(*security);
        } else {
            stock.market = 0;
        }
    }
    if (securities.size() < codes.size()) {
        return kFailed;
    }
    for (const std::size_t security : securities) {
        Feed& feed = m_feeds[security];
        const std::lock_guard guard(feed.lock);
        if (on && !m_stopped) {
            feed.subscribers.insert(subscriber);
            m_delivery.Post([this, security, subscriber] {
                if (IsSubscribed(security, subscriber)) {
                    Push(security, "nowdata", {subscriber});
                }
            });
        } else {
            feed.subscribers.erase(subscriber);
        }
        feed.wanted = !feed.subscribers.empty();
    }
    return kDone;
}

bool QuoteDesk::IsSubscribed(std::size_t security, const Subscriber& subscriber)
{
    Feed& feed = m_feeds[security];
    const std::lock_guard guard(feed.lock);
    return feed.subscribers.count(subscriber) == 1;
}

int QuoteDesk::SubscribeTopicA(std::uint32_t /*topic*/, bool on, Subscriber /*subscriber*/)
{
    return IsCut() || (on && m_faults.Strikes(Fault::Subscriptions)) ? kFailed : kDone;
}

int QuoteDesk::SubscribeTopicB(std::uint32_t /*a*/, std::uint32_t /*b*/, std::uint32_t topic, bool on,
                               Subscriber subscriber)
{
    return SubscribeTopicA(topic, on, std::move(subscriber));
}

int QuoteDesk::ResolveCodeMarkets(std::vector<MarketCode>& codes)
{
    if (IsCut()) {
        return kFailed;
    }
    const Listing& listing = m_market.Securities();
    int result = kDone;
    for (MarketCode& stock : codes) {
        const std::vector<std::size_t> meant = SecuritiesMeant(listing, stock.market, stock.code);
        const bool told = !meant.empty() && (meant.size() == 1 || stock.market != 0);
        stock.market = told ? listing.securities[meant.front()].market : std::uint8_t{0};
        result = told ? result : kFailed;
    }
    return result;
}

int QuoteDesk::ListCodeMatches(std::vector<MarketCode>& codes, std::vector<std::vector<std::string>>& rows)
{
    if (IsCut()) {
        return kFailed;
    }
    for (const MarketCode& stock : codes) {
        for (const Security& one : m_market.Securities().securities) {
            if (one.code.rfind(stock.code, 0) == 0) {
                rows.push_back({MarketCodeKey({one.market, one.code}), one.name, MarketName(one.market), ""});
            }
        }
    }
    return kDone;
}

int QuoteDesk::AgreedQuoteCall(std::uintptr_t /*a*/, std::uintptr_t /*b*/)
{
    IsCut();
    return kFailed;
}

}  // namespace panelry::desk
