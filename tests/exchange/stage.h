#pragma once

#include <memory>
#include <string>

#include "desk/exchange/exchange.h"

namespace panelry::desk::test
{

/// A dozen securities with round numbers, one or more of each kind.
std::shared_ptr<const Listing> SmallListing();
std::shared_ptr<const Listing> ShippedListing();

/// "09:31", "09:31:02.5", "2/09:31" (the second day).
MarketTime Time(const std::string& text);

/// An exchange with SmallListing() and, until "rate", no crowd, that plays lines like
///
///   "09:31; buy 10.00 300; sell 9.99; book"
///
/// and tells what came of them, parted by "; ", a deal as "ID: PRICExQUANTITY". Steps: a time; "on CODE" (the
/// security of what follows, at first 600001), "nowhere" (none that is listed); "buy|sell [PRICE [QUANTITY
/// [HELD]]]" (else 10.00, 100 and 0); "cancel ID"; "fill ID QUANTITY PARTS"; "up", "down" (runs to the limit);
/// "suspend", "resume"; "rate N"; "book"; "day" (open, high, low, last, volume, turnover); "limits"; "phases"
/// (tells them from here on).
class Stage : private ExchangeListener
{
public:
    Stage();

    std::string Play(const std::string& line);

    Exchange exchange;

private:
    void Step(const std::string& step);
    void Order(Side side, const NewOrder& order);
    [[nodiscard]] std::string Text(Price price) const;
    [[nodiscard]] std::string Book() const;
    [[nodiscard]] std::string Day() const;
    void Say(const std::string& text);

    void OnQuote(std::size_t) override {}
    void OnDeal(OrderId order, Price price, Quantity quantity) override;
    void OnGone(OrderId order) override;
    void OnPhase(Phase phase) override;

    std::size_t m_security;
    bool m_tellsPhases = false;
    std::string m_said;
};

}  // namespace panelry::desk::test
