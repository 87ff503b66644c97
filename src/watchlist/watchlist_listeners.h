#pragma once

#include <mutex>
#include <set>
#include <shared_mutex>

#include "watchlist/watchlist_listener.h"

namespace panelry
{

/// The listeners of one list, in the order of their addresses.
///
/// Ownership: none of the listeners.
/// Threading: any thread. No lock is held while a listener runs; one that is unregistered by another during a
///   notice isn't called any more, one that is registered is told from the next notice on.
class WatchlistListeners
{
public:
    void Add(WatchlistListener* listener)
    {
        const std::unique_lock guard(m_lock);
        m_listeners.insert(listener);
    }

    void Remove(WatchlistListener* listener)
    {
        const std::unique_lock guard(m_lock);
        m_listeners.erase(listener);
    }

    void Clear()
    {
        const std::unique_lock guard(m_lock);
        m_listeners.clear();
    }

    /// Calls each listener with `code` and a list of its own, what `makeList` returns at that moment: nobody
    /// is told last of a list that is old by then. Exceptions of both are swallowed.
    template <class MakeList>
    void Notify(int code, MakeList makeList) const
    {
        for (WatchlistListener* const listener : Copy()) {
            if (!Contains(listener)) {
                continue;
            }
            try {
                const StockList list = makeList();
                listener->OnWatchlistEvent(code, &list);
            } catch (...) {
                // skipped silently: the next listener has a right to its call
            }
        }
    }

private:
    std::set<WatchlistListener*> Copy() const
    {
        const std::shared_lock guard(m_lock);
        return m_listeners;
    }

    bool Contains(WatchlistListener* listener) const
    {
        const std::shared_lock guard(m_lock);
        return m_listeners.contains(listener);
    }

    mutable std::shared_mutex m_lock;  // guards the set
    std::set<WatchlistListener*> m_listeners;
};

}  // namespace panelry
