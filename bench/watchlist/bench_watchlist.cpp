// What the watchlist costs: testing and adding stocks against the same linear scan over plain structs, saving
// against dumping the same document and writing it with QSaveFile.

#include <QDir>
#include <QSaveFile>
#include <QTemporaryDir>
#include <algorithm>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "support/rounds.h"
#include "watchlist/watchlist_manager_present.h"

using panelry::bench::Check;
using panelry::bench::Clock;
using panelry::bench::Figure;

namespace
{

using Items = std::vector<StringMap>;

constexpr int kRounds = 61;
constexpr std::size_t kListed = 1000;
constexpr std::size_t kTested = 100;
constexpr std::size_t kAdded = 100;

struct PlainStock {
    std::string market;
    std::string code;
};

// Every second stock shares its code with its neighbour and differs in the market.
Items MakeItems(std::size_t count)
{
    Items items;
    for (std::size_t i = 0; i < count; ++i) {
        items.push_back({{"stockcode", std::to_string(600000 + i / 2)},
                         {"market", i % 2 == 0 ? "16" : "32"},
                         {"stockname", "浦发银行" + std::to_string(i)}});
    }
    return items;
}

bool Scan(const std::vector<PlainStock>& list, const StringMap& item)
{
    const std::string& market = item.find("market")->second;
    const std::string& code = item.find("stockcode")->second;
    return std::any_of(list.begin(), list.end(),
                       [&](const PlainStock& stock) { return stock.code == code && stock.market == market; });
}

void AddPlain(std::vector<PlainStock>& list, const Items& items)
{
    for (const StringMap& item : items) {
        if (!Scan(list, item)) {
            list.push_back({item.find("market")->second, item.find("stockcode")->second});
        }
    }
}

template <class Work>
double Microseconds(Work work)
{
    const Clock::time_point start = Clock::now();
    work();
    return panelry::bench::Seconds(start) * 1e6;
}

// Items from all over the list, every second one of them not in it.
Items TestedItems(const Items& listed)
{
    Items tested;
    for (std::size_t i = 0; i < kTested; ++i) {
        tested.push_back(listed[i * listed.size() / kTested]);
        if (i % 2 == 1) {
            tested.back()["market"] = "17";
        }
    }
    return tested;
}

void MeasureTesting()
{
    const Items listed = MakeItems(kListed);
    const Items tested = TestedItems(listed);
    WatchlistManagerPresent present;
    present.AddStocks(listed);
    std::vector<PlainStock> plain;
    AddPlain(plain, listed);

    std::vector<bool> ours(kTested);
    std::vector<bool> yardstick(kTested);
    Figure figure("Testing 100 items against a list of 1,000", "us", 1.2);
    panelry::bench::Interleave(
        kRounds, [&] { return Microseconds([&] { present.TestStocks(tested, ours); }); },
        [&] {
            return Microseconds([&] {
                for (std::size_t i = 0; i < kTested; ++i) {
                    yardstick[i] = Scan(plain, tested[i]);
                }
            });
        },
        [&](double a, double b) { figure.AddRatio(a, b); });
    Check(ours == yardstick && std::count(ours.begin(), ours.end(), true) == kTested / 2, "wrong answers");
    figure.Print();
}

// How many stocks a presenter has.
class Counter : public WatchlistListener
{
public:
    explicit Counter(WatchlistManagerPresent& present)
    {
        WatchlistRequest request;
        request.cmd = panelry::kListenWatchlist;
        request.listener = this;
        present.HandleRequest(request);
        request.cmd = panelry::kUnlistenWatchlist;
        present.HandleRequest(request);
    }
    void OnWatchlistEvent(int /*code*/, const void* list) override
    {
        count = static_cast<const panelry::StockList*>(list)->size();
    }

    std::size_t count = 0;
};

void MeasureAdding()
{
    const Items items = MakeItems(kListed + kAdded);
    const Items listed(items.begin(), items.begin() + kListed);
    const Items added(items.begin() + kListed, items.end());
    Figure figure("Adding 100 items to a list of 1,000", "us", 0);
    panelry::bench::Interleave(
        kRounds,
        [&] {
            WatchlistManagerPresent present;
            present.AddStocks(listed);
            const double taken = Microseconds([&] { present.AddStocks(added); });
            Check(Counter(present).count == items.size(), "our list isn't complete");
            return taken;
        },
        [&] {
            std::vector<PlainStock> plain;
            AddPlain(plain, listed);
            const double taken = Microseconds([&] { AddPlain(plain, added); });
            Check(plain.size() == items.size(), "the plain list isn't complete");
            return taken;
        },
        [&](double a, double b) { figure.AddRatio(a, b); });
    figure.Print();
}

void MeasureSaving(std::size_t count, const std::string& name)
{
    const Items items = MakeItems(count);
    WatchlistManagerPresent present;
    present.AddStocks(items);
    const nlohmann::json document(items);
    Figure figure("Saving " + name + " entries", "us", 1.1);
    panelry::bench::Interleave(
        kRounds, [&] { return Microseconds([&] { present.Save(); }); },
        [&] {
            return Microseconds([&] {
                const std::string text = document.dump(4);
                QSaveFile file(QStringLiteral("userconfig/plain.json"));
                Check(file.open(QSaveFile::WriteOnly), "the plain file can't be opened");
                file.write(text.data(), static_cast<qint64>(text.size()));
                Check(file.commit(), "the plain file can't be written");
            });
        },
        [&](double a, double b) { figure.AddRatio(a, b); });
    QFile ours(QStringLiteral("userconfig/Watchlist.json"));
    QFile plain(QStringLiteral("userconfig/plain.json"));
    Check(ours.open(QFile::ReadOnly) && plain.open(QFile::ReadOnly) && ours.readAll() == plain.readAll(),
          "the two files differ");
    figure.Print();
}

}  // namespace

int main()
{
    const QTemporaryDir directory;
    QDir::setCurrent(directory.path());
    QDir().mkdir(QStringLiteral("userconfig"));
    MeasureTesting();
    MeasureAdding();
    MeasureSaving(200, "200");
    MeasureSaving(5000, "5,000");
    QDir::setCurrent(QDir::rootPath());
    return 0;
}
