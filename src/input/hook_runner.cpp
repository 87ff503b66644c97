#include "input/hook_runner.h"

#include <condition_variable>
#include <cstdio>
#include <mutex>

namespace
{

constexpr std::chrono::milliseconds kPatienceAtExit{500};

}  // namespace

// One Start() and what became of it; guarded by the process's lock.
struct HookRunner::Session {
    bool stopWanted = false;
    bool over = false;
};

// The one hook of the process. Never destroyed: a hook that was left behind may outlive everything else.
struct HookRunner::Process {
    using Lock = std::unique_lock<std::mutex>;

    std::mutex lock;
    std::condition_variable changed;
    std::shared_ptr<Session> inHook;  // whose thread is inside hook_run
    bool up = false;                  // between the hook's first event and its last
    bool exiting = false;

    bool IsUp(const std::shared_ptr<Session>& session) const { return up && inHook == session; }

    // With the lock held: the hook thread passes OnEvent before the record that hook_stop uses is freed.
    int StopHook()
    {
        up = false;  // asked once: a second time its record may be gone
        return hook_stop();
    }

    // False when it isn't wanted any more.
    bool WaitForTurn(Lock& held, const std::shared_ptr<Session>& session)
    {
        while (inHook && !session->stopWanted && !exiting) {
            if (up && inHook->stopWanted) {
                StopHook();  // it came up after its owner had given up on it
            }
            changed.wait(held);
        }
        return !session->stopWanted && !exiting;
    }
};

HookRunner::Process& HookRunner::OfProcess()
{
    static Process& process = *new Process;
    return process;
}

HookRunner::~HookRunner()
{
    Stop();
}

void HookRunner::Start()
{
    m_session = std::make_shared<Session>();
    m_thread = std::thread(&HookRunner::Run, m_dispatch, m_session);
}

void HookRunner::Run(dispatcher_t dispatch, const std::shared_ptr<Session>& session)
{
    Process& process = OfProcess();
    Process::Lock lock(process.lock);
    if (process.WaitForTurn(lock, session)) {
        process.inHook = session;
        lock.unlock();
        hook_set_dispatch_proc(dispatch);
        if (hook_run() != UIOHOOK_SUCCESS) {
            std::fputs("Failed to start libuiohook.\n", stdout);
            std::fflush(stdout);
        }
        lock.lock();
        process.inHook.reset();
        process.up = false;
    }
    session->over = true;
    process.changed.notify_all();
}

int HookRunner::Stop()
{
    if (!m_thread.joinable()) {
        return 0;
    }
    Process& process = OfProcess();
    Process::Lock lock(process.lock);
    m_session->stopWanted = true;
    process.changed.notify_all();
    // A hook that is still coming up can't be stopped yet: hook_stop would use what hook_run hasn't made.
    process.changed.wait_for(lock, m_patience, [&] { return m_session->over || process.IsUp(m_session); });
    const int result = process.IsUp(m_session) ? process.StopHook() : UIOHOOK_SUCCESS;
    const bool over = process.changed.wait_for(lock, m_patience, [this] { return m_session->over; });
    lock.unlock();
    if (over) {
        m_thread.join();
    } else {
        m_thread.detach();
    }
    return result;
}

void HookRunner::OnEvent(int eventType)
{
    if (eventType != EVENT_HOOK_ENABLED && eventType != EVENT_HOOK_DISABLED) {
        return;
    }
    Process& process = OfProcess();
    const std::lock_guard lock(process.lock);
    process.up = eventType == EVENT_HOOK_ENABLED;
    process.changed.notify_all();
}

void HookRunner::EndForExit()
{
    Process& process = OfProcess();
    Process::Lock lock(process.lock);
    process.exiting = true;
    process.changed.notify_all();
    process.changed.wait_for(lock, kPatienceAtExit, [&] { return !process.inHook || process.up; });
    if (process.up) {
        process.StopHook();
    }
    process.changed.wait_for(lock, kPatienceAtExit, [&] { return !process.inHook; });
}
