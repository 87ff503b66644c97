#include "desk/exchange/market_time.h"

#include <algorithm>
#include <array>
#include <ctime>

namespace panelry::desk
{

namespace
{

using std::chrono::hours;
using std::chrono::milliseconds;
using std::chrono::minutes;

constexpr milliseconds kDay = hours(24);

struct Beginning {
    milliseconds at;
    Phase phase;
};
constexpr std::array<Beginning, 8> kTimetable{{
    {milliseconds(0), Phase::Closed},
    {hours(9) + minutes(15), Phase::OpeningAuction},
    {hours(9) + minutes(25), Phase::BeforeOpen},
    {hours(9) + minutes(30), Phase::Continuous},
    {hours(11) + minutes(30), Phase::Break},
    {hours(13), Phase::Continuous},
    {hours(14) + minutes(57), Phase::ClosingAuction},
    {hours(15), Phase::Closed},
}};

std::string TwoDigits(std::int64_t number)
{
    return (number < 10 ? "0" : "") + std::to_string(number);
}

std::chrono::year_month_day DateOf(int day)
{
    return std::chrono::sys_days(kFirstDay) + std::chrono::days(day - 1);
}

/// `ofDay` of any size, as day and time of day.
MarketTime Normal(int day, milliseconds ofDay)
{
    return {day + static_cast<int>(ofDay / kDay), ofDay % kDay};
}

char PhaseLetter(Phase phase, bool isSecondFamily)
{
    switch (phase) {
        case Phase::OpeningAuction:
            return isSecondFamily ? 'O' : 'C';
        case Phase::Continuous:
            return 'T';
        case Phase::BeforeOpen:
        case Phase::Break:
            return 'B';
        case Phase::ClosingAuction:
            return isSecondFamily ? 'C' : 'U';
        case Phase::Closed:
            break;
    }
    return 'E';
}

}  // namespace

std::string DateText(int day)
{
    const std::chrono::year_month_day date = DateOf(day);
    return std::to_string(static_cast<int>(date.year())) + "-" +
           TwoDigits(static_cast<unsigned>(date.month())) + "-" +
           TwoDigits(static_cast<unsigned>(date.day()));
}

std::string ClockText(milliseconds ofDay)
{
    const std::int64_t seconds = ofDay / std::chrono::seconds(1);
    return TwoDigits(seconds / 3600) + ":" + TwoDigits(seconds / 60 % 60) + ":" + TwoDigits(seconds % 60);
}

std::int64_t EpochSeconds(MarketTime time)
{
    const std::chrono::year_month_day date = DateOf(time.day);
    std::tm local{};
    local.tm_year = static_cast<int>(date.year()) - 1900;
    local.tm_mon = static_cast<int>(static_cast<unsigned>(date.month())) - 1;
    local.tm_mday = static_cast<int>(static_cast<unsigned>(date.day()));
    local.tm_hour = static_cast<int>(time.ofDay / hours(1));
    local.tm_min = static_cast<int>(time.ofDay / minutes(1) % 60);
    local.tm_sec = static_cast<int>(time.ofDay / std::chrono::seconds(1) % 60);
    local.tm_isdst = -1;
    return std::mktime(&local);
}

Phase PhaseAt(milliseconds ofDay)
{
    Phase phase = Phase::Closed;
    for (const Beginning& beginning : kTimetable) {
        if (beginning.at <= ofDay) {
            phase = beginning.phase;
        }
    }
    return phase;
}

milliseconds NextPhaseAt(milliseconds ofDay)
{
    for (const Beginning& beginning : kTimetable) {
        if (beginning.at > ofDay) {
            return beginning.at;
        }
    }
    return kDay;
}

std::string PhaseName(Phase phase)
{
    switch (phase) {
        case Phase::OpeningAuction:
            return "opening auction";
        case Phase::BeforeOpen:
            return "before open";
        case Phase::Continuous:
            return "continuous";
        case Phase::Break:
            return "break";
        case Phase::ClosingAuction:
            return "closing auction";
        case Phase::Closed:
            break;
    }
    return "closed";
}

std::string PhaseText(Phase phase, std::uint8_t market, bool suspended)
{
    const bool isSecondFamily = (market & 48) == 32;
    if (!isSecondFamily) {
        return {suspended ? 'P' : PhaseLetter(phase, false)};
    }
    return {PhaseLetter(phase, true), suspended ? '1' : '0'};
}

MarketClock::MarketClock(MarketTime start, double speed, Instant now)
    : m_base(start), m_since(now), m_speed(speed)
{
}

MarketTime MarketClock::At(Instant now) const
{
    const std::chrono::duration<double, std::milli> passed = (now - m_since) * m_speed;
    return Normal(m_base.day, m_base.ofDay + std::chrono::duration_cast<milliseconds>(passed));
}

void MarketClock::SetSpeed(double speed, Instant now)
{
    m_base = At(now);
    m_since = now;
    m_speed = speed;
}

void MarketClock::Step(milliseconds by, Instant now)
{
    const MarketTime time = At(now);
    MoveTo(Normal(time.day, time.ofDay + by), now);
}

void MarketClock::MoveTo(MarketTime time, Instant now)
{
    m_base = std::max(At(now), time);
    m_since = now;
}

}  // namespace panelry::desk
