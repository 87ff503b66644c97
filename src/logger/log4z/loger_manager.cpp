#include "logger/log4z/loger_manager.h"

#include <signal.h>

#include <chrono>
#include <exception>

#include "logger/log4z/old_logs.h"
#include "logger/log4z/text.h"

namespace log4z
{

namespace
{

constexpr char kMainKey[] = "Main";
constexpr std::uint32_t kFilesKept = 14;
constexpr std::int64_t kSecondsKept = 604800;  // seven days
constexpr std::chrono::seconds kStartPatience(3);
constexpr std::size_t kLongestText = kContentBytes - 1;

// A new thread inherits the mask of its maker. The host's signals are not for the worker, and neither are a
// file limit reached or a closed pipe: they come back as errors.
class WorkerSignalMask
{
public:
    WorkerSignalMask()
    {
        sigset_t mask;
        sigfillset(&mask);
        for (const int fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGTRAP, SIGSYS}) {
            sigdelset(&mask, fault);
        }
        pthread_sigmask(SIG_SETMASK, &mask, &m_former);
    }
    ~WorkerSignalMask() { pthread_sigmask(SIG_SETMASK, &m_former, nullptr); }
    WorkerSignalMask(const WorkerSignalMask&) = delete;
    WorkerSignalMask& operator=(const WorkerSignalMask&) = delete;

private:
    sigset_t m_former{};
};

// Retires the manager at the end of the process and leaves it in its place.
struct InstanceHolder {
    InstanceHolder() : manager(new LogerManager) {}
    ~InstanceHolder() { manager->Retire(); }
    InstanceHolder(const InstanceHolder&) = delete;
    InstanceHolder& operator=(const InstanceHolder&) = delete;

    LogerManager* const manager;
};

}  // namespace

LogerManager& LogerManager::Instance()
{
    static const InstanceHolder holder;
    return *holder.manager;
}

LogerManager::LogerManager(const panelry::logger::Surroundings& surroundings)
    : m_surroundings(surroundings), m_process(panelry::logger::ProcessNames::OfThisProcess())
{
    for (auto& gate : m_gates) {
        gate = kClosed;
    }
    LoggerSettings& main = Settings(0);
    main.key = main.name = kMainKey;
    main.enable = true;
    m_ids.emplace(kMainKey, 0);
    m_freeRecords.reserve(kFreeRecords);
    m_console.Refresh();
}

LogerManager::~LogerManager()
{
    Retire();
    DropFreeRecords();
}

void LogerManager::Retire() noexcept
{
    {
        const std::lock_guard guard(m_lifeLock);
        m_retired = true;
        if (m_thread.joinable()) {
            while (!m_running) {  // a start that wasn't waited for
                std::this_thread::yield();
            }
        }
    }
    try {
        LogerManager::ClearOldLogs(kFilesKept, kSecondsKept);
    } catch (const std::exception&) {
        // Files that come and go are no reason to end the process.
    }
    EndWorker();
}

bool LogerManager::Start()
{
    const std::lock_guard guard(m_lifeLock);
    if (m_running) {
        ShowText("log4z already start \r\n");
        return false;
    }
    if (m_retired || m_thread.joinable()) {  // the latter: a former start is still coming up
        return false;
    }
    StartThread();
    return m_up.get_future().wait_for(kStartPatience) == std::future_status::ready;
}

void LogerManager::StartThread()
{
    const WorkerSignalMask mask;
    m_up = std::promise<void>();
    m_thread = std::thread([this] { Run(); });
}

bool LogerManager::Stop()
{
    ClearOldLogs(kFilesKept, kSecondsKept);
    return EndWorker();
}

bool LogerManager::EndWorker()
{
    const std::lock_guard guard(m_lifeLock);
    if (!m_running) {
        return false;
    }
    ShowText("log4z stopping \r\n");
    SetRunning(false);
    m_wake.Wake();
    m_thread.join();
    DropFreeRecords();
    return true;
}

void LogerManager::DropFreeRecords()
{
    const std::lock_guard guard(m_freeLock);
    for (const LogRecord* const record : m_freeRecords) {
        delete record;
    }
    m_freeRecords.clear();
}

// Under the queue's lock: a line that finds the manager running there is seen by the worker before its end.
void LogerManager::SetRunning(bool running)
{
    {
        const std::lock_guard guard(m_queueLock);
        m_running = running;
    }
    RenewGates();
}

void LogerManager::RenewGates()
{
    const std::lock_guard guard(m_settingsLock);
    for (int id = 0; id <= m_lastId; ++id) {
        RenewGate(id);
    }
}

void LogerManager::RenewGate(int id)
{
    const LoggerSettings& logger = Settings(id);
    m_gates[static_cast<std::size_t>(id)] = m_running && logger.enable ? logger.level.load() : kClosed;
}

void LogerManager::EnableAgain()
{
    for (int id = 0; id <= m_lastId; ++id) {
        if (m_endedByWorker[static_cast<std::size_t>(id)]) {
            SetEnabled(id, true);
        }
    }
}

