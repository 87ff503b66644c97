// Exchange and broker in one market, on a clock.

#include <sys/resource.h>

#include <QTemporaryDir>
#include <csignal>

#include "desk/providers/client_requests.h"
#include "desk/providers/host_words.h"
#include "providers/stage.h"
#include "support/test.h"

using namespace panelry::test;
using namespace panelry::desk;

namespace
{

Simulation::Settings BusyMarket()
{
    Simulation::Settings settings = StillMarket();
    settings.changesPerSecond = 500;
    settings.startOfDay = 9h + 14min;
    return settings;
}

OrderWish Buy(const Simulation& market, Price price, Quantity quantity)
{
    return {AccountKind::Normal, *market.Securities().Find(17, "600000"), Side::Buy, price, quantity};
}

// On a file in the folder.
Simulation::Settings Kept(const QTemporaryDir& folder)
{
    Simulation::Settings settings = StillMarket();
    settings.store = folder.path().toStdString() + "/accounts";
    return settings;
}

std::string Audit(const Simulation& market)
{
    return market.Read([](const Exchange&, const Brokerage& broker) { return broker.Audit(); });
}

// All that a day leaves behind.
std::string Story(const Simulation& market)
{
    return market.Read([](const Exchange& exchange, const Brokerage& broker) {
        std::string story = ClockText(exchange.Now().ofDay);
        for (std::size_t i = 0; i < exchange.Securities().securities.size(); ++i) {
            const auto& quote = exchange.QuoteOf(i);
            story += " " + std::to_string(quote.last) + "/" + std::to_string(quote.volume) + "/" +
                     std::to_string(quote.bids[0].price);
        }
        for (const Deal& deal : broker.Deals(AccountKind::Normal)) {
            story += "\n" + ClockText(deal.time.ofDay) + " " + std::to_string(deal.quantity);
        }
        return story + broker.Audit();
    });
}

class Troubles : public SimulationListener
{
public:
    void OnQuote(std::size_t) override {}
    void OnPhase(Phase, MarketTime) override {}
    void OnDay(int day) override { days.push_back(day); }
    void OnOrder(const Order&, OrderEvent) override {}
    void OnDeal(const Deal&) override {}
    void OnTrouble(const std::string&) override { ++troubles; }

    std::vector<int> days;
    int troubles = 0;
};

// Nothing can be written beyond what files have by now.
class FullDisk
{
public:
    explicit FullDisk(rlim_t most) : m_before(std::signal(SIGXFSZ, SIG_IGN))
    {
        getrlimit(RLIMIT_FSIZE, &m_limit);
        const rlimit limit{most, m_limit.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FullDisk()
    {
        setrlimit(RLIMIT_FSIZE, &m_limit);
        std::signal(SIGXFSZ, m_before);
    }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;

private:
    void (*m_before)(int);
    rlimit m_limit{};
};

}  // namespace

class SimulationTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void TheSameStepsGiveTheSameDay()
    {
        std::vector<std::string> stories;
        for (const auto step : {60s, 60s, 7s}) {
            Simulation market(BusyMarket());
            market.MoveTo(9h + 31min);
            OrderWish wish = Buy(market, 0, 20'000);
            wish.price = market.Read([&](const Exchange& exchange, const Brokerage&) {
                return exchange.QuoteOf(wish.security).asks[2].price;
            });
            QCOMPARE(market.Place(wish).refusal, std::string());
            for (std::chrono::seconds gone{0}; gone < 420s; gone += step) {
                market.Step(step);
            }
            stories.push_back(Story(market));
        }
        QCOMPARE(stories[0], stories[1]);
        QCOMPARE(stories[0], stories[2]);
        QVERIFY(stories[0].find('\n') != std::string::npos);  // the order was dealt
    }

    void TheClockRunsByItself()
    {
        Simulation::Settings settings = BusyMarket();
        settings.startOfDay = 9h + 31min;
        settings.speed = 100;
        Simulation market(settings);
        const auto start = market.Now();
        QCOMPARE(market.Now(), start);
        market.Start();
        QTRY_VERIFY(market.Now().ofDay >= start.ofDay + 20s);
        market.SetSpeed(0);
        const auto stopped = market.Now();
        market.Step(1s);
        QVERIFY(market.Now().ofDay >= stopped.ofDay + 1s && market.Now().ofDay < stopped.ofDay + 10s);
        market.Stop();
    }

