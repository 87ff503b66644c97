#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <string>

#include "refresh/open_orders.h"
#include "refresh/pending_orders.h"
#include "refresh/visit_gate.h"
#include "refresh/work_queue.h"
#include "services/host_table.h"

namespace panelry::refresh
{

/// What the worker reads of a quote push; nothing else crosses to it.
struct QuoteRow {
    std::string key;
    std::string price;
};

/// One of the two accounts, which have nothing to do with each other but for the open orders.
struct AccountState {
    std::atomic<std::uint32_t> refreshDue{0};
    PendingOrders pending;
    std::atomic<bool> firstDone{false};
};

/// All that the workers, the timers and the provider's threads share. The workers own it too, so it is there
/// until the last of them has ended.
struct RefreshState {
    AccountState& Account(bool margin) { return margin ? marginAccount : normalAccount; }

    /// No more work and no more visits to the host: what runs is waited for, at most `patience`.
    template <class... Patience>
    void Stop(Patience... patience)
    {
        stopped = true;
        tables.Close();
        quotes.Close();
        gate.Close(patience...);
    }

    std::atomic<bool> stopped{false};
    AccountState normalAccount;
    AccountState marginAccount;
    OpenOrders openOrders;
    VisitGate gate;
    WorkQueue<std::shared_ptr<HostTable>> tables;
    WorkQueue<QuoteRow> quotes{std::chrono::microseconds(10)};
};

}  // namespace panelry::refresh
