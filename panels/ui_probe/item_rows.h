#pragma once

#include <QModelIndex>
#include <QString>
#include <vector>

class QAbstractItemView;

namespace panelry
{

/// A row of an item view as it is shown: hidden rows and those below a closed branch don't count.
struct ShownRow {
    QModelIndex index;  ///< in the model's first column
    int depth = 0;      ///< in a tree, 0 otherwise
};

/// The rows from number `first` on, `most` at most, in the order shown. Application thread.
std::vector<ShownRow> ShownRows(const QAbstractItemView& view, int first, int most);

/// The columns of the model that are shown, in the order shown, `most` at most.
std::vector<int> ShownColumns(const QAbstractItemView& view, int most);

/// What a cell shows.
QString CellText(const QAbstractItemView& view, const QModelIndex& cell);

/// What stands above a column of the model; empty in a view without headings.
QString HeadingText(const QAbstractItemView& view, int column);

}  // namespace panelry
