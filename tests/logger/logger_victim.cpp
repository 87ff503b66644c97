// A process that logs and comes to the end that its argument names.

#include <dlfcn.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <malloc.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/prctl.h>
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
constexpr unsigned kPatienceSeconds = 30;
constexpr uid_t kNobody = 65534;

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
    ::alarm(kPatienceSeconds);  // ends the process with another signal, should it hang
    void* const library = ::dlopen(LOGGING_LIBRARY, RTLD_NOW);
    const auto beginAndWrite =
        reinterpret_cast<void (*)(const char*, int)>(::dlsym(library, "BeginAndWrite"));
    std::thread([=] { beginAndWrite(kConfig, kLines); }).join();
    std::thread(&CorruptHeap).join();
}

// What a sandbox does to a process that calls what it may not.
void CallWhatIsForbidden()
{
    sock_filter rules[] = {BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
                           BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_getppid, 0, 1),
                           BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_TRAP),
                           BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW)};
    const sock_fprog program{std::size(rules), rules};
    ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
    ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program);
    ::syscall(SYS_getppid);
}

// As the kernel tells of a page that it has lost and nobody has touched.
void LosePage()
{
    siginfo_t info = {};
    info.si_signo = SIGBUS;
    info.si_code = BUS_MCEERR_AO;
    ::syscall(SYS_rt_sigqueueinfo, ::getpid(), SIGBUS, &info);
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
        CallWhatIsForbidden();
    } else if (fate == "lost page") {
        LosePage();
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
    if (me == 0 && ::seteuid(kNobody) != 0) {  // root may remove anything
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

int main(int argc, char* argv[])
{
    const std::string fate = argc > 1 ? argv[1] : "";
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
