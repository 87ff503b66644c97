#pragma once

#include <QDeadlineTimer>
#include <atomic>
#include <functional>
#include <latch>
#include <mutex>
#include <sstream>
#include <string>
#include <thread>

#include "observers/fake_providers.h"
#include "refresh/auto_refresh_present.h"
#include "services/resource_manager.h"
#include "support/test.h"
#include "tables/fake_account.h"

namespace panelry::test
{

/// The settings that the library reads, one table for the whole process. Changed while no presenter runs.
inline ConfigTable& Settings()
{
    static ConfigTable& settings = *[] {
        auto* const table = new ConfigTable;
        ResourceManager::Instance(true)->SetConfigTables(table, nullptr);
        return table;
    }();
    return settings;
}

/// The host: both providers and one list, in words, of all that was asked of them. Any thread.
class FakeHost : public FakeQuoteProvider, public FakeAccount
{
public:
    void Log(const std::string& what)
    {
        const std::lock_guard guard(m_lock);
        m_log += (m_log.empty() ? "" : ", ") + what;
    }

    /// The list since the last call, ", " between its entries.
    std::string TakeLog()
    {
        const std::lock_guard guard(m_lock);
        return std::exchange(m_log, {});
    }

    int Attach(int, std::shared_ptr<QuoteObserver> subscriber) override
    {
        Hold(std::move(subscriber));
        return 0;
    }
    int SubscribeCodes(std::vector<MarketCode>& codes, bool on, std::shared_ptr<QuoteObserver>) override
    {
        const std::string words = (on ? "codes+" : "codes-") + Words(codes);
        Log(words);
        return Called(words);
    }
    int ResolveCodeMarkets(std::vector<MarketCode>& codes) override
    {
        const auto corrected = m_markets.find(codes.at(0).code);
        codes[0].market = corrected == m_markets.end() ? std::uint8_t{0} : corrected->second;
        const int result = Called("resolve");
        return corrected == m_markets.end() ? -1 : result;
    }

    int Attach(int, std::shared_ptr<TradeObserver>) override { return 0; }
    int SendTradeRequest(std::shared_ptr<TradeObserver>,
                         std::shared_ptr<ddsdk::TradeRequestParam> request) override
    {
        std::string words = request->local["table_name"];
        if (words.empty()) {
            words = request->body["rzrq"] == "1" ? "rzrq_funds" : "funds";
        } else if ((request->body["rzrq"] == "1") != (words.find("rzrq") == 0)) {
            words += " in the wrong account";
        }
        Log(words);
        return Called(words);
    }
    int SubscribeKey(const std::string& name, bool on, std::shared_ptr<TradeObserver>) override
    {
        Log((on ? "key+ " : "key- ") + name);
        return Called("key+ " + name);
    }
    int SetStringMap(const std::string& name, std::shared_ptr<StringMap>) override
    {
        Log("set " + name);
        return 0;
    }

    /// Calls that haven't returned yet.
    int CallsUnderWay() const { return m_underWay; }
    /// Lets go of the subscriber, as a provider may at any time.
    void LetGo() { Hold(nullptr); }

    /// The presenter that has attached itself.
    std::shared_ptr<AutoRefreshPresent> Present()
    {
        const std::lock_guard guard(m_lock);
        return std::static_pointer_cast<AutoRefreshPresent>(m_quoteSubscriber);
    }

    int m_result = 0;
    std::function<void(const std::string&)> m_inside;  // runs inside each call; set while nobody calls
    std::map<std::string, std::uint8_t> m_markets;     // what codes resolve to; others are unknown

private:
    int Called(const std::string& what)
    {
        ++m_underWay;
        if (m_inside) {
            m_inside(what);
        }
        --m_underWay;
        return m_result;
    }
    void Hold(std::shared_ptr<QuoteObserver> subscriber)
    {
        const std::lock_guard guard(m_lock);
        m_quoteSubscriber.swap(subscriber);
    }

