#pragma once

#include <chrono>
#include <string>
#include <string_view>

namespace panelry::desk
{

/// A file descriptor whose reader may have stopped reading.
///
/// Such a reader holds up who writes, until the stop descriptor is readable. From then on it has a moment to
/// go on reading; once that has passed, a text that finds no room is left out.
///
/// Ownership: borrows both descriptors. Neither has to be non-blocking.
/// Threading: one thread at a time.
/// Failures: an error of the descriptor drops the text in silence.
class Output
{
public:
    Output(int descriptor, int stop, std::chrono::milliseconds patience = std::chrono::seconds(1));

    /// False if `text` was left out, or cut, for want of room. The rest of a text that was cut stands before
    /// the next one, so that what is written is whole.
    [[nodiscard]] bool Write(std::string_view text);

private:
    bool WriteWhatFits(std::string_view& rest);
    bool WaitForRoom();

    const int m_descriptor;
    const int m_stop;
    std::chrono::milliseconds m_patience;  // none is left once it was in vain
    std::string m_rest;
};

}  // namespace panelry::desk
