#pragma once

#include <uiohook.h>

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <utility>

#include "input/hook_manager.h"

namespace panelry::test
{

/// Registers for all keys that are pressed.
inline constexpr char kPresses[] = R"({"hook_type":"4"})";
/// The watchdog never looks.
inline constexpr HookTiming kNoWatch{std::chrono::hours(1), std::chrono::hours(1)};

inline uiohook_event MouseEvent(event_type type)
{
    uiohook_event event{};
    event.type = type;
    return event;
}
inline uiohook_event KeyEvent(event_type type, int mask, int keyCode)
{
    uiohook_event event = MouseEvent(type);
    event.mask = static_cast<std::uint16_t>(mask);
    event.data.keyboard.keycode = static_cast<std::uint16_t>(keyCode);
    return event;
}

inline uiohook_event Press(int keyCode, int mask = 0)
{
    return KeyEvent(EVENT_KEY_PRESSED, mask, keyCode);
}
/// As the hook does it.
inline void Send(uiohook_event event)
{
    HookManager::OnHookEvent(&event);
}

/// Stands in for libuiohook: the test program's own hook_run and so on, which the library's calls then reach.
/// Behaves as the real one does with a display, unless the test says otherwise.
class FakeHook
{
public:
    static FakeHook& Instance();

    /// As new; no hook may be running.
    void Reset();

    /// Has the hook thread dispatch the event, and waits until it has. False when no hook is up.
    bool Dispatch(const uiohook_event& event);
    /// Waits until as many hooks are up, 0 or 1.
    bool WaitUntilUp(int count)
    {
        return WaitFor([&] { return m_up == count && m_inside == count; });
    }
    /// Waits until hook_run has been called as often, all in all; until as many events were posted.
    bool WaitForRuns(int count)
    {
        return WaitFor([&] { return m_runs >= count; });
    }
    bool WaitForPosts(std::size_t count)
    {
        return WaitFor([&] { return m_posted.size() >= count; });
    }
    int Runs() { return Get(m_runs); }
    int WrongStops() { return Get(m_wrongStops); }
    int MostAtOnce() { return Get(m_mostAtOnce); }
    std::deque<uiohook_event> Posted() { return Get(m_posted); }

    /// Without a display hook_run fails at once; one that doesn't answer lets the hook come up only when it does.
    void SetDisplay(bool display) { Set(m_display, display); }
    void SetAnswers(bool answers) { Set(m_answers, answers); }
    /// A hook that has died silently: what is posted doesn't come back.
    void SetEchoes(bool echoes) { Set(m_echoes, echoes); }
    /// Runs inside each post of an event, on the thread that posts.
    void SetPosting(std::function<void()> posting) { Set(m_posting, std::move(posting)); }
    /// The hook stays up when it is told to end.
    void SetObeys(bool obeys) { Set(m_obeys, obeys); }

    // What the library calls.
    void SetDispatcher(dispatcher_t dispatcher) { Set(m_dispatcher, dispatcher); }
    int Run();
    int Stop();
    void Post(const uiohook_event& event);

private:
    bool WaitFor(const std::function<bool()>& condition);
    template <class T>
    T Get(const T& member)
    {
        const std::lock_guard guard(m_lock);
        return member;
    }
    template <class T, class Value>
    void Set(T& member, Value value)
    {
        const std::lock_guard guard(m_lock);
        member = std::move(value);
        m_changed.notify_all();
    }

    std::mutex m_lock;  // guards all
    std::condition_variable m_changed;
    dispatcher_t m_dispatcher = nullptr;
    bool m_display = true;
    bool m_answers = true;
    bool m_echoes = true;
    bool m_obeys = true;
    bool m_stopAsked = false;
    bool m_stoppable = false;
    int m_inside = 0;
    int m_up = 0;
    int m_runs = 0;
    int m_mostAtOnce = 0;
    int m_wrongStops = 0;
    std::uint64_t m_queued = 0;
    std::uint64_t m_dispatched = 0;
    std::deque<uiohook_event> m_queue;
    std::deque<uiohook_event> m_posted;
    std::function<void()> m_posting;
};

}  // namespace panelry::test
