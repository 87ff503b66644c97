#pragma once

#include <QVariantMap>
#include <QWidget>

#include "watchlist/watchlist_listener.h"

class QPushButton;
class QStackedWidget;
class QTabBar;

namespace panelry
{

class AddLine;
class StatusLine;
class StockListModel;
class StockListView;

/// The watchlist panel: the user's list and the latest stocks behind two tabs, a line to add, a status line.
/// Ctrl+1 and Ctrl+2 change the tab, Ctrl+N goes to the line.
///
/// What the user wants goes out as signals; the lists change only when the service tells so.
///
/// Ownership: made without a parent by its module. Threading: application thread.
class WatchlistWidget : public QWidget
{
    Q_OBJECT
    /// What a clone starts with: {"tab": number}.
    Q_PROPERTY(QVariantMap module_data READ ModuleData)

public:
    enum Tab { kWatchlist, kLatest };

    explicit WatchlistWidget(QWidget* parent = nullptr);

    void SetWatchlist(const StockList& stocks);
    void SetLatest(const StockList& stocks);

    /// Another panel has selected a stock: it becomes the current one in both lists, and is offered to add.
    void ShowSelected(const StringMap& stock);

    /// A stock has just been added, or was there already: it becomes the current one, and the line is free.
    void ShowAdded(const StringMap& stock, bool isNew);
    /// Tells a problem in the status line.
    void Warn(const QString& problem);

    const StockListModel* Watchlist() const { return m_models[kWatchlist]; }
    const StockListModel* Latest() const { return m_models[kLatest]; }
    StockListView* View(Tab tab) const { return m_views[tab]; }
    void ShowTab(Tab tab);
    QString StatusText() const;

    QVariantMap ModuleData() const;
    void Restore(const QVariantMap& moduleData);
    QSize sizeHint() const override;

Q_SIGNALS:
    void Picked(const StringMap& stock, bool fromLatest);
    void AddWanted(const StringMap& stock);
    void RemoveWanted(const StringMap& stock);
    void MoveWanted(int from, int to);

protected:
    void showEvent(QShowEvent* event) override;

private:
    static constexpr int kTabs = 2;

    void BuildUi();
    void BuildTabs();
    QWidget* BuildWatchlistFoot();
    QWidget* BuildLatestFoot();
    QWidget* BuildPage(Tab tab, QWidget* foot);
    void AddShortcuts();
    void SetStocks(Tab tab, const StockList& stocks);
    void Pick(Tab tab, int row);
    void Remove(int row);
    void AddCurrentLatest();
    void ShowState();
    Tab Current() const;

    QTabBar* m_tabs = nullptr;
    QStackedWidget* m_pages = nullptr;
    StockListModel* m_models[kTabs] = {};
    StockListView* m_views[kTabs] = {};
    AddLine* m_addLine = nullptr;
    QPushButton* m_remove = nullptr;
    QPushButton* m_addLatest = nullptr;
    StatusLine* m_status = nullptr;
};

}  // namespace panelry
