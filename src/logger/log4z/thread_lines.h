#pragma once

#include <cstdint>
#include <limits>

#include "logger/log4z/log_record.h"

namespace panelry::logger
{

/// What a thread keeps from one of its lines to the next: its id, the current day, one record.
///
/// Ownership: every thread has one, which ends with it; no line refers to it. The record that is kept then
///   goes back to the heap.
/// Threading: the thread's own.
class ThreadLines
{
public:
    static ThreadLines& OfThisThread();

    /// The kernel's id of this thread.
    std::uint32_t Id();

    /// Writes "[2026-11-22 21:25:58.123][0042][INFO ]" into an empty record from its time, thread and level.
    /// The calendar is asked once a day.
    void WriteHead(log4z::LogRecord& record);

    /// The record that is kept, or null.
    log4z::LogRecord* TakeRecord();
    /// Keeps a record for the next line; false when there is one.
    bool KeepRecord(log4z::LogRecord* record);

private:
    struct RecordOwner;

    static constexpr std::int64_t kNever = std::numeric_limits<std::int64_t>::min();
    static constexpr std::size_t kLongestHead = 64;  // years of eleven letters included

    static thread_local constinit ThreadLines own;  // no destructor: access runs no code of ours

    void UseDayOf(std::int64_t time);
    void BuildHead(std::int64_t time, std::uint32_t threadId);

    std::int64_t m_midnight = kNever;  // of the current day
    std::int64_t m_second = kNever;    // that `m_head` is for
    int m_year = 0;
    int m_month = 0;
    int m_day = 0;
    std::uint32_t m_id = 0;
    std::uint32_t m_millisAt = 0;    // where the three digits of the milliseconds stand in `m_head`
    std::uint32_t m_headLength = 0;  // up to the level
    char m_head[kLongestHead] = {};
    log4z::LogRecord* m_record = nullptr;
    bool m_ownerMade = false;
    bool m_threadEnds = false;
};

}  // namespace panelry::logger
