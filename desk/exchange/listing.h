#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "desk/exchange/units.h"

namespace panelry::desk
{

/// What is traded under a code; decides on protected limits and fees, and on who may trade it.
enum class SecurityKind {
    Stock,         ///< main boards, A and B shares
    Star,          ///< STAR board
    ChiNext,       ///< ChiNext
    Fund,          ///< exchange-traded funds, three decimals
    Bond,          ///< government and company bonds
    Convertible,   ///< convertible bonds
    Subscription,  ///< codes under which new shares are subscribed for; bought only, never dealt
    Connect,       ///< Stock Connect
    Index,         ///< quoted, not traded
};

/// One security as the file lists it. Unchanged while the desk runs.
struct Security {
    std::string code;
    std::uint8_t market =
        0;             ///< market number: family (16 or 32, 64 for Stock Connect) and kind in the low bits
    std::string name;  ///< UTF-8
    SecurityKind kind = SecurityKind::Stock;
    int decimals = 2;              ///< of its prices, 2 or 3
    Price step = 10;               ///< prices are multiples of it
    Price close = 0;               ///< of the day before the desk's first day
    int limitPercent = 10;         ///< how far a day's price may go from the close; 0: no limits
    Quantity lot = 100;            ///< a buy is a multiple of it
    Quantity minimum = 100;        ///< smallest buy
    Quantity maximum = 1'000'000;  ///< largest order
    std::uint32_t options =
        0;                   ///< bits 8 to 11: hand, bits 12 to 15: unit of quantity, bit 2: "canbuy" is told
    bool suspended = false;  ///< from the start
    bool sameDay = false;    ///< bought today, sold today
};

/// The securities of the market, with the name and date of the rules that their numbers follow.
///
/// Threading: read-only once it is read; any thread.
struct Listing {
    std::string rules;      ///< name of the rule set
    std::string rulesDate;  ///< "YYYY-MM-DD", the day as of which the rules stand
    std::vector<Security> securities;

    /// Index of the security that stands on exactly this market, or nothing.
    [[nodiscard]] std::optional<std::size_t> Find(std::uint8_t market, const std::string& code) const;
    /// Indices of all securities with this code, in the file's order.
    [[nodiscard]] std::vector<std::size_t> FindAll(const std::string& code) const;
};

/// Reads the file that docs/desk.md describes. Throws std::runtime_error with the file's name, the entry and
/// the reason for what can't be read or makes no market (a code that stands twice on one market, a close off
/// its step).
Listing ReadListing(const std::filesystem::path& file);

/// For benchmarks and long tests: the listing's own securities, and made-up stocks on free codes of the main
/// board until there are `count`, or 6,000 codes were tried.
Listing Enlarged(Listing listing, std::size_t count);

}  // namespace panelry::desk
