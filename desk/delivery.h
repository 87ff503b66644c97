#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>
#include <queue>
#include <thread>

namespace panelry::desk
{

/// A host's delivery thread: does one thing after another, in the order given.
///
/// Ownership: owns the thread. Threading: Post() from any thread, also from inside a delivery; construction
///   and Stop() belong to the owner, never to a delivery.
/// Failures: what is posted behind Stop() is dropped.
class Delivery
{
public:
    using Task = std::function<void()>;

    Delivery();
    ~Delivery();
    Delivery(const Delivery&) = delete;
    Delivery& operator=(const Delivery&) = delete;

    void Post(Task task);

    /// Drops what waits and returns when the delivery in progress is over. Harmless the second time.
    void Stop();

private:
    void Run();

    std::mutex m_lock;  // guards the next two
    std::queue<Task> m_tasks;
    bool m_stopped = false;
    std::condition_variable m_changed;

    std::thread m_thread;
};

}  // namespace panelry::desk
