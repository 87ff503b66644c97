#pragma once

#include <QAbstractTableModel>
#include <QColor>
#include <memory>
#include <string>
#include <vector>

#include "services/host_table.h"
#include "services/records.h"

namespace panelry
{

/// What a column holds, for its side, its order and its colour.
enum class ColumnKind { Text, Number, Profit };

/// One column of a panel's table, by its id in the column dictionary, which gives the heading.
struct ColumnSpec {
    const char* id = nullptr;
    ColumnKind kind = ColumnKind::Text;
    int letters = 8;  ///< the width it begins with, in digits
};

/// The colours of directions and profits: "rise" for buying and for a profit, "fall" for selling and a loss,
/// "#RRGGBB" or a name in section "quote" of the colour table; the usual red and green without.
struct TableColors {
    QColor rise{0xD7, 0x34, 0x2C};
    QColor fall{0x0B, 0x8F, 0x3C};
};
TableColors ReadTableColors(const ConfigTable* table);

/// One of the host's tables for a view: the columns that the panel wants, their texts in Unicode, numbers to
/// sort by. Columns that the host didn't send are empty.
///
/// Threading: application thread.
class HostTableModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Role { kSortRole = Qt::UserRole + 1 };

    /// `keyColumn` tells rows apart: the contract number of an order, the code of a holding.
    HostTableModel(std::vector<ColumnSpec> columns, std::string keyColumn, QObject* parent = nullptr);

    void SetColors(const TableColors& colors);

    /// Null for an empty table. A table with the same rows in the same order changes texts alone, so that
    /// whoever looks at a row keeps it.
    void SetTable(std::shared_ptr<HostTable> table);

    const std::vector<ColumnSpec>& Columns() const { return m_columns; }
    bool HasColumn(int column) const { return m_content.places[static_cast<std::size_t>(column)] >= 0; }
    /// What tells the row from others, as the host has it.
    std::string Key(int row) const { return m_content.keys[static_cast<std::size_t>(row)]; }
    int RowOf(const std::string& key) const;
    /// A cell of any column of the host's table, in UTF-8; empty for a column that it hasn't.
    std::string HostText(int row, const char* columnId) const;

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    // What a table comes down to: a place for each column in it, -1 for none, and for each row its key, its texts,
    // and the colour of its direction, if it has one.
    struct Content {
        std::vector<int> places;
        std::vector<std::string> keys;
        std::vector<std::vector<QString>> texts;
        std::vector<QVariant> directions;
    };

    Content Read(const HostTable* table) const;
    QVariant DirectionColor(const QString& operation) const;
    QVariant ColorOf(int row, const ColumnSpec& column, const QString& text) const;

    const std::vector<ColumnSpec> m_columns;
    const std::string m_keyColumn;
    TableColors m_colors;
    std::shared_ptr<HostTable> m_table;
    Content m_content;
};

}  // namespace panelry
