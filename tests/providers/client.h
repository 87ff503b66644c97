#pragma once

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "base/host_text.h"
#include "services/quote_observer.h"
#include "services/trade_observer.h"

namespace panelry::test
{

/// A client of both providers that keeps what it is told.
///
/// Threading: any.
class Client : public QuoteObserver, public TradeObserver
{
public:
    using Answer = std::shared_ptr<StockInfoAnswer>;

    void* ObserverSelf() override { return this; }
    void OnQuotePush(std::shared_ptr<QuotePushRecord> record) override
    {
        StringMap row = record->rows.at(0);
        row["type"] = record->head.at("type");
        Note("quote " + row["stockcode"].substr(1), [&] { m_pushes.push_back(std::move(row)); });
    }
    void OnTableChanged(const std::string& name, std::shared_ptr<HostTable> table) override
    {
        Note("table " + name, [&] { m_tables[name] = std::move(table); });
    }
    void OnDataPush(const std::string& name, std::shared_ptr<StringMap> map) override
    {
        Note("map " + name, [&] { m_maps[name] = *map; });
    }
    void OnFundsPush(Answer answer) override
    {
        Note("answer " + answer->request->head["type"], [&] { m_answers.push_back(std::move(answer)); });
    }
    void OnLoginState(int state) override
    {
        Note("login " + std::to_string(state), [] {});
    }

    /// Runs inside every callback; before the first.
    std::function<void()> inside;

    /// What has come, in order: "table NAME", "map NAME", "login STATE", "answer TYPE". Takes it away.
    std::vector<std::string> TakeNews()
    {
        const std::lock_guard guard(m_lock);
        return std::exchange(m_news, {});
    }
    std::vector<Answer> Answers() const { return Get(m_answers); }
    /// The last one that came under the name.
    std::shared_ptr<HostTable> Table(const std::string& name) const { return Get(m_tables)[name]; }
    StringMap Map(const std::string& name) const { return Get(m_maps)[name]; }
    /// The rows, with the head's "type".
    std::vector<StringMap> Pushes() const { return Get(m_pushes); }
    /// On which it was called.
    std::set<std::thread::id> Threads() const { return Get(m_threads); }

    /// The texts of a column, each followed by a blank; "none" before there is a table, "no column" without
    /// it.
    std::string Column(const std::string& name, const char* id) const
    {
        const std::shared_ptr<HostTable> table = Table(name);
        const int column = table ? table->FindColumn(id) : -1;
        std::string texts = !table ? "none" : column < 0 ? "no column" : "";
        for (int row = 0; column >= 0 && row < table->RowCount(); ++row) {
            texts += HostTextToUtf8(table->CellText(row, column)) + ' ';
        }
        return texts;
    }

private:
    template <class T>
    T Get(const T& kept) const
    {
        const std::lock_guard guard(m_lock);
        return kept;
    }
    template <class Keep>
    void Note(const std::string& news, Keep keep)
    {
        {
            const std::lock_guard guard(m_lock);
            m_news.push_back(news);
            m_threads.insert(std::this_thread::get_id());
            keep();
        }
        if (inside) {
            inside();
        }
    }

    mutable std::mutex m_lock;  // guards the rest
    std::vector<std::string> m_news;
    std::vector<Answer> m_answers;
    std::map<std::string, std::shared_ptr<HostTable>> m_tables;
    std::map<std::string, StringMap> m_maps;
    std::vector<StringMap> m_pushes;
    std::set<std::thread::id> m_threads;
};

}  // namespace panelry::test
