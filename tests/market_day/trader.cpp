#include "market_day/trader.h"

#include <algorithm>

namespace panelry::test
{

namespace
{

using desk::AccountKind;
using desk::Funding;
using desk::OrderWish;
using desk::SecurityKind;
using desk::Side;

constexpr std::size_t kTraded = 40;
constexpr desk::Money kReserve = 2'000'000;  // fen; what OrderAndCancel() can always pay with

bool IsTraded(const desk::Security& security)
{
    return security.kind != SecurityKind::Index && security.kind != SecurityKind::Subscription &&
           security.kind != SecurityKind::Connect && !security.suspended;
}

}  // namespace

Trader::Trader(desk::MarketHost& host, std::uint64_t seed) : m_host(host), m_random(seed)
{
    m_client->SetProvider(host.Trades());
    const auto& securities = host.Market().Securities().securities;
    for (std::size_t i = 0; i < securities.size(); ++i) {
        if (IsTraded(securities[i])) {
            m_traded.push_back(i);
        }
    }
    std::shuffle(m_traded.begin(), m_traded.end(), m_random);
    // What is held is always among them, so that there is something to sell.
    host.Market().Read([&](const desk::Exchange&, const desk::Brokerage& broker) {
        for (const AccountKind account : {AccountKind::Normal, AccountKind::Margin}) {
            for (const desk::Holding& holding : broker.Holdings(account)) {
                m_traded.insert(m_traded.begin(), holding.security);
            }
        }
    });
    m_traded.resize(std::min(m_traded.size(), kTraded));
}

void Trader::Act()
{
    const bool atCounter = Below(2) == 0;
    if (Below(4) == 0) {
        CancelOne(atCounter);
        return;
    }
    const OrderWish wish = Wish();
    const bool taken =
        atCounter ? m_host.Market().Place(wish).refusal.empty()
                  : !m_client->Order(wish, m_host.Market().Securities().securities[wish.security]).empty();
    m_taken += taken ? 1 : 0;
}

// At and around the best prices, so that some are dealt at once, some wait and some are refused.
OrderWish Trader::Wish()
{
    OrderWish wish;
    wish.account = Below(2) == 0 ? AccountKind::Normal : AccountKind::Margin;
    wish.side = Below(2) == 0 ? Side::Buy : Side::Sell;
    wish.security = m_traded[Below(m_traded.size())];
    const bool onCredit = Below(3) == 0;
    return m_host.Market().Read([&](const desk::Exchange& exchange, const desk::Brokerage& broker) {
        const auto priceOf = [&](std::size_t security) {
            return desk::Simulation::PriceOf(exchange, security);
        };
        if (broker.FundsOf(wish.account, priceOf).available < kReserve) {
            wish.side = Side::Sell;
        }
        if (wish.account == AccountKind::Margin && onCredit) {
            wish.funding = wish.side == Side::Buy ? Funding::Borrowed : Funding::PayBack;
        }
        const desk::Security& security = exchange.Securities().securities[wish.security];
        wish.price = desk::Simulation::PriceOf(exchange, wish.security) +
                     (static_cast<desk::Price>(Below(7)) - 3) * security.step;
        wish.quantity = security.minimum + security.lot * static_cast<desk::Quantity>(Below(3));
        if (wish.side == Side::Sell) {
            const desk::Quantity sellable = broker.HoldingOf(wish.account, wish.security).sellable;
            wish.quantity = sellable > 0 && Below(8) == 0
                                ? sellable
                                : std::min(wish.quantity, std::max(sellable, security.lot));
        }
        return wish;
    });
}

void Trader::CancelOne(bool atCounter)
{
    const AccountKind account = Below(2) == 0 ? AccountKind::Normal : AccountKind::Margin;
    const std::vector<desk::Order> open = m_host.Market().Read(
        [&](const desk::Exchange&, const desk::Brokerage& broker) { return broker.Orders(account, true); });
    if (open.empty()) {
        return;
    }
    const std::string contract = open[Below(open.size())].contract;
    if (atCounter) {
        m_host.Market().Cancel(account, contract);
    } else {
        m_client->Cancel(contract, account == AccountKind::Margin);
    }
}

void Trader::OrderAndCancel()
{
    for (const AccountKind account : {AccountKind::Normal, AccountKind::Margin}) {
        OrderWish wish;
        wish.account = account;
        wish.security = *m_host.Market().Securities().Find(17, "600000");
        const auto [low, lot] =
            m_host.Market().Read([&](const desk::Exchange& exchange, const desk::Brokerage&) {
                return std::pair(exchange.QuoteOf(wish.security).lowerLimit,
                                 exchange.Securities().securities[wish.security].lot);
            });
        wish.price = low;
        wish.quantity = lot;
        const std::string contract =
            m_client->Order(wish, m_host.Market().Securities().securities[wish.security]);
        if (!contract.empty()) {
            m_client->Cancel(contract, account == AccountKind::Margin);
        }
    }
}

}  // namespace panelry::test
