#include "input/hook_manager.h"

#include <cstdio>
#include <exception>
#include <string>
#include <thread>
#include <utility>

#include "input/hook_registrations.h"

namespace
{

// F24: few keyboards have it, and no module ever hears it.
constexpr std::uint16_t kProbeKey = 107;
constexpr std::uint16_t kConsumed = 1;

std::int64_t NowMs()
{
    using namespace std::chrono;
    return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

bool IsKeyEvent(int type)
{
    return type == EVENT_KEY_PRESSED || type == EVENT_KEY_RELEASED;
}

// Characters typed count here: they have no key code and so no combination of their own.
bool IsPlainEvent(int type)
{
    return type == EVENT_KEY_TYPED || (type >= EVENT_MOUSE_CLICKED && type <= EVENT_MOUSE_WHEEL);
}

bool IsProbe(const uiohook_event& event)
{
    return IsKeyEvent(event.type) && event.data.keyboard.keycode == kProbeKey;
}

// The release too: the display would repeat a key that is held down for ever.
void PostProbe()
{
    for (const event_type type : {EVENT_KEY_PRESSED, EVENT_KEY_RELEASED}) {
        uiohook_event event{};
        event.type = type;
        event.data.keyboard.keycode = kProbeKey;
        event.data.keyboard.keychar = CHAR_UNDEFINED;
        hook_post_event(&event);
    }
}

void PrintLine(const std::string& line)
{
    std::fputs((line + '\n').c_str(), stdout);
    std::fflush(stdout);
}

template <class Operation>
void PrintError(const char* what, Operation operation)
{
    try {
        operation();
    } catch (const std::exception& exception) {
        PrintLine(std::string(what) + " parse error:" + exception.what());
    }
}

}  // namespace

struct HookManager::Listening {
    panelry::HookRegistrations registrations;
    std::atomic<std::int64_t> lastAlive{NowMs()};
    std::atomic<bool> probing{false};

    bool IsBusy() const { return registrations.Delivering() || probing; }
};

// Where the hook thread finds who listens: the hook may outlive the manager, and events carry no context.
class HookManager::Slot
{
public:
    std::shared_ptr<Listening> Get()
    {
        const std::lock_guard guard(m_lock);
        return m_listening;
    }
    std::shared_ptr<Listening> Set(std::shared_ptr<Listening> listening)
    {
        const std::lock_guard guard(m_lock);
        return std::exchange(m_listening, std::move(listening));
    }

private:
    std::mutex m_lock;
    std::shared_ptr<Listening> m_listening;
};

HookManager::Slot& HookManager::TheSlot()
{
    static Slot& slot = *new Slot;
    return slot;
}

HookManager::HookManager(panelry::HookTiming timing)
    : m_timing(timing),
      m_listening(std::make_shared<Listening>()),
      m_runner(&HookManager::OnHookEvent, timing.endPatience)
{
    TheSlot().Set(m_listening);
    m_watchdog.Start(static_cast<int>(m_timing.period.count()), [this] { Watch(); });
}

HookManager::~HookManager()
{
    m_alive = false;
    m_watchdog.Stop();
    TheSlot().Set(nullptr);
    Stop();
    ClearRegistrations();
}

void HookManager::RegisterModule(ModuleBase* module, const char* text)
{
    if (module && text) {
        PrintError("RegisterModule", [&] { m_listening->registrations.Register(module, text); });
    }
}

void HookManager::UnregisterModule(ModuleBase* module, const char* text)
{
    if (module && text) {
        PrintError("UnregisterModule", [&] { m_listening->registrations.Unregister(module, text); });
    }
}

void HookManager::ForgetModule(ModuleBase* module)
{
    m_listening->registrations.Forget(module);
}

void HookManager::ClearRegistrations()
{
    m_listening->registrations.Clear();
}

void HookManager::Start()
{
    const std::lock_guard guard(m_hookLock);
    if (m_running || !m_alive) {
        return;
    }
    m_running = true;
    m_listening->lastAlive = NowMs();
    m_runner.Start();
}

int HookManager::Stop()
{
    const std::lock_guard guard(m_hookLock);
    return m_running.exchange(false) ? m_runner.Stop() : UIOHOOK_SUCCESS;
}

void HookManager::OnHookEvent(uiohook_event* event)
{
    HookRunner::OnEvent(event->type);
    const std::shared_ptr<Listening> listening = TheSlot().Get();
    if (!listening) {
        return;
    }
    if (IsKeyEvent(event->type)) {
        listening->lastAlive = NowMs();
    }
    if (IsProbe(*event)) {
        event->reserved = kConsumed;
    } else if (IsKeyEvent(event->type)) {
        listening->registrations.DeliverKey(event);
    } else if (IsPlainEvent(event->type)) {
        listening->registrations.DeliverPlain(event);
    }
}

// False when the process is ending: libuiohook closes its connection to the display then.
bool HookManager::Probe()
{
    m_listening->probing = true;  // before the look: who ends the process sees it
    const bool wanted = TheSlot().Get() == m_listening;
    if (wanted) {
        PostProbe();
    }
    m_listening->probing = false;
    return wanted;
}

void HookManager::Watch()
{
    if (!Probe()) {
        return;
    }
    // The probe is heard on the hook thread, as a rule a moment after this look.
    if (NowMs() - m_listening->lastAlive > m_timing.patience.count()) {
        Stop();
        Start();
    }
}

void HookManager::EndForExit()
{
    const std::shared_ptr<Listening> listening = TheSlot().Set(nullptr);
    HookRunner::EndForExit();
    // A module that is being called may keep its thread for as long as it likes, a display the probe, but not the
    // process.
    for (int ms = 0; listening && listening->IsBusy() && ms < 200; ++ms) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}
