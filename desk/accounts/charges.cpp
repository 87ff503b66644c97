#include "desk/accounts/charges.h"

#include <algorithm>

namespace panelry::desk
{

namespace
{

constexpr std::int64_t kMillion = 1'000'000;
// Far beyond any market, and low enough that no product of the two leaves 64 bits.
constexpr Price kHighestPrice = 100'000'000;
constexpr Quantity kLargestQuantity = 100'000'000;
constexpr std::uint8_t kShanghaiB = 18;
constexpr std::uint8_t kShenzhenB = 34;

bool CanBeBorrowedFor(SecurityKind kind)
{
    return kind == SecurityKind::Stock || kind == SecurityKind::Star || kind == SecurityKind::ChiNext ||
           kind == SecurityKind::Fund;
}

std::string WhyFundingIsWrong(const OrderWish& wish, const Security& security)
{
    if (wish.funding == Funding::Own) {
        return "";
    }
    if (wish.account != AccountKind::Margin) {
        return "该账户不能进行融资交易";
    }
    if (wish.funding == Funding::PayBack) {
        return wish.side == Side::Sell ? "" : "卖券还款只能卖出";
    }
    if (wish.side != Side::Buy) {
        return "融资委托只能买入";
    }
    return CanBeBorrowedFor(security.kind) ? "" : "该证券不能融资买入";
}

}  // namespace

std::int64_t Share(std::int64_t amount, std::int64_t part, std::int64_t whole)
{
    return amount / whole * part + (amount % whole * part + whole / 2) / whole;
}

Money OrderFees(const Rates& rates, Side side, Money worth)
{
    if (worth == 0) {
        return 0;
    }
    const bool sale = side == Side::Sell;
    const Money commission = std::max(rates.minimumCommission, Share(worth, rates.commission, kMillion));
    const Money duty = Share(worth, sale ? rates.stampDutyOnSale : rates.stampDutyOnBuy, kMillion);
    const Money fees = commission + duty + Share(worth, rates.transferFee, kMillion);
    return sale ? std::min(fees, worth) : fees;
}

Money DealWorth(const Opening& opening, const Security& security, const Order& order, Price price,
                Quantity quantity)
{
    const Money worth = opening.AccountWorth(security, price, quantity);
    if (order.wish.side == Side::Sell) {
        return worth;
    }
    const Money set = opening.AccountWorth(security, order.wish.price, order.dealt + quantity) -
                      opening.AccountWorth(security, order.wish.price, order.dealt);
    return std::min(worth, set);
}

Money StillNeeded(const Opening& opening, const Security& security, const Order& order)
{
    if (!order.IsOpen() || order.wish.side == Side::Sell) {
        return 0;
    }
    const Money rest = opening.AccountWorth(security, order.wish.price, order.wish.quantity) -
                       opening.AccountWorth(security, order.wish.price, order.dealt);
    const Rates& rates = opening.RatesFor(security.kind);
    return rest + OrderFees(rates, Side::Buy, order.dealtWorth + rest) -
           OrderFees(rates, Side::Buy, order.dealtWorth);
}

std::string WhyClosedTo(AccountKind account, const Security& security)
{
    if (security.kind == SecurityKind::Index) {
        return "指数不能交易";
    }
    if (security.market == kShanghaiB || security.market == kShenzhenB) {
        return "该账户未开通B股交易";
    }
    const bool fits = (account == AccountKind::Connect) == (security.kind == SecurityKind::Connect);
    return fits ? "" : "该账户不能交易此证券";
}

std::string WhyUnsound(const OrderWish& wish, const Security& security)
{
    if (wish.price <= 0 || wish.price > kHighestPrice) {
        return "委托价格无效";
    }
    if (wish.quantity <= 0 || wish.quantity > kLargestQuantity) {
        return "委托数量无效";
    }
    if (security.kind == SecurityKind::Subscription && wish.side == Side::Sell) {
        return "申购代码只能买入";
    }
    std::string closed = WhyClosedTo(wish.account, security);
    return closed.empty() ? WhyFundingIsWrong(wish, security) : closed;
}

}  // namespace panelry::desk
