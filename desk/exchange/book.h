#pragma once

#include <array>
#include <optional>
#include <vector>

#include "desk/exchange/exchange.h"

namespace panelry::desk
{

constexpr OrderId kCrowd = 0;  ///< the owner of every order that isn't a user's

constexpr Side Opposite(Side side)
{
    return side == Side::Buy ? Side::Sell : Side::Buy;
}

struct BookOrder {
    Price price = 0;
    Quantity rest = 0;
    OrderId owner = kCrowd;
};

struct Trade {
    Price price = 0;
    Quantity quantity = 0;
    OrderId buyer = kCrowd;
    OrderId seller = kCrowd;
};

/// The open orders of one security, on each side the best price first and within a price the earliest first.
/// What the crowd puts behind itself at one price stands as one order.
///
/// Threading: as its owner. Failures: none but of memory.
class Book
{
public:
    using Orders = std::vector<BookOrder>;

    [[nodiscard]] const Orders& Of(Side side) const { return side == Side::Buy ? m_buys : m_sells; }
    /// 0 where there is none.
    [[nodiscard]] Price Best(Side side) const { return Of(side).empty() ? 0 : Of(side).front().price; }
    [[nodiscard]] std::array<Level, 5> Levels(Side side) const;

    /// Puts an order behind all that have its price, without matching.
    void Put(Side side, const BookOrder& order);
    /// Deals an order that comes in with those of the other side, best first, each at the price of the one
    /// that stands. Appends to `trades` and gives what is left of the order.
    Quantity Match(Side side, const BookOrder& order, std::vector<Trade>& trades);
    /// Takes up to `quantity` out of the owner's last order at this price. Gives what it took.
    Quantity Take(Side side, Price price, OrderId owner, Quantity quantity);
    /// Leaves the crowd its best `count` orders of a side, and up to `most` of each.
    void TrimCrowd(Side side, std::size_t count, Quantity most);
    void Clear();

    /// The one price of an auction with the volume that it trades; nothing while no buy reaches a sell.
    ///
    /// Most volume first, among prices at which every better order is dealt; then the least that is left over
    /// at that price; then nearest to `reference`, and the lower of two as near.
    [[nodiscard]] std::optional<Level> AuctionPrice(Price reference) const;
    /// Deals that volume at that price, the best and earliest orders first. Appends to `trades`.
    void Uncross(const Level& auction, std::vector<Trade>& trades);

private:
    Orders& OrdersOf(Side side) { return side == Side::Buy ? m_buys : m_sells; }

    Orders m_buys;
    Orders m_sells;
};

}  // namespace panelry::desk
