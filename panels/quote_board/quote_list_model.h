#pragma once

#include <QAbstractTableModel>
#include <vector>

#include "quote_board/quote_book.h"
#include "quote_board/quote_face.h"

namespace panelry
{

/// The rows of a quote book for a table: code, name, latest price, change in per cent.
///
/// Ownership: the book belongs to the caller and outlives the model. Threading: application thread.
class QuoteListModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Column { kCode, kName, kLast, kPercent, kColumns };
    static constexpr int kToneRole = Qt::UserRole;  ///< the cell's Tone, as int

    QuoteListModel(const QuoteBook& book, QObject* parent);

    /// After the book has changed: tells the views of new rows, and of `changed` ones cell by cell, so that
    /// they repaint nothing else.
    void Applied(const std::vector<int>& changed);

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    FaceCell CellAt(const QModelIndex& index) const;

    const QuoteBook& m_book;
    int m_rows = 0;  // of the book's, those that the views know of
};

}  // namespace panelry
