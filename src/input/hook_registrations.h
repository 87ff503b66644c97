#pragma once

#include <uiohook.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

class ModuleBase;

namespace panelry
{

/// Which module hears which events of the hook, and the way to those modules.
///
/// Ownership: refers to modules; a module is taken out with Forget() before it dies.
/// Threading: the Deliver functions belong to the hook thread, all others may be called on any thread. No lock is
///   held while a module runs. Whatever takes a module out waits, outside the hook thread, until the event that is
///   being delivered has been: so a module must not wait in message 119 for the thread on which modules die.
/// Failures: Register() and Unregister() let the exceptions of a bad text through; what was done before stands.
class HookRegistrations
{
public:
    HookRegistrations() = default;
    HookRegistrations(const HookRegistrations&) = delete;
    HookRegistrations& operator=(const HookRegistrations&) = delete;

    /// `text` is a JSON object: "hook_type", the event type as a decimal number in a string, and optionally
    /// "keyboard_value", an array of key combinations. The combinations replace those the module had, which are
    /// one list for all types; without the array the old ones stay.
    void Register(ModuleBase* module, const char* text);

    /// The module is taken from the type that `text` names, and for a type of keys (3, 4, 5) loses its
    /// combinations; with an empty text it is taken from all types and keeps its combinations for the next time.
    void Unregister(ModuleBase* module, const char* text);

    /// Nothing of the module is left, and it isn't called any more.
    void Forget(ModuleBase* module);
    /// The same for all modules.
    void Clear();

    /// Hands the event to the modules of its type, in the order of their registration.
    void DeliverPlain(uiohook_event* event);
    /// The same, but a module with combinations hears only those.
    void DeliverKey(uiohook_event* event);

    /// Is an event being delivered?
    bool Delivering() const { return m_event % 2 == 1; }

private:
    using Combinations = std::vector<std::string>;
    struct Receiver {
        ModuleBase* module = nullptr;
        std::span<const std::string> only;         // empty: everything
        std::shared_ptr<const Combinations> kept;  // where they stand
    };
    // What the tables say of one type. Made when an event comes, dropped when the tables change.
    struct Road {
        std::uint64_t version = 0;
        std::vector<Receiver> receivers;
    };

    std::shared_ptr<const Road> RoadOf(int type);
    Receiver ReceiverOf(ModuleBase* module) const;
    template <class Hears>
    void Deliver(uiohook_event* event, Hears hears);
    Receiver StillListening(ModuleBase* module, int type) const;
    void TablesChanged();
    void WaitForDelivery() const;

    mutable std::mutex m_lock;  // guards the next three
    std::unordered_map<int, std::vector<ModuleBase*>> m_typeListeners;
    std::unordered_map<ModuleBase*, std::shared_ptr<const Combinations>> m_keyFilters;
    std::unordered_map<int, std::shared_ptr<const Road>> m_roads;

    std::atomic<std::uint64_t> m_version{0};  // of the tables
    std::atomic<std::uint32_t> m_event{0};    // odd while one is delivered
};

}  // namespace panelry
