#include "desk/exchange/book.h"

#include <algorithm>
#include <cstdlib>
#include <tuple>

namespace panelry::desk
{

namespace
{

bool IsBetter(Side side, Price one, Price other)
{
    return side == Side::Buy ? one > other : one < other;
}

/// Quantities of one side as seen from a price.
struct Reach {
    Quantity willing = 0;  ///< at this price or a better one
    Quantity better = 0;   ///< at a better one
};

Reach ReachOf(const Book::Orders& orders, Side side, Price price)
{
    Reach reach;
    for (const BookOrder& order : orders) {
        if (IsBetter(side, price, order.price)) {
            break;
        }
        reach.willing += order.rest;
        if (order.price != price) {
            reach.better += order.rest;
        }
    }
    return reach;
}

Trade TradeOf(Side side, OrderId incoming, OrderId standing, Price price, Quantity quantity)
{
    return side == Side::Buy ? Trade{price, quantity, incoming, standing}
                             : Trade{price, quantity, standing, incoming};
}

}  // namespace

std::array<Level, 5> Book::Levels(Side side) const
{
    std::array<Level, 5> levels;
    std::size_t count = 0;
    for (const BookOrder& order : Of(side)) {
        if (count == 0 || levels[count - 1].price != order.price) {
            if (count == levels.size()) {
                break;
            }
            levels[count++].price = order.price;
        }
        levels[count - 1].quantity += order.rest;
    }
    return levels;
}

void Book::Put(Side side, const BookOrder& order)
{
    Orders& orders = OrdersOf(side);
    const auto behind = std::find_if(orders.begin(), orders.end(), [&](const BookOrder& other) {
        return IsBetter(side, order.price, other.price);
    });
    if (order.owner == kCrowd && behind != orders.begin()) {
        BookOrder& before = *std::prev(behind);
        if (before.price == order.price && before.owner == kCrowd) {
            before.rest += order.rest;
            return;
        }
    }
    orders.insert(behind, order);
}

Quantity Book::Match(Side side, const BookOrder& order, std::vector<Trade>& trades)
{
    Orders& others = OrdersOf(Opposite(side));
    Quantity rest = order.rest;
    auto standing = others.begin();
    while (rest > 0 && standing != others.end() && !IsBetter(side, standing->price, order.price)) {
        const Quantity quantity = std::min(rest, standing->rest);
        trades.push_back(TradeOf(side, order.owner, standing->owner, standing->price, quantity));
        rest -= quantity;
        standing->rest -= quantity;
        if (standing->rest == 0) {
            ++standing;
        }
    }
    others.erase(others.begin(), standing);
    return rest;
}

Quantity Book::Take(Side side, Price price, OrderId owner, Quantity quantity)
{
    Orders& orders = OrdersOf(side);
    const auto order = std::find_if(orders.rbegin(), orders.rend(), [&](const BookOrder& other) {
        return other.price == price && other.owner == owner;
    });
    if (order == orders.rend()) {
        return 0;
    }
    const Quantity taken = std::min(quantity, order->rest);
    order->rest -= taken;
    if (order->rest == 0) {
        orders.erase(std::prev(order.base()));
    }
    return taken;
}

void Book::TrimCrowd(Side side, std::size_t count, Quantity most)
{
    std::size_t seen = 0;
    std::erase_if(OrdersOf(side), [&](BookOrder& order) {
        if (order.owner != kCrowd) {
            return false;
        }
        order.rest = std::min(order.rest, most);
        return ++seen > count;
    });
}

void Book::Clear()
{
    m_buys.clear();
    m_sells.clear();
}

std::optional<Level> Book::AuctionPrice(Price reference) const
{
    if (m_buys.empty() || m_sells.empty() || m_buys.front().price < m_sells.front().price) {
        return std::nullopt;
    }
    using Rank = std::tuple<Quantity, bool, Quantity, Price, Price>;
    std::optional<Rank> best;
    const auto consider = [&](Price price) {
        const Reach buys = ReachOf(m_buys, Side::Buy, price);
        const Reach sells = ReachOf(m_sells, Side::Sell, price);
        const Quantity volume = std::min(buys.willing, sells.willing);
        const bool dealsBetterOnes = buys.better <= volume && sells.better <= volume;
        const Rank rank{volume, dealsBetterOnes, -std::abs(buys.willing - sells.willing),
                        -std::abs(price - reference), -price};
        best = best ? std::max(*best, rank) : rank;
    };
    // Only where the two sides overlap: elsewhere less is traded. Many orders stand at few prices.
    Price last = 0;
    for (const Orders* orders : {&m_buys, &m_sells}) {
        for (const BookOrder& order : *orders) {
            const bool overlaps = order.price <= m_buys.front().price && order.price >= m_sells.front().price;
            if (overlaps && order.price != last) {
                consider(order.price);
                last = order.price;
            }
        }
    }
    if (reference <= m_buys.front().price && reference >= m_sells.front().price) {
        consider(reference);
    }
    return Level{-std::get<4>(*best), std::get<0>(*best)};
}

void Book::Uncross(const Level& auction, std::vector<Trade>& trades)
{
    Quantity rest = auction.quantity;
    auto buy = m_buys.begin();
    auto sell = m_sells.begin();
    while (rest > 0) {
        const Quantity quantity = std::min({rest, buy->rest, sell->rest});
        trades.push_back({auction.price, quantity, buy->owner, sell->owner});
        rest -= quantity;
        buy->rest -= quantity;
        sell->rest -= quantity;
        buy += buy->rest == 0 ? 1 : 0;
        sell += sell->rest == 0 ? 1 : 0;
    }
    m_buys.erase(m_buys.begin(), buy);
    m_sells.erase(m_sells.begin(), sell);
}

}  // namespace panelry::desk
