#include "desk/demo_market.h"

#include <algorithm>
#include <chrono>
#include <ctime>
#include <utility>

#include "desk/demo_table.h"

namespace panelry::desk
{

namespace
{

constexpr int kDone = 0;
constexpr int kFailed = -1;
constexpr int kAskedDecimals = 4;
constexpr int kFamily = 0xF0;
constexpr std::chrono::milliseconds kBetweenMoves(1000);

std::string Field(const StringMap& fields, const char* name)
{
    const auto found = fields.find(name);
    return found == fields.end() ? std::string() : found->second;
}

std::uint8_t MarketNumber(const std::string& text)
{
    return static_cast<std::uint8_t>(std::strtol(text.c_str(), nullptr, 10));
}

std::string Hexadecimal(std::uint8_t number)
{
    constexpr char kDigits[] = "0123456789abcdef";
    return {kDigits[number / 16], kDigits[number % 16]};
}

std::string Now()
{
    return std::to_string(std::time(nullptr));
}

// The answer about one stock, without the quantity that can be traded.
ddsdk::TradeRequestParam About(const DemoSecurity& security)
{
    ddsdk::TradeRequestParam reply;
    reply.head = {{"codetype", std::to_string(security.market)},
                  {"newprice", security.Text(security.last)},
                  {"ztprice", security.UpperLimitText()},
                  {"dtprice", security.LowerLimitText()},
                  {"prevclose", security.Text(security.close)},
                  {"hqtime", Now()},
                  {"options", "0"}};
    security.AddBook(reply.head);
    reply.local = {
        {"zqdm", security.code}, {"zqmc", ToHostText(security.name)}, {"open", security.Text(security.open)}};
    return reply;
}

// The answer about a code that stands for several.
ddsdk::TradeRequestParam Choices(const std::vector<DemoSecurity>& securities)
{
    ddsdk::TradeRequestParam reply;
    reply.local["dup"] = std::to_string(securities.size());
    for (std::size_t i = 0; i < securities.size(); ++i) {
        const DemoSecurity& one = securities[i];
        reply.local["s" + std::to_string(i + 1)] = Hexadecimal(one.market) + ',' + one.code + ',' +
                                                   ToHostText(DemoMarketName(one.market)) + ',' +
                                                   ToHostText(one.name);
    }
    return reply;
}

}  // namespace

DemoMarket::DemoMarket(DemoMarketFile file, DemoTrade& trade, Delivery& delivery)
    : m_delivery(delivery), m_cash(file.cash), m_securities(std::move(file.securities))
{
    Publish(trade, file.accounts);
    trade.AnswerRequests(
        "1025", [this](const auto& subscriber, const auto& request) { Answer(subscriber, request); });
    m_mover = std::thread([this] {
        std::unique_lock lock(m_lock);
        while (!m_stop.wait_for(lock, kBetweenMoves, [this] { return m_stopped; })) {
            lock.unlock();
            Move();
            lock.lock();
        }
    });
}

DemoMarket::~DemoMarket()
{
    Stop();
}

void DemoMarket::Publish(DemoTrade& trade, const std::vector<DemoAccountRow>& accounts)
{
    std::vector<DemoTable::Row> rows;
    StringMap range;
    for (const DemoAccountRow& row : accounts) {
        rows.push_back({row.marketCode, row.market, row.account, row.codes, "1", row.board, row.chiNext,
                        row.orderTypes});
        range["0_begin"] = range.empty() ? row.marketCode : std::min(range["0_begin"], row.marketCode);
        range["0_end"] = std::max(range["0_end"], row.marketCode);
    }
    trade.PublishTable(std::make_shared<DemoTable>(
        "account_table",
        std::vector<std::string>{"2167", "2108", "2106", "2170", "2176", "2212", "2214", "2213"},
        std::move(rows)));
    trade.SetStringMap("scdm_range", std::make_shared<StringMap>(range));
}

void DemoMarket::Stop()
{
    std::map<std::string, std::set<Subscriber>> dropped;  // dies behind the lock
    {
        const std::lock_guard guard(m_lock);
        m_stopped = true;
        m_subscribers.swap(dropped);
    }
    m_stop.notify_all();
    if (m_mover.joinable()) {
        m_mover.join();
    }
}

// Up and down in turns that differ from stock to stock, and back towards the close at the limits.
void DemoMarket::Move()
{
    const std::lock_guard guard(m_lock);
    ++m_moves;
    unsigned place = 0;
    for (DemoSecurity& security : m_securities) {
        const bool up = (m_moves * (2 * ++place + 1) / 3) % 2 == 0;
        security.last += up ? 1 : -1;
        if (security.limitPercent > 0) {
            security.last = std::clamp(security.last, security.LowerLimit(), security.UpperLimit());
        }
        for (const Subscriber& subscriber : m_subscribers[MarketCodeKey({security.market, security.code})]) {
            Push(security, "pushdata", subscriber);
        }
    }
}

int DemoMarket::Attach(int /*kind*/, Subscriber /*subscriber*/)
{
    return kDone;  // there is nothing to tell before a subscription
}

int DemoMarket::QueryQuoteFields(int mask, StringMap& key, std::shared_ptr<StringMap>& fields)
{
    const std::lock_guard guard(m_lock);
    const DemoSecurity* const security = Find(MarketNumber(key["market"]), key["stockcode"]);
    if (mask != kAskedDecimals || !security) {
        return kFailed;
    }
    fields = std::make_shared<StringMap>(StringMap{{"price_decimal", std::to_string(security->decimals)}});
    return kDone;
}

int DemoMarket::SubscribeCodes(std::vector<MarketCode>& codes, bool on, Subscriber subscriber)
{
    const std::lock_guard guard(m_lock);
    bool known = true;
    for (MarketCode& stock : codes) {
        if (!Find(stock.market, stock.code)) {
            stock.market = 0;
            known = false;
        }
    }
    if (!known || m_stopped) {
        return kFailed;
    }
    for (const MarketCode& stock : codes) {
        if (on) {
            m_subscribers[MarketCodeKey(stock)].insert(subscriber);
            Push(*Find(stock.market, stock.code), "nowdata", subscriber);
        } else {
            m_subscribers[MarketCodeKey(stock)].erase(subscriber);
        }
    }
    return kDone;
}

int DemoMarket::SubscribeTopicA(std::uint32_t /*topic*/, bool /*on*/, Subscriber /*subscriber*/)
{
    return kDone;  // this market has no topics
}

int DemoMarket::SubscribeTopicB(std::uint32_t /*a*/, std::uint32_t /*b*/, std::uint32_t /*topic*/,
                                bool /*on*/, Subscriber /*subscriber*/)
{
    return kDone;
}

// A bare family, or a number that is wrong within it, becomes the market on which the code stands.
int DemoMarket::ResolveCodeMarkets(std::vector<MarketCode>& codes)
{
    const std::lock_guard guard(m_lock);
    int result = kDone;
    for (MarketCode& stock : codes) {
        const auto found = std::find_if(m_securities.begin(), m_securities.end(), [&](const auto& one) {
            return one.code == stock.code && (one.market & kFamily) == (stock.market & kFamily);
        });
        stock.market = found == m_securities.end() ? std::uint8_t{0} : found->market;
        result = stock.market == 0 ? kFailed : result;
    }
    return result;
}

int DemoMarket::ListCodeMatches(std::vector<MarketCode>& codes, std::vector<std::vector<std::string>>& rows)
{
    const std::lock_guard guard(m_lock);
    for (const MarketCode& stock : codes) {
        for (const DemoSecurity& one : m_securities) {
            if (one.code.rfind(stock.code, 0) == 0) {
                rows.push_back(
                    {MarketCodeKey({one.market, one.code}), one.name, DemoMarketName(one.market), ""});
            }
        }
    }
    return kDone;
}

int DemoMarket::AgreedQuoteCall(std::uintptr_t /*a*/, std::uintptr_t /*b*/)
{
    return kFailed;
}

void DemoMarket::Answer(const DemoTrade::Subscriber& subscriber, const DemoTrade::Request& request)
{
    const std::vector<DemoSecurity> meant =
        Meant(Field(request->local, "local_market"), Field(request->body, "zqdm"));
    auto answer = std::make_shared<StockInfoAnswer>();
    answer->request = request;
    answer->reply = std::make_shared<ddsdk::TradeRequestParam>();
    if (meant.size() == 1) {
        *answer->reply = About(meant.front());
        answer->reply->body["wtsl"] = Usable(meant.front(), *request);
    } else if (!meant.empty()) {
        *answer->reply = Choices(meant);
    }
    subscriber->OnFundsPush(answer);  // an unknown code is answered, with nothing
}

// To sell: what there is. To buy: what the cash pays for, at the price of the order or the latest.
std::string DemoMarket::Usable(const DemoSecurity& security, const ddsdk::TradeRequestParam& request) const
{
    if (Field(request.body, "type") == "S") {
        return security.holding;
    }
    std::string price = Field(request.body, "wt_price");
    price = price.empty() ? security.Text(security.last) : price;
    // Whole thousandths: prices and cash come as plain decimal text.
    const auto thousandths = [](std::string text) {
        const std::size_t point = std::min(text.find('.'), text.size());
        std::string digits =
            text.substr(0, point) + (text + "    ").substr(std::min(point + 1, text.size()), 3);
        std::replace(digits.begin(), digits.end(), ' ', '0');
        return std::strtoll(digits.c_str(), nullptr, 10);
    };
    const long long each = std::max(1LL, thousandths(price));
    return std::to_string(thousandths(m_cash) / each);
}

const DemoSecurity* DemoMarket::Find(std::uint8_t market, const std::string& code) const
{
    const auto found = std::find_if(m_securities.begin(), m_securities.end(), [&](const DemoSecurity& one) {
        return one.market == market && one.code == code;
    });
    return found == m_securities.end() ? nullptr : &*found;
}

// All with the code, or the one on a market that is named.
std::vector<DemoSecurity> DemoMarket::Meant(const std::string& market, const std::string& code)
{
    const std::lock_guard guard(m_lock);
    std::vector<DemoSecurity> meant;
    for (const DemoSecurity& one : m_securities) {
        if (one.code == code && (MarketNumber(market) == 0 || one.market == MarketNumber(market))) {
            meant.push_back(one);
        }
    }
    return meant;
}

void DemoMarket::Push(const DemoSecurity& security, const char* type, const Subscriber& subscriber)
{
    auto push = std::make_shared<QuotePushRecord>();
    push->head = {{"type", type}, {"pushflag", "1"}};
    StringMap row{{"stockcode", MarketCodeKey({security.market, security.code})},
                  {"stock_name", security.name},
                  {"benchmarkcode", "T0"},
                  {"latest_price", security.Text(security.last)},
                  {"raising_limit", security.UpperLimitText()},
                  {"limit_down", security.LowerLimitText()},
                  {"last_closing_price", security.Text(security.close)},
                  {"opening_price", security.Text(security.open)},
                  {"price_decimal", std::to_string(security.decimals)},
                  {"hq_time", Now()}};
    security.AddBook(row);
    push->rows.push_back(std::move(row));
    m_delivery.Post([=] { subscriber->OnQuotePush(push); });
}

}  // namespace panelry::desk
