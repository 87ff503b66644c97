#pragma once

#include <cstddef>
#include <cstdint>

namespace log4z
{

inline constexpr int LOGGER_MAX = 20;                  ///< logger ids are 0 to 19
inline constexpr std::size_t kContentBytes = 8192;     ///< longest line, line end and NUL included
inline constexpr std::size_t kFreeRecords = 200;       ///< records kept for reuse
inline constexpr std::size_t kSoftQueueLimit = 20000;  ///< records; above it callers are slowed down

/// The levels of lines, lowest first.
enum Level : std::int32_t { Trace, Debug, Info, Warn, Error, Alarm, Fatal };

/// One line on its way from a caller to the queue, or one change of settings (`kind` not 0).
///
/// Left uninitialised by `new`: a line of a hundred bytes must not touch all of `content`.
struct LogRecord {
    std::int32_t id;          ///< logger
    std::int32_t kind;        ///< 0: a line; otherwise a Command
    std::int32_t value;       ///< number argument of a command
    std::int32_t level;       ///< of the line
    std::int64_t time;        ///< seconds since 1970
    std::uint32_t millis;     ///< 0 to 999
    std::uint32_t thread_id;  ///< the kernel's id of the thread that made the record
    std::int32_t length;      ///< bytes used in `content`
    char content[kContentBytes];
};
static_assert(offsetof(LogRecord, content) == 36, "field order is binary contract");

/// What a record of a changed setting does; the numbers are binary contract.
enum Command : std::int32_t {
    kNoCommand,
    kEnable,
    kName,
    kPath,
    kLevel,
    kFileLine,
    kDisplay,
    kOutFile,
    kLimitSize,
    kMonthDir,
    kReserve,
};

}  // namespace log4z
