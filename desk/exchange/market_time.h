#pragma once

#include <chrono>
#include <compare>
#include <cstdint>
#include <string>

#include "desk/exchange/listing.h"

namespace panelry::desk
{

/// A moment of the simulated market: a day, counted from 1, and the time of day. The market has no weekends.
struct MarketTime {
    int day = 1;
    std::chrono::milliseconds ofDay{0};

    auto operator<=>(const MarketTime&) const = default;  // NOLINT(modernize-use-nullptr): no pointer here
};

/// The date of the market's day 1.
inline constexpr std::chrono::year_month_day kFirstDay{std::chrono::year(2026), std::chrono::July,
                                                       std::chrono::day(1)};

/// "2026-07-01" for day 1.
std::string DateText(int day);
/// "09:31:07".
std::string ClockText(std::chrono::milliseconds ofDay);
/// Seconds of the epoch at which the local time of this machine shows that date and time: what quotes carry.
std::int64_t EpochSeconds(MarketTime time);

/// The phases of a day. Auctions collect orders and match once, at their end.
enum class Phase {
    Closed,          ///< before 09:15 and from 15:00 on
    OpeningAuction,  ///< 09:15 to 09:25
    BeforeOpen,      ///< 09:25 to 09:30: orders wait
    Continuous,      ///< 09:30 to 11:30 and 13:00 to 14:57
    Break,           ///< 11:30 to 13:00: orders wait
    ClosingAuction,  ///< 14:57 to 15:00
};

Phase PhaseAt(std::chrono::milliseconds ofDay);
/// When the phase that begins next begins; the end of the day after the last.
std::chrono::milliseconds NextPhaseAt(std::chrono::milliseconds ofDay);
/// For people: "continuous".
std::string PhaseName(Phase phase);
/// What a quote of this market carries as "benchmarkcode": a letter, and in the 32 family a digit behind it.
/// "T" and "T0" say that trade is continuous; a suspended security has "P", or the digit 1.
std::string PhaseText(Phase phase, std::uint8_t market, bool suspended);

/// Maps the machine's steady clock to the market's: at real time, faster, or standing still between steps.
///
/// Threading: one thread.
class MarketClock
{
public:
    using Instant = std::chrono::steady_clock::time_point;

    /// Starts at `start`. `speed` 1 is real time; 0 stands still.
    MarketClock(MarketTime start, double speed, Instant now);

    [[nodiscard]] MarketTime At(Instant now) const;
    [[nodiscard]] double Speed() const { return m_speed; }

    void SetSpeed(double speed, Instant now);
    /// Moves on by `by`, whatever the speed.
    void Step(std::chrono::milliseconds by, Instant now);
    /// Moves on to `time`; never back.
    void MoveTo(MarketTime time, Instant now);

private:
    MarketTime m_base;
    Instant m_since;
    double m_speed;
};

}  // namespace panelry::desk