int LogerManager::CreateLogger(const char* key)
{
    if (!key) {
        return -1;
    }
    const std::string name(panelry::logger::Trimmed(key));
    {
        const std::lock_guard guard(m_settingsLock);
        if (const auto known = m_ids.find(name); known != m_ids.end()) {
            return known->second;
        }
        const int id = m_lastId + 1;
        if (id < LOGGER_MAX) {
            LoggerSettings& logger = Settings(id);
            logger.key = logger.name = name;
            logger.enable = true;
            m_ids.emplace(name, id);
            m_lastId = id;
            RenewGate(id);
            return id;
        }
    }
    ShowText("log4z: CreateLogger can not create|writeover, because loggerid need < LOGGER_MAX! \r\n");
    return -1;
}

int LogerManager::FindLogger(const char* key)
{
    if (!key) {
        return -1;
    }
    const std::lock_guard guard(m_settingsLock);
    const auto known = m_ids.find(key);
    return known == m_ids.end() ? -1 : known->second;
}

bool LogerManager::SetEnabled(int id, bool enabled)
{
    if (!IsId(id)) {
        return false;
    }
    if (!enabled) {
        return Change(id, kEnable, 0);
    }
    ApplyChange(id, kEnable, 1, {});
    return true;
}

bool LogerManager::SetName(int id, const char* name)
{
    return name && *name != '\0' && Change(id, kName, 0, name);
}

bool LogerManager::SetPath(int id, const char* path)
{
    if (!path || *path == '\0') {
        return false;
    }
    std::string directory(path);
    if (directory.back() != '\\' && directory.back() != '/') {
        directory += '/';
    }
    return Change(id, kPath, 0, directory);
}

bool LogerManager::SetLevel(int id, int level)
{
    if (!IsId(id)) {
        return false;
    }
    if (level > Settings(id).level) {
        return Change(id, kLevel, level);
    }
    ApplyChange(id, kLevel, level, {});
    return true;
}

int LogerManager::GetLevel(int id)
{
    return IsId(id) ? Settings(id).level.load() : static_cast<int>(Fatal);
}

bool LogerManager::SetFileLine(int id, bool on)
{
    return Change(id, kFileLine, on);
}

bool LogerManager::SetDisplay(int id, bool on)
{
    return Change(id, kDisplay, on);
}

bool LogerManager::SetOutFile(int id, bool on)
{
    return Change(id, kOutFile, on);
}

bool LogerManager::SetLimitSize(int id, int megabytes)
{
    return Change(id, kLimitSize, megabytes == 0 ? -1 : megabytes);
}

bool LogerManager::SetMonthDir(int id, bool on)
{
    return Change(id, kMonthDir, on);
}

bool LogerManager::SetReserve(int id, std::int32_t seconds)
{
    return Change(id, kReserve, seconds);
}

bool LogerManager::SetRereadInterval(std::uint32_t seconds)
{
    m_rereadInterval = seconds;
    return true;
}

bool LogerManager::IsEnabled(int id)
{
    return IsId(id) && Settings(id).enable;
}

std::uint32_t LogerManager::ActiveLoggers()
{
    std::uint32_t active = 0;
    for (int id = 0; id <= m_lastId; ++id) {
        active += Settings(id).enable ? 1 : 0;
    }
    return active;
}

bool LogerManager::Change(int id, Command kind, std::int32_t value, std::string_view text)
{
    if (!IsId(id) || text.size() > kLongestText) {
        return false;
    }
    panelry::logger::QueuedRecord command = {};
    command.id = id;
    command.kind = kind;
    command.value = value;
    if (!Enqueue(command, text)) {  // nothing runs
        ApplyChange(id, kind, value, text);
    }
    return true;
}

void LogerManager::ApplyChange(int id, std::int32_t kind, std::int32_t value, std::string_view text)
{
    const std::lock_guard guard(m_settingsLock);
    LoggerSettings& logger = Settings(id);
    switch (kind) {
        case kName:
            logger.name = text;
            break;
        case kPath:
            logger.path = text;
            break;
        case kLevel:
            logger.level = value;
            break;
        case kLimitSize:
            logger.limitsize = value;
            break;
        case kReserve:
            logger.reserve = value < 0 ? 0 : value;
            break;
        default:
            ApplySwitch(logger, kind, value);
    }
    RenewGate(id);
}

void LogerManager::ApplySwitch(LoggerSettings& logger, std::int32_t kind, std::int32_t value)
{
    const bool on = value != 0;
    switch (kind) {
        case kEnable:
            logger.enable = on;
            break;
        case kFileLine:
            logger.fileline = on;
            break;
        case kDisplay:
            logger.display = on;
            break;
        case kOutFile:
            logger.outfile = on;
            break;
        case kMonthDir:
            logger.monthdir = on;
            break;
        default:
            break;  // nothing of ours
    }
}

void LogerManager::ShowText(std::string_view text)
{
    m_console.Refresh();
    m_console.Show(text, Fatal);
}

void LogerManager::ClearOldLogs(std::uint32_t maxFiles, std::int64_t maxAgeSeconds)
{
    panelry::logger::ClearOldLogFiles(kUsualDirectory, maxFiles, maxAgeSeconds, m_surroundings.NowSeconds());
}

}  // namespace log4z
