#include "watchlist/stock_list_model.h"

#include <algorithm>

#include "common/market.h"

namespace panelry
{

void StockListModel::SetStocks(const StockList& stocks)
{
    beginResetModel();
    m_stocks = stocks;
    endResetModel();
}

int StockListModel::RowOf(const StringMap& stock) const
{
    const auto found = std::find_if(m_stocks.begin(), m_stocks.end(), [&stock](const StringMap& entry) {
        return FieldOf(entry, "stockcode") == FieldOf(stock, "stockcode") &&
               FieldOf(entry, "market") == FieldOf(stock, "market");
    });
    return found == m_stocks.end() ? -1 : static_cast<int>(found - m_stocks.begin());
}

int StockListModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_stocks.size());
}

int StockListModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : kColumns;
}

QVariant StockListModel::data(const QModelIndex& index, int role) const
{
    const StringMap& stock = m_stocks[static_cast<std::size_t>(index.row())];
    if (role != Qt::DisplayRole && role != Qt::ToolTipRole) {
        return {};
    }
    switch (index.column()) {
        case kCode:
            return QString::fromStdString(FieldOf(stock, "stockcode"));
        case kName:
            return QString::fromStdString(FieldOf(stock, "stockname"));
        default:
            return MarketName(FieldOf(stock, "market"));
    }
}

QVariant StockListModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal) {
        return {};
    }
    if (role == Qt::TextAlignmentRole) {
        return static_cast<int>(Qt::AlignLeft | Qt::AlignVCenter);
    }
    if (role != Qt::DisplayRole) {
        return {};
    }
    switch (section) {
        case kCode:
            return QStringLiteral("证券代码");
        case kName:
            return QStringLiteral("证券名称");
        default:
            return QStringLiteral("市场");
    }
}

Qt::ItemFlags StockListModel::flags(const QModelIndex& index) const
{
    return index.isValid() ? Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemNeverHasChildren
                           : Qt::NoItemFlags;
}

}  // namespace panelry
