// From the first call of the host to the first panel.

#include <filesystem>

#include "support/host_process.h"
#include "support/test.h"

using panelry::test::HostProcess;

class StartTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void APanelIsMadeStepByStep_data()
    {
        QTest::addColumn<QString>("message");
        QTest::addColumn<QStringList>("steps");
        QTest::newRow("framed, as the typical host asks")
            << R"(notify 0 1001 {"operate":"clicked","need_wrapper":"1","need_display":"1","cmd":"1","bussiness":"{}","init_param":{}})"
            << QStringList{
                   "1001#1 made in reporter kind=3 key=key title=Panel 1001 extra=extra group=0 text=",
                   "1001#1 SetProviders 16 32",
                   "1001#1 SetColorTable",
                   "1001#1 SetConfigTables",
                   R"(1001#1 Initialize 1001 [] [] {"create_source":"panelry","init_param":{},"need_display":"1"})",
                   "1001#1 OnMessage 102 market= stockcode= stockname=",
                   "1001#1 GetWidget",
                   "1001#1 GetInstanceInfo",
                   "callback 2 component_id=1001",
                   "1001#1 shown",
                   "1001#1 OnMessage 1 {}"};
        QTest::newRow("bare; made hidden, shown by the click behind its message")
            << R"(notify 0 1001 {"operate":"clicked","cmd":"0","bussiness":"","init_param":{"z":[1,"字\u0001"],"a":null}})"
            << QStringList{
                   "1001#1 made in reporter kind=3 key=key title=Panel 1001 extra=extra group=0 text=",
                   "1001#1 SetProviders 16 32",
                   "1001#1 SetColorTable",
                   "1001#1 SetConfigTables",
                   R"(1001#1 Initialize 1001 [] [] {"create_source":"panelry","init_param":{"a":null,"z":[1,"字\u0001"]},"need_display":"0"})",
                   "1001#1 OnMessage 102 market= stockcode= stockname=",
                   "1001#1 GetWidget",
                   "callback 2 component_id=1001",
                   "1001#1 OnMessage 0 ",
                   "1001#1 shown"};
        QTest::newRow("without a widget")
            << R"(notify 0 1002 {"operate":"notify","need_wrapper":"1","need_display":"1","cmd":"1"})"
            << QStringList{
                   "1002#1 made in reporter kind=3 key=key title=Panel 1002 extra=extra group=0 text=",
                   "1002#1 SetProviders 16 32",
                   "1002#1 SetColorTable",
                   "1002#1 SetConfigTables",
                   R"(1002#1 Initialize 1002 [] [] {"create_source":"panelry","init_param":null,"need_display":"1"})",
                   "1002#1 OnMessage 102 market= stockcode= stockname=",
                   "1002#1 GetWidget",
                   "1002#1 GetInstanceInfo",
                   "callback 2 component_id=1002",
                   R"(1002#1 OnMessage 1 {"operate":"notify","need_wrapper":"1","need_display":"1","cmd":"1"})"};
    }

    void APanelIsMadeStepByStep()
    {
        QFETCH(QString, message);
        QFETCH(QStringList, steps);
        HostProcess host;
        QVERIFY(host.StartAndInit());
        host.Do(message);
        QCOMPARE(host.Settle().join('\n'), steps.join('\n').replace("#1", "#2"));  // the marker was the first
    }

    void TheHostNamesTheFrame_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("frame");
        QTest::newRow("no name: the module's title") << ""
                                                     << "title=Panel 1001 label=Panel 1001 name= clone=shown";
        QTest::newRow("a name, taken as it stands")
            << "<b>行情</b>"
            << "title=Panel 1001 label=<b>行情</b> name=<b>行情</b> clone=shown";
    }

    void TheHostNamesTheFrame()
    {
        QFETCH(QString, name);
        QFETCH(QString, frame);
        HostProcess host;
        QVERIFY(host.StartAndInit());
        host.Do({"name " + name, R"(notify 0 1001 {"operate":"clicked","need_wrapper":"1"})"});
        QCOMPARE(host.Ask(1001, "frame"), "containerwidget 300x200 " + frame);
    }

    void MessagesParkedBeforeTheStartArriveInCallOrder()
    {
        HostProcess host;
        host.AddModules("reporter");
        QVERIFY(host.Start());
        // The start is held where the libraries are loaded: all that follows is parked.
        host.Do({"when loading reporter -> hold", "init 16 32 1"});
        QVERIFY(!host.Wait("held").isNull());
        host.Do({"notify 7 1002 dropped", R"(notify 0 1002 {"operate":"notify","cmd":"1","bussiness":"one"})",
                 "notify 1 1002 two", "notify 1 1002 three", "notify -1 1002 dropped",
                 R"(notify 0 1002 {"operate":"notify","cmd":"4","bussiness":"four"})",
                 "notify 7 1002 dropped", R"(notify 0 -1 {"operate":"notify","cmd":"5","bussiness":"five"})",
                 "notify 1 -1 six", "release"});
        QCOMPARE(
            host.SettleBriefly().join(", "),
            QString(
                "1002#1 made, 1002#1 OnMessage 1 one, 1002#1 OnMessage 113 two, 1002#1 OnMessage 114 two, "
                "1002#1 OnMessage 113 three, 1002#1 OnMessage 114 three, 1002#1 OnMessage 4 four, "
                "1002#1 OnMessage 5 five, 1002#1 OnMessage 114 six"));
    }

    void WhatIsParkedDuringTheFirstDrainGoesOutAheadOfTheNextMessage()
    {
        HostProcess host;
        host.AddModules("reporter");
        QVERIFY(host.Start());
        host.Do({"when OnMessage 114 first -> hold", "notify 1 1002 first", "init 16 32 1"});
        QVERIFY(!host.Wait("held").isNull());
        host.Do({"notify 1 1002 parked", "release"});
        QCOMPARE(host.SettleBriefly(),
                 QStringList({"1002#1 OnMessage 113 parked", "1002#1 OnMessage 114 parked"}));
    }

    void AMessageBeforeInitStartsThePanelsAndInitReplacesItsValues()
    {
        HostProcess host;
        host.AddModules("reporter");
        QVERIFY(host.Start());
        host.Do("notify 1 1002 early");
        QVERIFY(!host.Wait("SetProviders 0 0").isNull());
        QVERIFY(!host.Wait("OnMessage 114 early").isNull());
        host.Settle();  // the start is over: nothing is parked any more
        host.Do({"usage", "init 1 2 1", "usage"});
        const QString before = host.Wait("usage").section(' ', 1, 1);
        QCOMPARE(host.Wait("usage").section(' ', 1, 1), before);  // no second thread
        host.Do("notify 1 1001 later");
        QVERIFY(!host.Wait("SetProviders 1 2").isNull());
        QVERIFY(host.Settle().contains("callback 2 component_id=1001"));
        host.Do({"init 3 4 0", "notify 0 -1 destroyui", "notify 1 1001 last"});
        QVERIFY(!host.Wait("SetProviders 3 4").isNull());
        QVERIFY(!host.Settle().join('\n').contains("callback"));
    }

    void OnlyRealModuleLibrariesAreLoaded_data()
    {
        QTest::addColumn<QString>("library");
        QTest::addColumn<QString>("fileName");
        QTest::addColumn<int>("id");
        QTest::addColumn<bool>("loaded");
        QTest::newRow("any name") << "other"
                                  << "odd name 字.so" << 2001 << true;
        QTest::newRow("extension in capitals") << "other"
                                               << "other.SO" << 2001 << false;
        QTest::newRow("version behind the extension") << "other"
                                                      << "other.so.1" << 2001 << false;
        QTest::newRow("nothing but the extension") << "other"
                                                   << ".so" << 2001 << false;
        QTest::newRow("dangling link") << "gone"
                                       << "gone.so" << 2001 << false;
        QTest::newRow("no GetModuleInfo") << "no_info"
                                          << "" << 4001 << false;
        QTest::newRow("no CreateModule") << "no_create"
                                         << "" << 4001 << false;
        QTest::newRow("nothing on offer") << "empty"
                                          << "" << 0 << false;
    }

    void OnlyRealModuleLibrariesAreLoaded()
    {
        QFETCH(QString, library);
        QFETCH(QString, fileName);
        QFETCH(int, id);
        QFETCH(bool, loaded);
        HostProcess host;
        host.AddModules(library, fileName);
        host.Write("adsplugins/folder.so/stray.so", "a folder with the right ending");
        host.Write("adsplugins/text.so", "not a library");
        QVERIFY(host.Start());
        host.AddModules("reporter");
        host.Do("init 16 32 1");
        host.Do(QStringLiteral("notify 1 %1 {}").arg(id));
        QCOMPARE(host.Settle().contains(QStringLiteral("callback 2 component_id=%1").arg(id)), loaded);
    }

    void TheFirstLibraryKeepsAnIdOfferedTwice()
    {
        HostProcess host;
        host.AddModules("other");
        host.AddModules("reporter");
        const std::filesystem::directory_iterator first((host.Folder() + "/adsplugins").toStdString());
        QVERIFY(host.Start());
        host.Do({"notify 1 3001 {}", "init 16 32 1"});
        const QString made = host.Wait("3001#1 made in ");
        QVERIFY2(made.contains("in " + QString::fromStdString(first->path().stem().string())),
                 qPrintable(made));
    }
};

PANELRY_TEST(StartTest)
#include "start_test.moc"
