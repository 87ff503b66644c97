#include <QProcess>
#include <QRandomGenerator>
#include <chrono>
#include <thread>

#include "support/sanitized.h"
#include "support/test.h"
#include "watchlist/list_stage.h"

using namespace panelry;
using namespace panelry::test;

namespace
{

constexpr int kKills = kSanitized ? 40 : 200;
constexpr int kSoakKills = 500;
constexpr int kStocksBefore = 1000;

// A list that is long enough to be caught in the middle of its writing.
QByteArray LongList()
{
    return QByteArray::fromStdString(ListText(
        StockList(kStocksBefore, {{"stockcode", "1"}, {"market", "16"}, {"note", std::string(80, 'x')}})));
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
            QVERIFY(added == 0 || list.back().at("stockcode") == "new" + std::to_string(added - 1));
        }
    }

    void TheEndOfTheProcessWritesTheLatestStocks()
    {
        for (const bool threadRuns : {false, false, true, true, true}) {
            const ListStage stage;
            stage.Put(kSystemFile, R"([{"stockcode":"0","market":"0"}])");
            QProcess saver;
            saver.start(QStringLiteral(WATCHLIST_SAVER), {QLatin1String(threadRuns ? "running" : "exit")});
            QVERIFY(saver.waitForFinished());
            QCOMPARE(saver.exitStatus(), QProcess::NormalExit);
            QVERIFY2(saver.exitCode() == 0, saver.readAllStandardError().constData());
            QCOMPARE(stage.List(kUserFile), std::string("0/0 2/16"));
            const std::string latest = stage.List(kLatestFile);
            QCOMPARE(Stocks(latest).size(), std::size_t{threadRuns ? 200U : 1U});
            QVERIFY(threadRuns || latest == "1/16=");
        }
    }
};

PANELRY_TEST(WatchlistProcessTest)

#include "process_test.moc"
