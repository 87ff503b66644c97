#pragma once

#include <algorithm>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "services/host_table.h"
#include "services/quote_observer.h"
#include "services/trade_observer.h"

namespace panelry::test
{

/// A host table out of literals.
class FakeTable : public HostTable
{
public:
    using Rows = std::vector<std::vector<std::string>>;

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
    FakeAnswerTable(std::vector<std::string> columns, FakeTable::Rows rows)
        : m_columns(std::move(columns)), m_rows(std::move(rows))
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

/// A trade side that keeps what is published and every request word by word. Any thread.
class FakeAccount : public TradeProvider
{
public:
    int Attach(int, std::shared_ptr<TradeObserver>) override { return 0; }
    int SendTradeRequest(std::shared_ptr<TradeObserver>,
                         std::shared_ptr<ddsdk::TradeRequestParam> request) override
    {
        const std::lock_guard guard(m_lock);
        m_requests.push_back(*request);
        return 0;
    }
    int GetString(const std::string& key, std::shared_ptr<std::string>& value) override
    {
        const std::lock_guard guard(m_lock);
        const auto found = m_strings.find(key);
        value = found == m_strings.end() ? nullptr : std::make_shared<std::string>(found->second);
        return value ? 0 : -1;
    }
    int SubscribeKey(const std::string&, bool, std::shared_ptr<TradeObserver>) override { return 0; }
    int SetStringMap(const std::string& name, std::shared_ptr<StringMap> map) override
    {
        const std::lock_guard guard(m_lock);
        m_maps[name] = *map;
        return 0;
    }
    std::shared_ptr<StringMap> GetStringMap(const std::string& name) override
    {
        const std::lock_guard guard(m_lock);
        const auto found = m_maps.find(name);
        return found == m_maps.end() ? nullptr : std::make_shared<StringMap>(found->second);
    }
    std::shared_ptr<HostTable> GetTable(const std::string&) override { return nullptr; }

    std::map<std::string, std::string> m_strings;  // set while nobody calls
    std::map<std::string, StringMap> m_maps;
    std::vector<ddsdk::TradeRequestParam> m_requests;

private:
    std::mutex m_lock;
};

/// Both observers in one object.
class FakeObservers : public QuoteObserver, public TradeObserver
{
public:
    void* ObserverSelf() override { return this; }
};

/// A part of the tables' logic with its account.
template <class Logic>
struct LogicStage {
    LogicStage()
    {
        observers->TradeObserver::SetProvider(&account);
        logic.SetObservers(observers, observers);
    }

    FakeAccount account;
    std::shared_ptr<FakeObservers> observers = std::make_shared<FakeObservers>();
    Logic logic;
};

}  // namespace panelry::test
