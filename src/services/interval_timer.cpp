#include "services/interval_timer.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <utility>

struct IntervalTimer::Ticking {
    Ticking(int intervalMs, std::function<void()> work) : interval(intervalMs), task(std::move(work)) {}

    void Stop()
    {
        {
            const std::lock_guard guard(lock);
            stopped = true;
        }
        wake.notify_all();
    }

    // True when the interval has passed, false when it is over for good.
    bool WaitForNext()
    {
        std::unique_lock guard(lock);
        wake.wait_for(guard, interval, [this] { return stopped; });
        return !stopped;
    }

    bool Stopped()
    {
        const std::lock_guard guard(lock);
        return stopped;
    }

    const std::chrono::milliseconds interval;
    const std::function<void()> task;

    std::mutex lock;  // guards the flag alone, never held over the task
    std::condition_variable wake;
    bool stopped = false;
};

IntervalTimer::~IntervalTimer()
{
    Stop();
    LetGoOfThread();
}

void IntervalTimer::Start(int intervalMs, std::function<void()> task)
{
    if (m_ticking && !m_ticking->Stopped()) {
        return;
    }
    LetGoOfThread();
    m_ticking.reset();
    const auto ticking = std::make_shared<Ticking>(intervalMs, std::move(task));
    const std::lock_guard guard(ticking->lock);  // no task, which may call Stop(), before all stands
    m_thread = std::thread(&IntervalTimer::Run, ticking);
    m_ticking = ticking;
}

void IntervalTimer::Stop()
{
    if (m_ticking) {
        m_ticking->Stop();
    }
    if (!OnOwnThread()) {
        LetGoOfThread();
        m_ticking.reset();
    }
}

void IntervalTimer::Run(const std::shared_ptr<Ticking>& ticking)
{
    while (ticking->WaitForNext()) {
        try {
            ticking->task();
        } catch (...) {
            // swallowed silently: see class comment
        }
    }
}

bool IntervalTimer::OnOwnThread() const
{
    return m_thread.get_id() == std::this_thread::get_id();
}

// A thread can't wait for itself: on its own it runs on to its end, with what it shares.
void IntervalTimer::LetGoOfThread()
{
    if (OnOwnThread()) {
        m_thread.detach();
    } else if (m_thread.joinable()) {
        m_thread.join();
    }
}
