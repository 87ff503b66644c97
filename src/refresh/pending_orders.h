#pragma once

#include <atomic>
#include <functional>
#include <mutex>
#include <set>
#include <string>
#include <string_view>

namespace panelry::refresh
{

/// Contract numbers of fresh orders that no table has shown yet.
///
/// Threading: any thread.
class PendingOrders
{
public:
    void Add(const std::string& contract)
    {
        const std::lock_guard guard(m_lock);
        m_contracts.insert(contract);
        m_some = true;
    }

    void Erase(std::string_view contract)
    {
        if (Empty()) {
            return;
        }
        const std::lock_guard guard(m_lock);
        if (const auto found = m_contracts.find(contract); found != m_contracts.end()) {
            m_contracts.erase(found);
            m_some = !m_contracts.empty();
        }
    }

    void Clear()
    {
        const std::lock_guard guard(m_lock);
        m_contracts.clear();
        m_some = false;
    }

    bool Empty() const { return !m_some; }

private:
    std::atomic<bool> m_some{false};  // written under the lock; mostly there is nothing

    std::mutex m_lock;
    std::set<std::string, std::less<>> m_contracts;
};

}  // namespace panelry::refresh
