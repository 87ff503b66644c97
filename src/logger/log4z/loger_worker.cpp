// LogerManager: the worker's side, from the queue to files and console.

#include <pthread.h>
#include <time.h>

#include <filesystem>
#include <string>
#include <system_error>

#include "logger/log.h"
#include "logger/log4z/local_day.h"
#include "logger/log4z/loger_manager.h"
#include "logger/log4z/thread_id.h"

namespace log4z
{

namespace
{

using panelry::logger::QueuedRecord;

constexpr int kIdleMs = 50;
constexpr std::size_t kHistoryLimit = 15;  // files; from here on expired ones are removed
constexpr int kSavePatienceMs = 2000;

// The counters have one writer.
void AddTo(std::atomic<std::uint64_t>& counter, std::uint64_t count)
{
    counter.store(counter.load(std::memory_order_relaxed) + count, std::memory_order_relaxed);
}

void WaitAMillisecond()
{
    const timespec pause{0, 1'000'000};
    ::nanosleep(&pause, nullptr);
}

}  // namespace

void LogerManager::Run()
{
    m_workerThread = panelry::logger::ThreadId();
    m_lastReread = m_surroundings.NowSeconds();
    m_endedByWorker.fill(false);
    ::pthread_setname_np(::pthread_self(), "panelry-log");
    SetRunning(true);
    Announce();
    m_up.set_value();
    while (true) {
        DrainQueue();
        FlushFiles();
        if (m_running) {
            m_wake.Sleep(kIdleMs);
        }
        if (EndIfDone()) {
            break;
        }
        LookAtConfig();
    }
    m_workerThread = 0;
}

void LogerManager::Announce()
{
    const panelry::logger::Logger log(0, *this);
    log.Write(Alarm, "-----------------  log4z thread started!   ----------------------------");
    for (int id = 0; id <= m_lastId; ++id) {
        const LoggerSettings& logger = Settings(id);
        if (!logger.enable) {
            continue;
        }
        std::unique_lock guard(m_settingsLock);
        const std::string key = logger.key;
        const std::string name = logger.name;
        const std::string path = logger.path;
        guard.unlock();
        log.Write(Alarm, "logger id=", id, " key=", key, " name=", name, " path=", path,
                  " level=", logger.level.load(), " display=", logger.display.load());
    }
}

void LogerManager::DrainQueue()
{
    m_console.Refresh();
    while (TakeQueue()) {
        while (const QueuedRecord* const record = m_drainQueue.Take()) {
            Handle(*record);
        }
        m_drainQueue.Recycle(m_saving);
        if (m_saving) {
            FlushFiles();  // others may go on logging: the queue need never be empty
        }
    }
    m_console.Flush();
}

bool LogerManager::TakeQueue()
{
    const std::lock_guard guard(m_queueLock);
    if (m_queue.Size() == 0) {
        return false;
    }
    m_queue.Swap(m_drainQueue);
    m_backlog.store(0, std::memory_order_relaxed);
    m_takenOver = m_pushed.load(std::memory_order_relaxed);
    return true;
}

void LogerManager::Handle(const QueuedRecord& record)
{
    if (!IsId(record.id)) {
        return;
    }
    LoggerSettings& logger = Settings(record.id);
    if (record.kind != kNoCommand) {
        ApplyChange(record.id, record.kind, record.value, record.Text());
        logger.file.Close();  // the next line opens it with the new settings
        return;
    }
    AddTo(m_popped, 1);
    if (!logger.enable || record.level < logger.level) {
        return;
    }
    if (logger.display && !m_saving) {
        m_console.Show(record.Text(), record.level);
    }
    if (logger.outfile) {
        WriteLine(logger, record);
    }
}

void LogerManager::WriteLine(LoggerSettings& logger, const QueuedRecord& record)
{
    if (!OpenFile(logger, record)) {
        return;
    }
    std::uint32_t written = record.length;
    if (!logger.file.Append(record.Text())) {
        logger.file.Close();
        written = 0;
    }
    logger.file_bytes += written;
    ++m_unflushed[static_cast<std::size_t>(record.id)];
    AddTo(m_writes, 1);
    AddTo(m_writtenBytes, written);
}

bool LogerManager::OpenFile(LoggerSettings& logger, const QueuedRecord& record)
{
    if (FileMustChange(logger, record.time)) {
        logger.file.Close();
    }
    return logger.file.IsOpen() || OpenNewFile(logger, record.time);
}

// The size counts before the line is written: a file may pass its limit by one line.
bool LogerManager::FileMustChange(LoggerSettings& logger, std::int64_t time)
{
    if (!panelry::logger::IsInDay(time, logger.file_day)) {
        logger.file_index = 0;
        return true;
    }
    // In 32 bits, whatever comes out: -1 is as good as no limit, 4096 is a limit of 0.
    const std::uint32_t limit = static_cast<std::uint32_t>(logger.limitsize.load()) << 20U;
    if (limit < logger.file_bytes) {
        ++logger.file_index;
        return true;
    }
    return false;
}

bool LogerManager::OpenNewFile(LoggerSettings& logger, std::int64_t time)
{
    const std::string path = NewFilePath(logger, time);
    std::uint64_t size = 0;
    if (!logger.file.Open(path, size)) {
        constexpr char frame[] = " !!!!!!!!!!!!!!!!!!!!!!!!!! \r\n";
        ShowText(frame);
        ShowText("log4z: can not open log file " + path + ". \r\n");
        ShowText(frame);
        logger.outfile = false;
        return false;
    }
    logger.file_bytes = static_cast<std::uint32_t>(size);
    if (logger.reserve > 0) {
        RememberFile(logger, path);
    }
    return true;
}

std::string LogerManager::NewFilePath(LoggerSettings& logger, std::int64_t time)
{
    const panelry::logger::LocalDay day(time);
    logger.file_time = time;
    logger.file_bytes = 0;
    logger.file_day = day.midnight;
    std::unique_lock guard(m_settingsLock);
    std::string directory = logger.path;
    const std::string name = logger.name;
    guard.unlock();
    if (logger.monthdir) {
        directory += panelry::logger::MonthDirectory(day.date);
    }
    std::error_code error;  // shows when the file is opened
    std::filesystem::create_directories(directory, error);
    return directory + panelry::logger::LogFileName(m_process, name, day.date, logger.file_index);
}

void LogerManager::RememberFile(LoggerSettings& logger, const std::string& path)
{
    const std::int64_t now = m_surroundings.NowSeconds();
    auto& history = logger.history;
    if (history.size() >= kHistoryLimit) {
        while (!history.empty() && now - history.front().first > logger.reserve) {
            std::error_code error;  // somebody else may have removed it
            std::filesystem::remove(history.front().second, error);
            history.pop_front();
        }
    }
    if (history.empty() || history.back().second != path) {
        history.emplace_back(now, path);
    }
}

void LogerManager::FlushFiles()
{
    for (int id = 0; id <= m_lastId; ++id) {
        LoggerSettings& logger = Settings(id);
        std::uint32_t& unflushed = m_unflushed[static_cast<std::size_t>(id)];
        if (!logger.enable || (unflushed > 0 && logger.file.IsOpen() && !logger.file.Flush())) {
            logger.file.Close();
        }
        unflushed = 0;
    }
    m_settled.store(m_takenOver);
}

bool LogerManager::EndIfDone()
{
    {
        const std::lock_guard guard(m_queueLock);
        if (m_running || m_queue.Size() > 0) {
            return false;
        }
    }
    const std::lock_guard guard(m_settingsLock);
    for (int id = 0; id <= m_lastId; ++id) {
        LoggerSettings& logger = Settings(id);
        if (logger.enable) {
            logger.enable = false;
            m_endedByWorker[static_cast<std::size_t>(id)] = true;
            logger.file.Close();
        }
    }
    return true;
}

void LogerManager::LookAtConfig()
{
    const std::uint32_t interval = m_rereadInterval;
    const std::int64_t now = m_surroundings.NowSeconds();
    const bool wentBack = now < m_lastReread;
    if (interval != 0 && (wentBack || now - m_lastReread > interval)) {
        RereadConfig();
        m_lastReread = now;
    }
}

// A healthy worker does it best: it has its files and holds no lock of the thread that crashed. The thread
// may have crashed inside the heap, and its first look at one of our thread-locals would come back to it.
void LogerManager::SaveQueued() noexcept
{
    const std::uint32_t worker = m_workerThread;
    if (worker == 0) {
        return;
    }
    if (worker == panelry::logger::ThreadId()) {
        SaveAsWorker();
        return;
    }
    m_saving = true;
    const std::uint64_t wanted = m_pushed;
    std::uint64_t lastSeen = m_popped;
    for (int waited = 0; m_settled < wanted && waited < kSavePatienceMs; ++waited) {
        m_wake.Wake();
        WaitAMillisecond();
        if (const std::uint64_t seen = m_popped; seen != lastSeen) {
            lastSeen = seen;
            waited = 0;
        }
    }
    m_saving = false;  // whoever handles the signal after us may go on
}

// The worker itself crashed: what goes to files that are open is saved.
void LogerManager::SaveAsWorker() noexcept
{
    while (const QueuedRecord* const record = m_drainQueue.Take()) {
        SaveLine(*record);
    }
    for (int attempt = 0; attempt < kSavePatienceMs; ++attempt) {
        if (m_queueLock.try_lock()) {
            while (const QueuedRecord* const record = m_queue.Take()) {
                SaveLine(*record);
            }
            m_queueLock.unlock();
            break;
        }
        WaitAMillisecond();
    }
    for (LoggerSettings& logger : m_loggers) {
        if (logger.file.IsOpen()) {
            logger.file.Flush();
        }
    }
}

void LogerManager::SaveLine(const QueuedRecord& record) noexcept
{
    if (!IsId(record.id) || record.kind != kNoCommand) {
        return;
    }
    LoggerSettings& logger = Settings(record.id);
    if (logger.enable && record.level >= logger.level && logger.outfile && logger.file.IsOpen()) {
        logger.file.Append(record.Text());
    }
}

}  // namespace log4z
