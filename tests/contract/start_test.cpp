// From the first call of the host to the first panel.

#include <filesystem>

#include "support/host_process.h"
#include "support/rows.h"
#include "support/test.h"

using namespace panelry::test;

class StartTest : public Test
{
    Q_OBJECT

private Q_SLOTS:
    // The marker's module was the first, so this one is the second.
    void APanelIsMadeStepByStep_data()
    {
        const Rows<int, QString, QString, QStringList> row("id message creation steps");
        row("framed, as the typical host asks", 1001,
            Operate(1001, "clicked",
                    R"("need_wrapper":"1","need_display":"1","cmd":"1","bussiness":"{}","init_param":{})"),
            R"({"create_source":"panelry","init_param":{},"need_display":"1"})",
            {"1001#2 GetInstanceInfo", "callback 2 component_id=1001", "1001#2 shown",
             "1001#2 OnMessage 1 {}"});
        row("bare; made hidden, shown by the click behind its message", 1001,
            Operate(1001, "clicked",
                    R"("cmd":"0","bussiness":"","init_param":{"z":[1,"字\u0001"],"a":null})"),
            R"({"create_source":"panelry","init_param":{"a":null,"z":[1,"字\u0001"]},"need_display":"0"})",
            {"callback 2 component_id=1001", "1001#2 OnMessage 0 ", "1001#2 shown"});
        row("without a widget", 1002, Operate(1002, "notify", R"("need_wrapper":"1","cmd":"1")"),
            R"({"create_source":"panelry","init_param":null,"need_display":"0"})",
            {"1002#2 GetInstanceInfo", "callback 2 component_id=1002",
             R"(1002#2 OnMessage 1 {"operate":"notify","need_wrapper":"1","cmd":"1"})"});
    }

    void APanelIsMadeStepByStep()
    {
        QFETCH(int, id);
        QFETCH(QString, message);
        QFETCH(QString, creation);
        QFETCH(QStringList, steps);
        const QString module = QString::number(id) + "#2 ";
        const QString record = "kind=3 key=key title=Panel %1 extra=extra group=0 text=";
        const QStringList first{module + "made in reporter " + record.arg(id),
                                module + "SetProviders 16 32",
                                module + "SetColorTable",
                                module + "SetConfigTables",
                                module + "Initialize " + QString::number(id) + " [] [] " + creation,
                                module + "OnMessage 102 market= stockcode= stockname=",
                                module + "GetWidget"};
        HostProcess host;
        QVERIFY(host.StartAndInit());
        host.Do(message);
        QCOMPARE(host.Settle().join('\n'), (first + steps).join('\n'));
    }

    void TheHostNamesTheFrame()
    {
        HostProcess host;
        QVERIFY(host.StartAndInit());
        const std::vector<std::pair<QString, QString>> names{
            {"name ", "title=Panel 1001 label=Panel 1001 name="},  // no name: the module's title
            {"name <b>行情</b>", "title=Panel 1001 label=<b>行情</b> name=<b>行情</b>"}};
        for (const auto& [command, titles] : names) {
            host.Do({command, "notify 0 -1 destroyui", Operate(1001, "clicked", R"("need_wrapper":"1")")});
            QCOMPARE(host.Ask(1001, "titles"), titles);
        }
    }

    void MessagesParkedBeforeTheStartArriveInCallOrder()
    {
        HostProcess host;
        QVERIFY(host.Start());
        // The start is held where the libraries are loaded: all that follows is parked.
        QVERIFY(host.Do({"when loading reporter -> hold", "init 16 32 1", "wait held",
                         "notify 7 1002 dropped", Operate(1002, "notify", R"("cmd":"1","bussiness":"one")"),
                         "notify 1 1002 two", "notify 1 1002 three", "notify -1 1002 dropped",
                         Operate(1002, "notify", R"("cmd":"4","bussiness":"four")"), "notify 1 -1 five",
                         "release"}));
        QCOMPARE(host.SettleBriefly().join(", ").remove("1002#1 "),
                 "made, OnMessage 1 one, OnMessage 113 two, OnMessage 114 two, OnMessage 113 three, "
                 "OnMessage 114 three, OnMessage 4 four, OnMessage 114 five");
    }

    void WhatIsParkedDuringTheFirstDrainGoesOutAheadOfTheNextMessage()
    {
        HostProcess host;
        QVERIFY(host.Start());
        QVERIFY(host.Do({"when OnMessage 114 first -> hold", "notify 1 1002 first", "init 16 32 1",
                         "wait held", "notify 1 1002 parked", "release"}));
        QCOMPARE(host.SettleBriefly(),
                 QStringList({"1002#1 OnMessage 113 parked", "1002#1 OnMessage 114 parked"}));
    }

    void AMessageBeforeInitStartsThePanelsAndInitReplacesItsValues()
    {
        HostProcess host;
        QVERIFY(host.Start());
        QVERIFY(host.Do({"notify 1 1002 early", "wait SetProviders 0 0", "wait OnMessage 114 early"}));
        host.Settle();  // the start is over: nothing is parked any more
        host.Do({"usage", "init 1 2 1", "usage"});
        const QString before = host.Wait("usage").section(' ', 1, 1);
        QCOMPARE(host.Wait("usage").section(' ', 1, 1), before);  // no second thread
        QVERIFY(host.Do({"notify 1 1001 later", "wait SetProviders 1 2"}));
        QVERIFY(host.Settle().contains("callback 2 component_id=1001"));
        QVERIFY(
            host.Do({"init 3 4 0", "notify 0 -1 destroyui", "notify 1 1001 last", "wait SetProviders 3 4"}));
        QVERIFY(!host.Settle().join('\n').contains("callback"));
    }

    void OnlyRealModuleLibrariesAreLoaded_data()
    {
        const Rows<QString, QString, int, bool> row("library fileName id loaded");
        row("any name", "other", "odd name 字.so", 2001, true);
        row("extension in capitals", "other", "other.SO", 2001, false);
        row("version behind the extension", "other", "other.so.1", 2001, false);
        row("nothing but the extension", "other", ".so", 2001, false);
        row("dangling link", "gone", "gone.so", 2001, false);
        row("no GetModuleInfo", "no_info", "", 4001, false);
        row("no CreateModule", "no_create", "", 4001, false);
        row("nothing on offer", "empty", "", 0, false);
    }

    void OnlyRealModuleLibrariesAreLoaded()
    {
        QFETCH(QString, library);
        QFETCH(QString, fileName);
        QFETCH(int, id);
        HostProcess host;
        host.AddModules(library, fileName);
        host.Write("adsplugins/folder.so/stray.so", "a folder with the right ending");
        host.Write("adsplugins/text.so", "not a library");
        QVERIFY(host.Start());
        host.Do({"init 16 32 1", QStringLiteral("notify 1 %1 {}").arg(id)});
        QTEST(host.Settle().contains(QStringLiteral("callback 2 component_id=%1").arg(id)), "loaded");
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
