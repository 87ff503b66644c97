#pragma once

#include <QStandardItemModel>
#include <QWidget>
#include <map>
#include <string>

#include "host_tables/host_table_model.h"
#include "services/records.h"

class QTableView;

namespace panelry
{

class StatusLine;

/// The funds of the accounts side by side: a row for each kind of balance, a column for each account. Ctrl+C
/// copies what is selected, all of it without a selection; F5 asks anew.
///
/// Ownership: made without a parent by its module. Threading: application thread.
class FundsWidget : public QWidget
{
    Q_OBJECT

public:
    explicit FundsWidget(QWidget* parent = nullptr);

    void SetColors(const TableColors& colors);
    /// The funds published as `name`; an account that hasn't come yet has no column.
    void SetFunds(const std::string& name, const StringMap& funds);

    /// What stands under `heading` for the balance `title`; null without such a column or row.
    QString Shown(const QString& title, const QString& heading) const;
    QString AsText() const;
    QString StatusText() const;
    QSize sizeHint() const override;

Q_SIGNALS:
    void RefreshWanted();

protected:
    void showEvent(QShowEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void SetTitles();
    void Fill();

    TableColors m_colors;
    std::map<std::string, StringMap> m_funds;  // the normal account's name sorts first
    QStandardItemModel m_model;
    QTableView* m_view = nullptr;
    StatusLine* m_status = nullptr;
};

}  // namespace panelry
