#include "hosting/plugin_manager.h"

#include <QCoreApplication>
#include <QTimer>
#include <algorithm>
#include <filesystem>
#include <system_error>
#include <utility>

#include "hosting/dispatch_scope.h"
#include "hosting/module_library.h"
#include "input/hook_manager.h"
#include "services/module_base.h"

namespace fs = std::filesystem;

namespace
{

constexpr char kPluginDirectory[] = "/adsplugins";
constexpr char kLibraryExtension[] = ".so";

// Thrown with operation names of our own: those of the standard library differ from one to the next.
void ThrowOn(const std::error_code& error, const char* operation, const fs::path& path = {})
{
    if (error) {
        throw fs::filesystem_error(operation, path, error);
    }
}

fs::path CurrentDirectory()
{
    std::error_code error;
    fs::path path = fs::current_path(error);
    ThrowOn(error, "current_path()");
    return path;
}

bool Exists(const fs::path& path)
{
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (!fs::status_known(status)) {
        ThrowOn(error, "exists", path);
    }
    return fs::exists(status);
}

bool IsDirectory(const fs::directory_entry& entry)
{
    std::error_code error;
    const fs::file_status status = entry.status(error);
    if (status.type() != fs::file_type::not_found) {
        ThrowOn(error, "status", entry.path());
    }
    return fs::is_directory(status);
}

// The hook thread may be calling a module that is registered for events: this waits for its return.
void EndHotKeysOf(ModuleBase* module)
{
    if (HookManager* const hook = HookManager::Instance(false)) {
        hook->ForgetModule(module);
    }
}

// Whoever held it last, and whatever it registered after it was removed.
void DeleteModule(ModuleBase* module)
{
    EndHotKeysOf(module);
    delete module;
}

}  // namespace

PluginManager::~PluginManager()
{
    UnloadAll();
    HookManager::Destroy();
}

bool PluginManager::LoadModules()
{
    const fs::path directory = CurrentDirectory().string() + kPluginDirectory;
    if (!Exists(directory)) {
        return true;
    }
    constexpr char kIterator[] = "directory_iterator::directory_iterator";
    std::error_code error;
    fs::directory_iterator entry(directory, error);
    ThrowOn(error, kIterator, directory);
    while (entry != fs::directory_iterator()) {
        if (!IsDirectory(*entry) && entry->path().extension() == kLibraryExtension) {
            LoadLibrary(entry->path().string());
        }
        entry.increment(error);
        ThrowOn(error, kIterator, directory);
    }
    return true;
}

void PluginManager::LoadLibrary(const std::string& path)
{
    const auto library = std::make_shared<QLibrary>(QString::fromLocal8Bit(path.c_str()));
    // What isn't a module library is skipped silently: see the class comment.
    if (!library->load() || !library->resolve("CreateModule")) {
        return;
    }
    const auto getModuleInfo =
        reinterpret_cast<panelry::GetModuleInfoFunction>(library->resolve("GetModuleInfo"));
    if (!getModuleInfo) {
        return;
    }
    const std::vector<ModuleInfo>* const offered = getModuleInfo();
    if (!offered) {
        return;
    }
    for (const ModuleInfo& info : *offered) {
        // An id that is there already stays with the library that was found first.
        m_moduleInfos.emplace(info.module_id, info);
        m_libraries.emplace(info.module_id, library);
    }
}

ModuleBase* PluginManager::CreateLinkedModule(int moduleId, GroupId groupId, LinkKey linkKey,
                                              std::string /*text*/)
{
    const std::shared_ptr<ModuleBase> module = MakeModule(moduleId, groupId);
    if (!module) {
        return nullptr;
    }
    ModuleSet& group = m_links[linkKey][groupId];
    group.insert(module);
    m_placements[module.get()] = {linkKey, groupId};
    if (group.size() == 1) {
        m_linkStates[linkKey][groupId].clear();
    }
    TablesChanged();
    return module.get();
}

std::shared_ptr<ModuleBase> PluginManager::CreateSubModule(int moduleId, ModuleBase* parent)
{
    if (!m_libraries.contains(static_cast<std::uint32_t>(moduleId))) {
        return nullptr;
    }
    // A parent that isn't filed is filed here, without a frame.
    const Placement placement = m_placements[parent];
    std::shared_ptr<ModuleBase> module = MakeModule(moduleId, placement.second);
    if (module) {
        m_subModules[parent].insert(module);
        m_placements[module.get()] = placement;
    }
    TablesChanged();
    return module;
}

std::shared_ptr<ModuleBase> PluginManager::MakeModule(int moduleId, GroupId groupId)
{
    const auto id = static_cast<std::uint32_t>(moduleId);
    const auto entry = m_libraries.find(id);
    if (entry == m_libraries.end()) {
        return nullptr;
    }
    const std::shared_ptr<QLibrary> library = entry->second;  // a copy: the module may come back to us

    InstanceInfo info;
    static_cast<ModuleInfo&>(info) = m_moduleInfos[id];
    info.group_id = groupId;
    const auto createModule =
        reinterpret_cast<panelry::CreateModuleFunction>(library->resolve("CreateModule"));
    ModuleBase* const module = createModule(&info);
    if (!module) {
        return nullptr;
    }
    module->m_manager = this;
    return std::shared_ptr<ModuleBase>(module, &DeleteModule);
}

