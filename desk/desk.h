#pragma once

#include <string>

#include "desk/announcer.h"
#include "desk/demo_host.h"
#include "desk/host_library.h"
#include "desk/host_side.h"
#include "desk/scheduler.h"
#include "desk/script.h"
#include "desk/stop_signals.h"
#include "desk/typed_input.h"

namespace panelry::desk
{

struct DeskSettings {
    bool untilInputEnds = false;   ///< an empty schedule is the end only once standard input has ended too
    bool stay = false;             ///< an empty schedule is never the end
    DemoHost* services = nullptr;  ///< what Init is given; null: nothing
};

/// Plays a script and what is typed to the panels, from Init to Uninit, and announces all of it.
///
/// Ownership: owns its side of the callback; borrows the rest. One at a time.
/// Threading: one thread, the first of the process; the callback comes on others, see HostSide.
/// Failures: a bad typed line is complained about on standard error. Whatever ends Run(), Uninit is called.
class Desk
{
public:
    Desk(const HostLibrary& library, Announcer& announcer, const StopSignals& signals, DeskSettings settings);

    void SetTitles(const Titles& titles) { m_host.SetTitles(titles); }
    void Schedule(std::vector<TimedAct> acts);

    /// Plays until the end, a "quit", a signal, or until nobody reads what is announced.
    void Run();

private:
    void Play();
    void FinishPlaying();
    void Wait();
    void TakeTypedLines();
    void TakeTypedLine(const std::string& text);
    bool NothingToCome() const;
    void Stop(const std::string& reason);

    void Perform(const Message& message);
    void Perform(const Titles& titles);
    void Perform(const Note& note);
    void Perform(const Quit& quit);
    void Perform(const Help& help);

    const HostLibrary& m_library;
    Announcer& m_announcer;
    const StopSignals& m_signals;
    const DeskSettings m_settings;
    HostSide m_host;
    TypedInput m_input;
    Scheduler m_schedule;
    bool m_playedAll = false;
    bool m_stopped = false;
};

}  // namespace panelry::desk
