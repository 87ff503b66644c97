#include "bridge/config_store.h"

#include <QDir>
#include <QFile>

#include "bridge/config_json.h"

namespace
{

std::string PathOf(const char* given, const char* fixedText)
{
    if (given) {
        return given;
    }
    return QFile::encodeName(QDir::toNativeSeparators(QDir::currentPath())).toStdString() + fixedText;
}

std::string Lookup(const nlohmann::json& document, const std::string& section, const std::string& key)
{
    if (!document.is_object() || !document.contains(section) || !document[section].contains(key)) {
        return {};
    }
    return document[section][key].get<std::string>();
}

}  // namespace

ConfigStore::ConfigStore(const char* systemPath, const char* userPath)
    : m_systemPath(PathOf(systemPath, "/sysconfig/config.json")),
      m_userPath(PathOf(userPath, "/userconfig/config.json"))
{
    panelry::ConfigFile system = panelry::ReadConfigFile(m_systemPath);
    m_systemDocument = std::move(system.document);
    m_systemTable = std::move(system.table);
    panelry::ConfigFile user = panelry::ReadConfigFile(m_userPath);
    m_userDocument = std::move(user.document);
    m_userTable = std::move(user.table);
}

std::string ConfigStore::Read(const std::string& key, const std::string& section) const
{
    std::string value = Lookup(m_userDocument, section, key);
    if (value.empty()) {
        value = Lookup(m_systemDocument, section, key);
    }
    return value;
}
