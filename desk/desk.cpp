#include "desk/desk.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <utility>

namespace panelry::desk
{

namespace
{

/// Init to Uninit, whatever happens in between.
class PanelsLife
{
public:
    PanelsLife(const HostLibrary& library, DemoHost* services) : m_library(library), m_services(services)
    {
        m_library.Init(services ? services->Quotes() : nullptr, services ? services->Trades() : nullptr,
                       &HostSide::Callback);
    }
    ~PanelsLife()
    {
        m_library.Uninit();
        if (m_services) {
            m_services->Stop();
        }
    }
    PanelsLife(const PanelsLife&) = delete;
    PanelsLife& operator=(const PanelsLife&) = delete;

private:
    const HostLibrary& m_library;
    DemoHost* const m_services;
};

constexpr short kGone = POLLERR | POLLHUP | POLLNVAL;

}  // namespace

Desk::Desk(const HostLibrary& library, Announcer& announcer, const StopSignals& signals,
           DeskSettings settings)
    : m_library(library),
      m_announcer(announcer),
      m_signals(signals),
      m_settings(settings),
      m_host(announcer),
      m_input(STDIN_FILENO)
{
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
        const PanelsLife life(m_library, m_settings.services);
        Play();
    }
    m_announcer.Say("end");
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
    return !m_schedule.NextAt() && (!m_settings.untilInputEnds || m_input.Descriptor() < 0);
}

// Until the next act is due, a signal came, or something was typed.
void Desk::Wait()
{
    std::array<pollfd, 3> watched{
        {{m_signals.Descriptor(), POLLIN, 0}, {m_input.Descriptor(), POLLIN, 0}, {STDOUT_FILENO, 0, 0}}};
    timespec limit{};
    const std::optional<std::chrono::milliseconds> next = m_schedule.NextAt();
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
    } else if (watched[1].revents != 0) {
        m_input.Read();
        TakeTypedLines();
    }
}

void Desk::TakeTypedLines()
{
    while (const std::optional<std::string> line = m_input.TakeLine()) {
        TakeTypedLine(*line);
    }
}

void Desk::TakeTypedLine(const std::string& text)
{
    ParsedLine parsed = ParseTypedLine(text);
    if (!parsed.error.empty()) {
        m_announcer.Tell("stdin:" + std::to_string(m_input.LineNumber()) + ": " + parsed.error + '\n');
    } else if (parsed.line) {
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

void Desk::Perform(const Help& /*help*/)
{
    m_announcer.Tell(kTypedHelp);
}

}  // namespace panelry::desk
