#include "bridge/config_json.h"

#include <cstdio>
#include <filesystem>
#include <fstream>

namespace panelry
{

ConfigFile ReadConfigFile(const std::string& path)
{
    std::error_code error;
    // A stream opens a directory without complaint and fails only at the first read.
    if (!std::filesystem::is_regular_file(path, error)) {
        return {};
    }
    std::ifstream stream(path, std::ios::binary);
    if (!stream) {
        return {};
    }
    try {
        ConfigFile file;
        file.document = nlohmann::json::parse(stream);
        file.table = file.document.get<ConfigTable>();
        return file;
    } catch (const std::exception&) {
        // The exception ends the process, and its own text doesn't name the file.
        std::fprintf(stderr, "Malformed configuration file: %s\n", path.c_str());
        throw;
    }
}

}  // namespace panelry
