#include "desk/desk.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <utility>

#include "desk/commands.h"
#include "desk/typed_input.h"

namespace panelry::desk
{

namespace
{

/// Init to Uninit, whatever happens in between, with the market running.
class PanelsLife
{
public:
    PanelsLife(const HostLibrary& library, MarketHost* market) : m_library(library), m_market(market)
    {
        m_library.Init(market ? market->Quotes() : nullptr, market ? market->Trades() : nullptr,
                       &HostSide::Callback);
        if (m_market) {
            m_market->Start();
        }
    }
    ~PanelsLife()
    {
        if (m_market) {
            m_market->faults().Set(Fault::Blocked, false);  // it would hold up the panels' end
        }
        m_library.Uninit();
        if (m_market) {
            m_market->Stop();
        }
    }
    PanelsLife(const PanelsLife&) = delete;
    PanelsLife& operator=(const PanelsLife&) = delete;

private:
    const HostLibrary& m_library;
    MarketHost* const m_market;
};

/// Moments of the announcer's clock, of which any may be missing.
std::optional<std::chrono::milliseconds> Earlier(std::optional<std::chrono::milliseconds> one,
                                                 std::optional<std::chrono::milliseconds> other)
{
    return !one || (other && *other < *one) ? other : one;
}

constexpr std::int32_t kOperate = 0;
constexpr char kPushedQuotes[] = "114";  // what push data comes under
constexpr char kTyped[] = "stdin:";
constexpr short kGone = POLLERR | POLLHUP | POLLNVAL;

}  // namespace

Desk::Desk(const HostLibrary& library, Announcer& announcer, const StopSignals& signals,
           DeskSettings settings)
    : m_library(library),
      m_announcer(announcer),
      m_signals(signals),
      m_settings(std::move(settings)),
      m_host(announcer)
{
    if (m_settings.market) {
        m_console.emplace(*m_settings.market, announcer);
        for (const Feed& feed : m_settings.feeds) {
            m_feeds.push_back({feed, std::chrono::milliseconds(0)});
        }
    }
}

void Desk::Schedule(std::vector<TimedAct> acts)
{
    for (TimedAct& act : acts) {
        m_schedule.Add(act.at, std::move(act.act));
    }
}

void Desk::Run()
{
    m_announcer.Say("start");
    {
        const PanelsLife life(m_library, m_settings.market);
        OpenInput();
        Play();
        CloseInput();
    }
    m_announcer.Say("end");
}

void Desk::OpenInput()
{
    if (!Prompt::IsPossible()) {
        m_input = std::make_unique<TypedInput>(STDIN_FILENO);
        return;
    }
    auto prompt = std::make_unique<Prompt>(m_settings.vocabulary, m_settings.history);
    m_prompt = prompt.get();
    m_input = std::move(prompt);
    m_announcer.SetScreen(m_prompt);
}

// The panels' end is told on a terminal that is a plain one again.
void Desk::CloseInput()
{
    m_announcer.SetScreen(nullptr);
    m_input.reset();
}

// One act a turn, so that a signal comes through a script whose lines are all due.
void Desk::Play()
{
    while (!m_stopped) {
        if (const std::optional<Act> act = m_schedule.TakeDue(m_announcer.Now())) {
            std::visit([this](const auto& chosen) { this->Perform(chosen); }, *act);
        }
        if (!m_stopped && NothingToCome()) {
            FinishPlaying();
        }
        if (!m_stopped) {
            FeedPanels();
            Wait();
        }
    }
}

void Desk::FinishPlaying()
{
    if (!std::exchange(m_playedAll, true)) {
        m_announcer.Say("played");
    }
    if (!m_settings.stay) {
        Stop("nothing left to play");
    }
}

bool Desk::NothingToCome() const
{
    return !m_schedule.NextAt() && (!m_settings.untilInputEnds || m_input->Descriptor() < 0);
}

void Desk::FeedPanels()
{
    const std::chrono::milliseconds now = m_announcer.Now();
    for (Feeding& feeding : m_feeds) {
        if (feeding.next <= now) {
            // To an open panel only: push data in its proper form would make the panel anew that was closed.
            const Fields keys{{"operate", "notify"},
                              {"cmd", kPushedQuotes},
                              {"bussiness", m_console->FeedText(feeding.feed)},
                              {"need_create_new", "0"}};
            m_library.NotifyMsg(kOperate, feeding.feed.panel, keys.dump().c_str());
            feeding.next = now + feeding.feed.every;
        }
    }
}

std::optional<std::chrono::milliseconds> Desk::NextWake() const
{
    std::optional<std::chrono::milliseconds> next = Earlier(m_schedule.NextAt(), m_settings.length);
    for (const Feeding& feeding : m_feeds) {
        next = Earlier(next, feeding.next);
    }
    return next;
}

// Until the next act is due, a signal came, or something was typed.
void Desk::Wait()
{
    std::array<pollfd, 3> watched{
        {{m_signals.Descriptor(), POLLIN, 0}, {m_input->Descriptor(), POLLIN, 0}, {STDOUT_FILENO, 0, 0}}};
    timespec limit{};
    const std::optional<std::chrono::milliseconds> next = NextWake();
    if (next) {
        const std::chrono::milliseconds rest =
            std::max(*next - m_announcer.Now(), std::chrono::milliseconds(0));
        limit = {rest.count() / 1000, rest.count() % 1000 * 1'000'000};
    }
    ppoll(watched.data(), watched.size(), next ? &limit : nullptr, nullptr);

    if (const std::optional<std::string> signal = m_signals.Came()) {
        Stop(*signal);
    } else if ((watched[2].revents & kGone) != 0) {
        Stop("output closed");
    } else if (m_settings.length && m_announcer.Now() >= *m_settings.length) {
        Stop("time is over");
    } else if (watched[1].revents != 0) {
        TakeInput();
    }
}

void Desk::TakeInput()
{
    m_input->Read();
    TakeTypedLines();
    if (m_prompt && m_input->Descriptor() < 0) {
        Stop("quit");  // with the prompt gone nothing else could be typed
    }
}

void Desk::TakeTypedLines()
{
    while (const std::optional<std::string> line = m_input->TakeLine()) {
        TakeTypedLine(*line);
    }
}

void Desk::TakeTypedLine(const std::string& text)
{
    ParsedLine parsed = ParseTypedLine(text);
    const std::string where = kTyped + std::to_string(m_input->LineNumber());
    if (!parsed.error.empty()) {
        m_announcer.Complain(where, parsed.error);
    } else if (parsed.line) {
        SetOrigin(parsed.line->act, where);
        const std::chrono::milliseconds delay = parsed.line->at.value_or(std::chrono::milliseconds(0));
        m_schedule.Add(m_announcer.Now() + delay, std::move(parsed.line->act));
    }
}

void Desk::Stop(const std::string& reason)
{
    m_stopped = true;
    m_announcer.Say("stop", {{"reason", reason}});
}

// Announced first: what the panels answer stands behind it.
void Desk::Perform(const Message& message)
{
    m_announcer.Say("sent", {{"type", message.type}, {"id", message.id}, {"text", message.text}});
    m_library.NotifyMsg(message.type, message.id, message.text.c_str());
}

void Desk::Perform(const Titles& titles)
{
    m_host.SetTitles(titles);
    Fields named = Fields::object();
    for (const auto& [id, title] : titles) {
        named[std::to_string(id)] = title;
    }
    m_announcer.Say("name", {{"name", named}});
}

void Desk::Perform(const Note& note)
{
    m_announcer.Say("note", {{"note", note.text}});
}

void Desk::Perform(const Quit& /*quit*/)
{
    Stop("quit");
}

void Desk::Perform(const Help& help)
{
    m_announcer.Explain(CommandHelp(help.command));
}

void Desk::Perform(const MarketAct& act)
{
    const std::string failure =
        m_console ? m_console->Perform(act.command) : "there is no market here; --market brings one";
    if (!failure.empty()) {
        m_announcer.Complain(act.where, failure);
        m_failed = m_failed || !act.where.starts_with(kTyped);
    }
}

}  // namespace panelry::desk
