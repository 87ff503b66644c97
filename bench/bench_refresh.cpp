// What the refresh of tables and funds costs: a quote push at the provider's thread, the road from a push to the
// mark that a refresh is due, and the reading of a table of open orders.
//
// Ours: the presenter with its two workers, in front of providers that do nothing. Yardsticks: a bare copy of the
// pushed row; a queue with a mutex and a condition variable, and a thread behind it that sets a flag; a loop that
// reads the same cells and stores as many nodes in a map of maps and a set.

#include <sched.h>

#include <atomic>
#include <charconv>
#include <condition_variable>
#include <cstdint>
#include <cstring>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "refresh/auto_refresh_present.h"
#include "refresh/order_watch.h"
#include "services/quote_provider.h"
#include "services/resource_manager.h"
#include "services/trade_provider.h"
#include "support/rounds.h"

using panelry::bench::Check;
using panelry::bench::Clock;
using panelry::bench::Figure;
using panelry::bench::Interleave;
using panelry::bench::Quantile;
using panelry::bench::Seconds;

namespace
{

constexpr int kRounds = 31;
constexpr std::size_t kFlood = 5000;
constexpr int kPaced = 200;
constexpr auto kPace = std::chrono::microseconds(300);
constexpr int kRows = 1000;
constexpr int kStocks = 600;

// Keeps the calling thread, and the threads that it makes, on one processor.
void KeepOn(unsigned processor)
{
    cpu_set_t one;
    CPU_ZERO(&one);
    CPU_SET(processor % std::max(1U, std::thread::hardware_concurrency()), &one);
    sched_setaffinity(0, sizeof one, &one);
}
constexpr unsigned kSender = 0;
constexpr unsigned kWorkers = 1;

class IdleQuotes : public QuoteProvider
{
public:
    int Attach(int, std::shared_ptr<QuoteObserver>) override { return 0; }
    int QueryQuoteFields(int, StringMap&, std::shared_ptr<StringMap>&) override { return 0; }
    int SubscribeCodes(std::vector<MarketCode>&, bool, std::shared_ptr<QuoteObserver>) override { return 0; }
    int SubscribeTopicA(std::uint32_t, bool, std::shared_ptr<QuoteObserver>) override { return 0; }
    int SubscribeTopicB(std::uint32_t, std::uint32_t, std::uint32_t, bool,
                        std::shared_ptr<QuoteObserver>) override
    {
        return 0;
    }
    int ResolveCodeMarkets(std::vector<MarketCode>&) override { return 0; }
    int ListCodeMatches(std::vector<MarketCode>&, std::vector<std::vector<std::string>>&) override
    {
        return 0;
    }
    int AgreedQuoteCall(std::uintptr_t, std::uintptr_t) override { return 0; }
};

class IdleTrades : public TradeProvider
{
public:
    int Attach(int, std::shared_ptr<TradeObserver>) override { return 0; }
    int SendTradeRequest(std::shared_ptr<TradeObserver>, std::shared_ptr<ddsdk::TradeRequestParam>) override
    {
        ++requests;
        return 0;
    }
    int GetString(const std::string&, std::shared_ptr<std::string>&) override { return -1; }
    int SubscribeKey(const std::string&, bool, std::shared_ptr<TradeObserver>) override { return 0; }
    int SetStringMap(const std::string&, std::shared_ptr<StringMap>) override { return 0; }
    std::shared_ptr<StringMap> GetStringMap(const std::string&) override { return nullptr; }
    std::shared_ptr<HostTable> GetTable(const std::string&) override { return nullptr; }

