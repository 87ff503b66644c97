#pragma once

#include <uiohook.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <mutex>

#include "base/singleton.h"
#include "input/hook_runner.h"
#include "services/interval_timer.h"

class ModuleBase;

namespace panelry
{

/// How often the hook is probed, after how long without a sign of life it is started anew, and how long a hook is
/// waited for that is to end: its display may not answer, or a module may keep its thread.
struct HookTiming {
    std::chrono::milliseconds period{5000};
    std::chrono::milliseconds patience{10000};
    std::chrono::milliseconds endPatience{2000};
};

}  // namespace panelry

/// The global hot key service: modules hear keys and mouse actions wherever on the desktop they happen. A module
/// registers with message 120 and gets each matching event as message 119, on the hook thread.
///
/// A hook can die silently. So a watchdog posts a key that no user presses, and starts the hook anew when neither
/// that nor any other key has been heard for too long. Nothing can keep that key from the window that has the
/// focus; no module hears it.
///
/// Ownership: a singleton, made by the container manager, destroyed by the plug-in manager. Refers to modules; the
///   plug-in manager takes a module out before the module dies.
/// Threading: registrations come from the application thread. Events come on the hook thread, the watchdog has a
///   thread of its own. No lock is held while a module runs; who takes a module out waits for its delivery.
/// Failures: a bad registration, and a hook that doesn't start, write one line each to the standard output.
class HookManager : public panelry::Singleton<HookManager, panelry::AtExit::LeaveIfRunning>
{
public:
    /// Starts the watchdog, not yet the hook.
    explicit HookManager(panelry::HookTiming timing = {});
    ~HookManager();

    /// Messages 120 and 121. `text` as in HookRegistrations; a null module is ignored.
    void RegisterModule(ModuleBase* module, const char* text);
    void UnregisterModule(ModuleBase* module, const char* text);

    /// For the owner of modules: nothing of the module is left here, and no delivery to it is under way.
    void ForgetModule(ModuleBase* module);
    void ClearRegistrations();

    /// Starts the hook, which takes some milliseconds to come up; nothing happens if it was started.
    void Start();
    /// Ends the hook, until the watchdog finds it silent and starts it again. The result is that of hook_stop.
    int Stop();

    /// libuiohook calls it with every event, on the hook thread. `event` is valid during the call.
    static void OnHookEvent(uiohook_event* event);

    /// At the end of the process, on any thread: no module hears anything any more, no probe is posted, and the
    /// hook is ended.
    static void EndForExit();

private:
    struct Listening;

    class Slot;

    static Slot& TheSlot();
    bool Probe();
    void Watch();

    const panelry::HookTiming m_timing;
    const std::shared_ptr<Listening> m_listening;  // shared with the hook thread, for the length of an event
    std::atomic<bool> m_running{false};
    std::atomic<bool> m_alive{true};
    std::mutex m_hookLock;  // guards the runner
    HookRunner m_runner;
    IntervalTimer m_watchdog;
};
