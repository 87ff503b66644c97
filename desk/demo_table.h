#pragma once

#include <string>
#include <vector>

#include "services/host_table.h"

namespace panelry::desk
{

/// A table of plain texts, as a host publishes them. Unchanged once it is made, so any thread may read it.
class DemoTable : public HostTable
{
public:
    using Row = std::vector<std::string>;

    /// `columnIds` are ids of the column dictionary; a row that is too short reads as empty at its end. Texts
    /// stand in the host's code page.
    DemoTable(std::string name, std::vector<std::string> columnIds, std::vector<Row> rows);

    const char* Name() const override { return m_name.c_str(); }
    int RowCount() const override { return static_cast<int>(m_rows.size()); }
    const char* CellText(int row, int column) const override;
    int FindColumn(const char* columnId) const override;

private:
    const std::string m_name;
    const std::vector<std::string> m_columnIds;
    const std::vector<Row> m_rows;
};

}  // namespace panelry::desk
