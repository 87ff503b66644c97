#include "desk/scheduler.h"

#include <utility>

namespace panelry::desk
{

void Scheduler::Add(std::chrono::milliseconds at, Act act)
{
    m_acts.emplace(at, std::move(act));
}

std::optional<std::chrono::milliseconds> Scheduler::NextAt() const
{
    return m_acts.empty() ? std::nullopt : std::optional(m_acts.begin()->first);
}

std::optional<Act> Scheduler::TakeDue(std::chrono::milliseconds now)
{
    if (m_acts.empty() || m_acts.begin()->first > now) {
        return std::nullopt;
    }
    return std::move(m_acts.extract(m_acts.begin()).mapped());
}

}  // namespace panelry::desk
