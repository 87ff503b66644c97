#include <QFile>
#include <QTemporaryDir>

#include <algorithm>
#include <sstream>

#include "accounts/made_accounts.h"
#include "desk/accounts/database.h"
#include "support/rows.h"
#include "support/test.h"

using namespace panelry;
using namespace panelry::desk;
using namespace panelry::test;

namespace
{

const OrderWish kBuy{AccountKind::Normal, kBank, Side::Buy, 10'000, 1000, Funding::Own};

std::string Standing(const Brokerage& broker)
{
    std::ostringstream text;
    text << broker.Day();
    for (const AccountKind kind : kAccounts) {
        const Funds funds = broker.FundsOf(kind, [](std::size_t) { return 1000; });
        for (const Money money :
             {funds.balance, funds.frozen, funds.withdrawable, funds.assets, funds.credit}) {
            text << ' ' << money;
        }
        for (const Holding& held : broker.Holdings(kind)) {
            text << " h" << held.total << ' ' << held.sellable << ' ' << held.cost;
        }
        for (const Order& order : broker.Orders(kind)) {
            text << " o" << order.contract << ' ' << order.dealt << ' ' << static_cast<int>(order.state)
                 << ' ' << order.time.ofDay.count() << ' ' << order.reason << order.exchangeOrder << ' '
                 << order.wish.price;
        }
        for (const Deal& deal : broker.Deals(kind)) {
            text << " d" << deal.number << ' ' << deal.contract << ' ' << deal.worth << ' ' << deal.fees
                 << ' ' << deal.time.ofDay.count();
        }
    }
    return text.str();
}

QString FaultOf(const std::string& file, bool afresh = false)
{
    try {
        const Brokerage broker(MadeListing(), MadeOpening(), {file, afresh});
        return QStringLiteral("none");
    } catch (const std::runtime_error& error) {
        return QString::fromUtf8(error.what());
    }
}

}  // namespace

class StorageTest : public panelry::test::Test
{
    Q_OBJECT

private:
    // A file with a day's trade on it: deals on both sides, an open buy and an open sale, a refused order.
    std::string Traded()
    {
        const std::string file = Path("accounts.db");
        Brokerage broker(MadeListing(), MadeOpening(), {file});
        broker.OpenDay(3);
        const std::string open = broker.Place(kBuy, {3, std::chrono::hours(10)}).contract;
        broker.Accept(open, 4);
        broker.OnDeal(open, 9'900, 300, {3, std::chrono::hours(11)});
        const std::string sale =
            broker.Place({AccountKind::Normal, kBank, Side::Sell, 11'000, 600, Funding::Own}, {}).contract;
        broker.OnDeal(sale, 11'000, 200, {});
        broker.Place({AccountKind::Normal, kIndex, Side::Sell, 11'000, 600, Funding::Own}, {});
        m_standing = Standing(broker);
        m_open = open;
        return file;
    }
    std::string Path(const char* name) const { return m_folder->filePath(QLatin1String(name)).toStdString(); }

    std::unique_ptr<QTemporaryDir> m_folder;
    std::string m_standing;
    std::string m_open;

private Q_SLOTS:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }

    // The file goes on with what it began with, whatever the next start brings, unless that begins afresh.
    void ARestartGoesOn()
    {
        const std::string file = Traded();
        Opening richer = MadeOpening(99'999'999);
        richer.stock.commission = 9'999;
        {
            Brokerage broker(MadeListing(), richer, {file});
            QCOMPARE(Standing(broker), m_standing);
            QCOMPARE(broker.Started().stock.commission, std::int64_t{250});
            QCOMPARE(broker.FindByExchangeOrder(4)->contract, m_open);
            const std::string last = broker.Deals(AccountKind::Normal).back().number;
            broker.OnDeal(m_open, 10'000, 700, {});
            QVERIFY(broker.Deals(AccountKind::Normal).back().number > last);
            QVERIFY(broker.Place(kBuy, {}).contract > m_open);
            QCOMPARE(broker.Audit(), std::string());
        }
        {
            const Brokerage broker(MadeListing(), richer, {file, true});
            QCOMPARE(Standing(broker), Standing(Brokerage(MadeListing(), richer, {})));
            QVERIFY(broker.DealsBetween(AccountKind::Normal, 1, 99).empty());
        }
        QCOMPARE(Brokerage(MadeListing(), MadeOpening(), {file}).Started().normal.cash, Money{99'999'999});
    }

    void TheListingMayChangeBetweenRuns()
    {
        const std::string file = Traded();
        auto other = std::make_shared<Listing>(*MadeListing());
        std::reverse(other->securities.begin(), other->securities.end());
        QCOMPARE(Brokerage(other, MadeOpening(), {file})
                     .HoldingOf(AccountKind::Normal, kMadeCount - 1 - kBank)
                     .total,
                 Quantity{1100});
        other->securities.pop_back();
        QVERIFY_EXCEPTION_THROWN(Brokerage(other, MadeOpening(), {file}), std::runtime_error);
        QCOMPARE(Standing(Brokerage(MadeListing(), MadeOpening(), {file})), m_standing);
        Opening without = MadeOpening();
        without.normal.holdings.clear();
        QCOMPARE(Brokerage(other, without, {file, true}).Audit(), std::string());
    }

    void WhatIsNotOursIsLeftAlone_data()
    {
        const Rows<const char*, const char*> row("sql fault");
        const char* const others = "accounts.db: holds something else than the desk's accounts";
        row("no database", "", "accounts.db: file is not a database");
        row("another program's", "CREATE TABLE letters(text)", others);
        row("another program's mark", "PRAGMA application_id = 7", others);
        row("a newer desk's", "PRAGMA application_id = 1347308633; PRAGMA user_version = 2",
            "accounts.db: was written by a newer desk (version 2 of the file)");
    }
    void WhatIsNotOursIsLeftAlone()
    {
        QFETCH(QString, sql);
        QFETCH(QString, fault);
        const std::string path = Path("accounts.db");
        QFile file(QString::fromStdString(path));
        if (sql.isEmpty()) {
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write("a letter, long enough to be taken for something else than an empty file\n");
            file.close();
        } else {
            Database(path).Run(sql.toUtf8().constData());
        }
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray before = file.readAll();
        for (const bool afresh : {false, true}) {
            QVERIFY2(FaultOf(path, afresh).endsWith(fault), qPrintable(FaultOf(path, afresh)));
        }
        QVERIFY(file.seek(0));
        QCOMPARE(file.readAll(), before);
    }

    // What can't be is told as a fault of the file, whoever made it.
    void ADamagedFileIsRefused_data()
    {
        const Rows<const char*> row("sql");
        row("a holding of nothing known", "UPDATE holdings SET security = 999 WHERE total = 500");
        row("an order of nothing known", "UPDATE orders SET security = 999");
        row("a deal of nothing known", "UPDATE deals SET security = 999");
        row("a fourth account", "UPDATE accounts SET account = 3 WHERE account = 2");
        row("a holding of a fourth account", "UPDATE holdings SET account = -1 WHERE total = 500");
        row("an order in no state", "UPDATE orders SET state = 6 WHERE number = 1");
        row("an order missing among the day's", "DELETE FROM orders WHERE number = 2");
    }
    void ADamagedFileIsRefused()
    {
        QFETCH(QString, sql);
        const std::string file = Traded();
        Database(file).Run(sql.toUtf8().constData());
        const QString fault = FaultOf(file);
        QVERIFY2(fault.startsWith(QString::fromStdString(file + ": is damaged")), qPrintable(fault));
    }

    void ASecondDeskIsTurnedAway()
    {
        const std::string file = Path("accounts.db");
        Brokerage first(MadeListing(), MadeOpening(), {file});
        for (const bool afresh : {false, true}) {
            QVERIFY(FaultOf(file, afresh).contains(QStringLiteral("is in use")));
        }
        first.Place(kBuy, {});
        QCOMPARE(first.Audit(), std::string());
        QVERIFY(FaultOf(Path("none/accounts.db")) != QStringLiteral("none"));
    }

    // Each change fails at its last statement, or at its first; memory and file stay as they were, and what
    // comes when there is room again works.
    void AFailedWriteChangesNothing_data()
    {
        const Rows<const char*, const char*> row("statement event");
        row("a new day, first", "UPDATE ON state", "day");
        row("a new day, in its middle", "UPDATE ON accounts", "day");
        row("a new day, last", "UPDATE ON holdings", "day");
        row("a new order", "INSERT ON orders", "place");
        row("taken", "UPDATE ON orders", "accept");
        row("gone", "UPDATE ON orders", "gone");
        row("a deal, first", "UPDATE ON orders", "deal");
        row("a deal, in its middle", "INSERT ON holdings", "deal");
        row("a deal, last", "INSERT ON accounts", "deal");
    }
    void AFailedWriteChangesNothing()
    {
        QFETCH(QString, statement);
        QFETCH(QString, event);
        const std::string file = Traded();
        Database(file).Run(("CREATE TABLE full(yes); CREATE TRIGGER fail BEFORE " + statement.toStdString() +
                            " WHEN EXISTS(SELECT 1 FROM full) BEGIN SELECT RAISE(ABORT, 'no room'); END;"
                            "INSERT INTO full VALUES(1)")
                               .c_str());
        {
            Brokerage broker(MadeListing(), MadeOpening(), {file});
            QCOMPARE(Standing(broker), m_standing);
            QVERIFY_EXCEPTION_THROWN(Change(broker, event), std::runtime_error);
            QCOMPARE(Standing(broker), m_standing);
            QCOMPARE(broker.Audit(), std::string());
        }
        Database(file).Run("DELETE FROM full");
        Brokerage broker(MadeListing(), MadeOpening(), {file});
        QCOMPARE(Standing(broker), m_standing);
        Change(broker, event);
        QVERIFY(Standing(broker) != m_standing);
        QCOMPARE(broker.Audit(), std::string());
    }

    // An audit that nothing can disturb would prove nothing.
    void TheAuditSeesEveryTampering_data()
    {
        const Rows<const char*> row("sql");
        row("a fen of cash", "UPDATE accounts SET balance = balance + 1 WHERE account = 0");
        row("a fen of debt", "UPDATE accounts SET debt = 1 WHERE account = 1");
        row("today's proceeds", "UPDATE accounts SET sold_today = sold_today - 1 WHERE account = 0");
        row("a share", "UPDATE holdings SET total = total + 1 WHERE total = 1100");
        row("a share more to sell", "UPDATE holdings SET bought_today = 299 WHERE bought_today = 300");
        row("a fen of cost", "UPDATE holdings SET cost = cost - 1 WHERE total = 1100");
        row("a holding less", "DELETE FROM holdings WHERE total = 500");
        row("a holding more", "INSERT INTO holdings VALUES(2, 5, 100, 0, 0)");
        row("a deal less", "DELETE FROM deals WHERE number = 1");
        row("a deal's fees", "UPDATE deals SET fees = fees + 1 WHERE number = 1");
        row("a deal's worth and the order's",
            "UPDATE deals SET worth = worth + 1 WHERE number = 1;"
            "UPDATE orders SET dealt_worth = dealt_worth + 1 WHERE number = 1");
        row("a deal's order", "UPDATE deals SET contract = 2 WHERE number = 1");
        row("an order's state", "UPDATE orders SET state = 2 WHERE number = 1");
        row("an ended order, open", "UPDATE orders SET state = 0, day = 2 WHERE number = 3");
    }
    void TheAuditSeesEveryTampering()
    {
        QFETCH(QString, sql);
        const std::string file = Traded();
        Database(file).Run(sql.toUtf8().constData());
        QVERIFY(!Brokerage(MadeListing(), MadeOpening(), {file}).Audit().empty());
    }

private:
    void Change(Brokerage& broker, const QString& event)
    {
        const std::string last = broker.Orders(AccountKind::Normal).at(1).contract;
        if (event == QLatin1String("day")) {
            broker.OpenDay(4);
        } else if (event == QLatin1String("place")) {
            broker.Place(kBuy, {});
        } else if (event == QLatin1String("accept")) {
            broker.Accept(m_open, 77);
        } else if (event == QLatin1String("gone")) {
            broker.OnGone(m_open);
        } else {
            broker.OnDeal(last, 11'000, 100, {});
        }
    }
};

PANELRY_TEST(StorageTest)
#include "storage_test.moc"
