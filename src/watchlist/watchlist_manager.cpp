#include "watchlist/watchlist_manager.h"

#include <cstdlib>

#include "hosting/message_ids.h"
#include "watchlist/watchlist_manager_present.h"

WatchlistManager::WatchlistManager() : m_present(std::make_shared<WatchlistManagerPresent>())
{
    m_present->Load();
    // Runs after the singleton's own exit function, which was registered later or leaves the object alone.
    static const int registered = std::atexit([] {
        if (const WatchlistManager* const left = Instance(false)) {
            left->m_present->SaveLatest();
        }
    });
    static_cast<void>(registered);
}

WatchlistManager::~WatchlistManager() = default;

void WatchlistManager::Initialize(int /*moduleId*/, const char* /*a*/, const char* /*b*/,
                                  const char* /*initParam*/)
{
}

void WatchlistManager::OnMessage(int msgId, void* payload)
{
    switch (msgId) {
        case panelry::kStockSelected:
            m_present->OnStockSelected(static_cast<StringMap*>(payload));
            break;
        case panelry::kWatchlistRequest:
            if (payload) {
                m_present->HandleRequest(*static_cast<WatchlistRequest*>(payload));
            }
            break;
        default:
            break;
    }
}