    std::atomic<int> requests{0};
};

// Cells in one place after another, as a host that reads its own memory has them.
class Table : public HostTable
{
public:
    Table()
    {
        for (int row = 0; row < kRows; ++row) {
            m_cells.push_back({std::to_string(600000 + row % kStocks), "\xC2\xF2\xC8\xEB",
                               std::to_string(10 + row / kStocks) + ".50", std::to_string(900000 + row),
                               "16"});
        }
    }
    const char* Name() const override { return "chedan_table"; }
    int RowCount() const override { return kRows; }
    const char* CellText(int row, int column) const override
    {
        return m_cells[static_cast<std::size_t>(row)][static_cast<std::size_t>(column)].c_str();
    }
    int FindColumn(const char* id) const override
    {
        static const char* const ids[] = {"2102", "2109", "2127", "2135", "32009"};
        for (int column = 0; column < 5; ++column) {
            if (std::strcmp(ids[column], id) == 0) {
                return column;
            }
        }
        return -1;
    }

private:
    std::vector<std::vector<std::string>> m_cells;
};

// A snapshot as hosts push it: five levels, limits, times.
std::shared_ptr<QuotePushRecord> Push(const char* price)
{
    auto record = std::make_shared<QuotePushRecord>();
    record->head = {{"type", "pushdata"}, {"pushflag", "1"}};
    StringMap row{{"stockcode",
                   "\x10"
                   "600000"},
                  {"stock_name", "浦发银行"},
                  {"latest_price", price},
                  {"raising_limit", "11.55"},
                  {"limit_down", "9.45"},
                  {"last_closing_price", "10.50"},
                  {"opening_price", "10.48"},
                  {"price_decimal", "2"},
                  {"hq_time", "1751340607"},
                  {"benchmarkcode", "000001"}};
    for (int level = 1; level <= 5; ++level) {
        for (const char* const side : {"buy_", "sell_"}) {
            row[side + std::to_string(level) + "_price"] = "10.5" + std::to_string(level);
            row[side + std::to_string(level) + "_amount"] = std::to_string(level * 12300);
        }
    }
    record->rows.push_back(row);
    return record;
}

class Ours
{
public:
    Ours()
    {
        static const ConfigTable settings{{"system", {{"auto_refresh_interval", "2000000000"}}}};
        ResourceManager::Instance(true)->SetConfigTables(&settings, nullptr);
        KeepOn(kWorkers);
        present->QuoteObserver::SetProvider(&quotes);
        present->TradeObserver::SetProvider(&trades);
        present->Start();
        KeepOn(kSender);
        ReadTable();
    }
    ~Ours() { present->Stop(); }

    void ReadTable()
    {
        present->OnTableChanged("chedan_table", table);
        while (!present->State().tables.Settled()) {
        }
    }
    void Settle() const
    {
        while (!present->State().quotes.Settled()) {
            std::this_thread::yield();
        }
    }
    const std::atomic<std::uint32_t>& Mark() const { return present->State().normalAccount.refreshDue; }

    IdleQuotes quotes;
    IdleTrades trades;
    std::shared_ptr<HostTable> table = std::make_shared<Table>();
    std::shared_ptr<AutoRefreshPresent> present = std::make_shared<AutoRefreshPresent>();
};

// The least that hands a quote over to a thread.
class BareHandOver
{
public:
    BareHandOver()
    {
        KeepOn(kWorkers);
        m_thread = std::jthread([this] { Work(); });
        KeepOn(kSender);
    }
    ~BareHandOver()
    {
        {
            const std::lock_guard guard(m_lock);
            m_over = true;
        }
        m_wake.notify_one();
    }

    void Push(const QuotePushRecord& record)
    {
        const StringMap& row = record.rows.front();
        std::pair<std::string, std::string> copy(row.find("stockcode")->second,
                                                 row.find("latest_price")->second);
        const std::lock_guard guard(m_lock);
        m_rows.push_back(std::move(copy));
        m_wake.notify_one();
    }

    std::atomic<std::uint32_t> mark{0};

private:
    void Work()
    {
        std::unique_lock lock(m_lock);
        for (;;) {
            m_wake.wait(lock, [this] { return m_over || !m_rows.empty(); });
            if (m_over) {
                return;
            }
            m_rows.pop_front();
            mark = 1;
        }
    }

