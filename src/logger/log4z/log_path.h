#pragma once

#include <cstdint>
#include <ctime>
#include <string>

namespace panelry::logger
{

/// The names that log files of this process are made of.
struct ProcessNames {
    std::string pid;   ///< six digits at least
    std::string name;  ///< the program's file name without its extension, "process" if it can't be found
    std::string path;  ///< of the program, empty if it can't be found

    static ProcessNames OfThisProcess();
};

/// "2026_11/"
std::string MonthDirectory(const std::tm& date);

/// "process_logger_202611222125_001234_000.log"
std::string LogFileName(const ProcessNames& process, const std::string& logger, const std::tm& date,
                        std::uint32_t index);

}  // namespace panelry::logger
