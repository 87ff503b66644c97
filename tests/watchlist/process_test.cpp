#include <QProcess>
#include <QRandomGenerator>
#include <chrono>
#include <thread>

#include "support/test.h"
#include "watchlist/list_stage.h"

using namespace panelry;
using namespace panelry::test;

namespace
{

constexpr int kKills = 40;
constexpr int kSoakKills = 500;
constexpr int kStocksBefore = 1000;

// A list that is long enough to be caught in the middle of its writing.
QByteArray LongList()
{
    StockList stocks;
    for (int i = 0; i < kStocksBefore; ++i) {
        stocks.push_back(
            {{"stockcode", std::to_string(i)}, {"market", "16"}, {"note", std::string(80, 'x')}});
    }
    return QByteArray::fromStdString(ListText(stocks));
}

}  // namespace

class WatchlistProcessTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    // Whenever the process dies, the file holds the list before the request that it was at, or the one after.
    void AKilledProcessLeavesTheOldListOrTheNew()
    {
        QRandomGenerator random(20240607);
        const QByteArray before = LongList();
        const int kills = qEnvironmentVariableIsSet("PANELRY_SOAK") ? kSoakKills : kKills;
        for (int kill = 0; kill < kills; ++kill) {
            const ListStage stage;
            stage.Put(kUserFile, before);
            QProcess saver;
            saver.start(QStringLiteral(WATCHLIST_SAVER), {QStringLiteral("grow")});
            QByteArray told;
            const int letters = random.bounded(1, 6);
            while (told.size() < letters) {
                QVERIFY(saver.waitForReadyRead());
                told += saver.readAll();
            }
            std::this_thread::sleep_for(std::chrono::microseconds(random.bounded(20000)));
            saver.kill();
            QVERIFY(saver.waitForFinished());
            told += saver.readAll();

            const nlohmann::json list = nlohmann::json::parse(stage.Text(kUserFile).toStdString());
            const int added = static_cast<int>(list.size()) - kStocksBefore;
            QVERIFY2(added >= told.count('d') && added <= told.count('s'),
                     qPrintable(QString::number(added)));
            for (int i = 0; i < added; ++i) {
                QCOMPARE(
                    list.at(static_cast<std::size_t>(kStocksBefore + i)).at("stockcode").get<std::string>(),
                    "new" + std::to_string(i));
            }
        }
    }

    void TheEndOfTheProcessWritesTheLatestStocks_data()
    {
        QTest::addColumn<QString>("act");
        QTest::newRow("everything has ended") << QStringLiteral("exit");
        QTest::newRow("a thread still selects") << QStringLiteral("running");
    }

    void TheEndOfTheProcessWritesTheLatestStocks()
    {
        QFETCH(const QString, act);
        for (int i = 0; i < 5; ++i) {
            const ListStage stage;
            stage.Put(kSystemFile, R"([{"stockcode":"0","market":"0"}])");
            QProcess saver;
            saver.start(QStringLiteral(WATCHLIST_SAVER), {act});
            QVERIFY(saver.waitForFinished());
            QCOMPARE(saver.exitStatus(), QProcess::NormalExit);
            QVERIFY2(saver.exitCode() == 0, saver.readAllStandardError().constData());
            QCOMPARE(stage.List(kUserFile), std::string("0/0 2/16"));
            if (act == QLatin1String("exit")) {
                QCOMPARE(stage.List(kLatestFile), std::string("1/16="));
            } else {
                QCOMPARE(Stocks(stage.List(kLatestFile)).size(), std::size_t{200});
            }
        }
    }
};

PANELRY_TEST(WatchlistProcessTest)

#include "process_test.moc"