void PluginManager::RemoveModule(GroupId groupId, LinkKey linkKey, ModuleBase* module)
{
    LetGo(TakeOutLinked(groupId, linkKey, module));
    if (!Hold(module)) {
        m_placements.erase(module);  // of a parent that was never filed itself
    }
    std::vector<ModuleSet> released;
    RemoveSubModules(module, released);
    TablesChanged();
    for (const ModuleSet& subModules : released) {
        for (const std::shared_ptr<ModuleBase>& subModule : subModules) {
            LetGo(subModule);
        }
    }
}

// Destroyed here, unless somebody holds it or it may still be on the stack.
void PluginManager::LetGo(std::shared_ptr<ModuleBase> module)
{
    if (!module || !panelry::DispatchScope::Busy()) {
        return;
    }
    if (m_leaving.empty()) {
        DestroyLeavingLater(0);
    }
    m_leaving.push_back(std::move(module));
}

void PluginManager::DestroyLeaving()
{
    if (!panelry::DispatchScope::Busy()) {
        std::exchange(m_leaving, {}).clear();
    }
}

void PluginManager::DestroyLeavingLater(int milliseconds)
{
    QTimer::singleShot(milliseconds, QCoreApplication::instance(), [] {
        PluginManager* const manager = Instance(false);
        if (!manager) {
            return;
        }
        manager->DestroyLeaving();
        if (!manager->m_leaving.empty()) {
            DestroyLeavingLater(panelry::DispatchScope::kRetryMs);
        }
    });
}

void PluginManager::ForgetLink(LinkKey linkKey)
{
    if (const auto groups = m_links.find(linkKey); groups != m_links.end()) {
        const auto isEmpty = [](const auto& group) { return group.second.empty(); };
        if (!std::all_of(groups->second.begin(), groups->second.end(), isEmpty)) {
            return;  // somebody else has filed modules under it
        }
        m_links.erase(groups);
    }
    m_linkStates.erase(linkKey);
    TablesChanged();
}

// Out of the tables first, then destroyed by the caller: its destructor may send.
std::shared_ptr<ModuleBase> PluginManager::TakeOutLinked(GroupId groupId, LinkKey linkKey, ModuleBase* module)
{
    const auto key = m_links.find(linkKey);
    if (key == m_links.end()) {
        return nullptr;
    }
    const auto group = key->second.find(groupId);
    if (group == key->second.end()) {
        return nullptr;
    }
    const auto entry = group->second.find(module);
    if (entry == group->second.end()) {
        return nullptr;
    }
    std::shared_ptr<ModuleBase> taken = *entry;
    EndHotKeysOf(module);
    m_placements.erase(module);
    group->second.erase(entry);
    if (group->second.empty()) {
        m_linkStates[linkKey][groupId].clear();
    }
    TablesChanged();
    return taken;
}

// Sub-modules of sub-modules go too: left behind, they would stand under the address of a dead parent.
void PluginManager::RemoveSubModules(ModuleBase* parent, std::vector<ModuleSet>& released)
{
    const auto entry = m_subModules.find(parent);
    if (entry == m_subModules.end()) {
        return;
    }
    const ModuleSet subModules = std::move(entry->second);
    m_subModules.erase(entry);
    released.push_back(subModules);
    for (const std::shared_ptr<ModuleBase>& subModule : subModules) {
        EndHotKeysOf(subModule.get());
        m_placements.erase(subModule.get());
        RemoveSubModules(subModule.get(), released);
    }
}

void PluginManager::UnloadAll()
{
    // Swapped out first: destructors that send find empty tables, not tables in mid-clear.
    auto links = std::exchange(m_links, {});
    auto subModules = std::exchange(m_subModules, {});
    auto leaving = std::exchange(m_leaving, {});
    m_placements.clear();
    TablesChanged();
    leaving.clear();
    links.clear();
    subModules.clear();
    if (HookManager* const hook = HookManager::Instance(false)) {
        hook->ClearRegistrations();
    }
}

std::shared_ptr<ModuleBase> PluginManager::Hold(ModuleBase* module) const
{
    const auto placement = m_placements.find(module);
    if (placement == m_placements.end()) {
        return nullptr;
    }
    if (const ModuleSet* group = FindGroup(placement->second.first, placement->second.second)) {
        if (const auto entry = group->find(module); entry != group->end()) {
            return *entry;
        }
    }
    for (const auto& [parent, subModules] : m_subModules) {
        if (const auto entry = subModules.find(module); entry != subModules.end()) {
            return *entry;
        }
    }
    return nullptr;
}

const PluginManager::ModuleSet* PluginManager::FindGroup(LinkKey key, GroupId group) const
{
    const auto groups = m_links.find(key);
    if (groups == m_links.end()) {
        return nullptr;
    }
    const auto modules = groups->second.find(group);
    return modules == groups->second.end() ? nullptr : &modules->second;
}

void PluginManager::TablesChanged()
{
    ++m_tablesVersion;
    // The callers still hold what they took out, so no module dies in here.
    m_groupSnapshots.clear();
    m_broadcastSnapshot.reset();
}
