#pragma once

#include <optional>
#include <string>

#include "desk/exchange/exchange.h"

/// What an exchange demands of an order. Pure functions on whole numbers.
namespace panelry::desk
{

struct PriceRange {
    Price lowest = 0;
    Price highest = 0;

    bool operator==(const PriceRange&) const = default;
};

/// The prices of a day, from the close before it; nothing for a security without limits. Rounded to the step,
/// halves up, and at least a step away from the close.
std::optional<PriceRange> DayRange(const Security& security, Price close);

/// In the continuous phase: the lowest price at which may be sold and the highest at which may be bought, 2 %
/// or (not on the STAR board) ten ticks away from the best price of the other side, whichever is further.
/// Without that price the own side's best stands in, then the last, then the close. Held inside the day's
/// limits. Nothing where protected limits don't exist.
std::optional<PriceRange> ProtectedRange(const Security& security, const Quote& quote);

/// Empty, or why the exchange doesn't take the order, in words for a trader.
std::string Objection(const Security& security, const Quote& quote, Phase phase, const NewOrder& order);

/// Whether an open order may be taken back at this time of day.
bool CancelsAreOpen(std::chrono::milliseconds ofDay);

/// `price` on the security's step, rounded down.
Price OnStep(const Security& security, Price price);

}  // namespace panelry::desk
