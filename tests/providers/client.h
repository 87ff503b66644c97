#pragma once

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

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
    void OnQuotePush(std::shared_ptr<QuotePushRecord> record) override;
    void OnTableChanged(const std::string& name, std::shared_ptr<HostTable> table) override;
    void OnDataPush(const std::string& name, std::shared_ptr<StringMap> map) override;
    void OnFundsPush(Answer answer) override;
    void OnLoginState(int state) override;

    /// Runs inside every callback; before the first.
    std::function<void()> inside;

    /// What has come, in order: "table NAME", "map NAME", "login STATE", "answer TYPE". Takes it away.
    std::vector<std::string> TakeNews();
    std::vector<Answer> Answers() const;
    /// The last one that came under the name.
    std::shared_ptr<HostTable> Table(const std::string& name) const;
    StringMap Map(const std::string& name) const;
    std::vector<StringMap> Pushes() const;      ///< the rows, with the head's "type"
    std::set<std::thread::id> Threads() const;  ///< on which it was called

    /// The texts of a column, each followed by a blank; "none" before there is a table, "no column" without
    /// it.
    std::string Column(const std::string& table, const char* id) const;

private:
    template <class Keep>
    void Note(const std::string& news, Keep keep);

    mutable std::mutex m_lock;  // guards the rest
    std::vector<std::string> m_news;
    std::vector<Answer> m_answers;
    std::map<std::string, std::shared_ptr<HostTable>> m_tables;
    std::map<std::string, StringMap> m_maps;
    std::vector<StringMap> m_pushes;
    std::set<std::thread::id> m_threads;
};

}  // namespace panelry::test
