#include "hosting/plugin_manager.h"

#include <QDir>
#include <QTemporaryDir>
#include <filesystem>

#include "hosting/stage.h"
#include "support/rows.h"
#include "support/test.h"

using panelry::test::Rows;
using panelry::test::Stage;

class PluginManagerTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void FolderThatCannotBeRead()
    {
        // The target of a link named "adsplugins", or what stands instead; the operation that fails.
        QCOMPARE(LoadingFails(""), QString());
        QCOMPARE(LoadingFails("nowhere"), QString());
        QCOMPARE(LoadingFails("file"), QStringLiteral("directory_iterator::directory_iterator"));
        QCOMPARE(LoadingFails("adsplugins"), QStringLiteral("exists"));
        QCOMPARE(LoadingFails("with loop"), QStringLiteral("status"));
        QCOMPARE(LoadingFails("gone"), QStringLiteral("current_path()"));
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
    }

    void ModulesLeave_data()
    {
        const Rows<const char*, const char*, const char*> row("script deaths log");
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

    void StockOfAGroup()
    {
        QVERIFY(!IsKept(""));
        QVERIFY(IsKept("a7 !*a"));
        QVERIFY(IsKept("a7 !*a ?*a"));     // null selects nothing
        QVERIFY(!IsKept("a7 !#1a"));       // nor does a message by module id
        QVERIFY(!IsKept("a0 b7 !*a !*"));  // or without a frame
        QVERIFY(!IsKept("a7.1 b7 !*a"));   // another group
        QVERIFY(IsKept("!>7"));            // a key without modules
        QVERIFY(IsKept("a7 b7 !*a -a"));
        QVERIFY(!IsKept("a7 b7 !*a -a -b"));  // the last one has left
        QVERIFY(!IsKept("!>7 a7"));           // the first one comes
        QVERIFY(IsKept("a7 !*a x"));          // all are unloaded
    }

private:
    // Whether frame 7 has the stock that was selected in the script.
    static bool IsKept(const char* script)
    {
        const QString none = QStringLiteral("market= stockcode= stockname=");
        Stage stage;
        stage.Play(QLatin1String(script));
        const QString stock = stage.Stock(7);
        const bool isKept = stock == QLatin1String("market=SH stockcode=600019 stockname=");
        const QString other = stage.Stock(0);
        stage.manager.MergeLinkState(0, 7, {{"stockname", "Steel"}, {"market", "SZ"}});  // over what is there
        const QString merged = QStringLiteral("market=SZ stockcode=%1 stockname=Steel");
        [&] {
            QVERIFY2(isKept || stock == none, qPrintable(stock));
            QCOMPARE(other, none);
            QCOMPARE(stage.Stock(7), merged.arg(QLatin1String(isKept ? "600019" : "")));
        }();
        return isKept;
    }

    static QString LoadingFails(const char* name)
    {
        const QString target = QString::fromLatin1(name);
        const QTemporaryDir folder;
        QDir here(folder.path());
        QDir::setCurrent(here.path());
        here.mkdir(QStringLiteral("with loop"));
        QFile::link(QStringLiteral("x.so"), QStringLiteral("with loop/x.so"));
        static_cast<void>(QFile(QStringLiteral("file")).open(QFile::WriteOnly));
        if (target == QLatin1String("gone")) {
            here.mkdir(target);
            QDir::setCurrent(here.filePath(target));
            here.rmdir(target);
        } else if (!target.isEmpty()) {
            QFile::link(target, QStringLiteral("adsplugins"));
        }
        QString failed;
        PluginManager manager;
        try {
            if (!manager.LoadModules() || manager.CreateLinkedModule(1, 0, 0, "")) {
                failed = QStringLiteral("not empty");
            }
        } catch (const std::filesystem::filesystem_error& error) {  // "filesystem error: operation: ..."
            failed = QString::fromLocal8Bit(error.what()).section(QStringLiteral(": "), 1, 1);
        }
        QDir::setCurrent(QDir::rootPath());
        return failed;
    }
};

PANELRY_TEST(PluginManagerTest)
#include "plugin_manager_test.moc"
