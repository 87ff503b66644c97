#include "quote_board/quote_list_model.h"

namespace panelry
{

namespace
{

int AlignmentOf(int column)
{
    const bool words = column == QuoteListModel::kCode || column == QuoteListModel::kName;
    return static_cast<int>(Qt::AlignVCenter | (words ? Qt::AlignLeft : Qt::AlignRight));
}

}  // namespace

QuoteListModel::QuoteListModel(const QuoteBook& book, QObject* parent)
    : QAbstractTableModel(parent), m_book(book)
{
}

void QuoteListModel::Applied(const std::vector<int>& changed)
{
    const int known = m_rows;
    const int rows = static_cast<int>(m_book.Quotes().size());
    if (rows > known) {
        beginInsertRows(QModelIndex(), known, rows - 1);
        m_rows = rows;
        endInsertRows();
    }
    for (const int row : changed) {
        for (int column = 0; row < known && column < kColumns; ++column) {
            // One cell a signal: for a range the view would repaint all that it shows.
            Q_EMIT dataChanged(index(row, column), index(row, column));
        }
    }
}

int QuoteListModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : m_rows;
}

int QuoteListModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : kColumns;
}

FaceCell QuoteListModel::CellAt(const QModelIndex& index) const
{
    const Quote& quote = m_book.Quotes()[static_cast<std::size_t>(index.row())];
    switch (index.column()) {
        case kCode:
            return {quote.code, Tone::Muted};
        case kName:
            return {quote.name};
        case kLast:
            return PriceCell(quote.last, quote);
        default:
            return PercentCell(quote);
    }
}

QVariant QuoteListModel::data(const QModelIndex& index, int role) const
{
    switch (role) {
        case Qt::DisplayRole:
            return CellAt(index).text;
        case Qt::TextAlignmentRole:
            return AlignmentOf(index.column());
        case kToneRole:
            return static_cast<int>(CellAt(index).tone);
        default:
            return QVariant();
    }
}

QVariant QuoteListModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal) {
        return QVariant();
    }
    if (role == Qt::TextAlignmentRole) {
        return AlignmentOf(section);
    }
    if (role != Qt::DisplayRole) {
        return QVariant();
    }
    switch (section) {
        case kCode:
            return QStringLiteral("代码");
        case kName:
            return QStringLiteral("名称");
        case kLast:
            return QStringLiteral("最新");
        default:
            return QStringLiteral("涨幅");
    }
}

}  // namespace panelry
