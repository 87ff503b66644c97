#pragma once

#include <atomic>
#include <mutex>
#include <string_view>

namespace panelry::logger
{

/// Shows texts on standard output: levels 2 to 6 coloured and on a terminal alone, others plainly anywhere.
///
/// Threading: any thread; a lock of its own keeps coloured texts whole.
class Console
{
public:
    /// Looks again whether standard output is a terminal.
    void Refresh();
    void Show(std::string_view text, int level);
    /// Sends off what Show() left in the buffer.
    void Flush();

private:
    void Print(std::string_view text);

    std::atomic<bool> m_isTerminal{false};
    std::atomic<bool> m_printed{false};  // since the last Flush()
    std::mutex m_consoleLock;
};

}  // namespace panelry::logger
