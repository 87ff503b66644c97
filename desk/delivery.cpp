#include "desk/delivery.h"

#include <utility>

namespace panelry::desk
{

Delivery::Delivery() : m_thread([this] { Run(); }) {}

Delivery::~Delivery()
{
    Stop();
}

void Delivery::Post(Task task)
{
    {
        const std::lock_guard guard(m_lock);
        if (m_stopped) {
            return;
        }
        m_tasks.push(std::move(task));
    }
    m_changed.notify_one();
}

void Delivery::Stop()
{
    std::queue<Task> dropped;  // dies behind the lock: its tasks hold foreign objects
    {
        const std::lock_guard guard(m_lock);
        m_stopped = true;
        m_tasks.swap(dropped);
    }
    m_changed.notify_one();
    if (m_thread.joinable()) {
        m_thread.join();
    }
}

void Delivery::Run()
{
    std::unique_lock lock(m_lock);
    while (true) {
        m_changed.wait(lock, [this] { return m_stopped || !m_tasks.empty(); });
        if (m_stopped) {
            return;
        }
        {
            const Task task = std::move(m_tasks.front());
            m_tasks.pop();
            lock.unlock();
            task();
        }
        lock.lock();
    }
}

}  // namespace panelry::desk
