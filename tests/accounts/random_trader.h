#pragma once

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
    RandomTrader(desk::Brokerage& broker, const desk::Listing& listing, std::uint64_t seed);

    Event Step();

private:
    std::int64_t Below(std::int64_t end)
    {
        return static_cast<std::int64_t>(m_random() % static_cast<std::uint64_t>(end));
    }
    Event Place();
    Event Deal(std::size_t place);
    Event End(std::size_t place);
    Event NewDay();
    Event Told(char kind, std::size_t place);

    desk::Brokerage& m_broker;
    const desk::Listing& m_listing;
    std::mt19937_64 m_random;
    std::vector<std::string> m_open;
    desk::OrderId m_nextId = 1;
};

}  // namespace panelry::test
