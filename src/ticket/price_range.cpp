#include "ticket/price_range.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "ticket/data_deal_base.h"
#include "ticket/ticket_keys.h"

namespace panelry::ticket
{

namespace
{

constexpr double kCeilingFactor = 1.02;
constexpr double kFloorFactor = 0.98;
constexpr double kGuard = 0.000001;  // against prices that a double holds just below their tick
constexpr double kLeastTicks = 10;
constexpr double kNoUpperLimit = 99999.0;

// The first of the four that isn't as good as 0; the last one if none is.
double FirstPrice(StringMap& ticket, const std::string& first, const std::string& second)
{
    double price = 0;
    for (const std::string* name : {&first, &second, &key::kLatestPrice, &key::kLastClosingPrice}) {
        price = TextToDouble(ticket[*name]);
        if (std::abs(price) >= kSmallestPrice) {
            break;
        }
    }
    return price;
}

}  // namespace

double PowerOfTen(int decimals)
{
    static constexpr std::array<double, kMostDecimals + 1> kPowers{
        1e0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};
    return kPowers[static_cast<std::size_t>(std::clamp(decimals, 0, kMostDecimals))];
}

RangeBasis ReadRangeBasis(StringMap& ticket)
{
    RangeBasis basis;
    basis.decimals = TextToInt(ticket[key::kPriceDecimal]);
    basis.raisingLimit = TextToDouble(ticket[key::kRaisingLimit]);
    basis.limitDown = TextToDouble(ticket[key::kLimitDown]);
    if (basis.raisingLimit < kSmallestPrice) {
        basis.raisingLimit = kNoUpperLimit;  // the lower limit gets no such treatment
    }
    basis.sellBase = FirstPrice(ticket, key::kSell1Price, key::kBuy1Price);
    basis.buyBase = FirstPrice(ticket, key::kBuy1Price, key::kSell1Price);
    basis.star = IsOne(ticket, key::kStar);
    return basis;
}

PriceRange ProtectedRange(const RangeBasis& basis)
{
    const double scale = PowerOfTen(basis.decimals);
    // The ceiling rounds down and the floor up: both stay inside the 2 percent.
    double ceiling = std::floor((basis.sellBase * kCeilingFactor + kGuard) * scale) / scale;
    double floor = std::ceil((basis.buyBase * kFloorFactor - kGuard) * scale) / scale;
    if (!basis.star) {
        ceiling = std::max(ceiling, basis.sellBase + kLeastTicks / scale);
        floor = std::min(floor, basis.buyBase - kLeastTicks / scale);
    }
    // Each bound is held on its own side only.
    return {std::min(ceiling, basis.raisingLimit), std::max(floor, basis.limitDown)};
}

}  // namespace panelry::ticket

void DataDealBase::ComputeProtectedRange(StringMap& ticket, std::string& buyCeiling, std::string& sellFloor)
{
    using namespace panelry::ticket;
    const RangeBasis basis = ReadRangeBasis(ticket);
    if (basis.sellBase < kSmallestPrice || basis.buyBase < kSmallestPrice) {
        return;
    }
    const PriceRange range = ProtectedRange(basis);
    panelry::AssignFixedText(buyCeiling, range.ceiling + kGuard, basis.decimals);
    panelry::AssignFixedText(sellFloor, range.floor + kGuard, basis.decimals);
}
