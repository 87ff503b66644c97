#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "services/records.h"

/// The shape that all configuration files share: an object of sections, each an object of string values.
namespace panelry
{

struct ConfigFile {
    nlohmann::json document;  ///< null when the file couldn't be opened
    ConfigTable table;        ///< empty then
};

/// Reads one configuration file. What isn't a regular file, or can't be opened, counts as missing. A
/// malformed file throws the parser's exception after one line on standard error that names the file.
ConfigFile ReadConfigFile(const std::string& path);

}  // namespace panelry
