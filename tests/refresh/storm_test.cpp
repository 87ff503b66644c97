// Floods of quotes, and the end in the middle of them.

#include <malloc.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <new>

#include "refresh/auto_refresh.h"
#include "refresh/refresh_stage.h"

using namespace panelry::test;

namespace
{

// What this program holds on the heap.
std::atomic<std::int64_t> heapBytes{0};

constexpr int kThreads = 4;
constexpr int kStocks = 300;
constexpr int kOrders = 500;

bool Soak()
{
    return qEnvironmentVariableIsSet("PANELRY_SOAK");
}

std::string CodeOf(int stock)
{
    return std::to_string(600000 + stock);
}

// Buys at 10, most stocks with two orders.
std::string ManyOrders()
{
    std::string words;
    for (int order = 0; order < kOrders; ++order) {
        words += CodeOf(order % kStocks) + " 16 B " + (order < kStocks ? "10.00 " : "9.50 ") +
                 std::to_string(order) + "; ";
    }
    return words;
}

std::vector<std::shared_ptr<QuotePushRecord>> QuotesAt(const char* price)
{
    std::vector<std::shared_ptr<QuotePushRecord>> quotes;
    for (int stock = 0; stock < kStocks; ++stock) {
        quotes.push_back(Quote(16, CodeOf(stock), price));
    }
    return quotes;
}

}  // namespace

// The other forms end here, but for those of over-aligned types, which stay among themselves. A sanitizer's own one
// would not come by here.
void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept
{
    void* const memory = std::malloc(size);
    if (memory) {
        heapBytes += static_cast<std::int64_t>(malloc_usable_size(memory));
    }
    return memory;
}
void* operator new(std::size_t size)
{
    if (void* const memory = operator new(size, std::nothrow)) {
        return memory;
    }
    throw std::bad_alloc();
}
void operator delete(void* memory) noexcept
{
    heapBytes -= static_cast<std::int64_t>(malloc_usable_size(memory));
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept
{
    operator delete(memory);
}

class StormTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    // Four threads push quotes that cross nothing, and one among them that does.
    void NoCrossingIsLost()
    {
        const int rounds = Soak() ? kOrders : 40;
        const int pushes = Soak() ? 1000 : 250;  // by each thread
        StartedStage stage;
        stage.PushTable(ManyOrders());
        stage.host.TakeLog();
        const auto quiet = QuotesAt("10.00");
        const auto crossing = QuotesAt("9.75");
        for (int round = 0; round < rounds; ++round) {
            OnThreads(kThreads, [&](int thread) {
                for (int push = 0; push < pushes; ++push) {
                    const bool crosses = round % kThreads == thread && push == pushes / 2;
                    const int stock = crosses ? round % kStocks : (push * kThreads + thread) % kStocks;
                    stage.present->OnQuotePush((crosses ? crossing : quiet)[static_cast<std::size_t>(stock)]);
                }
            }).clear();
            stage.Settle();
            QCOMPARE(stage.TickLog(), std::string(kAllNormal));
            QCOMPARE(stage.TickLog(), std::string());  // a burst leads to one refresh
        }
    }

    // All at once: the backlog takes what its rows take, and gives it back.
    void ABacklogGivesItsMemoryBack()
    {
        const int pushes = Soak() ? 500'000 : 25'000;  // by each thread
        StartedStage stage;
        stage.PushTable(ManyOrders());
        const auto quotes = QuotesAt("10.00");
        stage.PushQuote(16, CodeOf(0), "10.00");
        const std::int64_t before = heapBytes;
        std::int64_t most = 0;
        std::uint64_t mostWaiting = 0;
        auto threads = OnThreads(kThreads, [&](int) {
            for (int push = 0; push < pushes; ++push) {
                stage.present->OnQuotePush(quotes[static_cast<std::size_t>(push % kStocks)]);
            }
        });
        while (!stage.Settled()) {
            mostWaiting = std::max(mostWaiting, stage.present->State().quotes.Backlog());
            most = std::max<std::int64_t>(most, heapBytes - before);
            std::this_thread::yield();
        }
        threads.clear();
        stage.Settle();
        // One row in its queue is 64 bytes; what a snapshot misses in between is allowed for.
        const auto fair = static_cast<std::int64_t>(mostWaiting) * 160 + 2'000'000;
        QVERIFY2(most <= fair, qPrintable(QStringLiteral("%1 bytes, %2 rows").arg(most).arg(mostWaiting)));
        QTRY_VERIFY2_WITH_TIMEOUT(heapBytes - before < 20'000,
                                  qPrintable(QStringLiteral("%1 bytes left").arg(heapBytes - before)),
                                  60'000);
    }

    // As a client does it: the service goes, then its providers, and pushes come all the while.
    void QuittingInTheMiddleIsSafe()
    {
        const int lives = Soak() ? 5000 : 400;
        Settings()["system"] = {{"auto_refresh_interval", "1"},
                                {"auto_refresh_afterweituo", "1"},
                                {"autorefresh_mode_afterwt", "1"}};
        for (int life = 0; life < lives; ++life) {
            const std::string trouble = LiveAndQuit(life % 100);
            QVERIFY2(trouble.empty(), ("life " + std::to_string(life) + ": " + trouble).c_str());
        }
    }

private:
    // One life, which ends after so many pushes.
    static std::string LiveAndQuit(int pushes)
    {
        static const auto quotes = QuotesAt("9.75");
        static const auto table = Orders("chedan_table", ManyOrders());
        static const auto marginTable = Orders("rzrq_chedan_table", "600001 16 S 1 9; 600002 16 S 1 8");
        static const auto news = std::make_shared<StringMap>(StringMap{{"htbh", "1"}, {"chedan", "1"}});
        auto host = std::make_unique<FakeHost>();
        host->m_inside = [](const std::string&) { std::this_thread::yield(); };
        host->m_strings = {{"authority_0", "1"}, {"authority_1", "1"}};
        AutoRefresh::Instance(true)->SetProviders(static_cast<QuoteProvider*>(host.get()),
                                                  static_cast<TradeProvider*>(host.get()));
        const std::shared_ptr<AutoRefreshPresent> present = host->Present();
        std::atomic<int> pushed{0};
        std::vector<std::jthread> storm;
        for (int thread = 0; thread < 2; ++thread) {
            storm.emplace_back([&, present](std::stop_token over) {
                while (!over.stop_requested()) {
                    const int push = ++pushed;
                    present->OnQuotePush(quotes[static_cast<std::size_t>(push % kStocks)]);
                    if (push % 20 == 0) {
                        present->OnTableChanged("chedan_table", push % 40 == 0 ? table : marginTable);
                        present->OnDataPush("auto_refresh_data", news);
                        std::this_thread::yield();
                    }
                }
            });
        }
        const auto waitFor = [&pushed](int further) {
            for (const int start = pushed; pushed - start < further;) {
                std::this_thread::yield();
            }
        };
        AutoRefresh::Instance(false)->Start();
        waitFor(pushes);
        AutoRefresh::Destroy();
        std::string trouble = host->CallsUnderWay() == 0 ? "" : "a call was under way; ";
        host->TakeLog();
        waitFor(100);
        present->OnLoginState(0);
        present->OnFundsPush(FundsAnswer());
        present->Tick();
        present->FollowUp();
        trouble += host->TakeLog();  // nothing may come any more
        host->LetGo();
        return trouble;
    }
};

PANELRY_TEST(StormTest)

#include "storm_test.moc"
