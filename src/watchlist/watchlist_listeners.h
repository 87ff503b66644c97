#pragma once

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <set>
#include <shared_mutex>
#include <thread>
#include <utility>

#include "watchlist/watchlist_listener.h"

namespace panelry
{

/// The listeners of one list, in the order of their addresses.
///
/// Ownership: none of the listeners.
/// Threading: any thread. No lock is held while a listener runs; one that is unregistered by another during a
///   notice isn't called any more, one that is registered is told from the next notice on. Remove() returns
///   when no other thread is in a call to that listener, so that it may die then; calls on the thread itself
///   are not waited for. Two listeners that unregister each other from inside their calls on two threads wait
///   for each other.
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
        std::unique_lock guard(m_lock);
        m_listeners.erase(listener);
        m_callEnded.wait(guard, [&] { return !RunsOnAnotherThread(listener); });
    }

    void Clear()
    {
        const std::unique_lock guard(m_lock);
        m_listeners.clear();
    }

    /// Calls each listener with `code` and a list of its own, what `makeList` returns at that moment: nobody
    /// is told last of a list that is old by then. Exceptions of both are swallowed.
    template <class MakeList>
    void Notify(int code, MakeList makeList)
    {
        for (WatchlistListener* const listener : Copy()) {
            try {
                const Call call(*this, listener);
                if (call.IsWanted()) {
                    const StockList list = makeList();
                    listener->OnWatchlistEvent(code, &list);
                }
            } catch (...) {
                // skipped silently: the next listener has a right to its call
            }
        }
    }

private:
    using CallInProgress = std::pair<WatchlistListener*, std::thread::id>;

    // A call to a listener that is still registered; Remove() waits for its end.
    class Call
    {
    public:
        Call(WatchlistListeners& listeners, WatchlistListener* listener)
            : m_listeners(listeners), m_call(listener, std::this_thread::get_id())
        {
            const std::unique_lock guard(m_listeners.m_lock);
            // NOLINTNEXTLINE(cppcoreguidelines-prefer-member-initializer): under the lock
            m_isWanted = m_listeners.m_listeners.contains(listener);
            if (m_isWanted) {
                m_listeners.m_calls.insert(m_call);
            }
        }
        ~Call()
        {
            if (m_isWanted) {
                const std::unique_lock guard(m_listeners.m_lock);
                m_listeners.m_calls.erase(m_listeners.m_calls.find(m_call));
                m_listeners.m_callEnded.notify_all();
            }
        }
        Call(const Call&) = delete;
        Call& operator=(const Call&) = delete;

        bool IsWanted() const { return m_isWanted; }

    private:
        WatchlistListeners& m_listeners;
        const CallInProgress m_call;
        bool m_isWanted = false;
    };

    std::set<WatchlistListener*> Copy() const
    {
        const std::shared_lock guard(m_lock);
        return m_listeners;
    }

    bool RunsOnAnotherThread(WatchlistListener* listener) const
    {
        return std::any_of(m_calls.begin(), m_calls.end(), [listener](const CallInProgress& call) {
            return call.first == listener && call.second != std::this_thread::get_id();
        });
    }

    mutable std::shared_mutex m_lock;  // guards the next two
    std::set<WatchlistListener*> m_listeners;
    std::multiset<CallInProgress> m_calls;
    std::condition_variable_any m_callEnded;
};

}  // namespace panelry
