#pragma once

#include <vector>

#include "services/records.h"

namespace panelry
{

/// What a list looks like to a listener; each entry has at least "market" and "stockcode".
using StockList = std::vector<StringMap>;

/// What has happened, the `code` of OnWatchlistEvent.
enum WatchlistEvent : int {
    kWatchlistAdded = 0,    ///< the user's list, after a request to add
    kWatchlistRemoved = 1,  ///< after a request to remove
    kWatchlistMoved = 2,    ///< after a request to move
    kWatchlistFirst = 4,    ///< the user's list as it stands, on registering
    kLatestFirst = 6,       ///< the latest stocks as they stand, on registering
    kLatestChanged = 8,     ///< the latest stocks, after a stock was selected
};

}  // namespace panelry

/// Hears how the user's watchlist and the list of the latest stocks change. A module implements it and
/// registers it with commands 4 and 6, see watchlist/watchlist_request.h; panelry::WatchlistSubscription does
/// so for its lifetime.
///
/// Order of operations is binary contract; append nothing, reorder nothing.
///
/// Ownership: the module's. The service keeps the bare pointer for the whole process: a listener unregisters
///   before it dies. That waits for calls that run on other threads.
/// Threading: called on the thread of whoever sent the request or selected the stock, normally the
///   application thread, with no lock held. It may send requests and unregister, itself or others. It must
///   not wait for a thread that may be unregistering it.
/// Failures: an exception is swallowed, and the next listener is called; only that of the call on registering
///   goes to the sender of the request.
class WatchlistListener
{
public:
    virtual ~WatchlistListener() = default;

    /// `code` is a panelry::WatchlistEvent, `list` a const panelry::StockList*: always the whole list, good
    /// for the call. Adding, removing and moving are told whether they have changed anything or not.
    virtual void OnWatchlistEvent(int code, const void* list) = 0;
};
