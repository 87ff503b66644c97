#include "desk/providers/delivery.h"

#include <algorithm>
#include <utility>

namespace panelry::desk
{

namespace
{

using std::chrono::milliseconds;

constexpr std::size_t kMostThreads = 8;
constexpr milliseconds kPatience(500);  // how long one is held back when nothing follows

}  // namespace

Delivery::Delivery(Faults& faults) : m_faults(faults)
{
    m_faults.WhenChanged([this] { StartThreads(); });
    const std::lock_guard guard(m_lock);
    m_threads.emplace_back([this] { Run(0); });
}

Delivery::~Delivery()
{
    Stop();
}

void Delivery::Post(Task task)
{
    {
        const std::lock_guard guard(m_lock);
        Put(milliseconds(0), std::move(task));
    }
    m_changed.notify_all();
}

void Delivery::Deliver(Task task)
{
    if (m_faults.Strikes(Fault::Lost)) {
        return;
    }
    const bool twice = m_faults.Strikes(Fault::Doubled);
    const bool backwards = m_faults.Strikes(Fault::Reordered);
    const milliseconds delay(m_faults.IsOn(Fault::Late) ? m_faults.NumberOf(Fault::Late) : 0);
    {
        const std::lock_guard guard(m_lock);
        if (twice) {
            Put(delay, task);
        }
        const auto overtaken = m_heldBack ? m_tasks.extract(*m_heldBack) : decltype(m_tasks)::node_type();
        if (overtaken) {
            m_heldBack.reset();
            Put(delay, std::move(task));
            Put(delay, std::move(overtaken.mapped()));
        } else {
            const Place place = Put(backwards ? delay + kPatience : delay, std::move(task));
            m_heldBack = backwards ? std::optional(place) : std::nullopt;
        }
    }
    m_changed.notify_all();
}

Delivery::Place Delivery::Put(milliseconds delay, Task task)
{
    const Place place{Clock::now() + delay, m_posted++};
    if (!m_stopped) {
        m_tasks.emplace(place, std::move(task));
    }
    return place;
}

void Delivery::Stop()
{
    std::map<Place, Task> dropped;  // dies without the lock: its tasks hold foreign objects
    std::vector<std::thread> threads;
    {
        const std::lock_guard guard(m_lock);
        m_stopped = true;
        m_tasks.swap(dropped);
        m_threads.swap(threads);
    }
    m_changed.notify_all();
    for (std::thread& thread : threads) {
        thread.join();
    }
}

// The further ones are there once they are wanted.
void Delivery::StartThreads()
{
    {
        const std::lock_guard guard(m_lock);
        while (m_faults.IsOn(Fault::Threads) && !m_stopped && m_threads.size() < kMostThreads) {
            m_threads.emplace_back([this, thread = m_threads.size()] { Run(thread); });
        }
    }
    m_changed.notify_all();
}

bool Delivery::IsIdle(std::size_t thread) const
{
    return m_tasks.empty() || (thread > 0 && !m_faults.IsOn(Fault::Threads));
}

void Delivery::Run(std::size_t thread)
{
    std::unique_lock lock(m_lock);
    while (!m_stopped) {
        if (IsIdle(thread)) {
            m_changed.wait(lock);
        } else if (const auto due = m_tasks.begin()->first.first; due > Clock::now()) {
            m_changed.wait_until(lock, due);
        } else {
            auto first = m_tasks.extract(m_tasks.begin());
            lock.unlock();
            first.mapped()();
            first = {};  // what it holds is let go without the lock
            lock.lock();
        }
    }
}

}  // namespace panelry::desk
