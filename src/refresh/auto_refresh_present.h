#pragma once

#include <atomic>
#include <memory>
#include <string>

#include "refresh/refresh_state.h"
#include "services/interval_timer.h"
#include "services/quote_observer.h"
#include "services/trade_observer.h"
#include "tables/rzrq_zi_jin_info.h"
#include "tables/table_form_info.h"
#include "tables/zi_jin_info.h"

/// Finds out when the tables of orders, deals, holdings and funds are due for a refresh, and asks for it.
///
/// The host pushes its table of cancellable orders whenever that changes. The open orders are read from it
/// and quotes of exactly these stocks subscribed; a quote beyond an order's limit says that the order must
/// have been dealt, and all tables and funds of the account are asked for at the next tick. A second timer
/// follows up fresh orders, whose contract numbers the host tells, until they appear in that table. The
/// normal account and the margin account go separate ways.
///
/// Settings, section "system", decimal numbers: "auto_refresh_interval", milliseconds from tick to tick, 0 or
/// less: no ticks, and quotes and tables aren't looked at; "auto_refresh_afterweituo", milliseconds of the
/// follow-up, 0 or less: none; "autorefresh_mode_afterwt", 1: the follow-up covers deals and funds too.
///
/// Ownership: must be owned by a shared pointer before Start(). Providers share it beyond its end; a stopped
///   one ignores what they bring. It may die on any thread.
/// Threading: Start() and Stop() on the application thread. The callbacks come on the provider's threads and
///   only queue or set flags, but for OnFundsPush and OnLoginState, which ask the provider in turn. Each
///   timer runs its task on a thread of its own; two detached workers read tables and quotes, and end by
///   themselves.
/// Failures: none is told; a refresh that fails leaves the old table.
class AutoRefreshPresent : public QuoteObserver, public TradeObserver
{
public:
    AutoRefreshPresent();
    ~AutoRefreshPresent() override;

    /// Once, after the providers and the settings.
    void Start();

    /// Ends the timers and waits for their tasks and for a worker that reads a table; after this nothing of the
    /// host is called any more but by a callback that the host itself has under way. Harmless when repeated;
    /// there is no way back.
    void Stop();

    /// For the end of a process that didn't stop: the same, but waits two seconds at most and leaves the
    /// timers' threads alone. Any thread.
    void StopForExit();

    void* ObserverSelf() override { return this; }
    void OnQuotePush(std::shared_ptr<QuotePushRecord> record) override;
    void OnTableChanged(const std::string& name, std::shared_ptr<HostTable> table) override;
    void OnDataPush(const std::string& name, std::shared_ptr<StringMap> map) override;
    void OnFundsPush(std::shared_ptr<StockInfoAnswer> answer) override;
    void OnLoginState(int state) override;

    /// One tick: refreshes each account that is marked. The mark goes when the refresh is over, and with it
    /// one that was set meanwhile. A timer's task; public for those who step it.
    void Tick();
    /// One follow-up of fresh orders. A timer's task too.
    void FollowUp();

    /// How things stand, for tests and measurements.
    const panelry::refresh::RefreshState& State() const { return *m_state; }

private:
    void SubscribeKeys();
    void StartTimer(IntervalTimer& timer, int intervalMs, void (AutoRefreshPresent::*task)());
    void StartWorkers();
    void RefreshAll(bool margin);
    void FirstRefresh(bool margin);
    void FollowUp(bool margin, bool dealsAndFunds);
    void Query(void (DataDealBase::*query)(StringMap&), const char* table, bool margin);
    void QueryFunds(bool margin);

    const std::shared_ptr<panelry::refresh::RefreshState> m_state;
    const std::shared_ptr<TableFormInfo> m_tableForm;
    const std::shared_ptr<ZiJinInfo> m_funds;
    const std::shared_ptr<RzrqZiJinInfo> m_marginFunds;
    // The three have been given their observers. A provider calls as soon as it is attached, on threads of its own.
    std::atomic<bool> m_linked{false};
    IntervalTimer m_afterOrderTimer;
    IntervalTimer m_intervalTimer;
};
