// The host program of the contract tests: knows nothing of Qt, loads libpanelry.so as any host does, obeys
// the commands on its standard input, line by line, and tells on its standard output what it gets: callbacks,
// and the reports of the test modules. Usage: contract_host LIBRARY [global]
//
//   init QUOTE TRADE CALLBACK   Init with the providers of two numbers, see contract_providers.h; 0: null
//   providers                   from now on the providers tell what is asked of them
//   login STATE, cancel         the trade side pushes a log-in, or a cancel
//   notify TYPE ID TEXT         NotifyMsg
//   uninit                      Uninit; says "uninit returned"
//   uninit at exit              Uninit from an exit function
//   name TEXT                   from now on the answer to callback 2
//   when NEEDLE -> COMMAND      once, when a line with NEEDLE comes, on the thread on which it comes
//   hold                        waits for "release" (for use with "when")
//   release                     also ends the nest of a module
//   thread COMMAND              on a thread of its own
//   flood ID THREADS COUNT      numbered messages from many threads at once
//   join                        waits until what was started on other threads is over
//   random SEED COUNT ID...     random texts to the ids; says "random done"
//   usage                       says "usage THREADS KILOBYTES"
//   exit STATUS                 leaves the main function

#include <dlfcn.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>
#include <latch>
#include <map>
#include <mutex>
#include <sstream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "contract/contract_providers.h"
#include "contract/random_texts.h"

namespace
{

using Callback = void (*)(std::int32_t, void*);
void (*Init)(void*, void*, Callback) = nullptr;
void (*NotifyMsg)(std::int32_t, std::int32_t, const char*) = nullptr;
void (*Uninit)() = nullptr;

// Never destroyed: the panels' thread may outlive the main function.
std::mutex& stateLock = *new std::mutex;
std::condition_variable& changed = *new std::condition_variable;
auto& rules = *new std::vector<std::pair<std::string, std::string>>;  // needles and commands
std::string& componentName = *new std::string;
bool released = false;
bool counting = false;
std::atomic<bool> providersTell{false};
std::vector<std::jthread> threads;  // main thread only

void Execute(const std::string& command);

void Say(std::string line)
{
    for (std::size_t at = 0; (at = line.find('\n', at)) != std::string::npos;) {
        line.replace(at, 1, "\\n");
    }
    std::string command;
    {
        const std::lock_guard guard(stateLock);
        std::fprintf(stdout, "%s\n", line.c_str());
        std::fflush(stdout);
        counting = counting || line.find(" OnMessage 7 ") != std::string::npos;
        changed.notify_all();
        const auto rule = std::find_if(rules.begin(), rules.end(), [&line](const auto& r) {
            return line.find(r.first) != std::string::npos;
        });
        if (rule != rules.end()) {
            command = rule->second;
            rules.erase(rule);
        }
    }
    if (!command.empty()) {
        Execute(command);
    }
}

void OnCallback(std::int32_t code, void* data)
{
    std::string line = "callback " + std::to_string(code);
    if (code == 2) {
        auto& names = *static_cast<std::map<std::string, std::string>*>(data);
        for (const auto& [key, value] : names) {
            line += " " + key + "=" + value;
        }
        const std::lock_guard guard(stateLock);
        if (!componentName.empty()) {
            names["component_name"] = componentName;
        }
    } else if (data) {
        line += std::string(" ") + static_cast<const char*>(data);
    }
    Say(line);
}

// A quarter of each thread's messages go out at once, into a library that nobody has started yet; a quarter
// while it starts, the rest when panels are seen to get messages.
void Flood(std::int32_t id, unsigned thread, unsigned count)
{
    for (unsigned number = 0; number < count; ++number) {
        if (number >= count / 4) {
            std::unique_lock lock(stateLock);
            const auto isCounting = [] { return counting; };
            if (number == count / 2) {
                changed.wait(lock, isCounting);
            } else if (number < count / 2) {
                changed.wait_for(lock, std::chrono::microseconds(20), isCounting);
            }
        }
        char content[40];  // octal: what has the marker's 9 in it is taken for the test's own
        std::snprintf(content, sizeof content, "%u %o", thread, number);
        const std::string operate =
            R"({"operate":"notify","cmd":"7","bussiness":")" + std::string(content) + "\"}";
        const std::int32_t types[] = {0, 1, 7};
        NotifyMsg(types[number % 3], id, number % 3 == 1 ? content : operate.c_str());
    }
}

void FloodFromThreads(std::int32_t id, unsigned threadCount, unsigned count)
{
    std::latch together(threadCount);
    std::vector<std::jthread> flooding;
    for (unsigned thread = 0; thread < threadCount; ++thread) {
        flooding.emplace_back([&together, id, thread, count] {
            together.arrive_and_wait();
            Flood(id, thread, count);
        });
    }
}

void SayUsage()
{
    std::thread([] {}).join();  // a sanitizer's own thread comes with the first one
    long pages = 0;
    std::ifstream("/proc/self/statm") >> pages >> pages;
    const auto tasks = std::distance(std::filesystem::directory_iterator("/proc/self/task"), {});
    Say("usage " + std::to_string(tasks) + " " + std::to_string(pages * 4));
}

std::string Rest(std::istream& words)
{
    std::string text;
    words.get();  // the one blank
    std::getline(words, text);
    return text;
}

