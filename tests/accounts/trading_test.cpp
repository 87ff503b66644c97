// Long trades at random, in one process and in one that is killed again and again.

#include <sys/wait.h>
#include <unistd.h>

#include <QRandomGenerator>
#include <QTemporaryDir>
#include <algorithm>
#include <csignal>
#include <map>
#include <sstream>

#include "accounts/random_trader.h"
#include "support/rows.h"
#include "support/sanitized.h"
#include "support/test.h"

using namespace panelry;
using namespace panelry::desk;
using namespace panelry::test;

namespace
{

bool IsSoak()
{
    return qEnvironmentVariableIsSet("PANELRY_SOAK");
}

// With nothing but what the broker tells: the opening and all deals make up cash, debt and holdings.
bool AddsUp(const Brokerage& broker, AccountKind kind)
{
    Money cash = broker.Started().Of(kind).cash;
    std::map<std::size_t, Quantity> shares;
    for (const Holding& holding : broker.Started().Of(kind).holdings) {
        shares[holding.security] = holding.total;
    }
    for (const Deal& deal : broker.DealsBetween(kind, 1, broker.Day())) {
        const bool buys = deal.side == Side::Buy;
        cash += buys ? -deal.worth - deal.fees : deal.worth - deal.fees;
        shares[deal.security] += buys ? deal.quantity : -deal.quantity;
    }
    for (const Holding& holding : broker.Holdings(kind)) {
        shares[holding.security] -= holding.total;
    }
    const Funds funds = broker.FundsOf(kind, [](std::size_t) { return 0; });
    return cash == funds.balance - funds.debt &&
           std::all_of(shares.begin(), shares.end(), [](const auto& entry) { return entry.second == 0; });
}

bool IsWithinBounds(const Brokerage& broker, AccountKind kind)
{
    const Funds funds = broker.FundsOf(kind, [](std::size_t) { return 0; });
    const std::vector<Holding> holdings = broker.Holdings(kind);
    return funds.frozen >= 0 && funds.available >= 0 && funds.withdrawable >= 0 &&
           funds.withdrawable <= funds.available && funds.debt >= 0 && funds.credit >= 0 &&
           std::all_of(holdings.begin(), holdings.end(), [](const Holding& held) {
               return held.total > 0 && held.sellable >= 0 && held.frozen >= 0 && held.cost >= 0;
           });
}

// Trades on the accounts of a file and says what was done, a line an event, until the process is killed.
void Trade(const std::string& file, std::uint64_t seed, int out) noexcept
{
    const auto listing = MadeListing();
    Brokerage broker(listing, MadeOpening(1'000'000'000), {file});
    RandomTrader trader(broker, *listing, seed);
    for (ssize_t written = 1; written > 0;) {
        const RandomTrader::Event event = trader.Step();
        const std::string line = std::string(1, event.kind) + ' ' + std::to_string(broker.Day()) + ' ' +
                                 (event.contract.empty() ? "-" : event.contract) + ' ' +
                                 std::to_string(event.dealt) + (event.open ? " 1\n" : " 0\n");
        written = write(out, line.data(), line.size());  // past every buffer of this process
    }
}

struct Said {
    int day = 1;
    qint64 filed = 0;  // deals, before the first line
    qint64 deals = 0;
    std::map<std::string, std::pair<Quantity, bool>> orders;  // of that day: dealt, open

    void Hear(const std::string& line)
    {
        std::istringstream words(line);
        char kind = 0;
        int today = 0;
        std::string contract;
        Quantity dealt = 0;
        bool open = false;
        words >> kind >> today >> contract >> dealt >> open;
        if (today != day) {
            orders.clear();
            day = today;
        }
        deals += kind == 'D' ? 1 : 0;
        if (kind != 'O') {
            orders[contract] = {dealt, open};
        }
    }
};

// What is filed is what was said, or one event more.
std::string Missing(const Brokerage& broker, const Said& said, qint64 filedDeals)
{
    if (broker.Day() < said.day || filedDeals < said.deals || filedDeals > said.deals + 1) {
        return "day " + std::to_string(broker.Day()) + ", " + std::to_string(filedDeals) + " deals";
    }
    int changed = 0;
    for (const auto& [contract, told] : said.orders) {
        const Order* const order = broker.Find(contract);
        if (broker.Day() == said.day && order == nullptr) {
            return "order " + contract;
        }
        if (order != nullptr && (order->dealt != told.first || order->IsOpen() != told.second)) {
            changed += order->dealt >= told.first && told.second ? 1 : 2;
        }
    }
    return changed > 1 ? "a change of an order" : "";
}

}  // namespace

class TradingTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void NoFenAndNoShareIsLost_data()
    {
        const Rows<qlonglong> row("cash");
        row("poor: everything is spent to the limit", 20'000'000);
        row("rich", 1'000'000'000'000);
    }
    void NoFenAndNoShareIsLost()
    {
        QFETCH(qlonglong, cash);
        // The two rows together: ten thousand orders, a million in the long run.
        const int orders = IsSoak() ? 500'000 : kSanitized ? 1'000 : 5'000;
        const int lives = 5;
        const QTemporaryDir folder;
        const std::string file = folder.filePath(QStringLiteral("accounts.db")).toStdString();
        const auto listing = MadeListing();
        std::map<char, int> seen;
        std::vector<Money> before;
        for (int life = 0; life < lives; ++life) {
            Brokerage broker(listing, MadeOpening(life == 0 ? cash : 1), {file});
            QCOMPARE(broker.Audit(), std::string());
            RandomTrader trader(broker, *listing, static_cast<std::uint64_t>(life));
            for (int event = 0; seen['P'] + seen['R'] < orders / lives * (life + 1); ++event) {
                ++seen[trader.Step().kind];
                const AccountKind kind = kAccounts[event % 3];
                QVERIFY2(IsWithinBounds(broker, kind), qPrintable(QString::number(event)));
            }
            QCOMPARE(broker.Audit(), std::string());
            for (const AccountKind kind : kAccounts) {
                QVERIFY(AddsUp(broker, kind));
            }
        }
        for (const char kind : {'P', 'R', 'A', 'D', 'G'}) {
            QVERIFY2(seen[kind] > orders / 100, std::string(1, kind).c_str());
        }
        QVERIFY(seen['O'] > 0);
    }

    void AKilledDeskLosesNothingThatWasDone()
    {
        QRandomGenerator random(20240911);
        const QTemporaryDir folder;
        constexpr int kKillsOfAFile = 50;  // all of it is read again behind each
        Said said;
        qint64 deals = 0;
        const int kills = IsSoak() ? 1000 : kSanitized ? 20 : 200;
        for (int kill = 0; kill < kills; ++kill) {
            const std::string file = folder.filePath(QString::number(kill / kKillsOfAFile)).toStdString();
            said = kill % kKillsOfAFile == 0 ? Said() : said;
            int ends[2] = {};
            QCOMPARE(pipe(ends), 0);
            const pid_t trader = fork();
            if (trader == 0) {
                close(ends[0]);  // ends with its reader
                Trade(file, static_cast<std::uint64_t>(kill), ends[1]);
                _exit(1);
            }
            close(ends[1]);
            std::string told;
            const auto hear = [&] {
                char letters[4096];
                const ssize_t count = read(ends[0], letters, sizeof letters);
                told.append(letters, static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
                return count > 0;
            };
            const int most = random.bounded(4) == 0 ? 0 : random.bounded(400);  // some before the first line
            while (std::count(told.begin(), told.end(), '\n') < most) {
                QVERIFY(hear());
            }
            ::kill(trader, SIGKILL);
            while (hear()) {
            }
            close(ends[0]);
            int status = 0;
            QCOMPARE(waitpid(trader, &status, 0), trader);
            QCOMPARE(WTERMSIG(status), SIGKILL);
            std::istringstream lines(told);
            for (std::string line; std::getline(lines, line);) {
                said.Hear(line);
            }
            const Brokerage broker(MadeListing(), MadeOpening(1'000'000'000), {file});
            QCOMPARE(broker.Audit(), std::string());
            qint64 filed = 0;
            for (const AccountKind kind : kAccounts) {
                QVERIFY(AddsUp(broker, kind));
                filed += std::ssize(broker.DealsBetween(kind, 1, broker.Day()));
            }
            QCOMPARE(Missing(broker, said, filed), std::string());
            deals += filed - said.filed;
            said = {broker.Day(), filed, filed, {}};
            for (const AccountKind kind : kAccounts) {
                for (const Order& order : broker.Orders(kind)) {
                    said.orders[order.contract] = {order.dealt, order.IsOpen()};
                }
            }
        }
        QVERIFY(deals > kills * 10);
    }
};

PANELRY_TEST(TradingTest)
#include "trading_test.moc"
