#include "watchlist/watchlist_subscription.h"

#include "hosting/message_ids.h"
#include "hosting/module_manager_spi.h"
#include "services/module_base.h"

namespace panelry
{

WatchlistSubscription::WatchlistSubscription(ModuleBase& module, WatchlistListener& listener,
                                             WatchlistCommand listenCommand)
    : m_module(module),
      m_listener(listener),
      m_unlistenCommand(listenCommand == kListenLatest ? kUnlistenLatest : kUnlistenWatchlist)
{
    Send(listenCommand);
}

WatchlistSubscription::~WatchlistSubscription()
{
    Send(m_unlistenCommand);
}

void WatchlistSubscription::Send(std::int32_t command)
{
    if (m_module.m_manager) {
        WatchlistRequest request;
        request.cmd = command;
        request.listener = &m_listener;
        m_module.m_manager->SendModuleMessage(kWatchlistRequest, &request, &m_module, kAlongLink);
    }
}

}  // namespace panelry
