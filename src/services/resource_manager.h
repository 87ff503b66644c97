#pragma once

#include <string>

#include "base/singleton.h"
#include "services/records.h"

/// The settings as the code of one library sees them: panelry has one, and so has every module library.
///
/// Ownership: a singleton that dies at process exit. The tables belong to whoever set them and live as long.
/// Threading: the tables are set on the application thread before anything reads; reads from any thread.
/// Failures: a read that finds nothing yields the empty string.
class ResourceManager : public panelry::Singleton<ResourceManager>
{
public:
    virtual ~ResourceManager() = default;

    /// The user's value where the user's table has the key, an empty value included; else the system's; else
    /// empty. So a user can blank a setting. (ConfigStore::Read, with its arguments the other way round, lets
    /// an empty user value fall through.)
    std::string ReadConfig(const std::string& section, const std::string& key) const;

    /// The first table that isn't null stays; later ones and null are ignored.
    void SetColorTable(const ConfigTable* table);
    /// The same rule for each of the two by itself.
    void SetConfigTables(const ConfigTable* systemTable, const ConfigTable* userTable);

    /// The installation's colours, null until set.
    const ConfigTable* ColorTable() const { return m_colorTable; }

private:
    const ConfigTable* m_colorTable = nullptr;
    const ConfigTable* m_systemTable = nullptr;
    const ConfigTable* m_userTable = nullptr;
};
