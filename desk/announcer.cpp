#include "desk/announcer.h"

#include <utility>

namespace panelry::desk
{

Announcer::Announcer(int events, int complaints, int stop, EventForm form)
    : m_form(form),
      m_start(std::chrono::steady_clock::now()),
      m_events(events, stop),
      m_complaints(complaints, stop)
{
}

void Announcer::SetScreen(Screen* screen)
{
    const std::lock_guard guard(m_screenLock);
    m_screen = screen;
}

void Announcer::Say(std::string_view event, const Fields& fields)
{
    const std::lock_guard guard(m_lock);
    const auto line = m_form == EventForm::Json ? &EventJson : &EventText;
    if (!Write(m_events, line(Now(), event, fields)) && !std::exchange(m_dropped, true)) {
        Tell("panelry-desk: nobody reads the output; lines are left out\n");
    }
}

void Announcer::Tell(const std::string& text)
{
    const std::lock_guard guard(m_complaintsLock);
    (void)Write(m_complaints, text);  // there is no other place to tell of it
}

void Announcer::Explain(const std::string& text)
{
    if (m_form == EventForm::Json) {
        Say("help", {{"help", text}});
    }
    Tell(text);
}

void Announcer::Complain(const std::string& where, const std::string& reason)
{
    if (m_form == EventForm::Json) {
        Say("complaint", {{"where", where}, {"reason", reason}});
    }
    Tell(where + ": " + reason + '\n');
}

std::chrono::milliseconds Announcer::Now() const
{
    return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - m_start);
}

bool Announcer::Write(Output& output, const std::string& text)
{
    std::unique_lock screenGuard(m_screenLock);
    if (!m_screen) {
        screenGuard.unlock();  // a full pipe mustn't hold up complaints
        return output.Write(text);
    }
    m_screen->BeginWrite();
    const bool whole = output.Write(text);
    m_screen->EndWrite();
    return whole;
}

}  // namespace panelry::desk
