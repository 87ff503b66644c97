#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "desk/providers/market_host.h"
#include "market_day/client.h"

namespace panelry::test
{

/// Trades at random for the ordinary and the margin account: half through the providers, as a client, half at the
/// counter, of which no client is told.
class Trader
{
public:
    Trader(desk::MarketHost& host, std::uint64_t seed);

    /// An order or a cancel.
    void Act();
    /// An order far below the market and its cancel, for both accounts: after these the library asks for everything.
    void OrderAndCancel();

    [[nodiscard]] int OrdersTaken() const { return m_taken; }
    Client& AsClient() { return *m_client; }

private:
    desk::OrderWish Wish();
    void CancelOne(bool atCounter);
    std::size_t Below(std::size_t limit) { return static_cast<std::size_t>(m_random() % limit); }

    desk::MarketHost& m_host;
    std::shared_ptr<Client> m_client = std::make_shared<Client>();
    std::mt19937_64 m_random;
    std::vector<std::size_t> m_traded;  // securities
    int m_taken = 0;
};

}  // namespace panelry::test
