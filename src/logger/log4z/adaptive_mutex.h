#pragma once

#include <pthread.h>

namespace panelry::logger
{

/// A mutex for sections of some ten nanoseconds: a waiting thread spins a moment before it goes to sleep, as
/// going to sleep costs a hundred times what it waits for. Used like std::mutex.
class AdaptiveMutex
{
public:
    AdaptiveMutex() = default;
    ~AdaptiveMutex() { pthread_mutex_destroy(&m_mutex); }
    AdaptiveMutex(const AdaptiveMutex&) = delete;
    AdaptiveMutex& operator=(const AdaptiveMutex&) = delete;

    void lock() { pthread_mutex_lock(&m_mutex); }
    bool try_lock() { return pthread_mutex_trylock(&m_mutex) == 0; }
    void unlock() { pthread_mutex_unlock(&m_mutex); }

private:
    pthread_mutex_t m_mutex = PTHREAD_ADAPTIVE_MUTEX_INITIALIZER_NP;
};

}  // namespace panelry::logger
