#pragma once

#include <cstdint>
#include <ctime>

namespace panelry::logger
{

inline constexpr std::int64_t kLastSecondOfDay = 86399;

/// A moment's local date and time, with the midnight it belongs to.
struct LocalDay {
    explicit LocalDay(std::int64_t secondsSince1970)
    {
        const std::time_t moment = secondsSince1970;
        localtime_r(&moment, &date);
        // Counted back from the clock's reading. Behind a time shift this is an hour off the true midnight,
        // and by that just a day ahead of the next one. Ahead of the shift it is the true midnight, and the
        // day seems to end an hour late (spring) or early (autumn).
        // NOLINTNEXTLINE(cppcoreguidelines-prefer-member-initializer): it comes out of date
        midnight = secondsSince1970 - (date.tm_hour * 60 + date.tm_min) * 60 - date.tm_sec;
    }

    std::tm date = {};
    std::int64_t midnight;  ///< seconds since 1970
};

/// Whether a moment lies in the day that starts at `midnight`.
inline bool IsInDay(std::int64_t secondsSince1970, std::int64_t midnight)
{
    return secondsSince1970 >= midnight && secondsSince1970 <= midnight + kLastSecondOfDay;
}

}  // namespace panelry::logger
