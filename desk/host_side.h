#pragma once

#include <cstdint>
#include <mutex>

#include "desk/script.h"

namespace panelry::desk
{

class Announcer;

/// The host's end of the callback: announces every call, and answers the question for a panel's title.
///
/// Ownership: borrows the announcer. The callback carries no context, so there is at most one object at
///   a time; it must stay until Uninit has returned.
/// Threading: Callback() runs on the panels' threads, SetTitles() on any.
class HostSide
{
public:
    explicit HostSide(Announcer& announcer);
    ~HostSide();
    HostSide(const HostSide&) = delete;
    HostSide& operator=(const HostSide&) = delete;

    /// Adds to the titles; a title that is there already is replaced.
    void SetTitles(const Titles& titles);

    /// What Init is given.
    static void Callback(std::int32_t nCode, void* pData);

private:
    void OnCallback(std::int32_t nCode, void* pData);
    void AnswerTitle(void* pData);

    Announcer& m_announcer;

    std::mutex m_lock;  // guards the titles
    Titles m_titles;
};

}  // namespace panelry::desk