    void TimesAreReached()
    {
        Simulation market(StillMarket());
        for (const MarketTime time : {MarketTime{1, 10h}, {1, 13h}, {2, 9h}}) {  // here, ahead, tomorrow
            market.MoveTo(time.ofDay);
            QCOMPARE(market.Now(), time);
        }
    }

    void ANewDayFreesWhatTheOldOneHeld()
    {
        Simulation market(StillMarket());
        Troubles listener;
        market.SetListener(&listener);
        const std::string contract = market.Place(Buy(market, 9'900, 1000)).contract;
        QCOMPARE(market.Fill(AccountKind::Normal, contract, 400, 1), std::string());
        const auto sellable = [&] {
            return market.Read([&](const Exchange&, const Brokerage& broker) {
                return broker.HoldingOf(AccountKind::Normal, Buy(market, 0, 1).security).sellable;
            });
        };
        QCOMPARE(sellable(), 12'500);
        market.Midnight();
        market.Step(50h);
        QCOMPARE(listener.days, (std::vector<int>{2, 3, 4}));
        QCOMPARE(sellable(), 12'900);
        QVERIFY(!market.Cancel(AccountKind::Normal, contract).empty());
        QCOMPARE(Audit(market), std::string());
        market.SetListener(nullptr);
    }

    void TheDayIsKept()
    {
        const QTemporaryDir folder;
        Simulation::Settings settings = Kept(folder);
        Simulation(settings).Step(30h);
        QCOMPARE(Simulation(settings).Now(), (MarketTime{2, 10h}));
        settings.afresh = true;
        QCOMPARE(Simulation(settings).Now(), (MarketTime{1, 10h}));
    }

    void CancelsAreClosedForAWhile()
    {
        Simulation market(StillMarket());
        const std::string contract = market.Place(Buy(market, 9'900, 1000)).contract;
        market.MoveTo(14h + 58min);
        QVERIFY(market.Cancel(AccountKind::Normal, contract).find("时段") != std::string::npos);
        QVERIFY(!market.Cancel(AccountKind::Margin, contract).empty());
        QVERIFY(!market.Cancel(AccountKind::Normal, "none").empty());
    }

    // The broker can't write for a while. Nothing is taken in meanwhile, and what the exchange did is booked
    // later.
    void WhatCannotBeWrittenIsWrittenLater()
    {
        const QTemporaryDir folder;
        Simulation market(Kept(folder));
        Troubles listener;
        market.SetListener(&listener);
        const std::string contract = market.Place(Buy(market, 9'900, 1000)).contract;
        {
            const FullDisk full(1);
            QCOMPARE(market.Fill(AccountKind::Normal, contract, 1000, 10), std::string());
            for (const std::string& told : {market.Place(Buy(market, 9'900, 1000)).refusal,
                                            market.Cancel(AccountKind::Normal, contract)}) {
                QVERIFY2(told.find("故障") != std::string::npos, told.c_str());
            }
            market.Midnight();
            QCOMPARE(market.Now().day, 1);  // a day isn't begun before the last is booked
            QCOMPARE(listener.troubles, 1);
        }
        market.Step(1ms);
        QCOMPARE(market.Now().day, 2);
        market.Read([&](const Exchange&, const Brokerage& broker) {
            QCOMPARE(broker.HoldingOf(AccountKind::Normal, Buy(market, 0, 1).security).total, 13'500);
            QCOMPARE(broker.DealsBetween(AccountKind::Normal, 1, 1).size(), std::size_t{10});
        });
        QCOMPARE(Audit(market), std::string());
        market.SetListener(nullptr);
    }

    void DatesCountFromTheFirstDay()
    {
        QCOMPARE(DayOf(CompactDate(1)), std::optional(1));
        QCOMPARE(DayOf(CompactDate(400)), std::optional(400));
        QVERIFY(DayOf("20000101").value() < 0);
        for (const char* const text : {"", "2026070", "202607011", "20261301", "20260230", "2026-7-1"}) {
            QVERIFY2(!DayOf(text), text);
        }
    }
};

PANELRY_TEST(SimulationTest)

#include "simulation_test.moc"
