#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "services/host_table.h"

namespace panelry::desk
{

class Faults;

/// A table of plain texts, as a host publishes them. Unchanged once it is made, so any thread may read it.
class MemoryTable : public HostTable
{
public:
    using Row = std::vector<std::string>;

    /// `columnIds` are ids of the column dictionary; a row that is too short reads as empty at its end. Texts
    /// stand in the host's code page.
    MemoryTable(std::string name, std::vector<std::string> columnIds, std::vector<Row> rows);

    const char* Name() const override { return m_name.c_str(); }
    int RowCount() const override { return static_cast<int>(m_rows.size()); }
    const char* CellText(int row, int column) const override;
    int FindColumn(const char* columnId) const override;

    const std::vector<std::string>& ColumnIds() const { return m_columnIds; }

    /// What a client gets of `table` with the faults that are on.
    static std::shared_ptr<MemoryTable> WithFaults(std::shared_ptr<MemoryTable> table, Faults& faults);

private:
    const std::string m_name;
    std::vector<std::string> m_columnIds;
    std::vector<Row> m_rows;
};

/// The same rows as part of an answer.
class AnswerTable : public HostAnswerTable
{
public:
    explicit AnswerTable(std::shared_ptr<MemoryTable> table) : m_table(std::move(table)) {}

    int ColumnCount() const override { return static_cast<int>(m_table->ColumnIds().size()); }
    int RowCount() const override { return m_table->RowCount(); }
    void ColumnInfo(int column, std::shared_ptr<StringMap>& record) const override;
    void CellValue(int row, int column, std::shared_ptr<std::string>& text) const override;

private:
    const std::shared_ptr<MemoryTable> m_table;
};

}  // namespace panelry::desk
