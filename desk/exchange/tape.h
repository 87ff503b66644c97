#pragma once

#include <iosfwd>

#include "desk/exchange/exchange.h"

namespace panelry::desk
{

/// Writes what an exchange does, a line an event: time, code, last price, volume, first levels of the book;
/// deals and ends of users' orders; phases. Equal runs give equal bytes.
class Tape : public ExchangeListener
{
public:
    Tape(const Exchange& exchange, std::ostream& out) : m_exchange(exchange), m_out(out) {}

    void OnQuote(std::size_t security) override;
    void OnDeal(OrderId order, Price price, Quantity quantity) override;
    void OnGone(OrderId order) override;
    void OnPhase(Phase phase) override;

private:
    const Exchange& m_exchange;
    std::ostream& m_out;
};

}  // namespace panelry::desk
