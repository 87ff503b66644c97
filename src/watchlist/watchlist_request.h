#pragma once

#include <cstdint>
#include <vector>

#include "services/records.h"

class WatchlistListener;

namespace panelry
{

/// What a WatchlistRequest asks for.
enum WatchlistCommand : std::int32_t {
    kAddStocks = 0,        ///< `items`, behind the others; one that is in the list stays as and where it is
    kRemoveStocks = 1,     ///< `items`; one that isn't in the list is no error
    kMoveStock = 2,        ///< the entry at `from` to `to`; an index outside the list moves nothing
    kTestStocks = 3,       ///< `found[i]` becomes true if `items[i]` is in the list, else false
    kListenWatchlist = 4,  ///< tells `listener` the user's list, then all its changes
    kUnlistenWatchlist = 5,
    kListenLatest = 6,  ///< tells `listener` the latest stocks, newest first, then all their changes
    kUnlistenLatest = 7,
};

}  // namespace panelry

/// The payload of message 123, panelry::kWatchlistRequest.
///
/// A stock is told from others by "market" (decimal text) and "stockcode", compared as texts; all other keys
/// are kept as they come. Texts must be UTF-8: as long as another one stands in the list, it isn't saved.
///
/// Order of fields is binary contract; append nothing, reorder nothing.
/// Ownership: the sender's; read, and for command 3 written, during the call only.
/// Failures: other commands, and commands 4 to 7 without a listener, do nothing. A list whose file has a form
///   that no list can have lets the JSON library's type error through to the sender.
struct WatchlistRequest {
    std::int32_t cmd = -1;                  ///< a panelry::WatchlistCommand
    std::vector<StringMap> items;           ///< in, commands 0, 1 and 3
    std::vector<bool> found;                ///< out, command 3; the sender gives it the size of `items`
    std::int32_t from = 0;                  ///< in, command 2, counted from 0
    std::int32_t to = 0;                    ///< in, command 2: where it stands afterwards
    WatchlistListener* listener = nullptr;  ///< in, commands 4 to 7
};
