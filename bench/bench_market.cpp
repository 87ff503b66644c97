// What the simulated market costs: 5,000 securities at 20,000 quote changes a second, with the crowd, the
// matching and a listener that is told of each change.
//
// Ours: processor time of the exchange. Yardsticks: the time of the market itself, which is one processor
// that does nothing else; and, for a single change, a copy of the changed quote out of a table of as many.

#include <ctime>
#include <memory>
#include <vector>

#include "desk/exchange/exchange.h"
#include "support/rounds.h"

using panelry::bench::Check;
using panelry::bench::Figure;
using panelry::bench::Interleave;
using namespace panelry::desk;

namespace
{

constexpr int kRounds = 31;
constexpr std::size_t kSecurities = 5000;
constexpr double kRate = 20'000;
constexpr auto kSlice = std::chrono::milliseconds(20);  // as a clock's thread moves the market
constexpr int kSeconds = 4;                             // of the market, a round

double ProcessorSeconds()
{
    return static_cast<double>(std::clock()) / CLOCKS_PER_SEC;
}

class Counter : public ExchangeListener
{
public:
    void OnQuote(std::size_t security) override
    {
        ++changes;
        last = security;
    }
    void OnDeal(OrderId, Price, Quantity) override {}
    void OnGone(OrderId) override {}
    void OnPhase(Phase) override {}

    std::int64_t changes = 0;
    std::size_t last = 0;
};

class Market
{
public:
    Market()
        : m_exchange(std::make_shared<const Listing>(Enlarged(ReadListing(SECURITIES_FILE), kSecurities)),
                     {1, kRate, 1})
    {
        m_exchange.AdvanceTo({1, std::chrono::hours(9) + std::chrono::minutes(31)});
        m_exchange.SetListener(&counter);
    }

    /// Processor seconds for `kSeconds` of the market.
    double Play()
    {
        const double start = ProcessorSeconds();
        const MarketTime begin = m_exchange.Now();
        for (auto time = begin.ofDay; time < begin.ofDay + std::chrono::seconds(kSeconds);) {
            time += kSlice;
            m_exchange.AdvanceTo({begin.day, time});
        }
        return ProcessorSeconds() - start;
    }

    Counter counter;

private:
    Exchange m_exchange;
};

/// Processor seconds for as many copies of quotes as a round has changes.
double CopyQuotes(std::vector<Quote>& table, Quote& copy)
{
    const double start = ProcessorSeconds();
    std::size_t place = 0;
    for (int i = 0; i < static_cast<int>(kRate) * kSeconds; ++i) {
        place = (place * 1'103'515'245 + 12'345 + static_cast<std::size_t>(copy.volume)) % kSecurities;
        ++table[place].volume;
        copy = table[place];
    }
    return ProcessorSeconds() - start;
}

}  // namespace

int main()
{
    Market market;
    std::vector<Quote> table(kSecurities);
    Quote copy;
    Figure share("a second of 5,000 securities, 20,000 quote changes", "ms", 250);
    Figure each("one quote change, against a copy of the quote", "ns", 0);
    constexpr double kChanges = kRate * kSeconds;
    Interleave(
        kRounds, [&] { return market.Play(); }, [&] { return CopyQuotes(table, copy); },
        [&](double ours, double yardstick) {
            share.AddDifference(ours * 1e3 / kSeconds, 1e3, ours * 1e3 / kSeconds);
            each.AddRatio(ours * 1e9 / kChanges, yardstick * 1e9 / kChanges);
        });
    const double kept = static_cast<double>(market.counter.changes) / (kChanges * (kRounds + 1));
    Check(kept > 0.99 && kept < 1.01, "the market didn't make its 20,000 changes a second");
    Check(market.counter.last < kSecurities && copy.volume > 0, "nothing was copied");
    share.Print();
    each.Print();
}
