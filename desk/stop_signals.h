#pragma once

#include <optional>
#include <string>

namespace panelry::desk
{

/// SIGINT, SIGTERM and SIGHUP as something to read, instead of an interruption. SIGHUP stays out of it where
/// it was ignored at the start (nohup). SIGQUIT isn't touched: it ends a desk that hangs. A signal that came
/// stays pending: all who wait for something see that the end is wanted.
///
/// Threading: made before the panels' threads, which inherit that the signals are blocked; then used by any.
///   They stay blocked afterwards: nothing may cut the panels' end short.
/// Failures: the constructor throws std::system_error.
class StopSignals
{
public:
    StopSignals();
    ~StopSignals();
    StopSignals(const StopSignals&) = delete;
    StopSignals& operator=(const StopSignals&) = delete;

    /// Readable from the moment a signal came. Nothing is to be read from it.
    [[nodiscard]] int Descriptor() const { return m_descriptor; }

    /// The name of a signal that came ("SIGTERM"), or nothing.
    [[nodiscard]] std::optional<std::string> Came() const;

private:
    int m_descriptor;
};

}  // namespace panelry::desk
