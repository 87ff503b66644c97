#include "logger/log4z/log_path.h"

#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <system_error>

namespace panelry::logger
{

namespace
{

template <class... Numbers>
std::string Formatted(const char* format, Numbers... numbers)
{
    char text[96];
    std::snprintf(text, sizeof text, format, numbers...);
    return text;
}

}  // namespace

ProcessNames ProcessNames::OfThisProcess()
{
    ProcessNames names;
    names.pid = Formatted("%06u", static_cast<unsigned>(::getpid()));
    std::error_code error;
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", error);
    names.path = program.string();
    names.name = program.stem().string();
    if (names.name.empty()) {
        names.name = "process";
    }
    return names;
}

std::string MonthDirectory(const std::tm& date)
{
    return Formatted("%04d_%02d/", date.tm_year + 1900, date.tm_mon + 1);
}

std::string LogFileName(const ProcessNames& process, const std::string& logger, const std::tm& date,
                        std::uint32_t index)
{
    const std::string minute = Formatted("%04d%02d%02d%02d%02d", date.tm_year + 1900, date.tm_mon + 1,
                                         date.tm_mday, date.tm_hour, date.tm_min);
    return process.name + "_" + logger + "_" + minute + "_" + process.pid + "_" + Formatted("%03u", index) +
           ".log";
}

}  // namespace panelry::logger
