#include "hosting/plugin_manager.h"

#include <QDir>
#include <QTemporaryDir>
#include <filesystem>

#include "hosting/stage.h"
#include "support/test.h"

using panelry::test::Stage;

class PluginManagerTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void FolderThatCannotBeRead_data()
    {
        QTest::addColumn<QString>("target");  // of a link named "adsplugins"; or what stands instead
        QTest::addColumn<QString>("operation");
        QTest::newRow("missing") << ""
                                 << "";
        QTest::newRow("dangling link") << "nowhere"
                                       << "";
        QTest::newRow("dangling link inside") << "with dangling"
                                              << "";
        QTest::newRow("a file") << "file"
                                << "directory_iterator::directory_iterator";
        QTest::newRow("loop") << "adsplugins"
                              << "exists";
        QTest::newRow("loop inside") << "with loop"
                                     << "status";
        QTest::newRow("current directory is gone") << "gone"
                                                   << "current_path()";
    }

    void FolderThatCannotBeRead()
    {
        QFETCH(const QString, target);
        QFETCH(const QString, operation);
        const QTemporaryDir folder;
        QDir here(folder.path());
        QVERIFY(QDir::setCurrent(here.path()));
        QVERIFY(here.mkdir(QStringLiteral("with dangling")) && here.mkdir(QStringLiteral("with loop")));
        QVERIFY(QFile::link(QStringLiteral("nowhere"), QStringLiteral("with dangling/x.so")));
        QVERIFY(QFile::link(QStringLiteral("x.so"), QStringLiteral("with loop/x.so")));
        QVERIFY(QFile(QStringLiteral("file")).open(QFile::WriteOnly));
        if (target == QLatin1String("gone")) {
            QVERIFY(here.mkdir(target) && QDir::setCurrent(here.filePath(target)) && here.rmdir(target));
        } else if (!target.isEmpty()) {
            QVERIFY(QFile::link(target, QStringLiteral("adsplugins")));
        }
        PluginManager manager;
        try {
            QVERIFY(manager.LoadModules());
            QVERIFY(operation.isEmpty());
            QVERIFY(!manager.CreateLinkedModule(1, 0, 0, ""));
        } catch (const std::filesystem::filesystem_error& error) {
            const QString text = QString::fromLocal8Bit(error.what());
            QVERIFY2(!operation.isEmpty() && text.contains(operation + QLatin1Char(':')), error.what());
        }
        QDir::setCurrent(QDir::rootPath());
    }

    void RecordsOfTheModulesThatAreMade()
    {
        Stage stage;
        stage.Play(QStringLiteral("a7.5=2 ba cb"));
        const InstanceInfo& info = stage['a'].m_instance;
        QVERIFY(info.module_kind == 12 && info.module_id == 2 && info.group_id == 5);
        QVERIFY(info.module_key == "key" && info.module_title == "title" && info.module_extra == "extra");
        QVERIFY(info.instance_text.empty());  // whatever the caller gave
        for (char name : {'b', 'c'}) {
            QCOMPARE(stage[name].m_manager, &stage.manager);
            QVERIFY(stage[name].m_instance.module_id == 3 && stage[name].m_instance.group_id == 5);
        }
        QVERIFY(stage.log.isEmpty());  // what a sub-module is told is its parent's business
    }

    void NoModuleIsMade()
    {
        Stage stage;
        for (int id : {0, 5, -1, 1}) {
            stage.refuse = id == 1;
            QVERIFY(!stage.manager.CreateLinkedModule(id, 0, 7, ""));
            QVERIFY(!stage.manager.CreateSubModule(id, nullptr));
        }
        stage.Play(QStringLiteral("* #1"));
        QCOMPARE(stage.log, QString());
    }

    void ModulesLeave_data()
    {
        QTest::addColumn<QString>("script");
        QTest::addColumn<QString>("deaths");
        QTest::addColumn<QString>("log");
        const auto row = [](const char* name, const char* script, const char* deaths, const char* log) {
            QTest::newRow(name) << script << deaths << log;
        };
        row("sub-modules go behind their parent, theirs behind them", "a7 ba cb d7 -a *", "a b c", "d");
        row("a parent that isn't filed", "az * -z *", "a", "a");
        row("a parent that isn't filed and dies", "az % #3 #1", "", "a");
        row("no parent", "a_ #3 #0 -_ *", "a", "a");
        row("by the wrong key: only the sub-modules go", "a7 ba c7 d8 -a@8 *c *a #1", "b", "a c a c d");
        row("a sub-module that is shared hears no more", "a7 ba ^b -a * #3", "a", "");
        row("all of them; the libraries stay", "a7 ba x * #1 c7 *", "a b", "c");
        row("a dying module that sends reaches all that are left", "a7 b7 c8 da a+*a -a", "a d", "b c d");
        row("a dying module that removes its neighbour", "a7 b7 ca a+-b -a *", "b a c", "");
        row("dying modules that send while all go", "a7 ba a+#1a b+!*b x", "a b", "");
    }

    void ModulesLeave()
    {
        QFETCH(const QString, script);
        Stage stage;
        stage.Play(script);
        QTEST(stage.deaths, "deaths");
        QTEST(stage.log, "log");
    }

    void StockOfAGroup_data()
    {
        QTest::addColumn<QString>("script");
        QTest::addColumn<bool>("kept");
        const auto row = [](const char* name, const char* script, bool kept) {
            QTest::newRow(name) << script << kept;
        };
        row("a frame that was never heard of", "", false);
        row("selected in the frame", "a7 !*a", true);
        row("selected by a sub-module", "a7 ba !*b", true);
        row("null selects nothing", "a7 !*a ?*a", true);
        row("by module id selects nothing", "a7 !#1a", false);
        row("without a frame selects nothing", "a0 b7 !*a !*", false);
        row("another frame", "a8 b7 !*a", false);
        row("another group", "a7.1 b7 !*a", false);
        row("a key without modules", "!>7", true);
        row("one of two leaves", "a7 b7 !*a -a", true);
        row("the last one leaves", "a7 b7 !*a -a -b", false);
        row("a second one comes", "a7 !*a b7", true);
        row("the first one comes", "!>7 a7", false);
        row("all are unloaded", "a7 !*a x", true);
    }

    void StockOfAGroup()
    {
        QFETCH(const QString, script);
        QFETCH(const bool, kept);
        const QString none = QStringLiteral("market= stockcode= stockname=");
        Stage stage;
        stage.Play(script);
        QCOMPARE(stage.Stock(7), kept ? QStringLiteral("market=SH stockcode=600019 stockname=") : none);
        QCOMPARE(stage.Stock(0), none);
        stage.manager.MergeLinkState(0, 7, {{"stockname", "Steel"}, {"market", "SZ"}});  // over what is there
        QCOMPARE(stage.Stock(7), kept ? QStringLiteral("market=SZ stockcode=600019 stockname=Steel")
                                      : QStringLiteral("market=SZ stockcode= stockname=Steel"));
    }
};

PANELRY_TEST(PluginManagerTest)
#include "plugin_manager_test.moc"
