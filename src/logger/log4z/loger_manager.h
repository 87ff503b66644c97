#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <future>
#include <limits>
#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "logger/log4z/adaptive_mutex.h"
#include "logger/log4z/console.h"
#include "logger/log4z/i_log4z_manager.h"
#include "logger/log4z/log_path.h"
#include "logger/log4z/logger_settings.h"
#include "logger/log4z/record_queue.h"
#include "logger/log4z/surroundings.h"
#include "logger/log4z/wake_signal.h"

namespace panelry::logger
{
struct LoggerConfig;
}

namespace log4z
{

/// The logger manager: see ILog4zManager for what callers may do.
///
/// Ownership: one a process by Instance(); tests make their own. Owns the worker thread, records that wait to
///   be used again, and what is queued.
/// Threading: any thread. Callers build a line in a record of their own and hand its bytes to the queue; the
///   worker takes the whole queue over and writes to files and console with no lock held. Locks:
///   m_lifeLock        one Start or Stop at a time; held while the worker comes up or ends
///   m_configLock      one configuration at a time; the setters below it may take the next two
///   m_settingsLock    ids, the texts of the settings, the gates
///   m_queueLock       the callers' side of the queue, m_running's way to false
///   m_freeLock        the records that wait
///   The last three are never held together, and nothing is written or formatted under them.
/// Failures: nothing is thrown but by a failed thread start and by the clearing of old files. A file that
///   can't be opened switches `outfile` off for its logger.
class LogerManager : public ILog4zManager
{
public:
    /// The process's manager. At the end of the process its worker is ended and all lines are written; the
    /// object itself stays, stopped for good: a module that dies later may still call it.
    static LogerManager& Instance();

    explicit LogerManager(
        const panelry::logger::Surroundings& surroundings = panelry::logger::Surroundings::Real());
    ~LogerManager() override;
    LogerManager(const LogerManager&) = delete;
    LogerManager& operator=(const LogerManager&) = delete;

    bool Config(const char* file) override;
    bool ConfigFromText(const char* text) override;
    int CreateLogger(const char* key) override;
    bool Start() override;
    bool Stop() override;
    int FindLogger(const char* key) override;
    bool CanPush(int id, int level) override;
    bool PushLine(LogRecord* record, const char* file, int line) override;
    bool SetEnabled(int id, bool enabled) override;
    bool SetName(int id, const char* name) override;
    bool SetPath(int id, const char* path) override;
    bool SetLevel(int id, int level) override;
    int GetLevel(int id) override;
    bool SetFileLine(int id, bool on) override;
    bool SetDisplay(int id, bool on) override;
    bool SetOutFile(int id, bool on) override;
    bool SetLimitSize(int id, int megabytes) override;
    bool SetMonthDir(int id, bool on) override;
    bool SetReserve(int id, std::int32_t seconds) override;
    bool SetRereadInterval(std::uint32_t seconds) override;
    bool RereadConfig() override;
    bool IsEnabled(int id) override;
    std::uint64_t WriteCount() override { return m_writes; }
    std::uint64_t WriteBytes() override { return m_writtenBytes; }
    std::uint64_t PushCount() override { return m_pushed; }
    std::uint64_t PopCount() override { return m_popped; }
    std::uint32_t ActiveLoggers() override;
    LogRecord* MakeRecord(int id, int level, const char* file, int line) override;
    void FreeRecord(LogRecord* record) override;
    void ClearOldLogs(std::uint32_t maxFiles, std::int64_t maxAgeSeconds) override;

    /// The worker thread.
    virtual void Run();

    /// The lowest level that passes for a logger at this moment; above all levels while it is off or nothing
    /// runs. Good as long as the manager. `id` lies below LOGGER_MAX.
    const std::atomic<std::int64_t>& Gate(int id) const { return m_gates[static_cast<std::size_t>(id)]; }

    /// Enables again what the end of the last worker disabled.
    void EnableAgain();

    /// For a handler of fatal signals: has everything written that is queued now, then returns. Gives up
    /// when nothing moves for two seconds. Takes no memory and no lock that it could wait for.
    void SaveQueued() noexcept;

    /// Stops for good, whatever the file system says.
    void Retire() noexcept;

private:
    static constexpr std::int64_t kClosed = std::numeric_limits<std::int64_t>::max();  // no level gets there

