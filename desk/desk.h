#pragma once

#include <chrono>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "desk/announcer.h"
#include "desk/completion.h"
#include "desk/host_library.h"
#include "desk/host_side.h"
#include "desk/line_input.h"
#include "desk/market_console.h"
#include "desk/prompt.h"
#include "desk/scheduler.h"
#include "desk/script.h"
#include "desk/stop_signals.h"

namespace panelry::desk
{

struct DeskSettings {
    bool untilInputEnds = false;  ///< an empty schedule is the end only once standard input has ended too
    bool stay = false;            ///< an empty schedule is never the end
    std::optional<std::chrono::milliseconds> length;  ///< the end, whatever is left
    MarketHost* market = nullptr;                     ///< whose service objects Init is given; null: none
    std::vector<Feed> feeds;                          ///< none without a market; of codes that it has
    Vocabulary vocabulary;                            ///< of the prompt
    std::filesystem::path history;
};

/// Plays a script and what is typed to the panels and on the market, from Init to Uninit, and announces all
/// of it.
///
/// Ownership: owns its side of the callback and the prompt; borrows the rest. One at a time.
/// Threading: one thread, the first of the process; the callback comes on others, see HostSide.
/// Failures: a bad typed line, and a command that can't be done, is complained about. Whatever ends Run(),
///   Uninit is called.
class Desk
{
public:
    Desk(const HostLibrary& library, Announcer& announcer, const StopSignals& signals, DeskSettings settings);

    void SetTitles(const Titles& titles) { m_host.SetTitles(titles); }
    void Schedule(std::vector<TimedAct> acts);

    /// Plays until the end, a "quit", a signal, or until nobody reads what is announced.
    void Run();

    /// A command that wasn't typed couldn't be done.
    [[nodiscard]] bool HasFailed() const { return m_failed; }

private:
    void OpenInput();
    void CloseInput();
    void Play();
    void FinishPlaying();
    [[nodiscard]] std::optional<std::chrono::milliseconds> NextWake() const;
    void Wait();
    void TakeInput();
    void TakeTypedLines();
    void TakeTypedLine(const std::string& text);
    void FeedPanels();
    bool NothingToCome() const;
    void Stop(const std::string& reason);

    void Perform(const Message& message);
    void Perform(const Titles& titles);
    void Perform(const Note& note);
    void Perform(const Quit& quit);
    void Perform(const Help& help);
    void Perform(const MarketAct& act);

    struct Feeding {
        Feed feed;
        std::chrono::milliseconds next;
    };

    const HostLibrary& m_library;
    Announcer& m_announcer;
    const StopSignals& m_signals;
    const DeskSettings m_settings;
    HostSide m_host;
    std::optional<MarketConsole> m_console;
    std::unique_ptr<LineInput> m_input;
    Prompt* m_prompt = nullptr;  // the input, where it is one
    Scheduler m_schedule;
    std::vector<Feeding> m_feeds;
    bool m_playedAll = false;
    bool m_stopped = false;
    bool m_failed = false;
};

}  // namespace panelry::desk
