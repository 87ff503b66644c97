#pragma once

#include <algorithm>
#include <cstdint>
#include <memory>
#include <random>
#include <string>
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
    Trader(desk::MarketHost& host, std::uint64_t seed) : m_market(host.Market()), m_random(seed)
    {
        m_client->SetProvider(host.Trades());
        const auto& securities = m_market.Securities().securities;
        for (std::size_t i = 0; i < securities.size(); ++i) {
            if (IsTraded(securities[i])) {
                m_traded.push_back(i);
            }
        }
        std::shuffle(m_traded.begin(), m_traded.end(), m_random);
        // What is held is always among them, so that there is something to sell.
        m_market.Read([&](const desk::Exchange&, const desk::Brokerage& broker) {
            for (const desk::AccountKind account : {desk::AccountKind::Normal, desk::AccountKind::Margin}) {
                for (const desk::Holding& holding : broker.Holdings(account)) {
                    m_traded.insert(m_traded.begin(), holding.security);
                }
            }
        });
        m_traded.resize(std::min<std::size_t>(m_traded.size(), 40));
    }

    /// An order or a cancel.
    void Act()
    {
        const bool atCounter = Below(2) == 0;
        if (Below(4) == 0) {
            CancelOne(atCounter);
            return;
        }
        const desk::OrderWish wish = Wish();
        const bool taken = atCounter ? m_market.Place(wish).refusal.empty() : !Order(wish).empty();
        m_taken += taken ? 1 : 0;
    }

    /// An order far below the market and its cancel, for both accounts: after these the library asks for everything.
    void OrderAndCancel()
    {
        const std::size_t security = *m_market.Securities().Find(17, "600000");
        const desk::Price low = m_market.Read([&](const desk::Exchange& exchange, const desk::Brokerage&) {
            return exchange.QuoteOf(security).lowerLimit;
        });
        for (const desk::AccountKind account : {desk::AccountKind::Normal, desk::AccountKind::Margin}) {
            const desk::Quantity lot = m_market.Securities().securities[security].lot;
            const std::string contract = Order({account, security, desk::Side::Buy, low, lot});
            if (!contract.empty()) {
                m_client->Cancel(contract, account == desk::AccountKind::Margin);
            }
        }
    }

    [[nodiscard]] int OrdersTaken() const { return m_taken; }
    Client& AsClient() { return *m_client; }

private:
    static bool IsTraded(const desk::Security& security)
    {
        using desk::SecurityKind;
        return security.kind != SecurityKind::Index && security.kind != SecurityKind::Subscription &&
               security.kind != SecurityKind::Connect && !security.suspended;
    }

    std::string Order(const desk::OrderWish& wish)
    {
        return m_client->Order(wish, m_market.Securities().securities[wish.security]);
    }

    // At and around the best prices, so that some are dealt at once, some wait and some are refused.
    desk::OrderWish Wish()
    {
        constexpr desk::Money kReserve = 2'000'000;  // fen; what OrderAndCancel() can always pay with
        desk::OrderWish wish;
        wish.account = Below(2) == 0 ? desk::AccountKind::Normal : desk::AccountKind::Margin;
        wish.side = Below(2) == 0 ? desk::Side::Buy : desk::Side::Sell;
        wish.security = m_traded[Below(m_traded.size())];
        const bool onCredit = Below(3) == 0;
        return m_market.Read([&](const desk::Exchange& exchange, const desk::Brokerage& broker) {
            const auto priceOf = [&](std::size_t security) {
                return desk::Simulation::PriceOf(exchange, security);
            };
            if (broker.FundsOf(wish.account, priceOf).available < kReserve) {
                wish.side = desk::Side::Sell;
            }
            const bool buys = wish.side == desk::Side::Buy;
            if (wish.account == desk::AccountKind::Margin && onCredit) {
                wish.funding = buys ? desk::Funding::Borrowed : desk::Funding::PayBack;
            }
            const desk::Security& security = exchange.Securities().securities[wish.security];
            wish.price = priceOf(wish.security) + (static_cast<desk::Price>(Below(7)) - 3) * security.step;
            wish.quantity = security.minimum + security.lot * static_cast<desk::Quantity>(Below(3));
            if (!buys) {
                const desk::Quantity sellable = broker.HoldingOf(wish.account, wish.security).sellable;
                wish.quantity = sellable > 0 && Below(8) == 0
                                    ? sellable
                                    : std::min(wish.quantity, std::max(sellable, security.lot));
            }
            return wish;
        });
    }

    void CancelOne(bool atCounter)
    {
        const auto account = Below(2) == 0 ? desk::AccountKind::Normal : desk::AccountKind::Margin;
        const std::vector<desk::Order> open =
            m_market.Read([&](const desk::Exchange&, const desk::Brokerage& broker) {
                return broker.Orders(account, true);
            });
        if (open.empty()) {
            return;
        }
        const std::string contract = open[Below(open.size())].contract;
        if (atCounter) {
            m_market.Cancel(account, contract);
        } else {
            m_client->Cancel(contract, account == desk::AccountKind::Margin);
        }
    }

    std::size_t Below(std::size_t limit) { return static_cast<std::size_t>(m_random() % limit); }

    desk::Simulation& m_market;
    std::shared_ptr<Client> m_client = std::make_shared<Client>();
    std::mt19937_64 m_random;
    std::vector<std::size_t> m_traded;  // securities
    int m_taken = 0;
};

}  // namespace panelry::test