    LoggerSettings& Settings(int id) { return m_loggers[static_cast<std::size_t>(id)]; }
    bool IsId(int id) const { return id >= 0 && id <= m_lastId; }
    bool Passes(int id, int level) const { return IsId(id) && level >= Gate(id); }
    void ShowText(std::string_view text);

    // loger_manager.cpp: ids, life, settings
    void RenewGate(int id);
    void RenewGates();
    void SetRunning(bool running);
    void StartThread();
    bool EndWorker();
    void DropFreeRecords();
    bool Change(int id, Command kind, std::int32_t value, std::string_view text = {});
    void ApplyChange(int id, std::int32_t kind, std::int32_t value, std::string_view text);
    void ApplySwitch(LoggerSettings& logger, std::int32_t kind, std::int32_t value);
    bool ApplyConfig(std::string_view text, bool hot);
    void ConfigureLogger(const std::string& key, const panelry::logger::LoggerConfig& config, bool hot);

    // loger_lines.cpp: the callers' side
    void SlowDown(std::size_t backlog);
    bool Enqueue(const panelry::logger::QueuedRecord& head, std::string_view text);

    // loger_worker.cpp: the worker's side
    void Announce();
    void DrainQueue();
    bool TakeQueue();
    void Handle(const panelry::logger::QueuedRecord& record);
    void WriteLine(LoggerSettings& logger, const panelry::logger::QueuedRecord& record);
    bool OpenFile(LoggerSettings& logger, const panelry::logger::QueuedRecord& record);
    bool FileMustChange(LoggerSettings& logger, std::int64_t time);
    bool OpenNewFile(LoggerSettings& logger, std::int64_t time);
    std::string NewFilePath(LoggerSettings& logger, std::int64_t time);
    void RememberFile(LoggerSettings& logger, const std::string& path);
    void FlushFiles();
    bool EndIfDone();
    void LookAtConfig();
    void SaveAsWorker() noexcept;
    void SaveLine(const panelry::logger::QueuedRecord& record) noexcept;

    const panelry::logger::Surroundings& m_surroundings;
    std::atomic<bool> m_running{false};
    std::promise<void> m_up;  // a new one for each start
    std::thread m_thread;
    std::atomic<std::uint32_t> m_rereadInterval{0};  // seconds, 0: off
    const panelry::logger::ProcessNames m_process;

    std::mutex m_lifeLock;
    bool m_retired = false;

    std::mutex m_configLock;  // guards the next two
    std::uint64_t m_textSum = 0;
    std::string m_configFile;

    std::mutex m_settingsLock;
    std::map<std::string, int> m_ids;
    std::atomic<int> m_lastId{0};
    std::array<LoggerSettings, LOGGER_MAX> m_loggers;
    std::array<bool, LOGGER_MAX> m_endedByWorker{};
    alignas(64) std::array<std::atomic<std::int64_t>, LOGGER_MAX> m_gates;

    // The callers' side: every line passes here, so these share a cache line with nothing else.
    alignas(64) panelry::logger::AdaptiveMutex m_queueLock;  // guards writes of the next three
    panelry::logger::RecordQueue m_queue;
    std::atomic<std::size_t> m_backlog{0};  // m_queue's size, read without the lock
    std::atomic<std::uint64_t> m_pushed{0};

    alignas(64) panelry::logger::AdaptiveMutex m_freeLock;  // guards the next one
    std::vector<LogRecord*> m_freeRecords;

    panelry::logger::Console m_console;
    panelry::logger::WakeSignal m_wake;

    // Written by the worker alone.
    alignas(64) panelry::logger::RecordQueue m_drainQueue;
    std::array<std::uint32_t, LOGGER_MAX> m_unflushed{};  // lines a logger
    std::int64_t m_lastReread = 0;
    std::uint64_t m_takenOver = 0;            // m_pushed when the queue was last taken over
    std::atomic<std::uint64_t> m_settled{0};  // pushed records that are in their files
    std::atomic<std::uint64_t> m_popped{0};
    std::atomic<std::uint64_t> m_writes{0};
    std::atomic<std::uint64_t> m_writtenBytes{0};
    std::atomic<std::uint32_t> m_workerThread{0};  // the kernel's id, 0: none
    std::atomic<bool> m_saving{false};  // a fatal signal came: no console, nothing back to the heap
};

}  // namespace log4z
