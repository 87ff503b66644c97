#pragma once

#include <QAbstractTableModel>

#include "watchlist/watchlist_listener.h"

namespace panelry
{

/// A list of stocks for a table: code, name, market. An entry is told from others by code and market.
///
/// Threading: application thread.
class StockListModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Column { kCode, kName, kMarket, kColumns };

    using QAbstractTableModel::QAbstractTableModel;

    /// The service always tells a whole list.
    void SetStocks(const StockList& stocks);
    const StockList& Stocks() const { return m_stocks; }

    /// The row of the entry with the code and market of `stock`; -1 if there is none.
    int RowOf(const StringMap& stock) const;

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

private:
    StockList m_stocks;
};

}  // namespace panelry
