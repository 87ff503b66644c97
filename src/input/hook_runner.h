#pragma once

#include <uiohook.h>

#include <chrono>
#include <memory>
#include <thread>

/// Runs libuiohook's hook on a thread of its own, and sees to it that the process never has two: libuiohook would
/// then report everything twice and could stop only one of them.
///
/// A hook that doesn't end when it is told to (its display may never answer, a module may keep its thread) is
/// left behind. The next one then waits for the end of that one, on its own thread.
///
/// Ownership: owns the thread until Stop(); one that is left behind belongs to itself.
/// Threading: Start(), Stop() and the destructor belong to one owner, who doesn't use them on two threads at a
///   time. They are not for the hook thread.
/// Failures: a hook that doesn't start writes one line to the standard output, and its thread ends.
class HookRunner
{
public:
    /// `dispatch` gets every event on the hook thread, and passes its type to OnEvent() before all else. `patience`
    /// is for a hook that doesn't come up and for one that doesn't end.
    HookRunner(dispatcher_t dispatch, std::chrono::milliseconds patience)
        : m_dispatch(dispatch), m_patience(patience)
    {
    }
    ~HookRunner();
    HookRunner(const HookRunner&) = delete;
    HookRunner& operator=(const HookRunner&) = delete;

    /// Starts a hook thread. One that was started before has to be stopped first.
    void Start();

    /// Ends the hook, and waits for the end of its thread. The result is that of hook_stop, 0 if there was nothing
    /// to stop.
    int Stop();

    /// Hook thread: the hook's first and last event tell when it may be stopped.
    static void OnEvent(int eventType);

    /// At the end of the process, on any thread: brings the hook, whoever started it, to its end, within a second,
    /// and lets no other begin.
    static void EndForExit();

private:
    struct Session;
    struct Process;

    static Process& OfProcess();
    static void Run(dispatcher_t dispatch, const std::shared_ptr<Session>& session);

    const dispatcher_t m_dispatch;
    const std::chrono::milliseconds m_patience;
    std::shared_ptr<Session> m_session;
    std::thread m_thread;
};
