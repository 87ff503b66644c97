#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "base/singleton.h"
#include "services/records.h"

/// The settings of the installation ("/sysconfig/config.json") and of the user ("/userconfig/config.json").
///
/// Ownership: a singleton that lives to the end of the process, so later application threads see what the
/// first
///   one read. The tables it exposes live as long.
/// Threading: made on the application thread, unchanged afterwards; reads from any thread.
/// Failures: a missing file counts as empty. A malformed one lets the parser's exception, or the type error
/// of
///   its conversion, out of the constructor; nobody catches it there, so the process ends.
class ConfigStore : public panelry::Singleton<ConfigStore>
{
public:
    /// Paths of the two files; null means the file's place under the current directory.
    explicit ConfigStore(const char* systemPath = nullptr, const char* userPath = nullptr);

    /// The user's value, unless it is absent or empty; else the system's; else empty.
    /// (ResourceManager::ReadConfig takes its arguments the other way round and lets an empty user value
    /// stand.)
    std::string Read(const std::string& key, const std::string& section) const;

    ConfigTable* SystemTable() { return &m_systemTable; }
    ConfigTable* UserTable() { return &m_userTable; }

private:
    std::string m_systemPath;
    std::string m_userPath;
    nlohmann::json m_systemDocument;
    nlohmann::json m_userDocument;
    ConfigTable m_userTable;
    ConfigTable m_systemTable;
};
