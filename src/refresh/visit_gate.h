#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>

namespace panelry::refresh
{

/// Counts the visits of our own threads to what belongs to the host, so that the end can wait for them: a
/// provider is good until then and not a moment longer.
///
/// Threading: any thread. A visit costs two atomic steps as long as the gate is open.
class VisitGate
{
public:
    bool Enter()
    {
        ++m_visits;
        if (!m_closed) {
            return true;
        }
        Leave();
        return false;
    }

    void Leave()
    {
        if (--m_visits == 0 && m_closed) {
            const std::lock_guard guard(m_lock);  // so that the last one isn't missed
            m_left.notify_all();
        }
    }

    /// Turns away new visits and waits for those under way, at most `patience`.
    void Close(std::chrono::milliseconds patience = std::chrono::hours(24 * 365))
    {
        std::unique_lock lock(m_lock);
        m_closed = true;
        m_left.wait_for(lock, patience, [this] { return m_visits == 0; });
    }

private:
    // Sequentially consistent, both: a visitor sees the gate closed, or who closes it sees the visitor.
    std::atomic<bool> m_closed{false};
    std::atomic<int> m_visits{0};
    std::mutex m_lock;
    std::condition_variable m_left;
};

/// One visit, if the gate is open.
class Visit
{
public:
    explicit Visit(VisitGate& gate) : m_gate(gate), m_inside(gate.Enter()) {}
    ~Visit()
    {
        if (m_inside) {
            m_gate.Leave();
        }
    }
    Visit(const Visit&) = delete;
    Visit& operator=(const Visit&) = delete;

    explicit operator bool() const { return m_inside; }

private:
    VisitGate& m_gate;
    const bool m_inside;
};

}  // namespace panelry::refresh
