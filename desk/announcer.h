#pragma once

#include <chrono>
#include <mutex>
#include <nlohmann/json.hpp>
#include <string_view>

namespace panelry::desk
{

/// Fields of a line in the order in which they are written.
using Fields = nlohmann::ordered_json;

/// Writes what happens, one JSON object a line.
///
/// Ownership: borrows the file descriptor.
/// Threading: any thread. The time is taken and the line written under one lock, so lines are whole and their
///   times never go back. A reader that stops reading holds up the thread that speaks.
/// Failures: a line that can't be written is dropped. Bytes that aren't UTF-8 are replaced by U+FFFD.
class Announcer
{
public:
    explicit Announcer(int descriptor);

    /// Writes {"at": milliseconds since the announcer was made, "event": `event`, fields...}.
    void Say(std::string_view event, const Fields& fields = Fields::object());

    /// Milliseconds since the announcer was made: the clock of scripts and of output alike.
    [[nodiscard]] std::chrono::milliseconds Now() const;

private:
    const int m_descriptor;
    const std::chrono::steady_clock::time_point m_start;

    std::mutex m_lock;  // held over one line
};

}  // namespace panelry::desk
