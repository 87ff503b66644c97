#include "desk/announcer.h"

#include <utility>

namespace panelry::desk
{

Announcer::Announcer(int events, int complaints, int stop)
    : m_start(std::chrono::steady_clock::now()), m_events(events, stop), m_complaints(complaints, stop)
{
}

void Announcer::Say(std::string_view event, const Fields& fields)
{
    const std::lock_guard guard(m_lock);
    Fields line{{"at", Now().count()}, {"event", event}};
    line.update(fields);
    if (!m_events.Write(line.dump(-1, ' ', false, Fields::error_handler_t::replace) + '\n') &&
        !std::exchange(m_dropped, true)) {
        Tell("panelry-desk: nobody reads the output; lines are left out\n");
    }
}

void Announcer::Tell(const std::string& text)
{
    const std::lock_guard guard(m_complaintsLock);
    (void)m_complaints.Write(text);  // there is no other place to tell of it
}

std::chrono::milliseconds Announcer::Now() const
{
    return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - m_start);
}

}  // namespace panelry::desk