template <class T>
T Number(std::istream& words)
{
    T number{};
    words >> number;
    return number;
}

void SendRandomTexts(std::istream& words)
{
    panelry::test::RandomTexts texts(Number<unsigned>(words));
    const auto count = Number<unsigned>(words);
    std::vector<std::int32_t> ids;
    for (std::int32_t id = 0; words >> id;) {
        ids.push_back(id);
    }
    for (unsigned i = 0; i < count; ++i) {
        const std::int32_t id = ids[texts.Below(ids.size())];
        const auto type = static_cast<std::int32_t>(texts.Below(3));
        NotifyMsg(type, id, texts.Next().c_str());
    }
    Say("random done");
}

void Execute(const std::string& command)
{
    using panelry::test::ForEachSubscriber;
    using panelry::test::ProviderOf;
    using Verbs = std::map<std::string, std::function<void(std::istream&)>>;
    static const Verbs& verbs = *new Verbs{
        {"init",
         [](std::istream& words) {
             void* const quote =
                 ProviderOf<panelry::test::Quotes, QuoteProvider>(Number<std::uintptr_t>(words));
             void* const trade =
                 ProviderOf<panelry::test::Trades, TradeProvider>(Number<std::uintptr_t>(words));
             Init(quote, trade, Number<int>(words) != 0 ? &OnCallback : nullptr);
         }},
        {"notify",
         [](std::istream& words) {
             const auto type = Number<std::int32_t>(words);
             const auto id = Number<std::int32_t>(words);
             NotifyMsg(type, id, Rest(words).c_str());
         }},
        {"uninit",
         [](std::istream& words) {
             if (Rest(words) == "at exit") {
                 std::atexit(Uninit);
             } else {
                 Uninit();
                 Say("uninit returned");
             }
         }},
        {"name",
         [](std::istream& words) {
             const std::lock_guard guard(stateLock);
             componentName = Rest(words);
         }},
        {"providers", [](std::istream&) { providersTell = true; }},
        {"login",
         [](std::istream& words) {
             const auto state = Number<int>(words);
             ForEachSubscriber([state](TradeObserver& subscriber) { subscriber.OnLoginState(state); });
         }},
        {"cancel",
         [](std::istream&) {
             const auto map = std::make_shared<StringMap>(StringMap{{"chedan", "1"}});
             ForEachSubscriber([&map](TradeObserver& s) { s.OnDataPush("auto_refresh_data", map); });
         }},
        {"when",
         [](std::istream& words) {
             const std::string text = Rest(words);
             const std::size_t arrow = text.find(" -> ");
             const std::lock_guard guard(stateLock);
             rules.emplace_back(text.substr(0, arrow), text.substr(arrow + 4));
         }},
        {"hold",
         [](std::istream&) {
             Say("held");
             std::unique_lock lock(stateLock);
             changed.wait(lock, [] { return std::exchange(released, false); });
         }},
        {"release",
         [](std::istream&) {
             const std::lock_guard guard(stateLock);
             released = true;
             changed.notify_all();
         }},
        {"thread", [](std::istream& words) { threads.emplace_back(&Execute, Rest(words)); }},
        {"flood",
         [](std::istream& words) {
             const auto id = Number<std::int32_t>(words);
             const auto threadCount = Number<unsigned>(words);
             threads.emplace_back(&FloodFromThreads, id, threadCount, Number<unsigned>(words));
         }},
        {"join", [](std::istream&) { threads.clear(); }},
        {"random", SendRandomTexts},
        {"usage", [](std::istream&) { SayUsage(); }},
    };
    std::istringstream words(command);
    std::string verb;
    words >> verb;
    const auto found = verbs.find(verb);
    if (found == verbs.end()) {
        Say("unknown command: " + command);
    } else {
        found->second(words);
    }
}

}  // namespace

void panelry::test::HearProvider(const std::string& line)
{
    if (providersTell) {
        Say(line);
    }
}

// What the test modules find in the program that loaded the library.
extern "C" {
__attribute__((visibility("default"))) void ReportToHost(const char* line)
{
    Say(line);
}

__attribute__((visibility("default"))) std::uintptr_t NumberOfProvider(void* provider)
{
    const std::lock_guard guard(panelry::test::providersLock);
    return panelry::test::providerNumbers[provider];
}

__attribute__((visibility("default"))) bool HostReleased()
{
    const std::lock_guard guard(stateLock);
    return std::exchange(released, false);
}
}

int main(int argc, char* argv[])
{
    const bool global = argc > 2 && std::string(argv[2]) == "global";
    void* const library = dlopen(argv[1], RTLD_NOW | (global ? RTLD_GLOBAL : RTLD_LOCAL));
    if (!library) {
        std::fprintf(stderr, "cannot load the library: %s\n", dlerror());
        return 2;
    }
    Init = reinterpret_cast<decltype(Init)>(dlsym(library, "Init"));
    NotifyMsg = reinterpret_cast<decltype(NotifyMsg)>(dlsym(library, "NotifyMsg"));
    Uninit = reinterpret_cast<decltype(Uninit)>(dlsym(library, "Uninit"));
    int status = 0;
    for (std::string line;
         std::getline(std::cin, line) && std::sscanf(line.c_str(), "exit %d", &status) != 1;) {
        Execute(line);
    }
    threads.clear();  // joins them
    return status;
}
