// How long it takes from Init to a running system, without module libraries and with fifty, against a bare
// QApplication on a thread of its own that loads as many bare libraries and resolves two functions in each.
// Every measurement is a process of its own.

#include <QApplication>
#include <QLibrary>
#include <QTimer>
#include <array>
#include <atomic>
#include <charconv>
#include <cstdio>
#include <filesystem>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>

#include "bridge/host_bridge.h"
#include "bridge/host_gate.h"
#include "modules/bench_messages.h"
#include "support/rounds.h"
#include "support/stage.h"

namespace fs = std::filesystem;
using panelry::bench::Check;
using panelry::bench::Clock;
using panelry::bench::Figure;

namespace
{

constexpr int kLibraries = 50;
constexpr int kRounds = 31;

double MillisecondsUntil(const std::atomic<bool>& running, Clock::time_point start)
{
    while (!running) {
        std::this_thread::sleep_for(std::chrono::microseconds(10));
    }
    return panelry::bench::Seconds(start) * 1e3;
}

std::atomic<int> answers{0};

void CountAnswer(std::int32_t nCode, void* /*pData*/)
{
    if (nCode == 205) {
        ++answers;
    }
}

double StartOurs(int libraries)
{
    const Clock::time_point start = Clock::now();
    panelry::bridge::Init(nullptr, nullptr, &CountAnswer);
    const double milliseconds = MillisecondsUntil(panelry::bridge::ApplicationRunning, start);
    const std::string ask =
        R"({"operate":"notify","cmd":")" + std::to_string(panelry::bench::kReportToHost) + R"("})";
    for (int id = 1; id <= libraries; ++id) {
        panelry::bridge::NotifyMsg(0, id, ask.c_str());
    }
    panelry::bridge::Uninit();
    Check(answers == libraries, "a module library didn't answer");
    return milliseconds;
}

double StartBare(int libraries)
{
    std::atomic<bool> running{false};
    int resolved = 0;
    const Clock::time_point start = Clock::now();
    std::thread thread([&] {
        int argc = 1;
        char noName[] = "";
        char* argv[] = {noName, nullptr};
        QApplication application(argc, argv);
        const QString directory = QCoreApplication::applicationDirPath();
        for (int id = 1; id <= libraries; ++id) {
            QLibrary library(QStringLiteral("%1/adsplugins/bench_module_%2.so").arg(directory).arg(id));
            resolved += library.load() && library.resolve("CreateModule") && library.resolve("GetModuleInfo");
        }
        QTimer::singleShot(0, [&] { running = true; });
        QApplication::exec();
    });
    const double milliseconds = MillisecondsUntil(running, start);
    QCoreApplication::quit();
    thread.join();
    Check(resolved == libraries, "a bare library didn't load");
    return milliseconds;
}

// Milliseconds, from a fresh process.
double Run(panelry::bench::Stage& stage, const char* side, int libraries)
{
    const std::string output = stage.RunSelf(std::string(side) + " " + std::to_string(libraries));
    const std::size_t time = output.rfind('\n') + 1;  // the library says that it has no screen to hook
    double milliseconds = 0;
    const auto result = std::from_chars(output.data() + time, output.data() + output.size(), milliseconds);
    Check(result.ec == std::errc(), "a child process gave no time");
    return milliseconds;
}

int Child(std::string_view side, const char* libraries)
{
    const int count = std::stoi(libraries);
    const double milliseconds = side == "ours" ? StartOurs(count) : StartBare(count);
    std::array<char, 64> text{};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), milliseconds);
    std::fwrite(text.data(), 1, static_cast<std::size_t>(end.ptr - text.data()), stdout);
    return 0;
}

void Compare()
{
    panelry::bench::Stage empty;
    panelry::bench::Stage full;
    full.AddModules(kLibraries);
    Figure without("Init to running, no modules, beyond bare", "ms", 5);
    Figure each("Each module library, beyond bare", "ms", 0.15);
    const auto side = [&](const char* name) {
        return [&, name] { return std::array{Run(empty, name, 0), Run(full, name, kLibraries)}; };
    };
    panelry::bench::Interleave(kRounds, side("ours"), side("bare"), [&](const auto& ours, const auto& bare) {
        without.AddDifference(ours[0], bare[0], ours[0] - bare[0]);
        const double oursEach = (ours[1] - ours[0]) / kLibraries;
        const double bareEach = (bare[1] - bare[0]) / kLibraries;
        each.AddDifference(oursEach, bareEach, oursEach - bareEach);
    });
    without.Print();
    each.Print();
}

}  // namespace

int main(int argc, char* argv[])
{
    if (argc == 3) {
        return Child(argv[1], argv[2]);
    }
    Compare();
    return 0;
}
