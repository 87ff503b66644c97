#include "desk/demo_table.h"

#include <algorithm>
#include <utility>

namespace panelry::desk
{

DemoTable::DemoTable(std::string name, std::vector<std::string> columnIds, std::vector<Row> rows)
    : m_name(std::move(name)), m_columnIds(std::move(columnIds)), m_rows(std::move(rows))
{
}

const char* DemoTable::CellText(int row, int column) const
{
    const Row& cells = m_rows.at(static_cast<std::size_t>(row));
    const auto place = static_cast<std::size_t>(column);
    return place < cells.size() ? cells[place].c_str() : "";
}

int DemoTable::FindColumn(const char* columnId) const
{
    const auto found = std::find(m_columnIds.begin(), m_columnIds.end(), columnId);
    return found == m_columnIds.end() ? -1 : static_cast<int>(found - m_columnIds.begin());
}

}  // namespace panelry::desk
