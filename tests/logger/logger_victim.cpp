// A process that logs and comes to the end that its argument names.

#include <dlfcn.h>
#include <malloc.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
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
constexpr int kLines = 5000;

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
    for (int i = 0; i < kLines; ++i) {
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

// Tramples what the heap keeps behind a block. The heap finds out inside malloc, and aborts there.
void CorruptHeap()
{
    static void* volatile block;  // the compiler must take nothing of this for useless
    block = std::malloc(2000);
    std::memset(block, 0xff, ::malloc_usable_size(block) + 64);
    for (std::size_t size = 3000; size < 9000; size += 512) {
        block = std::malloc(size);  // wants the room behind the first one
    }
}

// A host that has loaded the logger; the thread that crashes has never been in it.
void CrashInHeap()
{
    ::alarm(30);  // ends the process with another signal, should it hang
    void* const library = ::dlopen(LOGGING_LIBRARY, RTLD_NOW);
    const auto beginAndWrite =
        reinterpret_cast<void (*)(const char*, int)>(::dlsym(library, "BeginAndWrite"));
    std::thread([=] { beginAndWrite(kConfig, kLines); }).join();
    std::thread(&CorruptHeap).join();
}

// As the kernel tells of a call that a sandbox forbids, and of a page that it has lost and nobody has touched.
void Queue(int signal, int code)
{
    siginfo_t info = {};
    info.si_signo = signal;
    info.si_code = code;
    ::syscall(SYS_rt_sigqueueinfo, ::getpid(), signal, &info);
}

void Crash(const std::string& fate)
{
    BeginLogging(kConfig, true);
    WriteNumbers(Logger());
    if (fate == "null") {
        *static_cast<volatile char*>(::mmap(nullptr, 1, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0)) = 1;
    } else if (fate == "overflow") {
        Overflow(0);
    } else if (fate == "forbidden") {
        Queue(SIGSYS, 1);  // SYS_SECCOMP, for which the C library has no name
    } else if (fate == "lost page") {
        Queue(SIGBUS, BUS_MCEERR_AO);
    } else if (fate == "busy") {
        std::thread([] {
            for (const Logger log;;) {
                log.Write(log4z::Info, "noise");
            }
        }).detach();
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

// The old logs of the first life can't be removed, those of the second can.
int LiveWhereOldLogsStay()
{
    namespace fs = std::filesystem;
    const uid_t me = ::geteuid();
    BeginLogging(kConfig, false);
    Logger().Write(log4z::Info, "first");
    while (log4z::LogerManager::Instance().WriteCount() < 3) {  // its file is open
        std::this_thread::yield();
    }
    fs::permissions("data/log", fs::perms(0555));
    if (me == 0 && ::seteuid(65534) != 0) {  // root may remove anything, nobody may not
        return 1;
    }
    EndLogging();
    Logger().Write(log4z::Info, "goes on");
    static_cast<void>(::seteuid(me));
    fs::permissions("data/log", fs::perms(0755));
    BeginLogging(kConfig, false);
    Logger().Write(log4z::Info, "second");
    EndLogging();
    Logger().Write(log4z::Info, "never");
    return 0;
}

}  // namespace

int main(int /*argc*/, char* argv[])
{
    const std::string fate = argv[1];
    WriteFile(kConfig, "[main]\npath=log\ndisplay=false\n");
    if (fate == "worker") {
        CrashWorker();
    } else if (fate == "module") {
        WriteAsModule();
    } else if (fate == "stuck") {
        return LiveWhereOldLogsStay();
    } else if (fate == "heap") {
        CrashInHeap();
    } else if (fate == "exit") {
        BeginLogging(kConfig, true);
        Logger().Write(log4z::Info, "before the end");
    } else {
        Crash(fate);
    }
    return 0;
}
