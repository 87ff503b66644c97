#pragma once

#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "refresh/order_watch.h"

namespace panelry::refresh
{

/// The accounts in which an order must have been dealt.
struct Crossed {
    bool normal = false;
    bool margin = false;
};

/// The open orders of the table that was pushed last, by stock.
///
/// Threading: any thread; the lock is held for the look-up alone.
class OpenOrders
{
public:
    void Clear();

    /// `priceText` as the table has it: together with the direction it says which orders are one; the later
    /// one stays.
    void Add(OrderWatch watch, const std::string& priceText);

    /// The stocks with open orders, in the order of their keys.
    std::vector<std::string> Stocks() const;

    /// A buy limit above `price`, or a sell limit below it, can't be open any more. The limit is a float that
    /// is widened for the comparison and not rounded to a tick, so at an equal price it depends on how the
    /// float fell: 10.50 crosses nothing, a sell at 10.49 is a little lower and counts.
    Crossed Test(const std::string& key, double price) const;

private:
    using Watches = std::map<std::string, std::map<std::string, OrderWatch>>;

    mutable std::mutex m_lock;
    Watches m_watches;
};

}  // namespace panelry::refresh
