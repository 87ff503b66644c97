#pragma once

#include <functional>
#include <memory>
#include <thread>

/// Runs one task over and over on a thread of its own.
///
/// Ownership: owns the thread, and the task until Stop(): what it captures must live as long.
/// Threading: Start(), Stop() and the destructor belong to one owner, who doesn't use them on two threads at
///   a time. The task may call Stop() whenever it likes, and Start() or the destructor while the owner does
///   nothing: what runs then ends with the task's return, and nobody waits for it. No lock is held over the
///   task.
/// Failures: an exception out of the task is swallowed, and the ticking goes on. Start() throws
///   std::system_error when no thread can be made; the timer is stopped then.
class IntervalTimer
{
public:
    IntervalTimer() = default;
    ~IntervalTimer();
    IntervalTimer(const IntervalTimer&) = delete;
    IntervalTimer& operator=(const IntervalTimer&) = delete;

    /// First run one interval after the call, then `intervalMs` milliseconds from the end of one run to the
    /// start of the next, so that runs never overlap. A timer that runs ignores the call and drops `task`.
    void Start(int intervalMs, std::function<void()> task);

    /// Ends the ticking at once, however long the interval, and blocks until a run in progress is over.
    /// Harmless on a stopped timer.
    void Stop();

private:
    struct Ticking;

    static void Run(const std::shared_ptr<Ticking>& ticking);
    bool OnOwnThread() const;
    void LetGoOfThread();

    // One for each Start that took effect. Its thread shares it, so that it may outlive the timer.
    std::shared_ptr<Ticking> m_ticking;
    std::thread m_thread;
};
