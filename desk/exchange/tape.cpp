#include "desk/exchange/tape.h"

#include <ostream>
#include <string>

namespace panelry::desk
{

namespace
{

// "09:31:07.042".
std::string Stamp(MarketTime time)
{
    const std::string milliseconds = std::to_string(time.ofDay.count() % 1000);
    return std::to_string(time.day) + " " + ClockText(time.ofDay) + "." +
           std::string(3 - milliseconds.size(), '0') + milliseconds;
}

std::string Text(const Level& level, int decimals)
{
    return " " + PriceText(level.price, decimals) + "x" + std::to_string(level.quantity);
}

}  // namespace

void Tape::OnQuote(std::size_t security)
{
    const Security& listed = m_exchange.Securities().securities[security];
    const Quote& quote = m_exchange.QuoteOf(security);
    m_out << Stamp(m_exchange.Now()) + " quote " + listed.code + "@" + std::to_string(listed.market) + " " +
                 PriceText(quote.last, listed.decimals) + " " + std::to_string(quote.volume) +
                 Text(quote.bids[0], listed.decimals) + Text(quote.asks[0], listed.decimals) +
                 (quote.suspended ? " suspended\n" : "\n");
}

void Tape::OnDeal(OrderId order, Price price, Quantity quantity)
{
    m_out << Stamp(m_exchange.Now()) + " deal " + std::to_string(order) + " " + PriceText(price, 3) + " " +
                 std::to_string(quantity) + "\n";
}

void Tape::OnGone(OrderId order)
{
    m_out << Stamp(m_exchange.Now()) + " gone " + std::to_string(order) + "\n";
}

void Tape::OnPhase(Phase phase)
{
    m_out << Stamp(m_exchange.Now()) + " phase " + PhaseName(phase) + "\n";
}

}  // namespace panelry::desk
