// A whole day of the desk's market in front of the real library and panels: plays the host with the desk's providers,
// trades at random for the ordinary and the margin account, switches every fault on for a while, and after each of them
// compares the tables that the library asked for with the broker's books, to the fen.
//
// market_day LIBRARY LISTING OPENING: as fast as it goes, or, with PANELRY_SOAK set, at 60 times real time. Says what
// differs, and ends with 1 then.

#include <dlfcn.h>

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <random>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>

#include "desk/providers/market_host.h"
#include "market_day/books.h"
#include "market_day/trader.h"

using namespace std::chrono_literals;
using panelry::desk::Fault;
using panelry::desk::Faults;
using panelry::desk::MarketHost;
using panelry::test::BrokersBooks;
using panelry::test::Difference;
using panelry::test::PublishedBooks;
using panelry::test::Trader;

namespace
{

constexpr auto kPatience = 60s;  // far beyond what a slow machine takes
constexpr auto kStep = 15s;      // of the market's clock
constexpr int kActsInStep = 2;
constexpr double kSoakSpeed = 60;
constexpr auto kOpening = 9h + 14min;
constexpr auto kTrade = 9h + 31min;
constexpr auto kBreak = 11h + 29min;
constexpr auto kAfternoon = 13h + 1min;
constexpr auto kFaultLasts = 9min;
constexpr auto kFaultEvery = 20min;
constexpr int kBlockedMs = 20;
constexpr auto kLastCancel = 14h + 55min;
constexpr auto kClosed = 15h + 1min;

using Failure = std::runtime_error;

/// The panels, from Init to Uninit.
class Panels
{
public:
    Panels(const char* library, MarketHost& host)
    {
        void* const handle = dlopen(library, RTLD_NOW);
        if (!handle) {
            throw Failure(dlerror());
        }
        using Init = void (*)(void*, void*, void (*)(std::int32_t, void*));
        using NotifyMsg = void (*)(std::int32_t, std::int32_t, const char*);
        m_uninit = reinterpret_cast<void (*)()>(dlsym(handle, "Uninit"));
        const auto notify = reinterpret_cast<NotifyMsg>(dlsym(handle, "NotifyMsg"));
        reinterpret_cast<Init>(dlsym(handle, "Init"))(host.Quotes(), host.Trades(),
                                                      [](std::int32_t, void*) {});
        // Not holdings and funds, which ask after orders by themselves: whether the library asks is what is looked at.
        for (const int id : {41005, 41006}) {
            notify(0, id, R"({"operate":"clicked","need_wrapper":"1","need_display":"1"})");
        }
    }
    ~Panels() { m_uninit(); }
    Panels(const Panels&) = delete;
    Panels& operator=(const Panels&) = delete;

private:
    void (*m_uninit)() = nullptr;
};

/// The market's day, hour by hour.
class Day
{
public:
    Day(MarketHost& host, double speed) : m_host(host), m_speed(speed), m_trader(host, 20260701) {}

    void Play()
    {
        TradeUntil(kTrade);
        Agree("the opening auction");
        auto next = std::chrono::milliseconds(kTrade);
        for (const panelry::desk::FaultDescription& fault : Faults::All()) {
            if (next > kBreak && next < kAfternoon) {
                TradeUntil(kAfternoon);
                next = kAfternoon;
            }
            TradeUntil(next);
            // A block without an end would hold this client up, too.
            m_host.faults().Set(fault.fault, true,
                                fault.fault == Fault::Blocked ? std::optional(kBlockedMs) : std::nullopt);
            TradeUntil(next + kFaultLasts);
            m_host.faults().AllOff();
            TradeUntil(next + kFaultLasts + 1min);
            Agree(std::string("the fault ") + fault.name);
            next += kFaultEvery;
        }
        TradeUntil(next);
        m_host.LoseLogin();
        TradeUntil(next + kFaultLasts);
        m_host.LogIn();
        Agree("a log-in that was lost");
        TradeUntil(kLastCancel);
        Agree("the day's trade");
        TradeUntil(kClosed);
        Agree("the close", false);
    }

    void Tell() const
    {
        using panelry::desk::AccountKind;
        const auto [deals, audit] = m_host.Market().Read([](const auto&, const auto& broker) {
            return std::pair(
                broker.Deals(AccountKind::Normal).size() + broker.Deals(AccountKind::Margin).size(),
                broker.Audit());
        });
        std::printf("%d orders taken, %zu deals\n", m_trader.OrdersTaken(), deals);
        if (!audit.empty()) {
            throw Failure("the broker's books: " + audit);
        }
        if (m_trader.OrdersTaken() < 100 || deals < 50) {
            throw Failure("that was no trade to speak of");
        }
    }

private:
    void TradeUntil(std::chrono::milliseconds ofDay)
    {
        while (m_host.Market().Now().ofDay < ofDay) {
            for (int act = 0; act < kActsInStep; ++act) {
                m_trader.Act();
            }
            if (m_speed > 0) {
                m_host.Market().SetSpeed(m_speed);
                std::this_thread::sleep_for(std::chrono::duration<double>(kStep) / m_speed);
            } else {
                m_host.Market().Step(kStep);
            }
        }
        m_host.Market().SetSpeed(0);
    }

    /// With the clock standing still, an order and its cancel make the library ask for everything; else the client
    /// does.
    void Agree(const std::string& after, bool byOrder = true)
    {
        using Clock = std::chrono::steady_clock;
        const auto end = Clock::now() + kPatience;
        std::string difference;
        do {
            byOrder ? m_trader.OrderAndCancel() : m_trader.AsClient().AskForAll();
            const auto again = Clock::now() + 2s;
            do {
                std::this_thread::sleep_for(5ms);  // between two looks
                difference = Difference(BrokersBooks(m_host.Market()), PublishedBooks(m_host));
            } while (!difference.empty() && Clock::now() < again);
        } while (!difference.empty() && Clock::now() < end);
        if (!difference.empty()) {
            throw Failure("after " + after + ":\n" + difference);
        }
        std::printf("all agrees after %s\n", after.c_str());
        std::fflush(stdout);
    }

    MarketHost& m_host;
    const double m_speed;
    Trader m_trader;
};

}  // namespace

int main(int argc, char* argv[])
{
    if (argc != 4) {
        std::fputs("market_day LIBRARY LISTING OPENING\n", stderr);
        return 2;
    }
    const std::filesystem::path store = std::filesystem::temp_directory_path() /
                                        ("market_day_" + std::to_string(std::random_device()()) + ".sqlite");
    int status = 0;
    try {
        MarketHost::Settings settings;
        settings.listing = argv[2];
        settings.opening = argv[3];
        settings.store = store;
        settings.speed = 0;
        settings.startOfDay = kOpening;
        MarketHost host(settings);
        host.Start();
        {
            const Panels panels(argv[1], host);
            Day day(host, std::getenv("PANELRY_SOAK") ? kSoakSpeed : 0);
            day.Play();
            day.Tell();
        }
        host.Stop();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "market_day: %s\n", error.what());
        status = 1;
    }
    for (const char* const tail : {"", "-wal", "-shm", "-journal"}) {
        std::filesystem::remove(store.string() + tail);
    }
    return status;
}
