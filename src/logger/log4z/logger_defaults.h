#pragma once

#include <cstdint>

#include "logger/log4z/log_record.h"

namespace log4z
{

/// What a logger starts with, whether a text names it or not.
inline constexpr char kUsualDirectory[] = "./data/log/";  ///< also the one that is cleared of old files
inline constexpr std::int32_t kUsualLevel = Debug;
inline constexpr std::int32_t kUsualLimitMegabytes = 10;
inline constexpr bool kUsualDisplay = true;
inline constexpr bool kUsualOutFile = true;
inline constexpr bool kUsualMonthDir = false;
inline constexpr bool kUsualFileLine = true;

}  // namespace log4z
