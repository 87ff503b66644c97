#pragma once

#include <QLibrary>
#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "base/singleton.h"
#include "hosting/module_manager_spi.h"
#include "services/module_info.h"
#include "services/records.h"

class PluginManagerSpi;

/// Finds the module libraries, makes module objects, remembers which one stands where, and routes the
/// messages between them.
///
/// Ownership: a singleton, made and destroyed by the application thread. Shares ownership of every module it
///   made; a raw ModuleBase* is good until RemoveModule() or UnloadAll(). Libraries are never unloaded.
/// Threading: application thread only; no locks.
/// Failures: a file that won't load or lacks an export is skipped silently; errors of the file system leave
///   LoadModules() as std::filesystem::filesystem_error. An exception out of a module goes through.
class PluginManager : public ModuleManagerSpi,
                      public panelry::Singleton<PluginManager, panelry::AtExit::LeaveIfRunning>
{
public:
    /// What ties modules together: the frame they stand in, a number that is never used twice; 0 for modules
    /// without a frame.
    using LinkKey = std::uintptr_t;
    using GroupId = std::uint32_t;

    PluginManager() = default;

    // ModuleManagerSpi: these three and the destructor open the operation table, in this order.
    void SendModuleMessage(int msgId, void* payload, ModuleBase* sender, int targetModuleId) override;
    std::shared_ptr<ModuleBase> CreateSubModule(int moduleId, ModuleBase* parent) override;
    void WriteModuleLog(int level, const char* text) override;
    virtual ~PluginManager();

    /// Loads the module libraries of "<current directory>/adsplugins", in the order in which the directory
    /// lists them. The first library keeps a module id. True, always: no directory means no modules.
    bool LoadModules();

    /// Makes a module of kind `moduleId` and files it under (`linkKey`, `groupId`). The first module of a
    /// group finds the group's stock empty. `text` is ignored. Null for an id that no library offers.
    ModuleBase* CreateLinkedModule(int moduleId, GroupId groupId, LinkKey linkKey, std::string text);

    /// Sends 102 with the group's "stockcode", "market" and "stockname" to `module` alone.
    void SendCurrentStock(GroupId groupId, LinkKey linkKey, ModuleBase* module);

    /// Takes `module` and its sub-modules, theirs included, out of all tables and lets go of them. The last
    /// module of a group takes the group's stock with it. Sub-modules go even if `module` itself isn't filed.
    /// Called from inside a call to host or module, it leaves their destruction to DestroyLeaving(), or to the
    /// event loop: they may be on the stack.
    void RemoveModule(GroupId groupId, LinkKey linkKey, ModuleBase* module);
    /// Destroys the modules that were removed in the middle of a call, if none is in progress any more.
    void DestroyLeaving();

    /// Drops the empty groups and the stocks of a key that won't come back: its frame is gone.
    void ForgetLink(LinkKey linkKey);

    /// Lets go of all modules, and clears the hot key registrations. Libraries, what they offer, and the groups'
    /// stocks stay.
    void UnloadAll();

    /// Shares ownership of a filed module; empty for any other pointer. For callers that must keep a module
    /// alive over a call into it.
    std::shared_ptr<ModuleBase> Hold(ModuleBase* module) const;

    // The roads of a message. SendModuleMessage() chooses; the results say whether a road was open.

    /// With a key: to the group's modules but the sender, each followed by its sub-modules; 102 is merged
    /// into the group's stock first. Without: to all modules and then all sub-modules but the sender.
    /// Returns 1.
    int RouteToLinks(int msgId, void* payload, ModuleBase* sender, GroupId group, LinkKey key);
    /// To every module whose `module_id` is `targetModuleId`, but the sender. Returns 1; -1 for target -1.
    int RouteToModuleId(int msgId, void* payload, ModuleBase* sender, GroupId group, int targetModuleId);
    /// To all modules of the key whose group numbers lie below the count of its groups, sub-modules included,
    /// nobody excepted. Returns 1; -1 for key 0.
    int RouteToKey(int msgId, void* payload, LinkKey key);

    /// Sets each pair of `payload` in the group's stock; keys that came before stay.
    void MergeLinkState(GroupId groupId, LinkKey linkKey, const StringMap& payload);

    /// The container layer; null until it has set itself, and again once it is gone.
    PluginManagerSpi* m_spi = nullptr;

private:
    // Ordered by the raw pointer: that is the order of delivery.
    struct ByPointer {
        using is_transparent = void;
        static ModuleBase* Raw(ModuleBase* module) { return module; }
        static ModuleBase* Raw(const std::shared_ptr<ModuleBase>& module) { return module.get(); }
        template <class A, class B>
        bool operator()(const A& a, const B& b) const
        {
            return std::less<ModuleBase*>{}(Raw(a), Raw(b));
        }
    };
    using ModuleSet = std::set<std::shared_ptr<ModuleBase>, ByPointer>;
    using Placement = std::pair<LinkKey, GroupId>;

    // A road as it was when the tables last changed. Holding one keeps its modules alive.
    using Receivers = std::vector<std::shared_ptr<ModuleBase>>;
    struct LinkedReceiver {
        std::shared_ptr<ModuleBase> module;
        Receivers subModules;
    };
    using LinkedReceivers = std::vector<LinkedReceiver>;
    struct SubModuleReceivers {
        ModuleBase* parent;
        Receivers subModules;
    };
    struct Broadcast {
        Receivers linked;
        std::vector<SubModuleReceivers> subModules;
    };
    template <class T>
    using Snapshot = std::shared_ptr<const T>;

    void LoadLibrary(const std::string& path);
    std::shared_ptr<ModuleBase> MakeModule(int moduleId, GroupId groupId);
    const ModuleSet* FindGroup(LinkKey key, GroupId group) const;
    std::shared_ptr<ModuleBase> TakeOutLinked(GroupId groupId, LinkKey linkKey, ModuleBase* module);
    void RemoveSubModules(ModuleBase* parent, std::vector<ModuleSet>& released);
    void LetGo(std::shared_ptr<ModuleBase> module);
    static void DestroyLeavingLater(int milliseconds);
    void TablesChanged();

    bool ServedBySystem(int msgId, void* payload, ModuleBase* sender);
    void RouteToGroup(int msgId, void* payload, ModuleBase* sender, Placement group);
    void RouteToAll(int msgId, void* payload, ModuleBase* sender);
    Receivers SubModulesOf(ModuleBase* parent) const;
    Snapshot<LinkedReceivers> GroupSnapshot(Placement group);
    Snapshot<Broadcast> BroadcastSnapshot();

    std::map<std::uint32_t, std::shared_ptr<QLibrary>> m_libraries;
    std::map<std::uint32_t, ModuleInfo> m_moduleInfos;
    std::map<LinkKey, std::map<GroupId, ModuleSet>> m_links;
    std::map<ModuleBase*, ModuleSet> m_subModules;
    std::map<LinkKey, std::map<GroupId, StringMap>> m_linkStates;
    std::map<ModuleBase*, Placement> m_placements;

    std::vector<std::shared_ptr<ModuleBase>> m_leaving;  // removed while they may have been on the stack

    // Dropped whenever a module comes or goes; kept from one message to the next until then.
    std::uint64_t m_tablesVersion = 0;
    std::map<Placement, Snapshot<LinkedReceivers>> m_groupSnapshots;
    Snapshot<Broadcast> m_broadcastSnapshot;
};
