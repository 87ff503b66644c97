#pragma once

#include <shared_mutex>
#include <string>
#include <vector>

#include "services/records.h"
#include "watchlist/list_files.h"
#include "watchlist/watchlist_document.h"
#include "watchlist/watchlist_listeners.h"
#include "watchlist/watchlist_request.h"

/// Keeps the user's watchlist and the list of the latest stocks, their files and their listeners.
///
/// Ownership: WatchlistManager's. Listeners belong to the modules and unregister before they die.
/// Threading: any thread, normally the application thread. Each list has a lock, and so has each set of
///   listeners; none is held while a listener runs.
/// Failures: a list that can't be read is empty; one that can't be written stays in memory, and its file as
///   it was. A list that was read from a file of another form lets the JSON library's type error through, see
///   WatchlistDocument.
class WatchlistManagerPresent
{
public:
    /// Both lists are empty until Load().
    WatchlistManagerPresent();
    /// Forgets the listeners and writes the latest stocks.
    virtual ~WatchlistManagerPresent();
    WatchlistManagerPresent(const WatchlistManagerPresent&) = delete;
    WatchlistManagerPresent& operator=(const WatchlistManagerPresent&) = delete;

    /// Reads the lists under the current directory; from here on their files stand there. The user's
    /// watchlist comes with the latest stocks; where it can't be read, the installation's comes without them.
    /// False if neither can.
    bool Load();

    /// Does what request.cmd says, see panelry::WatchlistCommand; any other command does nothing.
    void HandleRequest(WatchlistRequest& request);

    /// A stock was selected: it comes to the front of the latest stocks, once, and the oldest of more than
    /// 200 goes. Not so for a payload with "from_lastest" "1", which was picked from that list. The payload
    /// gets the keys "market", "stockcode" and "stockname" where it lacks them; it may be null.
    void OnStockSelected(StringMap* payload);

    // What HandleRequest is made of, without saving and telling.
    void AddStocks(const std::vector<StringMap>& items);
    void RemoveStocks(const std::vector<StringMap>& items);
    void MoveStock(int from, int to);
    /// Sets as many flags as there are items and as `found` has room for.
    void TestStocks(const std::vector<StringMap>& items, std::vector<bool>& found) const;

    /// Writes the user's watchlist.
    void Save();
    /// Writes the latest stocks, but for those whose text isn't UTF-8.
    void SaveLatest() const;

private:
    bool LoadWatchlist(const std::string& path);
    void LoadLatest();
    void SaveAndTell(int code);
    void PutInFront(const std::string& market, const std::string& code, const std::string& name);
    panelry::StockList WatchlistCopy() const;
    panelry::StockList LatestCopy() const;

    panelry::ListFiles m_files;  // set by Load, before anybody else knows the object

    mutable std::shared_mutex m_watchLock;  // guards the next, and its file
    panelry::WatchlistDocument m_watchlist;

    mutable std::shared_mutex m_latestLock;  // guards the next
    panelry::StockList m_latestList;         // newest first

    panelry::WatchlistListeners m_watchListeners;
    panelry::WatchlistListeners m_latestListeners;
};
