#include "desk/providers/memory_table.h"

#include <algorithm>
#include <utility>

#include "desk/providers/faults.h"

namespace panelry::desk
{

MemoryTable::MemoryTable(std::string name, std::vector<std::string> columnIds, std::vector<Row> rows)
    : m_name(std::move(name)), m_columnIds(std::move(columnIds)), m_rows(std::move(rows))
{
}

const char* MemoryTable::CellText(int row, int column) const
{
    const Row& cells = m_rows.at(static_cast<std::size_t>(row));
    const auto place = static_cast<std::size_t>(column);
    return place < cells.size() ? cells[place].c_str() : "";
}

int MemoryTable::FindColumn(const char* columnId) const
{
    const auto found = std::find(m_columnIds.begin(), m_columnIds.end(), columnId);
    return found == m_columnIds.end() ? -1 : static_cast<int>(found - m_columnIds.begin());
}

std::shared_ptr<MemoryTable> MemoryTable::WithFaults(std::shared_ptr<MemoryTable> table, Faults& faults)
{
    if (!table || (!faults.IsOn(Fault::Columns) && !faults.IsOn(Fault::Text))) {
        return table;
    }
    auto copy = std::make_shared<MemoryTable>(*table);
    if (faults.Strikes(Fault::Columns)) {
        const int id = faults.NumberOf(Fault::Columns);
        const int column = id == 0 ? static_cast<int>(faults.Draw(table->m_columnIds.size()))
                                   : table->FindColumn(std::to_string(id).c_str());
        if (column >= 0) {
            copy->m_columnIds.erase(copy->m_columnIds.begin() + column);
            for (Row& row : copy->m_rows) {
                row.resize(table->m_columnIds.size());
                row.erase(row.begin() + column);
            }
        }
    }
    for (Row& row : copy->m_rows) {
        for (std::string& cell : row) {
            cell = faults.Garbled(std::move(cell));
        }
    }
    return copy;
}

void AnswerTable::ColumnInfo(int column, std::shared_ptr<StringMap>& record) const
{
    record = std::make_shared<StringMap>(
        StringMap{{"id", m_table->ColumnIds().at(static_cast<std::size_t>(column))}});
}

void AnswerTable::CellValue(int row, int column, std::shared_ptr<std::string>& text) const
{
    text = std::make_shared<std::string>(m_table->CellText(row, column));
}

}  // namespace panelry::desk