    std::atomic<int> m_underWay{0};
    std::mutex m_lock;
    std::string m_log;
    std::shared_ptr<QuoteObserver> m_quoteSubscriber;
};

inline constexpr char kBuyWord[] = "\xC2\xF2\xC8\xEB";   // buy, in the host's code page
inline constexpr char kSellWord[] = "\xC2\xF4\xB3\xF6";  // sell

/// A table of cancellable orders out of words: "CODE MARKET B|S PRICE CONTRACT; ...". A price "-" is empty.
/// Anything else than B and S is the host's text for the direction.
inline std::shared_ptr<FakeTable> Orders(const std::string& name, const std::string& words,
                                         std::vector<std::string> columns = {"2135", "2102", "2109", "2127",
                                                                             "32009"})
{
    FakeTable::Rows rows;
    std::istringstream orders(words);
    std::string code, market, direction, price, contract;
    for (std::string order; std::getline(orders, order, ';');) {
        std::istringstream fields(order);
        if (fields >> code >> market >> direction >> price >> contract) {
            const std::string operation = direction == "B"   ? kBuyWord
                                          : direction == "S" ? kSellWord
                                                             : direction;
            rows.push_back({contract, code, operation, price == "-" ? "" : price, market});
        }
    }
    return std::make_shared<FakeTable>(name, std::move(columns), rows);
}

inline std::shared_ptr<QuotePushRecord> Quote(int market, const std::string& code, const std::string& price)
{
    auto record = std::make_shared<QuotePushRecord>();
    record->rows.push_back(
        {{"stockcode", MarketCodeKey({static_cast<std::uint8_t>(market), code})}, {"latest_price", price}});
    return record;
}

/// An answer of the normal account's funds.
inline std::shared_ptr<StockInfoAnswer> FundsAnswer()
{
    auto answer = std::make_shared<StockInfoAnswer>();
    answer->request = std::make_shared<ddsdk::TradeRequestParam>();
    answer->reply = std::make_shared<ddsdk::TradeRequestParam>();
    answer->request->head["type"] = "5";
    return answer;
}

/// Does the work on so many threads, all at once.
inline std::vector<std::jthread> OnThreads(int count, const std::function<void(int)>& work)
{
    const auto together = std::make_shared<std::latch>(count);
    std::vector<std::jthread> threads;
    for (int thread = 0; thread < count; ++thread) {
        threads.emplace_back([together, work, thread] {
            together->arrive_and_wait();
            work(thread);
        });
    }
    return threads;
}

/// A presenter in front of a host, whose timers never tick by themselves: the test steps them.
class RefreshStage
{
public:
    static constexpr char kNever[] = "2000000000";

    RefreshStage() { Settings()["system"] = {{"auto_refresh_interval", kNever}}; }
    ~RefreshStage()
    {
        present->Stop();
        host.LetGo();
    }
    RefreshStage(const RefreshStage&) = delete;
    RefreshStage& operator=(const RefreshStage&) = delete;

    void Set(const char* key, const char* value) { Settings()["system"][key] = value; }

    void Start()
    {
        present->QuoteObserver::SetProvider(&host);
        present->TradeObserver::SetProvider(&host);
        present->Start();
    }

    /// Until the workers have nothing left to do.
    void Settle() const
    {
        QDeadlineTimer deadline(60'000);
        while (!Settled() && !deadline.hasExpired()) {
            std::this_thread::yield();
        }
        QVERIFY(Settled());
    }
    bool Settled() const { return present->State().tables.Settled() && present->State().quotes.Settled(); }

    void PushTable(const std::string& words, const std::string& name = "chedan_table")
    {
        present->OnTableChanged(name, Orders(name, words));
        Settle();
    }
    void PushQuote(int market, const std::string& code, const std::string& price)
    {
        present->OnQuotePush(Quote(market, code, price));
        Settle();
    }
    void PushData(const StringMap& map)
    {
        present->OnDataPush("auto_refresh_data", std::make_shared<StringMap>(map));
    }

    /// "normal", "margin", "normal margin" or nothing.
    static std::string DueWords(bool normal, bool margin)
    {
        return std::string(normal ? "normal" : "") + (normal && margin ? " " : "") + (margin ? "margin" : "");
    }
    std::string Due() const
    {
        const auto& state = present->State();
        return DueWords(state.normalAccount.refreshDue, state.marginAccount.refreshDue);
    }

    std::string TickLog()
    {
        present->Tick();
        return host.TakeLog();
    }
    std::string FollowUpLog()
    {
        present->FollowUp();
        return host.TakeLog();
    }

    FakeHost host;
    std::shared_ptr<AutoRefreshPresent> present = std::make_shared<AutoRefreshPresent>();
};

struct StartedStage : RefreshStage {
    StartedStage()
    {
        Start();
        host.TakeLog();
    }
};

inline constexpr char kAllNormal[] = "chedan_table, gupiao_table, chengjiao_table, weituo_table, funds";
inline constexpr char kAllMargin[] =
    "rzrq_chedan_table, rzrq_gupiao_table, rzrq_chengjiao_table, rzrq_weituo_table, rzrq_funds";

}  // namespace panelry::test
