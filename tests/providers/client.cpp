#include "providers/client.h"

#include <utility>

#include "base/host_text.h"

namespace panelry::test
{

template <class Keep>
void Client::Note(const std::string& news, Keep keep)
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

void Client::OnQuotePush(std::shared_ptr<QuotePushRecord> record)
{
    StringMap row = record->rows.at(0);
    row["type"] = record->head.at("type");
    Note("quote " + row["stockcode"].substr(1), [&] { m_pushes.push_back(std::move(row)); });
}

void Client::OnTableChanged(const std::string& name, std::shared_ptr<HostTable> table)
{
    Note("table " + name, [&] { m_tables[name] = std::move(table); });
}

void Client::OnDataPush(const std::string& name, std::shared_ptr<StringMap> map)
{
    Note("map " + name, [&] { m_maps[name] = *map; });
}

void Client::OnFundsPush(Answer answer)
{
    Note("answer " + answer->request->head["type"], [&] { m_answers.push_back(std::move(answer)); });
}

void Client::OnLoginState(int state)
{
    Note("login " + std::to_string(state), [] {});
}

std::vector<std::string> Client::TakeNews()
{
    const std::lock_guard guard(m_lock);
    return std::exchange(m_news, {});
}

std::vector<Client::Answer> Client::Answers() const
{
    const std::lock_guard guard(m_lock);
    return m_answers;
}

std::shared_ptr<HostTable> Client::Table(const std::string& name) const
{
    const std::lock_guard guard(m_lock);
    const auto found = m_tables.find(name);
    return found == m_tables.end() ? nullptr : found->second;
}

StringMap Client::Map(const std::string& name) const
{
    const std::lock_guard guard(m_lock);
    const auto found = m_maps.find(name);
    return found == m_maps.end() ? StringMap() : found->second;
}

std::vector<StringMap> Client::Pushes() const
{
    const std::lock_guard guard(m_lock);
    return m_pushes;
}

std::set<std::thread::id> Client::Threads() const
{
    const std::lock_guard guard(m_lock);
    return m_threads;
}

std::string Client::Column(const std::string& name, const char* id) const
{
    const std::shared_ptr<HostTable> table = Table(name);
    const int column = table ? table->FindColumn(id) : -1;
    if (column < 0) {
        return table ? "no column" : "none";
    }
    std::string texts;
    for (int row = 0; row < table->RowCount(); ++row) {
        texts += HostTextToUtf8(table->CellText(row, column)) + ' ';
    }
    return texts;
}

}  // namespace panelry::test
