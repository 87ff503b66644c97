#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>

namespace panelry::logger
{

/// What a configuration text says about one logger; a key that it leaves out has the value here.
struct LoggerConfig {
    std::string name;  ///< the text's own, or the logger's key
    std::string path = "./data/log/";
    std::int32_t level = 1;
    std::int32_t limitsize = 10;  ///< megabytes
    bool display = true;
    bool outfile = true;
    bool monthdir = false;
    bool fileline = true;
    bool enable = true;
};

using LogConfig = std::map<std::string, LoggerConfig>;  ///< by the logger's key

/// Reads a configuration text: sections "[key]" with lines "key = value" below. "[main]" in any case is
/// "Main". Nothing is an error: what can't be understood is skipped. A setting above the first section and a
/// second section with the same key (it is skipped with its settings) are told to `warn`, line end included.
LogConfig ParseLogConfig(std::string_view text, const std::function<void(const std::string&)>& warn);

}  // namespace panelry::logger
