#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "services/records.h"

/// The records that pass between the quote side of a host and the library.
/// The order of fields is binary contract; append nothing, reorder nothing.

/// One stock.
struct MarketCode {
    /// The market number; bit 16 and bit 32 mark the two exchange families, 0 means not known.
    std::uint8_t market = 0;
    std::string code;  ///< without a market, "600000"
};

/// One push of quotes. All texts are UTF-8, but for the first byte of "stockcode"; prices are decimal text in
/// yuan with a point.
struct QuotePushRecord {
    /// About the push as a whole: "type" ("nowdata", a snapshot, or "pushdata", a change), "pushflag",
    /// "repeatcode_num" where the code is ambiguous.
    StringMap head;
    /// One element a stock. "stockcode" has the form of MarketCodeKey(): the raw market byte, then the code.
    /// Further keys: "stock_name", "latest_price", "raising_limit", "limit_down", "last_closing_price",
    /// "opening_price", "price_decimal", "hq_time", "benchmarkcode", and "buy_1_price", "buy_1_amount",
    /// "sell_1_price", "sell_1_amount" to "..5..". A key that is absent reads as empty.
    std::vector<StringMap> rows;
};

namespace panelry
{

/// The form in which stocks are keys: one raw byte with the market number, then the code. The first byte may
/// be NUL, so such a key never goes through a C string.
inline std::string MarketCodeKey(const MarketCode& stock)
{
    return std::string(1, static_cast<char>(stock.market)) + stock.code;
}

}  // namespace panelry
