#include "services/resource_manager.h"

namespace
{

const std::string* Find(const ConfigTable* table, const std::string& section, const std::string& key)
{
    if (!table) {
        return nullptr;
    }
    const auto keys = table->find(section);
    if (keys == table->end()) {
        return nullptr;
    }
    const auto value = keys->second.find(key);
    return value == keys->second.end() ? nullptr : &value->second;
}

void KeepFirst(const ConfigTable*& kept, const ConfigTable* offered)
{
    if (!kept) {
        kept = offered;
    }
}

}  // namespace

std::string ResourceManager::ReadConfig(const std::string& section, const std::string& key) const
{
    for (const ConfigTable* table : {m_userTable, m_systemTable}) {
        if (const std::string* value = Find(table, section, key)) {
            return *value;
        }
    }
    return {};
}

void ResourceManager::SetColorTable(const ConfigTable* table)
{
    KeepFirst(m_colorTable, table);
}

void ResourceManager::SetConfigTables(const ConfigTable* systemTable, const ConfigTable* userTable)
{
    KeepFirst(m_systemTable, systemTable);
    KeepFirst(m_userTable, userTable);
}
