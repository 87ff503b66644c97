#include "bridge/exit_guard.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <QMetaObject>
#include <atomic>
#include <chrono>
#include <cstdlib>

#include "base/posting_order.h"
#include "base/singleton.h"
#include "bridge/application_thread_mark.h"
#include "bridge/host_gate.h"
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

void OnExit()
{
    if (!ApplicationThreadAlive || OnApplicationThread() || Exiting.exchange(true)) {
        return;
    }
    HookManager::EndForExit();
    AutoRefresh::StopForExit();
    // Nobody is there yet or any more: then the thread comes by the guard on its way up, or is about to end.
    if (const HostGate::Visit visit(Gate); visit.Manager()) {
        const Posting posting;
        QMetaObject::invokeMethod(visit.Manager(), &HaltIfExiting, Qt::QueuedConnection);
    }
    AwaitThreadEnd(kPatience);
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
    TellThreadHalted();
    for (;;) {
        ::pause();
    }
}

}  // namespace panelry::bridge
