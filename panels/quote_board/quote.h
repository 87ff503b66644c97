#pragma once

#include <QString>
#include <array>

#include "quote_board/price.h"

namespace panelry
{

inline constexpr int kLevels = 5;

/// One step of the order book; price 0 if nobody stands there.
struct PriceLevel {
    Price price = 0;
    qint64 lots = 0;
    bool operator==(const PriceLevel&) const = default;
};

/// What is known of one stock. Prices of 0 are not known; levels run from the best outward.
struct Quote {
    QString code;
    QString name;
    int decimals = 2;
    Price prevClose = 0;
    Price last = 0;
    Price open = 0;
    Price high = 0;
    Price low = 0;
    qint64 volume = 0;  ///< lots
    std::array<PriceLevel, kLevels> bids;
    std::array<PriceLevel, kLevels> asks;
    bool operator==(const Quote&) const = default;
};

}  // namespace panelry
