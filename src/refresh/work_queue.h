#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <utility>
#include <vector>

namespace panelry::refresh
{

/// What threads of the provider leave for one worker. Nothing is lost and nothing waits for a later push: the
/// worker sleeps only while the queue is empty.
///
/// Ownership: owns the items. They lie in chunks, so that a backlog neither moves as it grows nor stays when it
///   is worked off. Threading: one worker, any number of others. The lock is never held over anything but the
///   queue.
template <class Item>
class WorkQueue
{
public:
    /// The worker looks for more for so long before it falls asleep: in a flood of pushes it stays awake, and
    /// nobody pays for waking it. Some microseconds, since it doesn't give way meanwhile: a thread that yields
    /// comes back late on a busy machine, one that sleeps is woken at once.
    explicit WorkQueue(std::chrono::microseconds lookout = {}) : m_lookout(lookout) {}

    void Push(Item item)
    {
        bool wake = false;
        {
            const std::lock_guard guard(m_lock);
            if (m_closed) {
                return;
            }
            if (m_waiting.empty() || m_waiting.back().size() == kChunk) {
                m_waiting.push_back(std::exchange(m_spare, {}));
                m_waiting.back().reserve(kChunk);
            }
            m_waiting.back().push_back(std::move(item));
            ++m_pushed;
            m_some.store(true, std::memory_order_relaxed);
            wake = std::exchange(m_asleep, false);
        }
        if (wake) {
            m_wake.notify_one();
        }
    }

    /// Worker: calls `handle` with each item in turn, until the queue is closed.
    template <class Handle>
    void Work(Handle handle)
    {
        Chunks batch;
        Chunk spare;
        while (Take(batch, spare)) {
            for (Chunk& chunk : batch) {
                for (Item& item : chunk) {
                    if (!Closed()) {
                        handle(item);
                    }
                    item = Item();  // freed before it counts as handled
                    CountHandled();
                }
                chunk.clear();
                spare = std::move(chunk);
            }
            Chunks().swap(batch);
        }
    }

    /// Ends the work after the item in hand; drops what waits and all that comes.
    void Close()
    {
        Chunks dropped;  // freed without the lock
        {
            const std::lock_guard guard(m_lock);
            m_closed = true;
            dropped.swap(m_waiting);
            for (const Chunk& chunk : dropped) {
                m_pushed -= chunk.size();
            }
        }
        m_wake.notify_all();
    }

    bool Closed() const { return m_closed.load(std::memory_order_relaxed); }

    /// Has all that was pushed been handled? For tests and measurements.
    bool Settled() const { return Backlog() == 0; }

    /// What waits; an item in hand counts.
    std::uint64_t Backlog() const
    {
        const std::lock_guard guard(m_lock);
        return m_pushed - m_handled.load(std::memory_order_acquire);
    }

private:
    using Chunk = std::vector<Item>;
    using Chunks = std::vector<Chunk>;
    static constexpr std::size_t kChunk = 256;

    void CountHandled()
    {
        m_handled.store(m_handled.load(std::memory_order_relaxed) + 1, std::memory_order_release);
    }

    void LookOut() const
    {
        using Clock = std::chrono::steady_clock;
        if (m_lookout.count() > 0) {
            const Clock::time_point end = Clock::now() + m_lookout;
            while (!m_some.load(std::memory_order_relaxed) && !Closed() && Clock::now() < end) {
            }
        }
    }

    // All that waits, for an empty `batch`; false once the queue is closed. An empty chunk goes back for use.
    bool Take(Chunks& batch, Chunk& spare)
    {
        LookOut();
        std::unique_lock lock(m_lock);
        m_spare.swap(spare);
        while (m_waiting.empty() && !m_closed) {
            m_asleep = true;
            m_wake.wait(lock);
        }
        m_asleep = false;
        m_some.store(false, std::memory_order_relaxed);
        batch.swap(m_waiting);
        return !m_closed;
    }

    const std::chrono::microseconds m_lookout;
    std::condition_variable m_wake;
    std::atomic<bool> m_closed{false};  // written under the lock
    std::atomic<bool> m_some{false};    // written under the lock; a hint without it
    std::atomic<std::uint64_t> m_handled{0};

    mutable std::mutex m_lock;  // guards the rest
    Chunks m_waiting;
    Chunk m_spare;
    std::uint64_t m_pushed = 0;
    bool m_asleep = false;
};

}  // namespace panelry::refresh
