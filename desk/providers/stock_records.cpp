#include "desk/providers/stock_records.h"

#include <algorithm>
#include <array>
#include <charconv>

#include "desk/providers/host_words.h"

namespace panelry::desk
{

namespace
{

constexpr int kFamily = 0xF0;
constexpr std::uint32_t kTellsCanBuy = 4;
constexpr Quantity kUsualLot = 100;
constexpr Quantity kStarLot = 1;
constexpr Quantity kStarMinimum = 200;
constexpr Quantity kUsualMaximum = 1'000'000;
constexpr Quantity kStarMaximum = 100'000;
constexpr Quantity kChiNextMaximum = 300'000;

// "" where there is none.
std::string PriceOrNone(Price price, int decimals)
{
    return price == 0 ? std::string() : PriceText(price, decimals);
}

// Limits are 0 where there are none.
std::string LimitText(Price limit, int decimals)
{
    return limit == 0 ? "0" : PriceText(limit, decimals);
}

void AddBook(const Quote& quote, int decimals, StringMap& fields)
{
    const auto add = [&](const char* side, const std::array<Level, 5>& levels) {
        for (std::size_t i = 0; i < levels.size(); ++i) {
            const std::string level = std::string(side) + "_" + std::to_string(i + 1);
            fields[level + "_price"] = PriceOrNone(levels[i].price, decimals);
            fields[level + "_amount"] = levels[i].price == 0 ? "" : std::to_string(levels[i].quantity);
        }
    };
    add("buy", quote.bids);
    add("sell", quote.asks);
}

std::string Hexadecimal(std::uint8_t number)
{
    constexpr char kDigits[] = "0123456789abcdef";
    return {kDigits[number / 16], kDigits[number % 16]};
}

void AddChoices(const Listing& listing, const std::vector<std::size_t>& meant, StringMap& fields)
{
    fields["dup"] = std::to_string(meant.size());
    for (std::size_t i = 0; i < meant.size(); ++i) {
        const Security& one = listing.securities[meant[i]];
        fields["s" + std::to_string(i + 1)] = Hexadecimal(one.market) + ',' + one.code + ',' +
                                              ToHostText(MarketName(one.market)) + ',' + ToHostText(one.name);
    }
}

// Steps and bounds of the quantity and the step of the price, where clients would suppose others.
void AddRules(const Security& security, bool sells, StringMap& fields)
{
    const bool star = security.kind == SecurityKind::Star;
    const Quantity maximum = star                                     ? kStarMaximum
                             : security.kind == SecurityKind::ChiNext ? kChiNextMaximum
                                                                      : kUsualMaximum;
    const Price step = security.decimals == 2 ? 10 : 1;
    if (security.lot != (star ? kStarLot : kUsualLot)) {
        fields["slbc"] = std::to_string(security.lot);
    }
    if (security.maximum != maximum) {
        fields["slsx"] = std::to_string(security.maximum);
    }
    // A rest that is smaller may be sold.
    if (!sells && security.minimum != (star ? kStarMinimum : security.lot)) {
        fields["slxx"] = std::to_string(security.minimum);
    }
    if (security.step != step) {
        fields["jgbc"] = PriceText(security.step, 3);
    }
}

Quantity Usable(const Exchange& exchange, const Brokerage& brokerage, std::size_t security,
                const ddsdk::TradeRequestParam& request)
{
    const SecurityKind kind = exchange.Securities().securities[security].kind;
    const AccountKind account = kind == SecurityKind::Connect          ? AccountKind::Connect
                                : FieldOf(request.body, "rzrq") == "1" ? AccountKind::Margin
                                                                       : AccountKind::Normal;
    if (kind == SecurityKind::Index) {
        return 0;
    }
    if (FieldOf(request.body, "type") == "S") {
        return brokerage.HoldingOf(account, security).sellable;
    }
    const Price asked = ReadPrice(FieldOf(request.body, "wt_price")).value_or(0);
    return brokerage.Buyable(account, security, asked > 0 ? asked : Simulation::PriceOf(exchange, security),
                             Funding::Own);
}

bool IsTransferred(const std::string& code)
{
    constexpr std::array kHeads{"43", "83", "87", "42"};
    return std::any_of(kHeads.begin(), kHeads.end(),
                       [&](const char* head) { return code.rfind(head, 0) == 0; });
}

// With the market locked: no text is converted here.
void AddStock(const Exchange& exchange, const Brokerage& brokerage, std::size_t place,
              const ddsdk::TradeRequestParam& request, ddsdk::TradeRequestParam& reply)
{
    const Security& security = exchange.Securities().securities[place];
    const Quote& quote = exchange.QuoteOf(place);
    const std::string usable = std::to_string(Usable(exchange, brokerage, place, request));
    reply.head = {{"codetype", std::to_string(security.market)},
                  {"newprice", PriceText(Simulation::PriceOf(exchange, place), security.decimals)},
                  {"ztprice", LimitText(quote.upperLimit, security.decimals)},
                  {"dtprice", LimitText(quote.lowerLimit, security.decimals)},
                  {"prevclose", PriceText(quote.previousClose, security.decimals)},
                  {"hqtime", std::to_string(EpochSeconds(exchange.Now()))},
                  {"options", std::to_string(security.options)}};
    AddBook(quote, security.decimals, reply.head);
    if ((security.options & kTellsCanBuy) != 0) {
        reply.head["canbuy"] = usable;
    }
    reply.body["wtsl"] = usable;
    AddRules(security, FieldOf(request.body, "type") == "S", reply.body);
    reply.local["zqdm"] = security.code;
    reply.local["open"] = PriceOrNone(quote.open, security.decimals);
    if (IsTransferred(security.code)) {
        reply.local["zrlx"] = "B";
    }
}

}  // namespace

int MarketNumber(const std::string& text)
{
    int number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

std::vector<std::size_t> SecuritiesMeant(const Listing& listing, int market, const std::string& code)
{
    if (const auto exact = listing.Find(static_cast<std::uint8_t>(market), code)) {
        return {*exact};
    }
    std::vector<std::size_t> meant = listing.FindAll(code);
    if (market != 0) {
        std::erase_if(meant, [&](std::size_t one) {
            return (listing.securities[one].market & kFamily) != (market & kFamily);
        });
    }
    return meant;
}

std::optional<std::size_t> SecurityMeant(const Listing& listing, int market, const std::string& code)
{
    const std::vector<std::size_t> meant = SecuritiesMeant(listing, market, code);
    const auto tradable = std::find_if(meant.begin(), meant.end(), [&](std::size_t one) {
        return listing.securities[one].kind != SecurityKind::Index;
    });
    if (tradable != meant.end()) {
        return *tradable;
    }
    return meant.empty() ? std::nullopt : std::optional(meant.front());
}

StringMap QuoteRow(const Exchange& exchange, std::size_t place)
{
    const Security& security = exchange.Securities().securities[place];
    const Quote& quote = exchange.QuoteOf(place);
    StringMap row{{"stockcode", MarketCodeKey({security.market, security.code})},
                  {"stock_name", security.name},
                  {"benchmarkcode", PhaseText(exchange.CurrentPhase(), security.market, quote.suspended)},
                  {"latest_price", PriceText(Simulation::PriceOf(exchange, place), security.decimals)},
                  {"raising_limit", LimitText(quote.upperLimit, security.decimals)},
                  {"limit_down", LimitText(quote.lowerLimit, security.decimals)},
                  {"last_closing_price", PriceText(quote.previousClose, security.decimals)},
                  {"opening_price", PriceOrNone(quote.open, security.decimals)},
                  {"price_decimal", std::to_string(security.decimals)},
                  {"hq_time", std::to_string(EpochSeconds(exchange.Now()))}};
    AddBook(quote, security.decimals, row);
    return row;
}

ddsdk::TradeRequestParam StockInfoReply(const Simulation& market, const ddsdk::TradeRequestParam& request)
{
    const Listing& listing = market.Securities();
    const std::vector<std::size_t> meant = SecuritiesMeant(
        listing, MarketNumber(FieldOf(request.local, "local_market")), FieldOf(request.body, "zqdm"));
    ddsdk::TradeRequestParam reply;
    if (meant.size() == 1) {
        market.Read([&](const Exchange& exchange, const Brokerage& brokerage) {
            AddStock(exchange, brokerage, meant.front(), request, reply);
        });
        reply.local["zqmc"] = ToHostText(listing.securities[meant.front()].name);
    } else if (!meant.empty()) {
        AddChoices(listing, meant, reply.local);
    }
    return reply;
}

}  // namespace panelry::desk
