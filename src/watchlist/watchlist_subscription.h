#pragma once

#include "watchlist/watchlist_request.h"

class ModuleBase;

namespace panelry
{

/// Hears one of the two lists for as long as it lives. A panel makes it in Initialize and keeps it as a
/// member: so the listener is never left behind in the service, which outlives all panels.
///
/// Ownership: refers to module and listener, which outlive it.
/// Threading: application thread.
/// Failures: the constructor lets the type error of a broken list through, and nothing is registered then. A
///   module that isn't connected to the library yet (m_manager is null) hears nothing.
class WatchlistSubscription
{
public:
    /// `listenCommand` is kListenWatchlist or kListenLatest. The listener is called before this returns.
    WatchlistSubscription(ModuleBase& module, WatchlistListener& listener, WatchlistCommand listenCommand);
    ~WatchlistSubscription();
    WatchlistSubscription(const WatchlistSubscription&) = delete;
    WatchlistSubscription& operator=(const WatchlistSubscription&) = delete;

private:
    void Send(std::int32_t command);

    ModuleBase& m_module;
    WatchlistListener& m_listener;
    const std::int32_t m_unlistenCommand;
};

}  // namespace panelry
