#pragma once

#include <QVariantMap>
#include <QWidget>
#include <array>
#include <memory>
#include <string>
#include <vector>

#include "host_tables/host_table_model.h"
#include "host_tables/trade_link.h"

class QLineEdit;
class QPushButton;
class QStackedWidget;
class QTabBar;

namespace panelry
{

class HostTableView;
class StatusLine;

/// One table of a panel; the margin account's has the same name behind "rzrq_".
struct PageSpec {
    const char* title;
    const char* table;  ///< the host's name of it
    TradeLink::Query query;
    const char* keyColumn;  ///< tells rows apart, a column id
    bool cancels;           ///< its rows can be cancelled by their "2135"
    std::vector<ColumnSpec> columns;
};

/// What a panel of the host's tables shows.
struct TablesSpec {
    const char* name;  ///< under which its columns are remembered
    std::vector<PageSpec> pages;
};

/// The host's name of a page's table in one of the accounts.
std::string TableName(const PageSpec& page, bool margin);

/// A panel of some tables of the host, of the normal and of the margin account: tabs, a filter, a status line.
/// F5 refreshes, Ctrl+1.. changes the tab, Ctrl+M the account, Ctrl+F goes to the filter, Delete cancels the
/// selected orders where they can be.
///
/// What the user wants goes out as signals; tables change only when the host says so.
///
/// Ownership: made without a parent by its module. Threading: application thread.
class TablesWidget : public QWidget
{
    Q_OBJECT
    /// What a clone starts with: {"page": number, "margin": "0" or "1", "filter": text}.
    Q_PROPERTY(QVariantMap module_data READ ModuleData)

public:
    explicit TablesWidget(TablesSpec spec, QWidget* parent = nullptr);

    const TablesSpec& Spec() const { return m_spec; }
    void SetColors(const TableColors& colors);
    /// A table by the host's name; others than this panel's mean nothing.
    void SetTable(const std::string& name, const std::shared_ptr<HostTable>& table);
    /// The host's orders have changed: the page that is shown is asked for, the others when they are looked at. Not
    /// those whose rows can be cancelled: the host brings them.
    void Outdate();
    void Warn(const QString& problem);
    /// Tells what has just been done, until things change.
    void Tell(const QString& done);

    void ShowPage(int page, bool margin);
    int Page() const;
    bool Margin() const { return m_margin; }
    HostTableView* View(int page, bool margin) const { return Of(page, margin).view; }
    HostTableModel* Model(int page, bool margin) const { return Of(page, margin).model; }
    QString StatusText() const;

    QVariantMap ModuleData() const;
    void Restore(const QVariantMap& moduleData);
    QSize sizeHint() const override;

Q_SIGNALS:
    /// The page that is shown is to be asked for anew.
    void RefreshWanted();
    /// Contract numbers, as the host has them.
    void CancelWanted(const std::vector<std::string>& contracts);
    /// "stockcode", "market", "stockname" of the row that was picked.
    void Picked(const StringMap& stock);

protected:
    void showEvent(QShowEvent* event) override;

private:
    struct Table {
        HostTableModel* model = nullptr;
        HostTableView* view = nullptr;
        bool came = false;      // the host has told it
        bool outdated = false;  // orders have come in since
    };

    const Table& Of(int page, bool margin) const
    {
        return m_tables[static_cast<std::size_t>(page)][margin ? 1U : 0U];
    }
    Table MakeTable(const PageSpec& page, bool margin);
    QWidget* BuildHead();
    QWidget* BuildFoot();
    void AddShortcuts();
    void OnPageChanged();
    void CancelSelected();
    void Pick(const HostTableModel& model, int row);
    void ShowState();

    const TablesSpec m_spec;
    bool m_margin = false;
    std::vector<std::array<Table, 2>> m_tables;
    QTabBar* m_tabs = nullptr;
    QPushButton* m_account = nullptr;
    QLineEdit* m_filter = nullptr;
    QStackedWidget* m_views = nullptr;
    QPushButton* m_cancel = nullptr;
    StatusLine* m_status = nullptr;
    QString m_done;
};

}  // namespace panelry
