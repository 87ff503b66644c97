#pragma once

#include <QByteArray>
#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include "observers/fake_providers.h"
#include "services/host_table.h"

namespace panelry::test
{

/// A host table out of literals.
class FakeTable : public HostTable
{
public:
    using Rows = std::vector<std::vector<std::string>>;

    /// Blanks part the lines, "|" the cells; lines are as long as the first one, which names the columns.
    static Rows LinesOf(const QByteArray& text)
    {
        Rows lines;
        for (const QByteArray& line : text.trimmed().split(' ')) {
            std::vector<std::string>& cells = lines.emplace_back();
            for (const QByteArray& cell : line.split('|')) {
                cells.push_back(cell.toStdString());
            }
            cells.resize(lines[0].size());
        }
        return lines;
    }

    FakeTable(std::string name, const Rows& lines)
        : FakeTable(std::move(name), lines[0], Rows(lines.begin() + 1, lines.end()))
    {
    }
    FakeTable(std::string name, std::vector<std::string> columns, Rows rows)
        : m_name(std::move(name)), m_columns(std::move(columns)), m_rows(std::move(rows))
    {
    }

    const char* Name() const override { return m_name.c_str(); }
    int RowCount() const override { return static_cast<int>(m_rows.size()); }
    const char* CellText(int row, int column) const override
    {
        if (m_onCell) {
            m_onCell();
        }
        return m_rows.at(static_cast<std::size_t>(row)).at(static_cast<std::size_t>(column)).c_str();
    }
    int FindColumn(const char* columnId) const override
    {
        const auto found = std::find(m_columns.begin(), m_columns.end(), columnId);
        return found == m_columns.end() ? -1 : static_cast<int>(found - m_columns.begin());
    }

    std::function<void()> m_onCell;  // runs as a cell is read; set before somebody does

private:
    const std::string m_name;
    const std::vector<std::string> m_columns;
    const Rows m_rows;
};

/// An answer's table; a column "-" has no record, "?" a record without an id, and a cell "-" has no text.
class FakeAnswerTable : public HostAnswerTable
{
public:
    explicit FakeAnswerTable(const FakeTable::Rows& lines)
        : m_columns(lines[0]), m_rows(lines.begin() + 1, lines.end())
    {
    }

    int ColumnCount() const override { return static_cast<int>(m_columns.size()); }
    int RowCount() const override { return static_cast<int>(m_rows.size()); }
    void ColumnInfo(int column, std::shared_ptr<StringMap>& record) const override
    {
        const std::string& id = m_columns.at(static_cast<std::size_t>(column));
        if (id != "-") {
            record = std::make_shared<StringMap>(StringMap{{id == "?" ? "name" : "id", id}});
        }
    }
    void CellValue(int row, int column, std::shared_ptr<std::string>& text) const override
    {
        const std::string& cell =
            m_rows.at(static_cast<std::size_t>(row)).at(static_cast<std::size_t>(column));
        if (cell != "-") {
            text = std::make_shared<std::string>(cell);
        }
    }

private:
    const std::vector<std::string> m_columns;
    const FakeTable::Rows m_rows;
};

using FakeAccount = FakeTradeProvider;

/// A part of the tables' logic with its account.
template <class Logic>
struct LogicStage {
    LogicStage()
    {
        observers->TradeObserver::SetProvider(&account);
        logic.SetObservers(observers, observers);
    }

    FakeAccount account;
    std::shared_ptr<PairOfObservers> observers = std::make_shared<PairOfObservers>();
    Logic logic;
};

}  // namespace panelry::test
