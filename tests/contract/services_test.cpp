// What the panels share, through the real library: the log, the stock lists and the refresh.

#include <QDirIterator>
#include <QFile>
#include <csignal>

#include "support/host_process.h"
#include "support/test.h"

using namespace panelry::test;

namespace
{

QString TextIn(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

// All that was logged below the host's folder.
QString Logged(const HostProcess& host)
{
    QString text;
    for (QDirIterator files(host.Folder() + "/data", QDir::Files, QDirIterator::Subdirectories);
         files.hasNext();) {
        text += TextIn(files.next());
    }
    return text;
}

void WriteSettings(const HostProcess& host, const QByteArray& system)
{
    host.Write("log.cfg", "[Main]\nlevel=info\n");
    host.Write("sysconfig/config.json", R"({"system":{"load_font":"0")" + system + "}}");
}

// What the providers told since the last time.
QStringList Told(HostProcess& host)
{
    return host.Settle().filter(QRegularExpression("^(quotes|trades) "));
}

const QStringList kStarted{"quotes 16 attached", "trades 32 attached", "trades 32 on auto_refresh_data",
                           "trades 32 on chedan_table", "trades 32 on rzrq_chedan_table"};

}  // namespace

class ServicesTest : public Test
{
    Q_OBJECT

private Q_SLOTS:
    void AModulesLinesAreLoggedWhereTheDeploymentSaysSo()
    {
        for (const auto& [system, logged] :
             {std::pair{"", false}, {R"(,"log_config":"")", false}, {R"(,"log_config":"log.cfg")", true}}) {
            HostProcess host;
            WriteSettings(host, system);
            QVERIFY(host.Start());
            for (const char* const life : {"first life", "second life"}) {
                QVERIFY(host.Do({"init 0 0 1", Tell(1002, (QByteArray("log 3 the ") + life).constData()),
                                 Tell(1002, "log 1 too low")}));
                host.Settle();
                QVERIFY(host.Do({"uninit", "wait uninit returned"}));
                QCOMPARE(Logged(host).contains(life), logged);
                QVERIFY(!Logged(host).contains("too low"));
            }
            QVERIFY(host.End({}));
        }
    }

    void TheGuardIsOffUnlessAskedForAndKeepsTheLinesBeforeACrash()
    {
        for (const auto& [key, caught] : {std::pair{"", false},
                                          {R"(,"log_crash_guard":"0")", false},
                                          {R"(,"log_crash_guard":"1")", true}}) {
            HostProcess host;
            WriteSettings(host, QByteArray(R"(,"log_config":"log.cfg")") + key);
            QVERIFY(host.Start());
            host.Do({"init 0 0 1", "notify 1 1002 {}"});
            host.Settle();  // perhaps out of the first drain
            host.Settle();
            const QString status = TextIn(QString("/proc/%1/status").arg(host.Id()));
            const QString mask = status.section("SigCgt:\t", 1).section('\n', 0, 0);
            QCOMPARE((mask.toULongLong(nullptr, 16) >> (SIGABRT - 1) & 1) != 0, caught);
            host.Do({Tell(1002, "log 2 its last words"), Tell(1002, "crash")});
            QVERIFY(host.Dies());
            QCOMPARE(host.Status(), SIGABRT);
            QVERIFY(!caught || Logged(host).contains("its last words"));
        }
    }

    // The selected stock is heard by the lists before the other panels; the watched one is heard by nobody else.
    void AStockThatAPanelSendsStandsInTheLists()
    {
        HostProcess host;
        QVERIFY(host.StartAndInit());
        host.Write("userconfig/Watchlist.json", "[]");
        host.Do({"notify 1 1001 {}", "notify 1 1002 {}"});
        host.Settle();
        host.Do({Tell(1001, "watch 600519"), Tell(1001, "pick 600036")});
        QCOMPARE(host.SettleBriefly().join(", ").remove(QRegularExpression("#\\d+")),
                 "1002 OnMessage 102 market=16 stockcode=600036 stockname=");
        QVERIFY(TextIn(host.Folder() + "/userconfig/Watchlist.json").contains("600519"));
        QVERIFY(host.End({"uninit"}));
        QVERIFY(TextIn(host.Folder() + "/userconfig/Lastestlist.json").contains("600036"));
        QVERIFY(!TextIn(host.Folder() + "/userconfig/Lastestlist.json").contains("600519"));
    }

    void TheRefreshStartsUnlessSwitchedOff()
    {
        for (const auto& [setting, told] : {std::pair{"", kStarted},
                                            {R"(,"support_autorefresh":"0")", QStringList()},
                                            {R"(,"support_autorefresh":"")", kStarted},
                                            {R"(,"support_autorefresh":"00")", kStarted}}) {
            HostProcess host;
            WriteSettings(host, setting);
            QVERIFY(host.Start());
            host.Do({"providers", "init 16 32 1"});
            QCOMPARE(Told(host), told);
            QVERIFY(host.End({"uninit"}));
        }
    }

    void TheRefreshComesWithinItsIntervalAndNeverAfterTheEnd()
    {
        HostProcess host;
        WriteSettings(host, R"(,"auto_refresh_interval":"1")");
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

PANELRY_TEST(ServicesTest)
#include "services_test.moc"
