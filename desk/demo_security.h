#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "services/records.h"

namespace panelry::desk
{

/// One security of the demonstration market. Prices are whole numbers of ticks of 10^-decimals yuan.
struct DemoSecurity {
    std::string code;
    std::uint8_t market = 0;
    std::string name;  ///< UTF-8
    int decimals = 2;
    std::int64_t close = 0;
    int limitPercent = 10;  ///< 0: no limits
    std::string holding;    ///< what the account can sell
    std::int64_t last = 0;
    std::int64_t open = 0;

    std::int64_t UpperLimit() const { return close * (100 + limitPercent) / 100; }
    std::int64_t LowerLimit() const { return (close * (100 - limitPercent) + 99) / 100; }
    /// Decimal text of a number of ticks.
    std::string Text(std::int64_t ticks) const;
    /// The limits as text, "0" where there are none.
    std::string UpperLimitText() const { return limitPercent > 0 ? Text(UpperLimit()) : "0"; }
    std::string LowerLimitText() const { return limitPercent > 0 ? Text(LowerLimit()) : "0"; }
    /// "buy_1_price" to "sell_5_amount", one tick a level, invented amounts that go with the last price.
    void AddBook(StringMap& fields) const;
};

/// One row of the account table.
struct DemoAccountRow {
    std::string marketCode, market, account, codes, board, chiNext, orderTypes;
};

struct DemoMarketFile {
    std::string cash;  ///< in yuan
    std::vector<DemoAccountRow> accounts;
    std::vector<DemoSecurity> securities;
};

/// Throws std::runtime_error with the file's name for what can't be read or is no market.
DemoMarketFile ReadDemoMarket(const std::filesystem::path& file);

/// "上海", "深圳" or, for another market, its number.
std::string DemoMarketName(std::uint8_t market);

/// UTF-8 in the code page in which a host answers, GB18030; bytes that have no place there stay away. Throws
/// std::runtime_error where the system can't convert.
std::string ToHostText(const std::string& utf8);

}  // namespace panelry::desk
