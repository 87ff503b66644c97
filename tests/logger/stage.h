#pragma once

#include <QTemporaryDir>
#include <atomic>
#include <functional>
#include <string>
#include <vector>

#include "logger/log.h"
#include "logger/log4z/loger_manager.h"
#include "logger/log4z/surroundings.h"

/// What the logger's tests stand on. All times are in the time zone that UseShanghaiTime() sets.
namespace panelry::test
{

/// No daylight saving, eight hours east of Greenwich.
void UseShanghaiTime();

/// Seconds since 1970 of a local date and time.
std::int64_t At(int year, int month, int day, int hour = 0, int minute = 0, int second = 0);

/// An empty directory that is the current one while it lives.
class Stage
{
public:
    Stage();
    ~Stage();
    Q_DISABLE_COPY(Stage)

private:
    std::string m_former;
    QTemporaryDir m_directory;
};

/// On a stage of its own: a clock that stands where the test puts it, and a note of who was put to sleep.
class SetSurroundings : public logger::Surroundings
{
public:
    std::int64_t NowMicros() const override
    {
        ++looks;
        return now * logger::kMicrosASecond + millis * 1000;
    }
    void Sleep(int milliseconds) const override { slept += milliseconds; }
    std::uint32_t Random() const override
    {
        if (atRandom) {
            atRandom();
        }
        return random;
    }

    Stage stage;
    std::atomic<std::int64_t> now{At(2026, 11, 22, 21, 25, 58)};
    std::atomic<int> millis{7};
    std::atomic<std::uint32_t> random{0};
    std::function<void()> atRandom;  // runs where a caller draws a number; set while nobody does
    mutable std::atomic<int> slept{0};
    mutable std::atomic<int> looks{0};  // at the clock
};

/// A manager on such surroundings, and its main logger.
struct ManagerOnStage : SetSurroundings, log4z::LogerManager {
    ManagerOnStage() : LogerManager(static_cast<SetSurroundings&>(*this)) {}

    const logger::Logger log{0, *this};
};

struct RunningManager : ManagerOnStage {
    RunningManager() { Start(); }
};

/// The name of a log file of this process: "<program>_<logger>_<minute>_<pid>_<index>.log".
std::string FileName(const std::string& logger, const std::string& minute, int index = 0);

/// Files below a directory, relative to it, sorted.
std::vector<std::string> FilesIn(const std::string& directory);
std::string Contents(const std::string& path);
void WriteFile(const std::string& path, const std::string& contents);
/// A file that was written at a time, seconds since 1970.
void WriteOldFile(const std::string& path, std::int64_t writtenAt);

/// The texts behind "] " of all lines in the files of a logger below a directory, files in order of their
/// names. The lines of the worker's start are left out.
std::vector<std::string> TextsOf(const std::string& logger, const std::string& directory = "data/log");

/// What `action` prints to standard output: a pipe, or a terminal.
std::string Printed(const std::function<void()>& action, bool toTerminal = false);

}  // namespace panelry::test
