#pragma once

#include <algorithm>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "accounts/made_accounts.h"

namespace panelry::test
{

/// Does to a broker what a day's trade does, at random: orders of all kinds, sound and unsound, deals of odd
/// sizes at odd prices, cancels, refusals, new days.
class RandomTrader
{
public:
    struct Event {
        char kind = 0;  ///< 'P'laced, 'R'efused by the broker, 'A'ccepted, 'D'ealt, 'G'one, 'O': a new day
        std::string contract;  ///< none for a new day
        desk::Quantity dealt = 0;
        bool open = false;  ///< the order is still open
    };

    /// Goes on with the orders that are open.
    RandomTrader(desk::Brokerage& broker, const desk::Listing& listing, std::uint64_t seed)
        : m_broker(broker), m_listing(listing), m_random(seed)
    {
        for (const desk::AccountKind kind : kAccounts) {
            for (const desk::Order& order : broker.Orders(kind, true)) {
                m_open.push_back(order.contract);
            }
        }
    }

    Event Step()
    {
        constexpr std::ptrdiff_t kMostOpen = 40;
        const std::int64_t dice = Below(1000);
        if (dice < 3) {
            m_broker.OpenDay(m_broker.Day() + 1 + static_cast<int>(Below(3)));
            m_open.clear();
            return {'O', "", 0, false};
        }
        if (m_open.empty() || (dice < 400 && std::ssize(m_open) < kMostOpen)) {
            return Place();
        }
        const auto place = static_cast<std::size_t>(Below(std::ssize(m_open)));
        const std::string contract = m_open[place];
        const char kind = dice < 500 ? 'A' : dice < 620 ? 'G' : 'D';
        if (kind == 'A') {
            m_broker.Accept(contract, m_nextId++);
        } else if (kind == 'D') {
            Deal(contract);
        } else if (m_broker.Find(contract)->dealt == 0 && Below(3) == 0) {
            m_broker.Refuse(contract, "价格超出涨跌停范围");
        } else {
            m_broker.OnGone(contract);
        }
        const desk::Order& order = *m_broker.Find(contract);
        const Event event{kind, contract, order.dealt, order.IsOpen()};
        if (!event.open) {
            m_open[place] = m_open.back();
            m_open.pop_back();
        }
        return event;
    }

private:
    std::int64_t Below(std::int64_t end)
    {
        return static_cast<std::int64_t>(m_random() % static_cast<std::uint64_t>(end));
    }

    Event Place()
    {
        desk::OrderWish wish;
        wish.account = static_cast<desk::AccountKind>(Below(3));
        wish.security = wish.account == desk::AccountKind::Connect && Below(10) > 0
                            ? static_cast<std::size_t>(kConnect)
                            : static_cast<std::size_t>(Below(kMadeCount));
        wish.side = Below(2) == 0 ? desk::Side::Buy : desk::Side::Sell;
        wish.funding = wish.account == desk::AccountKind::Margin || Below(30) == 0
                           ? static_cast<desk::Funding>(Below(3))
                           : desk::Funding::Own;
        wish.price = m_listing.securities[wish.security].close * (90 + Below(21)) / 100 + Below(10);
        if (wish.side == desk::Side::Sell) {
            wish.quantity = Below(m_broker.HoldingOf(wish.account, wish.security).sellable + 2);
        } else {
            const auto most = m_broker.Buyable(wish.account, wish.security, wish.price, wish.funding);
            wish.quantity = Below(10) == 0 ? most : std::min(most, 100 * Below(10)) + Below(2);
        }
        const auto placed = m_broker.Place(wish, {m_broker.Day(), std::chrono::hours(10)});
        if (!placed.refusal.empty()) {
            return {'R', placed.contract, 0, false};
        }
        m_open.push_back(placed.contract);
        return {'P', placed.contract, 0, true};
    }

    void Deal(const std::string& contract)
    {
        const desk::Order& order = *m_broker.Find(contract);
        const desk::Quantity quantity = Below(2) == 0 ? order.Rest() : 1 + Below(order.Rest());
        const desk::Price better = Below(order.wish.price / 20);
        const desk::Price price = order.wish.price + (order.wish.side == desk::Side::Buy ? -better : better);
        m_broker.OnDeal(contract, price, quantity, {m_broker.Day(), std::chrono::hours(11)});
    }

    desk::Brokerage& m_broker;
    const desk::Listing& m_listing;
    std::mt19937_64 m_random;
    std::vector<std::string> m_open;
    desk::OrderId m_nextId = 1;
};

}  // namespace panelry::test
