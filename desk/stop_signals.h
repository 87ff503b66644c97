#pragma once

#include <optional>
#include <string>

namespace panelry::desk
{

/// SIGINT, SIGTERM and SIGHUP as something to read, instead of an interruption. SIGHUP stays out of it where
/// it was ignored at the start (nohup). SIGQUIT isn't touched: it ends a desk that hangs.
///
/// Threading: made before the panels' threads, which inherit that the signals are blocked; used by one
/// thread.
///   They stay blocked afterwards: nothing may cut the panels' end short.
/// Failures: the constructor throws std::system_error.
class StopSignals
{
public:
    StopSignals();
    ~StopSignals();
    StopSignals(const StopSignals&) = delete;
    StopSignals& operator=(const StopSignals&) = delete;

    /// Readable when a signal waits.
    [[nodiscard]] int Descriptor() const { return m_descriptor; }

    /// The name of a signal that came ("SIGTERM"), or nothing.
    std::optional<std::string> Take();

private:
    int m_descriptor;
};

}  // namespace panelry::desk
