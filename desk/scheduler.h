#pragma once

#include <chrono>
#include <map>
#include <optional>

#include "desk/script.h"

namespace panelry::desk
{

/// What is still to be played, by time. Acts of one time keep the order in which they were added, so a script
/// whose lines are out of order is sorted stably.
///
/// Threading: one thread.
class Scheduler
{
public:
    void Add(std::chrono::milliseconds at, Act act);

    /// The time of the next act; unset when nothing is left.
    [[nodiscard]] std::optional<std::chrono::milliseconds> NextAt() const;

    /// Takes the next act out if its time is `now` or before.
    std::optional<Act> TakeDue(std::chrono::milliseconds now);

private:
    std::multimap<std::chrono::milliseconds, Act> m_acts;
};

}  // namespace panelry::desk
