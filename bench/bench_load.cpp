// Something to run beside a benchmark, until standard input ends:
//
//   bench_load desk LISTING OPENING   the desk's market with 20,000 changes a second and two subscribers of all its
//                                     securities; changes that come together are pushed as one
//   bench_load loop SHARE             two threads that keep SHARE of a processor busy together and do nothing
//
// Says at the end which share of a processor it has used, and the desk how many quotes it has pushed a second.

#include <sys/resource.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "desk/providers/market_host.h"
#include "services/quote_observer.h"
#include "services/quote_provider.h"
#include "support/rounds.h"

using panelry::bench::Check;
using panelry::bench::Clock;
using panelry::bench::Seconds;

namespace
{

constexpr double kChangesPerSecond = 20000;

void WaitForTheEndOfInput()
{
    while (std::getchar() != EOF) {
    }
}

double ProcessorSeconds()
{
    rusage used{};
    getrusage(RUSAGE_SELF, &used);
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
    };
    return seconds(used.ru_utime) + seconds(used.ru_stime);
}

class CountingSubscriber : public QuoteObserver
{
public:
    void* ObserverSelf() override { return this; }
    void OnQuotePush(std::shared_ptr<QuotePushRecord> /*record*/) override { ++pushes; }

    std::atomic<long> pushes{0};
};

// From the first second of continuous trade on.
void RunDesk(const char* listing, const char* opening)
{
    panelry::desk::MarketHost::Settings settings;
    settings.listing = listing;
    settings.opening = opening;
    settings.changesPerSecond = kChangesPerSecond;
    settings.startOfDay = std::chrono::hours(9) + std::chrono::minutes(31);
    panelry::desk::MarketHost host(settings);
    const std::array subscribers{std::make_shared<CountingSubscriber>(),
                                 std::make_shared<CountingSubscriber>()};
    std::vector<MarketCode> all;
    for (const panelry::desk::Security& security : host.Market().Securities().securities) {
        all.push_back({security.market, security.code});
    }
    for (const auto& subscriber : subscribers) {
        subscriber->SetProvider(host.Quotes());
        Check(subscriber->SubscribeCodes(all, true) == 0, "the desk's securities can't be subscribed");
    }
    host.Start();

    const double before = ProcessorSeconds();
    const Clock::time_point start = Clock::now();
    WaitForTheEndOfInput();
    const double seconds = Seconds(start);
    std::printf("share %.3f, %.0f pushes a second\n", (ProcessorSeconds() - before) / seconds,
                static_cast<double>(subscribers[0]->pushes + subscribers[1]->pushes) / seconds);
    host.Stop();
}

// Busy and asleep in turns.
void RunLoop(double share)
{
    constexpr std::chrono::microseconds kTurn(4000);  // of shorter ones waking up costs too much
    const auto busy = std::chrono::duration_cast<Clock::duration>(kTurn * (share / 2));
    std::atomic<bool> ended{false};
    const auto turn = [&] {
        for (Clock::time_point next = Clock::now(); !ended; next += kTurn) {
            std::this_thread::sleep_until(next);
            const Clock::time_point awake = Clock::now();  // late, always
            while (Clock::now() < awake + busy) {
            }
        }
    };
    const double before = ProcessorSeconds();
    const Clock::time_point start = Clock::now();
    std::vector<std::jthread> threads;
    threads.emplace_back(turn);
    threads.emplace_back(turn);
    WaitForTheEndOfInput();
    ended = true;
    threads.clear();
    std::printf("share %.3f\n", (ProcessorSeconds() - before) / Seconds(start));
}

}  // namespace

int main(int argc, char* argv[])
{
    const std::string kind = argc > 1 ? argv[1] : "";
    if (kind == "desk" && argc == 4) {
        RunDesk(argv[2], argv[3]);
    } else if (kind == "loop" && argc == 3) {
        RunLoop(std::strtod(argv[2], nullptr));
    } else {
        std::fputs("bench_load desk LISTING OPENING | loop SHARE\n", stderr);
        return 2;
    }
    return 0;
}
