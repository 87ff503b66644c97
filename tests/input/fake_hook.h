#pragma once

#include <uiohook.h>

#include <condition_variable>
#include <deque>
#include <mutex>

namespace panelry::test
{

uiohook_event KeyEvent(event_type type, std::uint16_t mask, std::uint16_t keyCode);
uiohook_event MouseEvent(event_type type);

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
    bool WaitUntilUp(int count);
    /// Waits until hook_run has been called as often, all in all.
    bool WaitForRuns(int count);
    /// Waits until as many events were posted.
    bool WaitForPosts(std::size_t count);
    int Runs();
    int WrongStops();
    int MostAtOnce();
    std::deque<uiohook_event> Posted();

    /// Without a display hook_run fails at once.
    void SetDisplay(bool display);
    /// A hook whose display doesn't answer comes up only when it does.
    void SetAnswers(bool answers);
    /// A hook that has died silently: what is posted doesn't come back.
    void SetEchoes(bool echoes);
    /// The hook stays up when it is told to end.
    void SetObeys(bool obeys);

    // What the library calls.
    void SetDispatcher(dispatcher_t dispatcher);
    int Run();
    int Stop();
    void Post(const uiohook_event& event);

private:
    template <class Condition>
    bool WaitFor(Condition condition);
    template <class T>
    void Set(T& member, T value);

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
};

}  // namespace panelry::test
