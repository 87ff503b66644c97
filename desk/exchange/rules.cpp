#include "desk/exchange/rules.h"

#include <algorithm>
#include <array>

namespace panelry::desk
{

namespace
{

using std::chrono::hours;
using std::chrono::minutes;

constexpr Price kHighestPrice = 1'000'000'000;  // a million: what any order is worth can be counted

Price Tick(const Security& security)
{
    return security.decimals == 3 ? 1 : 10;
}

bool HasProtectedLimits(const Security& security)
{
    static constexpr std::array<std::uint8_t, 7> kMarkets{17, 18, 21, 22, 33, 34, 37};
    const bool isStock = security.kind == SecurityKind::Stock || security.kind == SecurityKind::Star ||
                         security.kind == SecurityKind::ChiNext;
    return isStock && std::find(kMarkets.begin(), kMarkets.end(), security.market) != kMarkets.end();
}

/// The first of these that is a price.
Price FirstOf(std::initializer_list<Price> prices)
{
    const auto* const first = std::find_if(prices.begin(), prices.end(), [](Price p) { return p > 0; });
    return first == prices.end() ? 0 : *first;
}

/// "股", or how else this is counted.
std::string UnitWord(const Security& security)
{
    switch (security.kind) {
        case SecurityKind::Bond:
        case SecurityKind::Convertible:
            return "张";
        case SecurityKind::Fund:
            return "份";
        default:
            return "股";
    }
}

std::string QuantityObjection(const Security& security, const NewOrder& order)
{
    const Quantity quantity = order.quantity;
    if (quantity <= 0) {
        return "委托数量无效";
    }
    if (quantity > security.maximum) {
        return "委托数量超过单笔上限" + std::to_string(security.maximum) + UnitWord(security);
    }
    // What is less than a lot is sold along with the lots or alone, but whole.
    const bool sellsOddRest =
        order.side == Side::Sell &&
        (quantity == order.held || (quantity < order.held && quantity % security.lot != 0 &&
                                    quantity % security.lot == order.held % security.lot));
    if (sellsOddRest) {
        return {};
    }
    if (quantity % security.lot != 0) {
        return "委托数量应为" + std::to_string(security.lot) + "的整数倍" +
               (order.side == Side::Sell ? "，零股应一次性卖出" : "");
    }
    if (quantity < security.minimum) {
        return "委托数量应不少于" + std::to_string(security.minimum) + UnitWord(security) +
               (order.side == Side::Sell ? "，余额不足时应一次性卖出" : "");
    }
    return {};
}

std::string PriceObjection(const Security& security, const Quote& quote, Phase phase, const NewOrder& order)
{
    if (order.price <= 0 || order.price > kHighestPrice) {
        return "委托价格无效";
    }
    if (security.kind == SecurityKind::Subscription) {
        return order.price == security.close
                   ? ""
                   : "申购价格应为发行价" + PriceText(security.close, security.decimals);
    }
    if (order.price % security.step != 0) {
        return "委托价格应为最小变动单位" + PriceText(security.step, security.decimals) + "的整数倍";
    }
    if ((quote.upperLimit > 0 && order.price > quote.upperLimit) ||
        (quote.lowerLimit > 0 && order.price < quote.lowerLimit)) {
        return "价格超出涨跌停范围";
    }
    const auto range = phase == Phase::Continuous ? ProtectedRange(security, quote) : std::nullopt;
    if (range && order.side == Side::Buy && order.price > range->highest) {
        return "价格超出有效申报范围，买入价格不得高于" + PriceText(range->highest, security.decimals);
    }
    if (range && order.side == Side::Sell && order.price < range->lowest) {
        return "价格超出有效申报范围，卖出价格不得低于" + PriceText(range->lowest, security.decimals);
    }
    return {};
}

}  // namespace

Price OnStep(const Security& security, Price price)
{
    return price / security.step * security.step;
}

std::optional<PriceRange> DayRange(const Security& security, Price close)
{
    if (security.limitPercent == 0) {
        return std::nullopt;
    }
    const auto limit = [&](int percent) {
        return OnStep(security, (close * (100 + percent) + 50 * security.step) / 100);
    };
    return PriceRange{std::max(security.step, std::min(limit(-security.limitPercent), close - security.step)),
                      std::max(limit(security.limitPercent), close + security.step)};
}

std::optional<PriceRange> ProtectedRange(const Security& security, const Quote& quote)
{
    if (!HasProtectedLimits(security)) {
        return std::nullopt;
    }
    const Price bid = quote.bids[0].price;
    const Price ask = quote.asks[0].price;
    const Price toBuy = FirstOf({ask, bid, quote.last, quote.previousClose});
    const Price toSell = FirstOf({bid, ask, quote.last, quote.previousClose});
    const Price tick = Tick(security);
    const Price hundred = 100 * tick;
    PriceRange range{(toSell * 98 + hundred - 1) / hundred * tick, toBuy * 102 / hundred * tick};
    if (security.kind != SecurityKind::Star) {
        range.lowest = std::min(range.lowest, toSell - 10 * tick);
        range.highest = std::max(range.highest, toBuy + 10 * tick);
    }
    range.lowest = std::max(range.lowest, quote.lowerLimit);
    if (quote.upperLimit > 0) {
        range.highest = std::min(range.highest, quote.upperLimit);
    }
    return range;
}

std::string Objection(const Security& security, const Quote& quote, Phase phase, const NewOrder& order)
{
    if (security.kind == SecurityKind::Index) {
        return "指数不能交易";
    }
    if (phase == Phase::Closed) {
        return "非交易时间";
    }
    if (quote.suspended) {
        return "证券停牌";
    }
    if (security.kind == SecurityKind::Subscription && order.side == Side::Sell) {
        return "申购代码只能买入";
    }
    const std::string objection = QuantityObjection(security, order);
    return objection.empty() ? PriceObjection(security, quote, phase, order) : objection;
}

bool CancelsAreOpen(std::chrono::milliseconds ofDay)
{
    return !(ofDay >= hours(9) + minutes(20) && ofDay < hours(9) + minutes(25)) &&
           !(ofDay >= hours(14) + minutes(57) && ofDay < hours(15));
}

}  // namespace panelry::desk
