// The other half of PluginManager: the roads of a message.
//
// A receiver may send, make modules and remove them. So every road is walked over a snapshot, which keeps its
// modules alive; once the tables have changed, each next receiver is looked up before it is called.

#include "hosting/dispatch_scope.h"
#include "hosting/message_ids.h"
#include "hosting/plugin_manager.h"
#include "hosting/plugin_manager_spi.h"
#include "input/hook_manager.h"
#include "logger/deployment.h"
#include "services/module_base.h"
#include "watchlist/watchlist_manager.h"

void PluginManager::SendModuleMessage(int msgId, void* payload, ModuleBase* sender, int targetModuleId)
{
    const panelry::DispatchScope scope;            // the sender may be in the middle of an event of its own
    const auto entry = m_placements.find(sender);  // not []: a stranger must not be filed
    const Placement placement = entry == m_placements.end() ? Placement{} : entry->second;
    if (ServedBySystem(msgId, payload, sender)) {
        return;
    }
    if (targetModuleId == panelry::kAlongLink) {
        RouteToLinks(msgId, payload, sender, placement.second, placement.first);
    } else {
        RouteToModuleId(msgId, payload, sender, placement.second, targetModuleId);
    }
}

// Serves what is for the library or the host. True for the ids that end here; without a container layer its ids are dropped.
bool PluginManager::ServedBySystem(int msgId, void* payload, ModuleBase* sender)
{
    using namespace panelry;
    switch (msgId) {
        case kRegisterHotKey:
            if (HookManager* const hook = HookManager::Instance(false)) {
                hook->RegisterModule(sender, static_cast<const char*>(payload));
            }
            return true;
        case kUnregisterHotKey:
            if (HookManager* const hook = HookManager::Instance(false)) {
                hook->UnregisterModule(sender, static_cast<const char*>(payload));
            }
            return true;
        case kWatchlistRequest:
            if (payload) {
                WatchlistManager::Instance(true)->OnMessage(msgId, payload);
            }
            return true;
        case kStockSelected:
            // First of all receivers, and it may add keys to the payload, which the others then see.
            WatchlistManager::Instance(true)->OnMessage(msgId, payload);
            return false;
        case kLinkedAsStock:
            if (m_spi) {
                m_spi->HandleLinkedMessage(payload, kStockSelected);  // under that number, not its own
            }
            return true;
        case kContainer201:
            if (m_spi) {
                m_spi->HandleMessage201(payload);
            }
            return true;
        case kContainer202:
            if (m_spi) {
                m_spi->HandleMessage202(payload);
            }
            return true;
        case kContainer203:
            if (m_spi) {
                m_spi->HandleMessage203(payload);
            }
            return true;
        case kToHost205:
        case kToHost206:
            if (m_spi) {
                m_spi->ForwardToHost(msgId, payload);
            }
            return true;
        case kLinked207:
            if (m_spi) {
                m_spi->HandleLinkedMessage(payload, kLinked207);
            }
            return true;
        default:
            return false;
    }
}

int PluginManager::RouteToLinks(int msgId, void* payload, ModuleBase* sender, GroupId group, LinkKey key)
{
    if (key == 0) {
        RouteToAll(msgId, payload, sender);
        return 1;
    }
    if (msgId == panelry::kStockSelected && payload) {
        MergeLinkState(group, key, *static_cast<const StringMap*>(payload));
    }
    RouteToGroup(msgId, payload, sender, {key, group});
    return 1;
}

void PluginManager::RouteToGroup(int msgId, void* payload, ModuleBase* sender, Placement group)
{
    const Snapshot<LinkedReceivers> receivers = GroupSnapshot(group);
    const std::uint64_t version = m_tablesVersion;
    const auto stillFiled = [this, version](const std::shared_ptr<ModuleBase>& module) {
        return version == m_tablesVersion || m_placements.contains(module.get());
    };
    for (const LinkedReceiver& receiver : *receivers) {
        if (receiver.module.get() == sender || !stillFiled(receiver.module)) {
            continue;
        }
        receiver.module->OnMessage(msgId, payload);
        // A sub-module that was made just now hears the message too; the sender isn't excepted here.
        const bool unchanged = version == m_tablesVersion;
        const Receivers current = unchanged ? Receivers{} : SubModulesOf(receiver.module.get());
        for (const std::shared_ptr<ModuleBase>& subModule : unchanged ? receiver.subModules : current) {
            if (stillFiled(subModule)) {
                subModule->OnMessage(msgId, payload);
            }
        }
    }
}

