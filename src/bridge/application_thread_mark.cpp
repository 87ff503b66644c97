#include "bridge/application_thread_mark.h"

#include <condition_variable>
#include <mutex>

#include "base/singleton.h"

namespace panelry::bridge
{

namespace
{

thread_local bool IsApplicationThread = false;

// Guards the next but one, and each fall of ApplicationThreadAlive.
std::mutex EndLock;
std::condition_variable& EndChanged = *new std::condition_variable;  // outlives the statics
bool Halted = false;

}  // namespace

ApplicationThreadMark::ApplicationThreadMark()
{
    IsApplicationThread = true;
}

ApplicationThreadMark::~ApplicationThreadMark()
{
    {
        const std::lock_guard lock(EndLock);
        ApplicationThreadAlive = false;
    }
    EndChanged.notify_all();
    IsApplicationThread = false;
}

bool OnApplicationThread()
{
    return IsApplicationThread;
}

void TellThreadHalted()
{
    {
        const std::lock_guard lock(EndLock);
        Halted = true;
    }
    EndChanged.notify_all();
}

bool AwaitThreadEnd(std::optional<std::chrono::seconds> patience)
{
    std::unique_lock lock(EndLock);
    const auto isOver = [] { return Halted || !ApplicationThreadAlive; };
    if (patience) {
        EndChanged.wait_for(lock, *patience, isOver);
    } else {
        EndChanged.wait(lock, isOver);
    }
    return !ApplicationThreadAlive;
}

}  // namespace panelry::bridge
