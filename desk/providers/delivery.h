#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

#include "desk/providers/faults.h"

namespace panelry::desk
{

/// The threads on which a provider reaches its clients: one, which does one thing after another in the order
/// given, and under the fault Threads eight, which do eight at a time.
///
/// Ownership: owns the threads, borrows the faults. Threading: Post() and Deliver() from any thread, also
///   from inside a delivery; construction and Stop() belong to the owner, never to a delivery.
/// Failures: what is posted behind Stop() is dropped.
class Delivery
{
public:
    using Task = std::function<void()>;

    explicit Delivery(Faults& faults);
    ~Delivery();
    Delivery(const Delivery&) = delete;
    Delivery& operator=(const Delivery&) = delete;

    /// Work, and what no fault touches but Threads.
    void Post(Task task);
    /// What a client is told: may come late, twice, behind the next one or not at all.
    void Deliver(Task task);

    /// Drops what waits and returns when the deliveries in progress are over. Harmless the second time.
    void Stop();

private:
    using Clock = std::chrono::steady_clock;
    using Place = std::pair<Clock::time_point, std::uint64_t>;  ///< when it is due, and its number

    Place Put(std::chrono::milliseconds delay, Task task);
    void StartThreads();
    void Run(std::size_t thread);
    bool IsIdle(std::size_t thread) const;

    Faults& m_faults;

    std::mutex m_lock;  // guards the next five
    std::map<Place, Task> m_tasks;
    std::uint64_t m_posted = 0;
    std::optional<Place> m_heldBack;  // waits for the next one to overtake it
    bool m_stopped = false;
    std::vector<std::thread> m_threads;
    std::condition_variable m_changed;
};

}  // namespace panelry::desk
