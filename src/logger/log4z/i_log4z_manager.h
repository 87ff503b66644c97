#pragma once

#include <cstdint>

#include "logger/log4z/log_record.h"

namespace log4z
{

/// The logger manager as callers see it: up to twenty named loggers, lines queued by any thread, one worker
/// that writes them.
///
/// Order of operations is binary contract; append nothing, reorder nothing.
/// Threading: every operation may be called on any thread.
/// Failures: an operation with an id returns false, or the value stated, for an id that no logger has.
class ILog4zManager
{
public:
    virtual ~ILog4zManager() = default;

    /// Loads the configuration file and remembers its name; one file a process, a second call is refused even
    /// when the first one failed. False then, and when the file can't be read; both are told on standard
    /// output.
    virtual bool Config(const char* file) = 0;
    /// Applies a configuration text; a text with the byte sum of the last one counts as unchanged.
    virtual bool ConfigFromText(const char* text) = 0;
    /// The id of the logger with this key, blanks at both ends cut; made and enabled when there is none.
    /// -1 for null, and when all ids are in use.
    virtual int CreateLogger(const char* key) = 0;
    /// Starts the worker and waits for it, 3 seconds at most. False when it runs already or isn't up in time
    /// (it is left to come up). Throws std::system_error when no thread can be made.
    virtual bool Start() = 0;
    /// Clears old logs, then ends the worker behind everything that is queued. The end of the worker disables
    /// all loggers. False when nothing runs. Errors of the file system leave as
    /// std::filesystem::filesystem_error, and the worker then still runs.
    virtual bool Stop() = 0;
    /// The id of the logger with exactly this key, or -1.
    virtual int FindLogger(const char* key) = 0;
    /// Whether a line would pass now. Slows the caller down (sleeps) while the backlog is above the soft
    /// limit.
    virtual bool CanPush(int id, int level) = 0;
    /// Ends the line, cuts it where it is too long, and queues it. Takes the record over in any case.
    /// False when it was filtered.
    virtual bool PushLine(LogRecord* record, const char* file, int line) = 0;

    // Settings. While the worker runs they take effect in order with the lines around them, but for switching
    // on and lowering a level, which act at once. A text is 8191 bytes at most, otherwise false.
    virtual bool SetEnabled(int id, bool enabled) = 0;
    virtual bool SetName(int id, const char* name) = 0;  ///< empty or null is refused
    virtual bool SetPath(int id, const char* path) = 0;  ///< refused alike; ends in "/" afterwards
    virtual bool SetLevel(int id, int level) = 0;
    virtual int GetLevel(int id) = 0;  ///< 6 for an unknown id
    virtual bool SetFileLine(int id, bool on) = 0;
    virtual bool SetDisplay(int id, bool on) = 0;
    virtual bool SetOutFile(int id, bool on) = 0;
    virtual bool SetLimitSize(int id, int megabytes) = 0;  ///< 0: no practical limit
    virtual bool SetMonthDir(int id, bool on) = 0;
    virtual bool SetReserve(int id, std::int32_t seconds) = 0;  ///< a negative value becomes 0

    /// Seconds between two looks at the configuration file while running; 0 switches that off.
    virtual bool SetRereadInterval(std::uint32_t seconds) = 0;
    /// Reads the configuration file again; it can't add loggers then. False without a file that can be read.
    virtual bool RereadConfig() = 0;
    virtual bool IsEnabled(int id) = 0;

    virtual std::uint64_t WriteCount() = 0;  ///< writes to files
    virtual std::uint64_t WriteBytes() = 0;
    virtual std::uint64_t PushCount() = 0;  ///< lines and commands queued
    virtual std::uint64_t PopCount() = 0;   ///< lines that the worker took
    virtual std::uint32_t ActiveLoggers() = 0;

    /// A record with the head of the line written; the caller appends its text behind `length`. The manager
    /// gets it back by PushLine or FreeRecord. Null when there is no memory.
    virtual LogRecord* MakeRecord(int id, int level, const char* file, int line) = 0;
    virtual void FreeRecord(LogRecord* record) = 0;

    /// Leaves the `maxFiles` newest files in "./data/log/". Errors of the file system leave as
    /// std::filesystem::filesystem_error.
    virtual void ClearOldLogs(std::uint32_t maxFiles, std::int64_t maxAgeSeconds) = 0;
};

}  // namespace log4z
