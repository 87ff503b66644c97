// Long trades at random, in one process and in one that is killed again and again.

#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <algorithm>
#include <map>
#include <sstream>

#include "accounts/random_trader.h"
#include "support/sanitized.h"
#include "support/test.h"

using namespace panelry;
using namespace panelry::desk;
using namespace panelry::test;

namespace
{

constexpr AccountKind kKinds[] = {AccountKind::Normal, AccountKind::Margin, AccountKind::Connect};

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

qint64 CountDeals(const Brokerage& broker)
{
    qint64 count = 0;
    for (const AccountKind kind : kKinds) {
        count += static_cast<qint64>(broker.DealsBetween(kind, 1, broker.Day()).size());
    }
    return count;
}

}  // namespace

class TradingTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void NoFenAndNoShareIsLost_data()
    {
        QTest::addColumn<Money>("cash");
        QTest::newRow("poor: everything is spent to the limit") << Money{20'000'000};
        QTest::newRow("rich") << Money{1'000'000'000'000};
    }
    void NoFenAndNoShareIsLost()
    {
        QFETCH(Money, cash);
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
                const AccountKind kind = kKinds[event % 3];
                QVERIFY2(IsWithinBounds(broker, kind), qPrintable(QString::number(event)));
            }
            QCOMPARE(broker.Audit(), std::string());
            for (const AccountKind kind : kKinds) {
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
            const QString file = folder.filePath(QString::number(kill / kKillsOfAFile));
            said = kill % kKillsOfAFile == 0 ? Said() : said;
            QProcess trader;
            trader.start(QStringLiteral(ACCOUNTS_TRADER), {file, QString::number(kill)});
            QVERIFY(trader.waitForStarted());
            QByteArray told;
            const int lines = random.bounded(4) == 0 ? 0 : random.bounded(400);  // some before the first
            while (told.count('\n') < lines) {
                QVERIFY2(trader.waitForReadyRead(), trader.readAllStandardError().constData());
                told += trader.readAllStandardOutput();
            }
            trader.kill();
            QVERIFY(trader.waitForFinished());
            QCOMPARE(trader.exitStatus(), QProcess::CrashExit);
            told += trader.readAllStandardOutput();
            for (const QByteArray& line : told.split('\n')) {
                if (!line.isEmpty()) {
                    said.Hear(line.toStdString());
                }
            }
            const Brokerage broker(MadeListing(), MadeOpening(1'000'000'000), {file.toStdString()});
            QCOMPARE(broker.Audit(), std::string());
            const qint64 filed = CountDeals(broker);
            QCOMPARE(Missing(broker, said, filed), std::string());
            deals += filed - said.filed;
            said = {broker.Day(), filed, filed, {}};
            for (const AccountKind kind : kKinds) {
                QVERIFY(AddsUp(broker, kind));
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
