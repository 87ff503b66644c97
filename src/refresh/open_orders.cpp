#include "refresh/open_orders.h"

#include <utility>

namespace panelry::refresh
{

void OpenOrders::Clear()
{
    Watches dropped;  // freed without the lock
    const std::lock_guard guard(m_lock);
    dropped.swap(m_watches);
}

void OpenOrders::Add(OrderWatch watch, const std::string& priceText)
{
    std::string same = watch.direction + priceText;
    const std::lock_guard guard(m_lock);
    m_watches[watch.key].insert_or_assign(std::move(same), std::move(watch));
}

std::vector<std::string> OpenOrders::Stocks() const
{
    std::vector<std::string> stocks;
    const std::lock_guard guard(m_lock);
    stocks.reserve(m_watches.size());
    for (const auto& [key, watches] : m_watches) {
        stocks.push_back(key);
    }
    return stocks;
}

Crossed OpenOrders::Test(const std::string& key, double price) const
{
    Crossed crossed;
    const std::lock_guard guard(m_lock);
    const auto stock = m_watches.find(key);
    if (stock == m_watches.end()) {
        return crossed;
    }
    for (const auto& [same, watch] : stock->second) {
        const double limit = watch.price;
        if (watch.direction == "B" ? limit > price : price > limit) {
            (watch.isMargin ? crossed.margin : crossed.normal) = true;
        }
    }
    return crossed;
}

}  // namespace panelry::refresh
