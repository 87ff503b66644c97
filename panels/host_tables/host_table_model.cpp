#include "host_tables/host_table_model.h"

#include <algorithm>

#include "base/host_text.h"
#include "base/number_text.h"
#include "tables/column_dictionary.h"

namespace panelry
{

namespace
{

constexpr char kOperation[] = "2109";

void ReadColor(const StringMap& section, const char* key, QColor& color)
{
    const auto entry = section.find(key);
    const QString name = entry == section.end() ? QString() : QString::fromStdString(entry->second);
    if (QColor::isValidColor(name)) {
        color = QColor(name);
    }
}

QString Unicode(const char* hostText)
{
    return QString::fromStdString(HostTextToUtf8(hostText));
}

double NumberOf(const QString& text)
{
    return TextToDouble(text.toStdString());
}

}  // namespace

TableColors ReadTableColors(const ConfigTable* table)
{
    TableColors colors;
    const ConfigTable none;
    const ConfigTable& sections = table ? *table : none;
    if (const auto section = sections.find("quote"); section != sections.end()) {
        ReadColor(section->second, "rise", colors.rise);
        ReadColor(section->second, "fall", colors.fall);
    }
    return colors;
}

HostTableModel::HostTableModel(std::vector<ColumnSpec> columns, std::string keyColumn, QObject* parent)
    : QAbstractTableModel(parent),
      m_columns(std::move(columns)),
      m_keyColumn(std::move(keyColumn)),
      m_content(Read(nullptr))
{
}

void HostTableModel::SetColors(const TableColors& colors)
{
    m_colors = colors;
}

void HostTableModel::SetTable(std::shared_ptr<HostTable> table)
{
    Content content = Read(table.get());
    const bool sameRows = content.keys == m_content.keys && content.places == m_content.places;
    if (!sameRows) {
        beginResetModel();
    }
    m_table = std::move(table);
    m_content = std::move(content);
    if (!sameRows) {
        endResetModel();
    } else if (rowCount() > 0) {
        Q_EMIT dataChanged(index(0, 0), index(rowCount() - 1, columnCount() - 1));
    }
}

// Without a table no column is missing.
HostTableModel::Content HostTableModel::Read(const HostTable* table) const
{
    Content content;
    content.places.assign(m_columns.size(), 0);
    if (!table) {
        return content;
    }
    std::transform(m_columns.begin(), m_columns.end(), content.places.begin(),
                   [table](const ColumnSpec& column) { return table->FindColumn(column.id); });
    const int keyPlace = table->FindColumn(m_keyColumn.c_str());
    const int operationPlace = table->FindColumn(kOperation);
    for (int row = 0; row < table->RowCount(); ++row) {
        const auto text = [table, row](int place) {
            return place < 0 ? QString() : Unicode(table->CellText(row, place));
        };
        content.keys.emplace_back(keyPlace < 0 ? "" : table->CellText(row, keyPlace));
        std::vector<QString>& cells = content.texts.emplace_back(content.places.size());
        std::transform(content.places.begin(), content.places.end(), cells.begin(), text);
        content.directions.push_back(DirectionColor(text(operationPlace)));
    }
    return content;
}

// A host may write in either script.
QVariant HostTableModel::DirectionColor(const QString& operation) const
{
    const auto says = [&operation](const QString& simplified, const QString& traditional) {
        return operation.contains(simplified) || operation.contains(traditional);
    };
    if (says(QStringLiteral("买"), QStringLiteral("買"))) {
        return m_colors.rise;
    }
    return says(QStringLiteral("卖"), QStringLiteral("賣")) ? QVariant(m_colors.fall) : QVariant();
}

int HostTableModel::RowOf(const std::string& key) const
{
    const auto found = std::find(m_content.keys.begin(), m_content.keys.end(), key);
    return found == m_content.keys.end() ? -1 : static_cast<int>(found - m_content.keys.begin());
}

std::string HostTableModel::HostText(int row, const char* columnId) const
{
    const int place = m_table ? m_table->FindColumn(columnId) : -1;
    return place < 0 ? std::string() : HostTextToUtf8(m_table->CellText(row, place));
}

int HostTableModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_content.keys.size());
}

int HostTableModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_columns.size());
}

QVariant HostTableModel::data(const QModelIndex& index, int role) const
{
    const ColumnSpec& column = m_columns[static_cast<std::size_t>(index.column())];
    const QString& text =
        m_content.texts[static_cast<std::size_t>(index.row())][static_cast<std::size_t>(index.column())];
    switch (role) {
        case Qt::DisplayRole:
        case Qt::ToolTipRole:
            return text;
        case Qt::TextAlignmentRole:
            return static_cast<int>((column.kind == ColumnKind::Text ? Qt::AlignLeft : Qt::AlignRight) |
                                    Qt::AlignVCenter);
        case Qt::ForegroundRole:
            return ColorOf(index.row(), column, text);
        case kSortRole:
            return column.kind == ColumnKind::Text ? QVariant(text) : QVariant(NumberOf(text));
        default:
            return {};
    }
}

QVariant HostTableModel::ColorOf(int row, const ColumnSpec& column, const QString& text) const
{
    if (column.kind == ColumnKind::Profit) {
        const double profit = NumberOf(text);
        return profit > 0 ? QVariant(m_colors.rise) : profit < 0 ? QVariant(m_colors.fall) : QVariant();
    }
    return std::string_view(column.id) == kOperation ? m_content.directions[static_cast<std::size_t>(row)]
                                                     : QVariant();
}

QVariant HostTableModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal) {
        return {};
    }
    const ColumnSpec& column = m_columns[static_cast<std::size_t>(section)];
    if (role == Qt::TextAlignmentRole) {
        return static_cast<int>((column.kind == ColumnKind::Text ? Qt::AlignLeft : Qt::AlignRight) |
                                Qt::AlignVCenter);
    }
    if (role != Qt::DisplayRole) {
        return {};
    }
    const std::string_view name = ColumnName(column.id);
    return name.empty() ? QString::fromLatin1(column.id)
                        : QString::fromUtf8(name.data(), static_cast<int>(name.size()));
}

}  // namespace panelry
