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
    void ItStartsUnlessSwitchedOff()
    {
        for (const auto& [setting, told] : {std::pair{"", kStarted},
                                            {R"(,"support_autorefresh":"0")", QStringList()},
                                            {R"(,"support_autorefresh":"")", kStarted},
                                            {R"(,"support_autorefresh":"00")", kStarted}}) {
            HostProcess host;
            host.Write("sysconfig/config.json", Settings(setting));
            QVERIFY(host.Start());
            host.Do({"providers", "init 16 32 1"});
            QCOMPARE(Told(host), told);
            QVERIFY(host.End({"uninit"}));
        }
    }

    void ItRefreshesWithinItsIntervalAndNeverAfterTheEnd()
    {
        HostProcess host;
        host.Write("sysconfig/config.json", Settings(R"(,"auto_refresh_interval":"1")"));
        QVERIFY(host.Start());
        host.Do({"init 16 32 1", "providers"});
        host.Settle();
        host.Do("cancel");
        for (const char* const request :
             {"1539 chedan_table", "1537 gupiao_table", "1538 chengjiao_table", "1539 weituo_table", "5 "}) {
            QVERIFY(!host.Wait(QStringLiteral("trades 32 request ") + request).isNull());
        }
        QVERIFY(host.Do({"uninit", "wait uninit returned"}));
        // The old subscriber is still held; only that of the next life answers.
        host.Do({"cancel", "login 0", "init 16 32 1"});
        QCOMPARE(Told(host), kStarted);
        host.Do("login 0");
        QCOMPARE(Told(host), kStarted.mid(2));
        QVERIFY(host.End({"cancel", "uninit"}));
    }
};

PANELRY_TEST(AutoRefreshTest)
#include "auto_refresh_test.moc"
