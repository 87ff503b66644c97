#include "desk/providers/account_tables.h"

#include <algorithm>
#include <map>
#include <vector>

#include "desk/providers/host_words.h"

namespace panelry::desk
{

namespace
{

using Row = MemoryTable::Row;
using Columns = std::vector<std::string>;

constexpr int kFamily = 0xF0;
constexpr char kYuan[] = "0";  // as a currency

// The account of the exchange in whose books a security stands.
std::string ShareholderOf(const Opening& opening, AccountKind account, const Security& security)
{
    for (const Shareholder& one : opening.shareholders) {
        if (one.account == account && (one.market == std::to_string(security.market) ||
                                       one.market == std::to_string(security.market & kFamily))) {
            return one.number;
        }
    }
    return {};
}

// What all rows about a security begin with.
Row SecurityCells(const Security& security, const Opening& opening, AccountKind account)
{
    return {security.code, ToHostText(security.name), std::to_string(security.market),
            ToHostText(MarketName(security.market)), ShareholderOf(opening, account, security)};
}
const Columns kSecurityColumns{"2102", "2103", "32009", "2108", "2106"};

Columns Joined(const Columns& more)
{
    Columns all = kSecurityColumns;
    all.insert(all.end(), more.begin(), more.end());
    return all;
}

void Append(Row& row, Row more)
{
    std::move(more.begin(), more.end(), std::back_inserter(row));
}

constexpr Money kPricesInAFen = 10;

// What each of `quantity` comes to where all come to `sum`, in the units of a price: "10.253".
std::string EachText(std::int64_t sum, Quantity quantity)
{
    return quantity == 0 ? "0.000" : PriceText((sum + quantity / 2) / quantity, 3);
}

// By contract, what the deals of today come to in the currency of their prices. Only where that isn't the
// account's: elsewhere an order knows it.
std::map<std::string, std::int64_t> ForeignSums(const Brokerage& brokerage, AccountKind account)
{
    std::map<std::string, std::int64_t> sums;
    if (account == AccountKind::Connect) {
        for (const Deal& deal : brokerage.Deals(account)) {
            sums[deal.contract] += deal.price * deal.quantity;
        }
    }
    return sums;
}

// `part` of `whole` in percent, two decimals.
std::string PercentText(Money part, Money whole)
{
    return MoneyText(whole == 0 ? 0 : part * 10000 / whole);
}

// `dealtSum` is of all its deals, in the units of a price.
Row OrderCells(const Order& order, std::int64_t dealtSum, int decimals)
{
    const bool ended = order.state == OrderState::Cancelled || order.state == OrderState::PartlyCancelled;
    return {CompactDate(order.time.day),
            ClockText(order.time.ofDay),
            ToHostText(OperationName(order.wish.account, order.wish.side, order.wish.funding)),
            PriceText(order.wish.price, decimals),
            std::to_string(order.wish.quantity),
            std::to_string(order.dealt),
            order.dealt == 0 ? PriceText(0, decimals) : EachText(dealtSum, order.dealt),
            MoneyText(order.dealtWorth),
            std::to_string(ended ? order.Rest() : 0),
            ToHostText(StateName(order.state)),
            order.contract,
            order.IsOpen() ? "1" : "0",
            ToHostText(order.reason)};
}
const Columns kOrderColumns{"2139", "2140", "2109", "2127", "2126", "2128", "2129",
                            "2131", "2120", "2946", "2135", "1017", "2105"};

Row DealCells(const Deal& deal, int decimals)
{
    return {CompactDate(deal.time.day),
            ClockText(deal.time.ofDay),
            ToHostText(OperationName(deal.account, deal.side, deal.funding)),
            PriceText(deal.price, decimals),
            std::to_string(deal.quantity),
            MoneyText(deal.worth),
            MoneyText(deal.fees),
            deal.contract,
            deal.number};
}
const Columns kDealColumns{"2141", "2142", "2109", "2129", "2128", "2131", "2132", "2135", "2130"};

Row HoldingCells(const Holding& holding, Price price, Money worth, int decimals)
{
    return {std::to_string(holding.total),
            std::to_string(holding.sellable),
            std::to_string(holding.frozen),
            EachText(holding.cost * kPricesInAFen, holding.total),
            MoneyText(holding.cost),
            PriceText(price, decimals),
            MoneyText(worth),
            MoneyText(worth - holding.cost),
            PercentText(worth - holding.cost, holding.cost)};
}
const Columns kHoldingColumns{"2117", "2121", "2118", "2122", "2123", "2124", "2125", "2147", "3616"};

Funds FundsOf(const Exchange& exchange, const Brokerage& brokerage, AccountKind account)
{
    return brokerage.FundsOf(account,
                             [&](std::size_t security) { return Simulation::PriceOf(exchange, security); });
}

}  // namespace

std::shared_ptr<MemoryTable> OrdersTable(const std::string& name, const Simulation& market,
                                         AccountKind account, bool onlyOpen)
{
    std::map<std::string, std::int64_t> foreign;
    const std::vector<Order> orders = market.Read([&](const Exchange&, const Brokerage& brokerage) {
        foreign = ForeignSums(brokerage, account);
        return brokerage.Orders(account, onlyOpen);
    });
    std::vector<Row> rows;
    for (const Order& order : orders) {
        const Security& security = market.Securities().securities[order.wish.security];
        rows.push_back(SecurityCells(security, market.Started(), account));
        const auto sum = foreign.find(order.contract);
        Append(rows.back(),
               OrderCells(order, sum == foreign.end() ? order.dealtWorth * kPricesInAFen : sum->second,
                          security.decimals));
    }
    return std::make_shared<MemoryTable>(name, Joined(kOrderColumns), std::move(rows));
}

std::shared_ptr<MemoryTable> DealsTable(const std::string& name, const Simulation& market,
                                        AccountKind account, std::optional<std::pair<int, int>> range)
{
    const std::vector<Deal> deals = market.Read([&](const Exchange&, const Brokerage& brokerage) {
        return range ? brokerage.DealsBetween(account, range->first, range->second)
                     : brokerage.Deals(account);
    });
    std::vector<Row> rows;
    for (const Deal& deal : deals) {
        const Security& security = market.Securities().securities[deal.security];
        rows.push_back(SecurityCells(security, market.Started(), account));
        Append(rows.back(), DealCells(deal, security.decimals));
    }
    return std::make_shared<MemoryTable>(name, Joined(kDealColumns), std::move(rows));
}

std::shared_ptr<MemoryTable> HoldingsTable(const std::string& name, const Simulation& market,
                                           AccountKind account)
{
    std::vector<Price> prices;
    const std::vector<Holding> holdings =
        market.Read([&](const Exchange& exchange, const Brokerage& brokerage) {
            std::vector<Holding> found = brokerage.Holdings(account);
            for (const Holding& holding : found) {
                prices.push_back(Simulation::PriceOf(exchange, holding.security));
            }
            return found;
        });
    std::vector<Row> rows;
    for (const Holding& holding : holdings) {
        const Security& security = market.Securities().securities[holding.security];
        const Price price = prices[rows.size()];
        rows.push_back(SecurityCells(security, market.Started(), account));
        Append(rows.back(),
               HoldingCells(holding, price, market.Started().AccountWorth(security, price, holding.total),
                            security.decimals));
    }
    return std::make_shared<MemoryTable>(name, Joined(kHoldingColumns), std::move(rows));
}

std::shared_ptr<MemoryTable> FundsTable(const std::string& name, const Simulation& market,
                                        AccountKind account)
{
    const Funds funds = market.Read([&](const Exchange& exchange, const Brokerage& brokerage) {
        return FundsOf(exchange, brokerage, account);
    });
    return std::make_shared<MemoryTable>(
        name,
        Columns{"2908", "2172", "2239", "2971", "2116", "2114", "2113", "2973", "2191", "3641", "3646",
                "3857"},
        std::vector<Row>{{market.Started().Of(account).number, kYuan, ToHostText("人民币"),
                          MoneyText(funds.balance), MoneyText(funds.available), MoneyText(funds.withdrawable),
                          MoneyText(funds.frozen), MoneyText(funds.marketValue), MoneyText(funds.assets),
                          MoneyText(funds.debt), MoneyText(funds.creditLine), MoneyText(funds.credit)}});
}

ddsdk::TradeRequestParam FundsReply(const Simulation& market, AccountKind account)
{
    const Funds funds = market.Read([&](const Exchange& exchange, const Brokerage& brokerage) {
        return FundsOf(exchange, brokerage, account);
    });
    ddsdk::TradeRequestParam reply;
    reply.head = {{"account", market.Started().Of(account).number},
                  {"zjye", MoneyText(funds.balance)},
                  {"kyye", MoneyText(funds.available)},
                  {"sjye", MoneyText(funds.withdrawable)},
                  {"djye", MoneyText(funds.frozen)},
                  {"cqye", MoneyText(0)},  // nothing is lent out
                  {"zcc", MoneyText(funds.assets)},
                  {"options", "0"}};
    reply.body["gpsz"] = MoneyText(funds.marketValue);
    return reply;
}

std::shared_ptr<MemoryTable> ShareholderTable(const std::string& name, const Opening& opening, bool margin)
{
    std::vector<Row> rows;
    for (const Shareholder& one : opening.shareholders) {
        if ((one.account == AccountKind::Margin) == margin) {
            rows.push_back({one.marketCode, one.market, one.number, one.masks, one.isMain ? "1" : "0",
                            one.starMask, one.chiNextMask, one.orderTypes, one.orderTypes});
        }
    }
    return std::make_shared<MemoryTable>(
        name, Columns{"2167", "2108", "2106", "2170", "2176", "2212", "2214", "2213", "2306"},
        std::move(rows));
}

StringMap MarketCodeRange(const Opening& opening)
{
    StringMap range;
    for (const auto& [account, kind] : {std::pair{AccountKind::Normal, "0"}, {AccountKind::Margin, "1"}}) {
        std::vector<std::string> codes;
        for (const Shareholder& one : opening.shareholders) {
            if (one.account == account) {
                codes.push_back(one.marketCode);
            }
        }
        if (!codes.empty()) {
            const auto [first, last] = std::minmax_element(codes.begin(), codes.end());
            range[kind + std::string("_begin")] = *first;
            range[kind + std::string("_end")] = *last;
        }
    }
    return range;
}

}  // namespace panelry::desk
