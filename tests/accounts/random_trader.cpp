#include "accounts/random_trader.h"

#include <algorithm>

namespace panelry::test
{

using namespace panelry::desk;

RandomTrader::RandomTrader(Brokerage& broker, const Listing& listing, std::uint64_t seed)
    : m_broker(broker), m_listing(listing), m_random(seed)
{
    for (const AccountKind kind : {AccountKind::Normal, AccountKind::Margin, AccountKind::Connect}) {
        for (const Order& order : broker.Orders(kind, true)) {
            m_open.push_back(order.contract);
        }
    }
}

RandomTrader::Event RandomTrader::Step()
{
    constexpr std::int64_t kMostOpen = 40;
    const std::int64_t dice = Below(1000);
    if (dice < 3) {
        return NewDay();
    }
    if (m_open.empty() || (dice < 400 && static_cast<std::int64_t>(m_open.size()) < kMostOpen)) {
        return Place();
    }
    const auto place = static_cast<std::size_t>(Below(static_cast<std::int64_t>(m_open.size())));
    if (dice < 500) {
        m_broker.Accept(m_open[place], m_nextId++);
        return Told('A', place);
    }
    return dice < 620 ? End(place) : Deal(place);
}

RandomTrader::Event RandomTrader::Place()
{
    OrderWish wish;
    wish.account = static_cast<AccountKind>(Below(3));
    wish.security = wish.account == AccountKind::Connect && Below(10) > 0
                        ? static_cast<std::size_t>(kConnect)
                        : static_cast<std::size_t>(Below(kMadeCount));
    wish.side = Below(2) == 0 ? Side::Buy : Side::Sell;
    wish.funding =
        wish.account == AccountKind::Margin || Below(30) == 0 ? static_cast<Funding>(Below(3)) : Funding::Own;
    wish.price = m_listing.securities[wish.security].close * (90 + Below(21)) / 100 + Below(10);
    if (wish.side == Side::Sell) {
        wish.quantity = Below(m_broker.HoldingOf(wish.account, wish.security).sellable + 2);
    } else {
        const Quantity most = m_broker.Buyable(wish.account, wish.security, wish.price, wish.funding);
        wish.quantity = Below(10) == 0 ? most : std::min(most, 100 * Below(10)) + Below(2);
    }
    const Brokerage::Placed placed = m_broker.Place(wish, {m_broker.Day(), std::chrono::hours(10)});
    if (!placed.refusal.empty()) {
        return {'R', placed.contract, 0, false};
    }
    m_open.push_back(placed.contract);
    return {'P', placed.contract, 0, true};
}

RandomTrader::Event RandomTrader::Deal(std::size_t place)
{
    const Order& order = *m_broker.Find(m_open[place]);
    const Quantity quantity = Below(2) == 0 ? order.Rest() : 1 + Below(order.Rest());
    const Price better = Below(order.wish.price / 20);
    const Price price = order.wish.price + (order.wish.side == Side::Buy ? -better : better);
    m_broker.OnDeal(m_open[place], price, quantity, {m_broker.Day(), std::chrono::hours(11)});
    return Told('D', place);
}

RandomTrader::Event RandomTrader::End(std::size_t place)
{
    if (m_broker.Find(m_open[place])->dealt == 0 && Below(3) == 0) {
        m_broker.Refuse(m_open[place], "价格超出涨跌停范围");
    } else {
        m_broker.OnGone(m_open[place]);
    }
    return Told('G', place);
}

RandomTrader::Event RandomTrader::NewDay()
{
    m_broker.OpenDay(m_broker.Day() + 1 + static_cast<int>(Below(3)));
    m_open.clear();
    return {'O', "", 0, false};
}

RandomTrader::Event RandomTrader::Told(char kind, std::size_t place)
{
    const Order& order = *m_broker.Find(m_open[place]);
    const Event event{kind, order.contract, order.dealt, order.IsOpen()};
    if (!event.open) {
        m_open[place] = m_open.back();
        m_open.pop_back();
    }
    return event;
}

}  // namespace panelry::test