void PluginManager::RouteToAll(int msgId, void* payload, ModuleBase* sender)
{
    const Snapshot<Broadcast> first = BroadcastSnapshot();
    for (const std::shared_ptr<ModuleBase>& module : first->linked) {
        // No look into the tables: who was there at the start hears it, and is alive as long as we hold it.
        if (module.get() != sender) {
            module->OnMessage(msgId, payload);
        }
    }
    const Snapshot<Broadcast> second = BroadcastSnapshot();  // with the sub-modules that were made meanwhile
    const std::uint64_t version = m_tablesVersion;
    for (const SubModuleReceivers& receivers : second->subModules) {
        if (version != m_tablesVersion && !m_subModules.contains(receivers.parent)) {
            continue;
        }
        for (const std::shared_ptr<ModuleBase>& subModule : receivers.subModules) {
            if (subModule.get() != sender) {
                subModule->OnMessage(msgId, payload);
            }
        }
    }
}

int PluginManager::RouteToModuleId(int msgId, void* payload, ModuleBase* sender, GroupId /*group*/,
                                   int targetModuleId)
{
    if (targetModuleId == panelry::kAlongLink) {
        return -1;
    }
    Receivers placed;
    for (const auto& [module, placement] : m_placements) {
        // An entry that nobody holds is a parent that was never a module of ours.
        if (std::shared_ptr<ModuleBase> held = Hold(module)) {
            placed.push_back(std::move(held));
        }
    }
    for (const std::shared_ptr<ModuleBase>& module : placed) {
        if (!m_placements.contains(module.get())) {
            continue;
        }
        const std::shared_ptr<InstanceInfo> info = module->GetInstanceInfo();
        if (info && info->module_id == static_cast<std::uint32_t>(targetModuleId) && module.get() != sender) {
            module->OnMessage(msgId, payload);
        }
    }
    return 1;
}

int PluginManager::RouteToKey(int msgId, void* payload, LinkKey key)
{
    if (key == 0) {
        return -1;
    }
    const auto groups = m_links.find(key);
    const std::size_t count = groups == m_links.end() ? 0 : groups->second.size();
    // By number, not by entry: a group numbered at or beyond the count isn't reached.
    for (GroupId group = 0; group < count; ++group) {
        RouteToGroup(msgId, payload, nullptr, {key, group});
    }
    return 1;
}

void PluginManager::SendCurrentStock(GroupId groupId, LinkKey linkKey, ModuleBase* module)
{
    StringMap& state = m_linkStates[linkKey][groupId];
    StringMap stock;
    for (const char* key : {"stockcode", "market", "stockname"}) {
        stock[key] = state[key];
    }
    module->OnMessage(panelry::kStockSelected, &stock);
}

void PluginManager::MergeLinkState(GroupId groupId, LinkKey linkKey, const StringMap& payload)
{
    StringMap& state = m_linkStates[linkKey][groupId];
    for (const auto& [key, value] : payload) {
        state[key] = value;
    }
}

void PluginManager::WriteModuleLog(int level, const char* text)
{
    panelry::logger::WriteModuleText(level, text);
}

PluginManager::Receivers PluginManager::SubModulesOf(ModuleBase* parent) const
{
    const auto entry = m_subModules.find(parent);
    return entry == m_subModules.end() ? Receivers{} : Receivers(entry->second.begin(), entry->second.end());
}

PluginManager::Snapshot<PluginManager::LinkedReceivers> PluginManager::GroupSnapshot(Placement group)
{
    Snapshot<LinkedReceivers>& cached = m_groupSnapshots[group];
    if (!cached) {
        auto receivers = std::make_shared<LinkedReceivers>();
        if (const ModuleSet* modules = FindGroup(group.first, group.second)) {
            for (const std::shared_ptr<ModuleBase>& module : *modules) {
                receivers->push_back({module, SubModulesOf(module.get())});
            }
        }
        cached = std::move(receivers);
    }
    return cached;
}

PluginManager::Snapshot<PluginManager::Broadcast> PluginManager::BroadcastSnapshot()
{
    if (!m_broadcastSnapshot) {
        auto broadcast = std::make_shared<Broadcast>();
        for (const auto& [key, groups] : m_links) {
            for (const auto& [group, modules] : groups) {
                broadcast->linked.insert(broadcast->linked.end(), modules.begin(), modules.end());
            }
        }
        for (const auto& [parent, subModules] : m_subModules) {
            broadcast->subModules.push_back({parent, SubModulesOf(parent)});
        }
        m_broadcastSnapshot = std::move(broadcast);
    }
    return m_broadcastSnapshot;
}
