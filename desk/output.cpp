#include "desk/output.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>

namespace panelry::desk
{

namespace
{

// A signal that interrupts the wait isn't what is waited for.
int Poll(pollfd* watched, nfds_t count, int milliseconds)
{
    int ready = 0;
    do {
        ready = poll(watched, count, milliseconds);
    } while (ready < 0 && errno == EINTR);
    return ready;
}

}  // namespace

Output::Output(int descriptor, int stop, std::chrono::milliseconds patience)
    : m_descriptor(descriptor), m_stop(stop), m_patience(patience)
{
}

bool Output::Write(std::string_view text)
{
    std::string_view rest = m_rest;
    const bool caughtUp = WriteWhatFits(rest);
    m_rest.erase(0, m_rest.size() - rest.size());
    if (!caughtUp) {
        return false;
    }
    rest = text;
    const bool whole = WriteWhatFits(rest);
    if (rest.size() < text.size()) {
        m_rest = rest;
    }
    return whole;
}

// In pieces for which a pipe that says it has room does have it: a larger one would block in the call, where
// nothing ends the wait.
bool Output::WriteWhatFits(std::string_view& rest)
{
    while (!rest.empty()) {
        if (!WaitForRoom()) {
            return false;
        }
        const ssize_t written =
            write(m_descriptor, rest.data(), std::min<std::size_t>(rest.size(), PIPE_BUF));
        if (written >= 0) {
            rest.remove_prefix(static_cast<std::size_t>(written));
        } else if (errno != EAGAIN && errno != EINTR) {
            rest = {};  // nobody to tell: the loop notices a reader that went away by itself
        }
    }
    return true;
}

bool Output::WaitForRoom()
{
    std::array<pollfd, 2> watched{{{m_descriptor, POLLOUT, 0}, {m_stop, POLLIN, 0}}};
    Poll(watched.data(), watched.size(), -1);
    if (watched[0].revents != 0) {
        return true;
    }
    if (Poll(watched.data(), 1, static_cast<int>(m_patience.count())) > 0) {
        return true;
    }
    m_patience = {};
    return false;
}

}  // namespace panelry::desk
