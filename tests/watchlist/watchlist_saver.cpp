// A process that uses the watchlist service of its current directory, for tests of how processes end.
//
// watchlist_saver grow: adds stocks one by one, for ever. 's' goes to standard output before a request, 'd'
//   after it.
// watchlist_saver exit: selects the stock 1, adds the stock 2, and returns from main.
// watchlist_saver running: as a host that returns from main without Uninit: another thread selects stocks all
//   the time.

#include <unistd.h>

#include <atomic>
#include <string>
#include <thread>

#include "hosting/message_ids.h"
#include "watchlist/watchlist_manager.h"
#include "watchlist/watchlist_request.h"

namespace
{

void Tell(char letter)
{
    while (write(STDOUT_FILENO, &letter, 1) != 1) {
    }
}

void Add(const std::string& code)
{
    WatchlistRequest request;
    request.cmd = panelry::kAddStocks;
    request.items = {{{"stockcode", code}, {"market", "16"}}};
    WatchlistManager::Instance(true)->OnMessage(panelry::kWatchlistRequest, &request);
}

void Select(const std::string& code)
{
    StringMap stock{{"stockcode", code}, {"market", "16"}, {"stockname", ""}};
    WatchlistManager::Instance(true)->OnMessage(panelry::kStockSelected, &stock);
}

// The thread's objects stay when main returns, as the application thread's do.
void LeaveAThreadBehind()
{
    static std::atomic<int> selected{0};
    panelry::ApplicationThreadAlive = true;
    std::thread([] {
        for (;; ++selected) {
            Select(std::to_string(selected % 300));
        }
    }).detach();
    while (selected < 1000) {
        std::this_thread::yield();
    }
}

}  // namespace

int main(int, char* argv[])
{
    const std::string act = argv[1];
    for (int i = 0; act == "grow"; ++i) {
        Tell('s');
        Add("new" + std::to_string(i));
        Tell('d');
    }
    Select("1");
    Add("2");
    if (act == "running") {
        LeaveAThreadBehind();
    }
    return 0;
}
