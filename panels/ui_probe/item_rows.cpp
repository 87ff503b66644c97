#include "ui_probe/item_rows.h"

#include <QHeaderView>
#include <QListView>
#include <QStyledItemDelegate>
#include <QTableView>
#include <QTreeView>
#include <algorithm>

namespace panelry
{

namespace
{

const QHeaderView* HorizontalHeader(const QAbstractItemView& view)
{
    if (const auto* const table = qobject_cast<const QTableView*>(&view)) {
        return table->horizontalHeader();
    }
    const auto* const tree = qobject_cast<const QTreeView*>(&view);
    return tree ? tree->header() : nullptr;
}

// Takes rows in the order shown until there are enough.
class RowTaker
{
public:
    RowTaker(const QAbstractItemView& view, int first, int most) : m_view(view), m_skip(first), m_most(most)
    {
    }

    std::vector<ShownRow> Take()
    {
        if (const auto* const table = qobject_cast<const QTableView*>(&m_view)) {
            TakeTable(*table);
        } else if (const auto* const tree = qobject_cast<const QTreeView*>(&m_view)) {
            TakeBranch(*tree, tree->rootIndex(), 0);
        } else {
            TakeList(qobject_cast<const QListView*>(&m_view));
        }
        return m_rows;
    }

private:
    QModelIndex Row(int row, const QModelIndex& parent) const
    {
        return m_view.model()->index(row, 0, parent);
    }
    int Count(const QModelIndex& parent) const { return m_view.model()->rowCount(parent); }
    bool Enough() const { return static_cast<int>(m_rows.size()) >= m_most; }

    void Add(const QModelIndex& index, int depth)
    {
        if (m_skip > 0) {
            --m_skip;
        } else {
            m_rows.push_back({index, depth});
        }
    }

    void TakeTable(const QTableView& table)
    {
        const QHeaderView* const header = table.verticalHeader();
        for (int visual = 0; visual < header->count() && !Enough(); ++visual) {
            const int row = header->logicalIndex(visual);
            if (!table.isRowHidden(row)) {
                Add(Row(row, table.rootIndex()), 0);
            }
        }
    }

    void TakeBranch(const QTreeView& tree, const QModelIndex& parent, int depth)
    {
        for (int row = 0; row < Count(parent) && !Enough(); ++row) {
            if (tree.isRowHidden(row, parent)) {
                continue;
            }
            const QModelIndex index = Row(row, parent);
            Add(index, depth);
            if (tree.isExpanded(index)) {
                TakeBranch(tree, index, depth + 1);
            }
        }
    }

    void TakeList(const QListView* list)
    {
        const QModelIndex root = m_view.rootIndex();
        for (int row = 0; row < Count(root) && !Enough(); ++row) {
            if (!list || !list->isRowHidden(row)) {
                Add(Row(row, root), 0);
            }
        }
    }

    const QAbstractItemView& m_view;
    int m_skip;
    const int m_most;
    std::vector<ShownRow> m_rows;
};

}  // namespace

std::vector<ShownRow> ShownRows(const QAbstractItemView& view, int first, int most)
{
    return view.model() ? RowTaker(view, first, most).Take() : std::vector<ShownRow>();
}

std::vector<int> ShownColumns(const QAbstractItemView& view, int most)
{
    if (!view.model()) {
        return {};
    }
    if (const auto* const list = qobject_cast<const QListView*>(&view)) {
        return {list->modelColumn()};
    }
    const QHeaderView* const header = HorizontalHeader(view);
    const int count = header ? header->count() : view.model()->columnCount(view.rootIndex());
    std::vector<int> columns;
    for (int visual = 0; visual < count && static_cast<int>(columns.size()) < most; ++visual) {
        const int column = header ? header->logicalIndex(visual) : visual;
        if (!header || !header->isSectionHidden(column)) {
            columns.push_back(column);
        }
    }
    return columns;
}

QString CellText(const QAbstractItemView& view, const QModelIndex& cell)
{
    const QVariant shown = cell.data(Qt::DisplayRole);
    const auto* const delegate = qobject_cast<const QStyledItemDelegate*>(view.itemDelegate(cell));
    return delegate && shown.isValid() ? delegate->displayText(shown, view.locale()) : shown.toString();
}

QString HeadingText(const QAbstractItemView& view, int column)
{
    const QHeaderView* const header = HorizontalHeader(view);
    if (!header || header->isHidden()) {
        return {};
    }
    return view.model()->headerData(column, Qt::Horizontal, Qt::DisplayRole).toString();
}

}  // namespace panelry
