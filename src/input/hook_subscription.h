#pragma once

#include <uiohook.h>

#include <deque>
#include <functional>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "base/wake_up.h"

class ModuleBase;

namespace panelry
{

/// Keys and mouse actions from the whole desktop, for one module, handed over to the application thread.
///
/// Message 119 comes on the hook thread, holds up the library while it is served, and carries a record that is
/// good during the call only. So Take() keeps a copy, and the handler gets it from the event loop, in order. The
/// handler may run an event loop of its own, and may destroy the subscription.
///
/// Ownership: refers to the module, which keeps it as a member. The module's library and the process's hook hold
///   nothing of it.
/// Threading: application thread, but for Take().
/// Failures: events that nobody fetches are dropped beyond the first thousand. A module that isn't connected to the
///   library yet (m_manager is null) hears nothing.
class HookSubscription
{
public:
    using Handler = std::function<void(const uiohook_event&)>;
    using Combinations = std::vector<std::string>;

    HookSubscription(ModuleBase& module, Handler handler);
    /// Unregisters the module from all types that were listened to. What was taken but not handled is dropped.
    ~HookSubscription();
    HookSubscription(const HookSubscription&) = delete;
    HookSubscription& operator=(const HookSubscription&) = delete;

    /// Every event of the type; for keys those of the module's combinations, if it has some.
    void Listen(event_type type);
    /// Only these combinations, such as "ctrl+shift+a", the modifiers in the order ctrl, shift, alt, meta. A module
    /// has one list for presses and releases: the last one counts. With an empty one it hears every key.
    void Listen(event_type type, const Combinations& combinations);
    /// For a type of keys the list of combinations goes too.
    void Unlisten(event_type type);

    /// Hook thread: call it in OnMessage for message 119.
    void Take(const void* payload);

private:
    void HandOver();
    void Send(int message, event_type type, const Combinations* combinations);

    ModuleBase& m_module;
    const Handler m_handler;
    WakeUp m_reader;  // called once for each event that was taken
    std::set<event_type> m_types;

    std::mutex m_lock;  // guards the next one, which the hook thread fills
    std::deque<uiohook_event> m_taken;
};

}  // namespace panelry
