#include "logger/log4z/thread_lines.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <utility>

#include "logger/log4z/local_day.h"
#include "logger/log4z/thread_id.h"

namespace panelry::logger
{

namespace
{

constexpr std::size_t kNameBytes = 6;
constexpr char kLevelNames[][kNameBytes + 1] = {"TRACE]", "DEBUG]", "INFO ]", "WARN ]",
                                                "ERROR]", "ALARM]", "FATAL]"};

// Writes a number with at least `width` digits; returns the end.
char* WritePadded(char* out, std::int64_t number, int width)
{
    char digits[24];
    const char* const end = std::to_chars(digits, digits + sizeof digits, number).ptr;
    for (auto missing = width - (end - digits); missing > 0; --missing) {
        *out++ = '0';
    }
    return std::copy(static_cast<const char*>(digits), end, out);
}

}  // namespace

thread_local constinit ThreadLines ThreadLines::own;

// Gives the record back when the thread ends.
struct ThreadLines::RecordOwner {
    RecordOwner() = default;
    RecordOwner(const RecordOwner&) = delete;
    RecordOwner& operator=(const RecordOwner&) = delete;
    ~RecordOwner()
    {
        own.m_threadEnds = true;
        delete own.TakeRecord();
    }
};

ThreadLines& ThreadLines::OfThisThread()
{
    return own;
}

std::uint32_t ThreadLines::Id()
{
    if (m_id == 0) {
        m_id = ThreadId();
    }
    return m_id;
}

void ThreadLines::WriteHead(log4z::LogRecord& record)
{
    if (record.time != m_second) {
        BuildHead(record.time, record.thread_id);
    }
    char* out = record.content;
    std::memcpy(out, m_head, kLongestHead);  // more than is used: a fixed size is a few moves
    char* const millis = out + m_millisAt;
    millis[0] = static_cast<char>('0' + record.millis / 100 % 10);
    millis[1] = static_cast<char>('0' + record.millis / 10 % 10);
    millis[2] = static_cast<char>('0' + record.millis % 10);
    out += m_headLength;
    std::memcpy(out, kLevelNames[std::clamp<std::int32_t>(record.level, log4z::Trace, log4z::Fatal)],
                kNameBytes);
    record.length = static_cast<std::int32_t>(m_headLength + kNameBytes);
}

// Everything up to the level, for one second: few lines have a second of their own.
void ThreadLines::BuildHead(std::int64_t time, std::uint32_t threadId)
{
    if (m_midnight == kNever || !IsInDay(time, m_midnight)) {
        UseDayOf(time);
    }
    const std::int64_t passed = time - m_midnight;
    char* out = m_head;
    *out++ = '[';
    out = WritePadded(out, m_year, 4);
    *out++ = '-';
    out = WritePadded(out, m_month, 2);
    *out++ = '-';
    out = WritePadded(out, m_day, 2);
    *out++ = ' ';
    out = WritePadded(out, passed / 3600, 2);
    *out++ = ':';
    out = WritePadded(out, passed / 60 % 60, 2);
    *out++ = ':';
    out = WritePadded(out, passed % 60, 2);
    *out++ = '.';
    m_millisAt = static_cast<std::uint32_t>(out - m_head);
    out += 3;
    *out++ = ']';
    *out++ = '[';
    out = WritePadded(out, threadId, 4);
    *out++ = ']';
    *out++ = '[';
    m_headLength = static_cast<std::uint32_t>(out - m_head);
    m_second = time;
}

void ThreadLines::UseDayOf(std::int64_t time)
{
    const LocalDay today(time);
    m_midnight = today.midnight;
    m_year = today.date.tm_year + 1900;
    m_month = today.date.tm_mon + 1;
    m_day = today.date.tm_mday;
}

log4z::LogRecord* ThreadLines::TakeRecord()
{
    return std::exchange(m_record, nullptr);
}

bool ThreadLines::KeepRecord(log4z::LogRecord* record)
{
    if (m_record || m_threadEnds) {
        return false;
    }
    if (!m_ownerMade) {
        thread_local const RecordOwner owner;  // its destructor is registered here
        m_ownerMade = true;
    }
    m_record = record;
    return true;
}

}  // namespace panelry::logger
