#pragma once

#include <QPointer>
#include <optional>

#include "services/module_base.h"
#include "watchlist/watchlist_listener.h"
#include "watchlist/watchlist_subscription.h"
#include "watchlist/watchlist_widget.h"

namespace panelry
{

/// The watchlist panel's number.
inline constexpr unsigned kWatchlistPanelId = 41003;

/// The watchlist as a panel: hears both lists from the service, asks it for changes (123), and tells the
/// frame which stock was picked (102).
///
/// Listens to 102 and the frame commands (common/frame_commands.h).
///
/// Ownership: holds the widget, which the library may delete first, and the subscriptions.
/// Threading: application thread.
/// Failures: what the service throws about a broken list is told in the status line.
class WatchlistModule : public ModuleBase, public WatchlistListener
{
public:
    explicit WatchlistModule(const InstanceInfo& info);
    ~WatchlistModule() override;

    void Initialize(int moduleId, const char* a, const char* b, const char* initParam) override;
    void OnMessage(int msgId, void* payload) override;
    QWidget* GetWidget() override { return m_widget; }

    void OnWatchlistEvent(int code, const void* list) override;

private:
    void ConnectWidget();
    bool Send(WatchlistRequest& request);
    void Add(const StringMap& stock);
    void Remove(const StringMap& stock);
    void Move(int from, int to);
    void Pick(const StringMap& stock, bool fromLatest);

    QPointer<WatchlistWidget> m_widget;
    std::optional<WatchlistSubscription> m_watchlist;
    std::optional<WatchlistSubscription> m_latest;
};

}  // namespace panelry
