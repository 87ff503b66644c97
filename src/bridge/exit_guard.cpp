#include "bridge/exit_guard.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <QMetaObject>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <mutex>

#include "base/singleton.h"
#include "bridge/host_gate.h"
#include "bridge/message_road.h"
#include "hosting/container_manager.h"
#include "input/hook_manager.h"
#include "refresh/auto_refresh.h"

namespace panelry::bridge
{

namespace
{

// Foreign code that holds the application thread for longer isn't waited for: it is inside the host or a
// module, not inside the toolkit.
constexpr std::chrono::seconds kPatience{2};

std::atomic<bool> Exiting{false};
std::mutex HaltLock;
std::condition_variable& HaltChanged = *new std::condition_variable;  // outlives the statics
bool Halted = false;

void OnExit()
{
    if (!ApplicationThreadAlive || OnApplicationThread() || Exiting.exchange(true)) {
        return;
    }
    HookManager::EndForExit();
    AutoRefresh::StopForExit();
    // Nobody is there yet or any more: then the thread comes by the guard on its way up, or is about to end.
    if (const HostGate::Visit visit(Gate); visit.Manager()) {
        QMetaObject::invokeMethod(visit.Manager(), &HaltIfExiting, Qt::QueuedConnection);
    }
    std::unique_lock lock(HaltLock);
    HaltChanged.wait_for(lock, kPatience, [] { return Halted || !ApplicationThreadAlive; });
}

// Thread-local objects of the main thread die before all statics, those that were made late included.
struct MainThreadGuard {
    MainThreadGuard() = default;
    ~MainThreadGuard() { OnExit(); }
    void Touch() const {}
};

bool OnMainThread()
{
    return ::syscall(SYS_gettid) == ::getpid();
}

}  // namespace

void GuardExit()
{
    if (OnMainThread()) {
        thread_local const MainThreadGuard guard;
        guard.Touch();
    } else {
        std::atexit(&OnExit);
    }
}

void HaltIfExiting()
{
    if (!Exiting) {
        return;
    }
    {
        const std::lock_guard lock(HaltLock);
        Halted = true;
    }
    HaltChanged.notify_all();
    for (;;) {
        ::pause();
    }
}

void TellThreadEnded()
{
    {
        const std::lock_guard lock(HaltLock);
        ApplicationThreadAlive = false;
    }
    HaltChanged.notify_all();
}

bool AwaitThreadEnd()
{
    std::unique_lock lock(HaltLock);
    HaltChanged.wait(lock, [] { return Halted || !ApplicationThreadAlive; });
    return !Halted;
}

}  // namespace panelry::bridge
