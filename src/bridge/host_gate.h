#pragma once

#include <atomic>
#include <shared_mutex>

class ContainerManager;

/// The two flags of the system's state, and the way by which host threads reach the container manager, which
/// lives and dies on the application thread.
namespace panelry::bridge
{

inline std::atomic<bool> ApplicationRunning{false};  ///< the first drain of the queue is over
inline std::atomic<bool> ManagerAlive{false};        ///< between the manager's constructor and its destructor

/// Shows the manager to host threads from its completion to the eve of its death.
///
/// Threading: Open() and Close() belong to the application thread. Any other thread makes a Visit, which
/// holds a
///   shared lock as long as it lasts; Close() waits for those, and new ones find nobody. The application
///   thread needs no Visit, and must not make one: what it calls may end in Close().
class HostGate
{
public:
    void Open(ContainerManager* manager) { m_manager = manager; }

    void Close()
    {
        m_manager = nullptr;  // before the lock: a flood of visitors would keep us out for ever
        const std::unique_lock waitForVisitors(m_lock);
    }

    class Visit
    {
    public:
        explicit Visit(HostGate& gate) : m_guard(gate.m_lock), m_manager(gate.m_manager) {}
        ContainerManager* Manager() const { return m_manager; }  ///< null when nobody is there

    private:
        std::shared_lock<std::shared_mutex> m_guard;
        ContainerManager* m_manager;
    };

    bool IsOpen() const { return m_manager != nullptr; }

private:
    std::shared_mutex m_lock;
    std::atomic<ContainerManager*> m_manager{nullptr};
};

inline HostGate Gate;

}  // namespace panelry::bridge
