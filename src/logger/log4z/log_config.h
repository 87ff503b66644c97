#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>

#include "logger/log4z/logger_defaults.h"

namespace panelry::logger
{

/// What a configuration text says about one logger; a key that it leaves out has the value here.
struct LoggerConfig {
    std::string name;  ///< the text's own, or the logger's key
    std::string path = log4z::kUsualDirectory;
    std::int32_t level = log4z::kUsualLevel;
    std::int32_t limitsize = log4z::kUsualLimitMegabytes;
    bool display = log4z::kUsualDisplay;
    bool outfile = log4z::kUsualOutFile;
    bool monthdir = log4z::kUsualMonthDir;
    bool fileline = log4z::kUsualFileLine;
    bool enable = true;  ///< as the text names it
};

using LogConfig = std::map<std::string, LoggerConfig>;  ///< by the logger's key

/// Reads a configuration text: sections "[key]" with lines "key = value" below. "[main]" in any case is
/// "Main". Nothing is an error: what can't be understood is skipped. A setting above the first section and a
/// second section with the same key (it is skipped with its settings) are told to `warn`, line end included.
LogConfig ParseLogConfig(std::string_view text, const std::function<void(const std::string&)>& warn);

}  // namespace panelry::logger
