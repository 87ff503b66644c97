#pragma once

#include <atomic>
#include <cstdint>
#include <deque>
#include <string>
#include <utility>

#include "logger/log4z/log_file.h"
#include "logger/log4z/logger_defaults.h"

namespace log4z
{

/// One logger: its switches and the state of its file.
///
/// Threading: the texts belong to LogerManager::m_settingsLock. The switches are atomic because callers test
///   them while the worker changes them. From `file_time` on everything belongs to the worker.
struct LoggerSettings {
    std::string key;   ///< under which the logger was created
    std::string name;  ///< part of the file name
    std::string path = kUsualDirectory;
    std::atomic<std::int32_t> level{kUsualLevel};               ///< lowest that passes
    std::atomic<bool> display{kUsualDisplay};                   ///< also to the console
    std::atomic<bool> outfile{kUsualOutFile};                   ///< to a file
    std::atomic<bool> monthdir{kUsualMonthDir};                 ///< a directory a month
    std::atomic<std::int32_t> limitsize{kUsualLimitMegabytes};  ///< megabytes a file
    std::atomic<bool> enable{false};
    std::atomic<bool> fileline{kUsualFileLine};  ///< source file and line in each line
    std::atomic<std::int64_t> reserve{0};        ///< seconds that a file is kept; 0: no history

    std::int64_t file_time = 0;    ///< of the line that opened the file
    std::int64_t file_day = 0;     ///< midnight of that day, in seconds
    std::uint32_t file_index = 0;  ///< number in the file name
    std::uint32_t file_bytes = 0;  ///< size of the file; wraps as limits are compared in 32 bits
    panelry::logger::LogFile file;
    std::deque<std::pair<std::int64_t, std::string>> history;  ///< (opened at, path), oldest first
};

}  // namespace log4z
