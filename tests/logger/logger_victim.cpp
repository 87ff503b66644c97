// A process that logs and comes to the end that its argument names.

#include <signal.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <thread>

#include "logger/crash_guard.h"
#include "logger/deployment.h"
#include "logger/log.h"
#include "stage.h"

using namespace panelry::logger;
using panelry::test::WriteFile;

namespace
{

constexpr char kConfig[] = "log.cfg";

// Made before the manager, so it dies after it.
struct LateModule {
    ~LateModule() { WriteModuleText(log4z::Fatal, "never"); }
} lateModule;

// Holds the worker where it looks at the clock.
class Frozen : public Surroundings
{
public:
    std::int64_t NowMicros() const override
    {
        while (frozen && ::gettid() != ::getpid()) {
            worker = ::gettid();
            std::this_thread::yield();
        }
        return Surroundings::NowMicros();
    }

    std::atomic<bool> frozen{false};
    mutable std::atomic<pid_t> worker{0};
};

void WriteNumbers(const Logger& log)
{
    for (int i = 0; i < 5000; ++i) {
        log.Write(log4z::Info, i);
    }
}

int Overflow(int depth)
{
    volatile char page[4096];
    page[0] = static_cast<char>(depth);
    return depth == -1 ? 0 : Overflow(depth + 1) + page[0];
}

void CrashWorker()
{
    Frozen world;
    log4z::LogerManager manager(world);
    manager.SetPath(0, "log");
    manager.Start();
    InstallCrashGuard(manager);
    while (manager.WriteCount() < 2) {  // its file is open
        std::this_thread::yield();
    }
    world.frozen = true;
    while (world.worker == 0) {
        std::this_thread::yield();
    }
    WriteNumbers(Logger(0, manager));
    ::tgkill(::getpid(), world.worker, SIGFPE);
    std::this_thread::sleep_for(std::chrono::seconds(20));
}

void Crash(const std::string& fate)
{
    BeginLogging(kConfig, true);
    WriteNumbers(Logger());
    if (fate == "null") {
        *static_cast<volatile char*>(::mmap(nullptr, 1, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0)) = 1;
    } else if (fate == "overflow") {
        Overflow(0);
    } else if (fate == "sent") {
        ::kill(::getpid(), SIGBUS);
    } else if (fate == "busy") {
        std::thread([] {
            for (const Logger log;;) {
                log.Write(log4z::Info, "noise");
            }
        }).detach();
        std::abort();
    } else if (fate == "abort") {
        std::abort();
    }
}

void WriteAsModule()
{
    BeginLogging(kConfig, false);
    for (const int level : {-1, 7, 100}) {
        WriteModuleText(level, "never");
    }
    WriteModuleText(log4z::Fatal, nullptr);
    WriteModuleText(log4z::Warn, "100% %d %s %n %% %");
    WriteModuleText(log4z::Info, std::string(9000, 'y').c_str());
    EndLogging();
}

void LiveTwice()
{
    BeginLogging(kConfig, true);
    Logger().Write(log4z::Info, "first");
    EndLogging();
    Logger().Write(log4z::Info, "never");
    BeginLogging(kConfig, true);
    Logger().Write(log4z::Info, "second");
    EndLogging();
}

}  // namespace

int main(int argc, char* argv[])
{
    const std::string fate = argc > 1 ? argv[1] : "";
    WriteFile(kConfig, "[main]\npath=log\ndisplay=false\n");
    if (fate == "worker") {
        CrashWorker();
    } else if (fate == "module") {
        WriteAsModule();
    } else if (fate == "lives") {
        LiveTwice();
    } else if (fate == "exit") {
        BeginLogging(kConfig, true);
        Logger().Write(log4z::Info, "before the end");
    } else if (fate == "off") {
        BeginLogging("", true);
        WriteModuleText(log4z::Fatal, "never");
        EndLogging();
    } else {
        Crash(fate);
    }
    return 0;
}
