#include "desk/announcer.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <string>

namespace panelry::desk
{

namespace
{

void WriteWhole(int descriptor, std::string_view rest)
{
    while (!rest.empty()) {
        const ssize_t written = write(descriptor, rest.data(), rest.size());
        if (written >= 0) {
            rest.remove_prefix(static_cast<std::size_t>(written));
        } else if (errno == EAGAIN) {
            pollfd room{.fd = descriptor, .events = POLLOUT, .revents = 0};
            poll(&room, 1, -1);
        } else if (errno != EINTR) {
            return;  // nobody to tell: the loop notices a reader that went away by itself
        }
    }
}

}  // namespace

Announcer::Announcer(int descriptor) : m_descriptor(descriptor), m_start(std::chrono::steady_clock::now()) {}

void Announcer::Say(std::string_view event, const Fields& fields)
{
    const std::lock_guard guard(m_lock);
    Fields line{{"at", Now().count()}, {"event", event}};
    line.update(fields);
    WriteWhole(m_descriptor, line.dump(-1, ' ', false, Fields::error_handler_t::replace) + '\n');
}

std::chrono::milliseconds Announcer::Now() const
{
    return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - m_start);
}

}  // namespace panelry::desk
