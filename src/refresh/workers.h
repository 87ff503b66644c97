#pragma once

#include <memory>

#include "refresh/refresh_state.h"
#include "services/quote_observer.h"

namespace panelry::refresh
{

/// The bodies of the two workers. Each runs on a detached thread until `state` is stopped, and touches
/// nothing that it doesn't share.

/// Reads one table after the other. `quoteSide` is held only while it reads.
void RunTableWorker(std::shared_ptr<RefreshState> state, std::weak_ptr<QuoteObserver> quoteSide);

/// Tests one quote after the other against the open orders and marks the account for a refresh.
void RunQuoteWorker(std::shared_ptr<RefreshState> state);

}  // namespace panelry::refresh
