#include "desk/stop_signals.h"

#include <sys/signalfd.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <system_error>

namespace panelry::desk
{

namespace
{

bool IsIgnored(int signal)
{
    struct sigaction action {
    };
    return sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

}  // namespace

StopSignals::StopSignals()
{
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    if (!IsIgnored(SIGHUP)) {
        sigaddset(&signals, SIGHUP);
    }
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    m_descriptor = signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK);
    if (m_descriptor < 0) {
        throw std::system_error(errno, std::generic_category(), "signalfd");
    }
}

StopSignals::~StopSignals()
{
    close(m_descriptor);
}

std::optional<std::string> StopSignals::Came() const
{
    sigset_t pending;
    sigpending(&pending);
    for (const int signal : {SIGHUP, SIGINT, SIGTERM}) {
        if (sigismember(&pending, signal) == 1) {
            return "SIG" + std::string(sigabbrev_np(signal));
        }
    }
    return std::nullopt;
}

}  // namespace panelry::desk
