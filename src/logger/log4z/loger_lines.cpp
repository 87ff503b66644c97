// LogerManager: the callers' side, from a test whether a line passes to the queue.

#include <algorithm>
#include <charconv>
#include <cstring>
#include <new>

#include "logger/log4z/loger_manager.h"
#include "logger/log4z/thread_lines.h"

namespace log4z
{

namespace
{

constexpr std::int32_t kLongestLine = static_cast<std::int32_t>(kContentBytes) - 3;  // less CR, LF, NUL
constexpr std::size_t kWakeAt = kSoftQueueLimit / 2;

using panelry::logger::kMicrosASecond;
using panelry::logger::ThreadLines;

// The file's name without its directories, which are overwritten as they turn out to be some.
void AppendPlace(LogRecord& record, const char* file, int line)
{
    constexpr std::size_t room = 16;  // for the line's number and what stands around it
    char* const start = record.content + record.length + 1;
    const char* const limit = record.content + kContentBytes - room;
    char* out = start;
    start[-1] = '[';
    for (; *file != '\0'; ++file) {
        if (*file == '/' || *file == '\\') {
            out = start;
        } else if (out < limit) {
            *out++ = *file;
        }
    }
    *out++ = ':';
    out = std::to_chars(out, record.content + kContentBytes, line).ptr;
    *out++ = ']';
    *out++ = ' ';
    record.length = static_cast<std::int32_t>(out - record.content);
}

void EndLine(LogRecord& record)
{
    record.length = std::clamp(record.length, 0, kLongestLine);
    std::memcpy(record.content + record.length, "\r\n", 3);
    record.length += 2;
}

}  // namespace

bool LogerManager::CanPush(int id, int level)
{
    if (!Passes(id, level)) {
        return false;
    }
    const std::size_t backlog = m_backlog.load(std::memory_order_relaxed);
    if (backlog > kSoftQueueLimit) {
        SlowDown(backlog);
    }
    return true;
}

// From nothing at the soft limit to a sleep of 100 ms for every line at twice that.
void LogerManager::SlowDown(std::size_t backlog)
{
    if (ThreadLines::OfThisThread().Id() == m_workerThread) {
        return;  // nobody else would shorten the queue
    }
    const std::uint64_t excess = static_cast<std::uint64_t>(backlog) * 100 - kSoftQueueLimit * 100;
    const auto rate = static_cast<std::uint32_t>(std::min<std::uint64_t>(excess / kSoftQueueLimit, 100));
    if (m_surroundings.Random() % 100 >= rate) {
        return;
    }
    if (rate > 50) {
        const std::lock_guard guard(m_queueLock);
        if (m_queue.Size() <= kSoftQueueLimit) {
            return;
        }
    }
    m_surroundings.Sleep(static_cast<int>(rate));
}

LogRecord* LogerManager::MakeRecord(int id, int level, const char* file, int line)
{
    ThreadLines& lines = ThreadLines::OfThisThread();
    LogRecord* record = lines.TakeRecord();
    if (!record) {
        const std::lock_guard guard(m_freeLock);
        if (!m_freeRecords.empty()) {
            record = m_freeRecords.back();
            m_freeRecords.pop_back();
        }
    }
    if (!record && !(record = new (std::nothrow) LogRecord)) {
        return nullptr;
    }
    const std::int64_t now = m_surroundings.NowMicros();
    record->id = id;
    record->kind = kNoCommand;
    record->value = 0;
    record->level = level;
    record->time = now / kMicrosASecond;
    record->millis = static_cast<std::uint32_t>(now % kMicrosASecond / 1000);
    record->thread_id = lines.Id();
    lines.WriteHead(*record);
    if (file && IsId(id) && Settings(id).fileline) {
        AppendPlace(*record, file, line);
    }
    return record;
}

void LogerManager::FreeRecord(LogRecord* record)
{
    if (!record || ThreadLines::OfThisThread().KeepRecord(record)) {
        return;
    }
    {
        const std::lock_guard guard(m_freeLock);
        if (m_freeRecords.size() < kFreeRecords) {
            m_freeRecords.push_back(record);  // the room is reserved
            return;
        }
    }
    delete record;
}

// The queue gets the bytes that are used; the record itself is free again.
bool LogerManager::PushLine(LogRecord* record, const char* /*file*/, int /*line*/)
{
    bool pushed = false;
    if (record && Passes(record->id, record->level)) {
        EndLine(*record);
        panelry::logger::QueuedRecord head = {};
        head.id = record->id;
        head.kind = record->kind;
        head.value = record->value;
        head.level = record->level;
        head.time = record->time;
        pushed = Enqueue(head, {record->content, static_cast<std::size_t>(record->length)});
    }
    FreeRecord(record);
    return pushed;
}

bool LogerManager::Enqueue(const panelry::logger::QueuedRecord& head, std::string_view text)
{
    std::size_t backlog = 0;
    {
        const std::lock_guard guard(m_queueLock);
        if (!m_running || !m_queue.Append(head, text)) {
            return false;
        }
        backlog = m_queue.Size();
        m_backlog.store(backlog, std::memory_order_relaxed);
        m_pushed.store(m_pushed.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
    }
    if (backlog == kWakeAt) {
        m_wake.Wake();
    }
    return true;
}

}  // namespace log4z
