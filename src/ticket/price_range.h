#pragma once

#include <string>

#include "services/records.h"

namespace panelry::ticket
{

/// Below this, in yuan, a price, a limit or a base counts as none.
inline constexpr double kSmallestPrice = 0.0001;

/// 10 to the power `decimals`, exactly; `decimals` is held within 0 and kMostDecimals.
double PowerOfTen(int decimals);

/// The prices from which a protected range is worked out.
struct RangeBasis {
    int decimals = 0;
    double sellBase = 0;  ///< the ceiling starts here
    double buyBase = 0;   ///< the floor starts here
    double raisingLimit = 0;
    double limitDown = 0;
    bool star = false;
};

struct PriceRange {
    double ceiling = 0;
    double floor = 0;
};

/// Reads a ticket; bases below kSmallestPrice mean that there is nothing to start from.
RangeBasis ReadRangeBasis(StringMap& ticket);

/// The highest buy and the lowest sell price; see DataDealBase::ComputeProtectedRange().
PriceRange ProtectedRange(const RangeBasis& basis);

}  // namespace panelry::ticket
