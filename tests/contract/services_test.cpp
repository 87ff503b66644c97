// What the panels share, through the real library: the log and the stock lists.

#include <QDirIterator>
#include <QFile>
#include <csignal>

#include "support/host_process.h"
#include "support/test.h"

using panelry::test::HostProcess;
using panelry::test::Tell;

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

}  // namespace

class ServicesTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void AModulesLinesAreLoggedWhereTheDeploymentSaysSo()
    {
        for (const auto& [system, logged] :
             {std::pair{"", false}, {R"("log_config":"")", false}, {R"("log_config":"log.cfg")", true}}) {
            HostProcess host;
            host.Write("log.cfg", "[Main]\nlevel=info\n");
            host.Write("sysconfig/config.json", QByteArray("{\"system\":{") + system + "}}");
            QVERIFY(host.Start());
            for (const char* const life : {"first life", "second life"}) {
                const QByteArray line = QByteArray("log 3 the ") + life;
                QVERIFY(host.Do({"init 0 0 1", Tell(1002, line.constData()), Tell(1002, "log 1 too low")}));
                host.Settle();
                QVERIFY(host.Do({"uninit", "wait uninit returned"}));
                QCOMPARE(Logged(host).contains(life), logged);
                QVERIFY(!Logged(host).contains("too low"));
            }
            QVERIFY(host.End({}));
        }
    }

    void ACrashKeepsTheLinesBeforeItUnderTheGuard()
    {
        HostProcess host;
        host.Write("log.cfg", "[Main]\nlevel=info\n");
        host.Write("sysconfig/config.json", R"({"system":{"log_config":"log.cfg","log_crash_guard":"1"}})");
        QVERIFY(host.Start());
        host.Do({"init 0 0 1", R"(notify 1 1002 {})"});
        host.Settle();  // perhaps out of the first drain
        host.Settle();
        host.Do({Tell(1002, "log 2 its last words"), Tell(1002, "crash")});
        QVERIFY(host.Dies());
        QCOMPARE(host.Status(), SIGABRT);
        QVERIFY(Logged(host).contains("its last words"));
    }

    void TheGuardIsOffUnlessAskedFor()
    {
        for (const auto& [key, caught] : {std::pair{"", false},
                                          {R"(,"log_crash_guard":"0")", false},
                                          {R"(,"log_crash_guard":"1")", true}}) {
            HostProcess host;
            host.Write("log.cfg", "[Main]\nlevel=info\n");
            host.Write("sysconfig/config.json",
                       QByteArray(R"({"system":{"log_config":"log.cfg")") + key + "}}");
            QVERIFY(host.Start());
            host.Do("init 0 0 1");
            host.Settle();
            const QString status = TextIn(QString("/proc/%1/status").arg(host.Id()));
            const QString mask = status.section("SigCgt:\t", 1).section('\n', 0, 0);
            QCOMPARE((mask.toULongLong(nullptr, 16) >> (SIGABRT - 1) & 1) != 0, caught);
            QVERIFY(host.End({"uninit"}));
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
                 QString("1002 OnMessage 102 market=16 stockcode=600036 stockname="));
        QVERIFY(TextIn(host.Folder() + "/userconfig/Watchlist.json").contains("600519"));
        QVERIFY(host.End({"uninit"}));
        QVERIFY(TextIn(host.Folder() + "/userconfig/Lastestlist.json").contains("600036"));
        QVERIFY(!TextIn(host.Folder() + "/userconfig/Lastestlist.json").contains("600519"));
    }
};

PANELRY_TEST(ServicesTest)
#include "services_test.moc"
