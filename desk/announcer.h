#pragma once

#include <chrono>
#include <mutex>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "desk/output.h"

namespace panelry::desk
{

/// Fields of a line in the order in which they are written.
using Fields = nlohmann::ordered_json;

/// Writes what happens, one JSON object a line, and beside it what a person is to be told.
///
/// Ownership: borrows the file descriptors.
/// Threading: any thread. The time is taken and the line written under one lock, so lines are whole and their
///   times never go back. A reader that stops reading holds up the thread that speaks, until a stop is asked
///   for.
/// Failures: a line that can't be written is dropped; the first one that is dropped because nobody reads is
///   told of. Bytes that aren't UTF-8 are replaced by U+FFFD.
class Announcer
{
public:
    /// `stop` is readable from the moment a stop is asked for.
    Announcer(int events, int complaints, int stop);

    /// Writes {"at": milliseconds since the announcer was made, "event": `event`, fields...}.
    void Say(std::string_view event, const Fields& fields = Fields::object());

    /// Writes `text` as it is, for a person.
    void Tell(const std::string& text);

    /// Milliseconds since the announcer was made: the clock of scripts and of output alike.
    [[nodiscard]] std::chrono::milliseconds Now() const;

private:
    const std::chrono::steady_clock::time_point m_start;

    std::mutex m_lock;  // held over one line; guards the next two
    Output m_events;
    bool m_dropped = false;

    std::mutex m_complaintsLock;  // taken last; guards the next
    Output m_complaints;
};

}  // namespace panelry::desk
