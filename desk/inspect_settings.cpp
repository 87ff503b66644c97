#include "desk/inspect_settings.h"

#include <fstream>

#include "desk/strict_json.h"

namespace fs = std::filesystem;

namespace panelry::desk
{

namespace
{

constexpr const char* kFiles[] = {"sysconfig/config.json", "userconfig/config.json", "sysconfig/color.json"};

/// What keeps `document` from being a table of sections, keys and texts; empty: nothing.
std::vector<std::string> Complaints(const Json& document)
{
    if (!document.is_object()) {
        return {std::string("is of type ") + document.type_name() + "; must be an object of sections"};
    }
    std::vector<std::string> complaints;
    for (const auto& [section, keys] : document.items()) {
        if (!keys.is_object()) {
            complaints.push_back("section " + Quoted(section) + " is of type " + keys.type_name() +
                                 "; must be an object");
            continue;
        }
        for (const auto& [key, value] : keys.items()) {
            if (!value.is_string()) {
                // A value with members is told by its kind alone: it may be long, and deep.
                const std::string shown = value.is_structured() ? value.type_name() : value.dump();
                complaints.push_back("section " + Quoted(section) + ", key " + Quoted(key) + ": " + shown +
                                     " isn't a text; write it in quotes");
            }
        }
    }
    return complaints;
}

std::vector<std::string> Complaints(std::istream& input)
{
    try {
        return Complaints(Json::parse(input));
    } catch (const Json::exception& error) {
        return {Reason(error)};
    }
}

void InspectFile(const fs::path& hostDirectory, const char* name, std::vector<Finding>& findings)
{
    const fs::path path = hostDirectory / name;
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (!fs::exists(status)) {
        findings.push_back({name, "missing", "none is needed", false});
        return;
    }
    std::ifstream file;
    if (fs::is_regular_file(status)) {  // a pipe would hold up the reader
        file.open(path, std::ios::binary);
    }
    if (!file.is_open()) {
        findings.push_back({name, "missing", "is there, but can't be read as a file: not used", true});
        return;
    }
    const std::vector<std::string> complaints = Complaints(file);
    for (const std::string& complaint : complaints) {
        findings.push_back({name, "fatal", complaint, true});
    }
    if (complaints.empty()) {
        findings.push_back({name, "fine", "", false});
    }
}

}  // namespace

std::vector<Finding> InspectSettings(const fs::path& hostDirectory)
{
    std::vector<Finding> findings;
    for (const char* const name : kFiles) {
        InspectFile(hostDirectory, name, findings);
    }
    return findings;
}

}  // namespace panelry::desk
