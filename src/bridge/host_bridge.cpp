#include "bridge/host_bridge.h"

#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <utility>

#include "base/singleton.h"
#include "bridge/application_thread.h"
#include "bridge/application_thread_mark.h"
#include "bridge/deferred_queue.h"
#include "bridge/exit_guard.h"
#include "bridge/host_gate.h"
#include "bridge/message_road.h"

namespace panelry::bridge
{

namespace
{

// Guards the thread handle, and with it the passage between two lives: parking a message and starting a
// thread for it are one step against the end of Uninit. Never held while anything waits.
std::mutex LifeLock;
// Neither is ever destroyed: a host may leave its main function while the thread runs.
std::condition_variable& LifeEnded = *new std::condition_variable;
std::thread* ApplicationThread = nullptr;
bool Joining = false;

void StartThread(std::int32_t type, std::int32_t id, const char* text)
{
    if (!ApplicationThread) {
        GuardExit();
        auto firstText = std::make_shared<const std::string>(text);
        ApplicationThreadAlive = true;  // from now on, not only from the thread's first step
        // The thread's priority stays what it is: under the default policy of this platform there is nothing
        // to raise, and asking for another policy takes privileges.
        try {
            ApplicationThread = new std::thread(&ApplicationThreadMain, type, id, std::move(firstText));
        } catch (...) {
            ApplicationThreadAlive = false;
            throw;
        }
    }
}

}  // namespace

void Init(void* quoteProvider, void* tradeProvider, HostCallbackFunction hostCallback)
{
    QuoteProvider = quoteProvider;
    TradeProvider = tradeProvider;
    HostCallback = hostCallback;
    EnsureApplicationThread(-1, -1, "");
}

void NotifyMsg(std::int32_t type, std::int32_t id, const char* text)
{
    if (DeliverLive(type, id, text)) {
        return;
    }
    const std::lock_guard life(LifeLock);
    ParkMessage({type, id, std::make_shared<const std::string>(text)});
    StartThread(type, id, text);
}

void EnsureApplicationThread(std::int32_t type, std::int32_t id, const char* text)
{
    const std::lock_guard life(LifeLock);
    StartThread(type, id, text);
}

void Uninit()
{
    if (OnApplicationThread()) {
        AskToQuit();  // a thread can't wait for itself
        return;
    }
    std::unique_lock life(LifeLock);
    LifeEnded.wait(life, [] { return !Joining; });  // another Uninit is at it
    if (ApplicationThread) {
        Joining = true;
        life.unlock();
        AskToQuit();
        const bool ended = AwaitThreadEnd();
        if (ended) {
            ApplicationThread->join();
        }
        life.lock();
        Joining = false;
        if (!ended) {  // the process is ending, and the thread stands still until it has
            LifeEnded.notify_all();
            return;
        }
    }
    // What was parked while the panels were ending belongs to the life that is over.
    DiscardParked();
    ApplicationRunning = false;
    ForgetQuit();
    delete std::exchange(ApplicationThread, nullptr);
    LifeEnded.notify_all();
}

}  // namespace panelry::bridge
