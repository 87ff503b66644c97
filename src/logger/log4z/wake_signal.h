#pragma once

#include <semaphore.h>

#include <ctime>

namespace panelry::logger
{

/// Lets one thread sleep for a while and others end that sleep early. A wake-up while nobody sleeps ends the
/// next sleep. Wake() may be called in a signal handler.
class WakeSignal
{
public:
    WakeSignal() { sem_init(&m_semaphore, 0, 0); }
    ~WakeSignal() { sem_destroy(&m_semaphore); }
    WakeSignal(const WakeSignal&) = delete;
    WakeSignal& operator=(const WakeSignal&) = delete;

    void Wake() { sem_post(&m_semaphore); }

    void Sleep(int milliseconds)
    {
        constexpr long kNanosecondsASecond = 1'000'000'000;
        timespec until = {};
        clock_gettime(CLOCK_MONOTONIC, &until);
        until.tv_nsec += milliseconds * 1'000'000L;
        until.tv_sec += until.tv_nsec / kNanosecondsASecond;
        until.tv_nsec %= kNanosecondsASecond;
        sem_clockwait(&m_semaphore, CLOCK_MONOTONIC, &until);  // an interrupted sleep is a short sleep
        while (sem_trywait(&m_semaphore) == 0) {
            // several wake-ups, one sleep
        }
    }

private:
    sem_t m_semaphore{};
};

}  // namespace panelry::logger
