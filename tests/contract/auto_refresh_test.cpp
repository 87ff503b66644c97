// The refresh service inside the real library: who gets it, when it starts and that it ends.

#include "support/host_process.h"
#include "support/test.h"

using panelry::test::HostProcess;

namespace
{

QByteArray Settings(const char* system)
{
    return QByteArray(R"({"system":{"load_font":"0")") + system + "}}";
}

// What the providers told since the last time.
QStringList Told(HostProcess& host)
{
    return host.Settle().filter(QRegularExpression("^(quotes|trades) "));
}

const QStringList kStarted{"quotes 16 attached", "trades 32 attached", "trades 32 on auto_refresh_data",
                           "trades 32 on chedan_table", "trades 32 on rzrq_chedan_table"};

}  // namespace

class AutoRefreshTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void ItStartsUnlessSwitchedOff_data()
    {
        QTest::addColumn<QByteArray>("settings");
        QTest::addColumn<QStringList>("told");
        QTest::newRow("no setting") << Settings("") << kStarted;
        QTest::newRow("off") << Settings(R"(,"support_autorefresh":"0")") << QStringList();
        QTest::newRow("empty is on") << Settings(R"(,"support_autorefresh":"")") << kStarted;
        QTest::newRow("only the text 0 is off") << Settings(R"(,"support_autorefresh":"00")") << kStarted;
    }

    void ItStartsUnlessSwitchedOff()
    {
        QFETCH(const QByteArray, settings);
        QFETCH(const QStringList, told);
        HostProcess host;
        host.AddModules("reporter");
        host.Write("sysconfig/config.json", settings);
        QVERIFY(host.Start());
        host.Do({"providers", "init 16 32 1"});
        QCOMPARE(Told(host), told);
        QVERIFY(host.End({"uninit"}));
    }

    void ItRefreshesWithinItsIntervalAndNeverAfterTheEnd()
    {
        HostProcess host;
        host.AddModules("reporter");
        host.Write("sysconfig/config.json", Settings(R"(,"auto_refresh_interval":"1")"));
        QVERIFY(host.Start());
        host.Do({"init 16 32 1", "providers"});
        host.Settle();
        host.Do("cancel");
        for (const char* const request :
             {"1539 chedan_table", "1537 gupiao_table", "1538 chengjiao_table", "1539 weituo_table", "5 "}) {
            QVERIFY(!host.Wait(QStringLiteral("trades 32 request ") + request).isNull());
        }
        host.Do("uninit");
        QVERIFY(!host.Wait("uninit returned").isNull());
        // The old subscriber is still held; only that of the next life answers.
        host.Do({"cancel", "login 0", "init 16 32 1"});
        QCOMPARE(Told(host), kStarted);
        host.Do("login 0");
        QCOMPARE(Told(host), kStarted.mid(2));
        QVERIFY(host.End({"cancel", "uninit"}));
    }

    // Nobody says goodbye: the timers run into the end of the process.
    void AnEndWithoutLeaveIsQuiet()
    {
        for (int round = 0; round < 3; ++round) {
            HostProcess host;
            host.AddModules("reporter");
            host.Write("sysconfig/config.json",
                       Settings(R"(,"auto_refresh_interval":"1","auto_refresh_afterweituo":"1")"));
            QVERIFY(host.Start());
            host.Do({"init 16 32 1", "notify 1 1001 {}"});
            host.Settle();
            QVERIFY(host.End({"cancel"}));
        }
    }
};

PANELRY_TEST(AutoRefreshTest)
#include "auto_refresh_test.moc"