    std::mutex m_lock;
    std::condition_variable m_wake;
    std::deque<std::pair<std::string, std::string>> m_rows;
    bool m_over = false;
    std::jthread m_thread;
};

double NanosecondsEach(Clock::time_point start, std::size_t times)
{
    return Seconds(start) * 1e9 / static_cast<double>(times);
}

void MeasureFlood(Ours& ours)
{
    const auto quiet = Push("10.50");
    std::vector<StringMap> copies;
    copies.reserve(kFlood);
    Figure figure("quote push in a flood, against a copy of the row", "ns", 0.25);
    Interleave(
        kRounds,
        [&] {
            const Clock::time_point start = Clock::now();
            for (std::size_t i = 0; i < kFlood; ++i) {
                ours.present->OnQuotePush(quiet);
            }
            const double each = NanosecondsEach(start, kFlood);
            ours.Settle();
            return each;
        },
        [&] {
            const Clock::time_point start = Clock::now();
            for (std::size_t i = 0; i < kFlood; ++i) {
                copies.push_back(quiet->rows.front());
            }
            const double each = NanosecondsEach(start, kFlood);
            copies.clear();
            return each;
        },
        [&](double our, double yardstick) { figure.AddRatio(our, yardstick); });
    figure.Print();
}

void WaitUntil(Clock::time_point when)
{
    while (Clock::now() < when) {
    }
}

struct Paced {
    std::vector<double> call;    // what the caller spends, ns
    std::vector<double> toMark;  // from the call to the mark, ns
};

// One push at a time, each to a worker that has had time to fall asleep.
template <class PushOne, class Forget>
Paced PushPaced(PushOne push, const std::atomic<std::uint32_t>& mark, Forget forget)
{
    Paced paced;
    for (int i = 0; i < kPaced; ++i) {
        WaitUntil(Clock::now() + kPace);
        const Clock::time_point start = Clock::now();
        push();
        const Clock::time_point called = Clock::now();
        while (mark == 0) {
        }
        paced.toMark.push_back(Seconds(start) * 1e9);
        paced.call.push_back(Seconds(start, called) * 1e9);
        forget();
    }
    return paced;
}

void MeasurePaced(Ours& ours)
{
    const auto crossing = Push("9.99");
    BareHandOver bare;
    Figure call("quote push, worker asleep, caller's median", "ns", 1.2);
    Figure median("from push to mark, median", "ns", 1.5);
    Figure late("from push to mark, p99", "ns", 0);
    Interleave(
        kRounds,
        [&] {
            return PushPaced([&] { ours.present->OnQuotePush(crossing); }, ours.Mark(),
                             [&] { ours.present->Tick(); });
        },
        [&] { return PushPaced([&] { bare.Push(*crossing); }, bare.mark, [&] { bare.mark = 0; }); },
        [&](const Paced& our, const Paced& yardstick) {
            call.AddRatio(Quantile(our.call, 0.5), Quantile(yardstick.call, 0.5));
            median.AddRatio(Quantile(our.toMark, 0.5), Quantile(yardstick.toMark, 0.5));
            late.AddRatio(Quantile(our.toMark, 0.99), Quantile(yardstick.toMark, 0.99));
        });
    Check(ours.trades.requests >= kRounds * kPaced * 5, "a mark didn't lead to a refresh");
    call.Print();
    median.Print();
    late.Print();
}

// Reads the cells and stores as much, and nothing else.
class BareReader
{
public:
    void Read(const HostTable& table)
    {
        m_watches.clear();
        std::set<std::string> keys;
        const int code = table.FindColumn("2102");
        const int operation = table.FindColumn("2109");
        const int price = table.FindColumn("2127");
        const int contract = table.FindColumn("2135");
        const int market = table.FindColumn("32009");
        for (int row = 0; row < table.RowCount(); ++row) {
            OrderWatch watch;
            watch.key = '\x10';
            watch.key += table.CellText(row, code);
            watch.direction = std::strlen(table.CellText(row, operation)) == 4 ? "B" : "S";
            const std::string text = table.CellText(row, price);
            std::from_chars(text.data(), text.data() + text.size(), watch.price);
            m_read += std::strlen(table.CellText(row, contract)) + std::strlen(table.CellText(row, market));
            keys.insert(watch.key);
            m_watches[watch.key][watch.direction + text] = watch;
        }
        m_keys.swap(keys);
    }
    std::size_t Stored() const { return m_watches.size() + m_keys.size(); }
    std::size_t Characters() const { return m_read; }

private:
    std::map<std::string, std::map<std::string, OrderWatch>> m_watches;
    std::set<std::string> m_keys;
    std::size_t m_read = 0;
};

void MeasureTable(Ours& ours)
{
    BareReader bare;
    Figure figure("table of 1,000 open orders through the worker", "us", 1.5);
    Interleave(
        kRounds * 4,
        [&] {
            const Clock::time_point start = Clock::now();
            ours.ReadTable();
            return Seconds(start) * 1e6;
        },
        [&] {
            const Clock::time_point start = Clock::now();
            bare.Read(*ours.table);
            return Seconds(start) * 1e6;
        },
        [&](double our, double yardstick) { figure.AddRatio(our, yardstick); });
    Check(bare.Stored() == 2 * kStocks && bare.Characters() > 0, "the yardstick didn't store");
    figure.Print();
}

}  // namespace

int main()
{
    Ours ours;
    MeasureFlood(ours);
    MeasurePaced(ours);
    MeasureTable(ours);
}
