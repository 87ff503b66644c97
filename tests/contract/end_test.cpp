// The end of the panels, in whatever state they are, and the lives that follow.

#include "support/host_process.h"
#include "support/test.h"

using panelry::test::HostProcess;

namespace
{

constexpr char kFramed[] = R"(notify 0 1001 {"operate":"clicked","need_wrapper":"1"})";
constexpr char kFramedOther[] = R"(notify 0 2001 {"operate":"clicked","need_wrapper":"1"})";
constexpr char kBare[] = R"(notify 0 2001 {"operate":"clicked"})";
constexpr char kObject[] = R"(notify 1 1002 {})";

QString Tell(int id, const char* command)
{
    return QStringLiteral(R"(notify 0 %1 {"operate":"notify","cmd":"900","bussiness":"%2"})")
        .arg(id)
        .arg(command);
}

}  // namespace

class EndTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void UninitDestroysAllPanelsWindowsFirst()
    {
        HostProcess host;
        host.AddModules("other");
        QVERIFY(host.StartAndInit());
        host.Do({kFramed, kBare, kObject, R"(notify 0 1003 {"operate":"clicked"})", Tell(1001, "sub 3001")});
        host.Settle();
        host.Do({"uninit", "notify 1 1001 again"});
        QStringList ends;
        for (QString line = host.Wait("#"); !line.contains("made"); line = host.Wait("#")) {
            ends.append(line.replace(QRegularExpression("#\\d+ "), " "));
        }
        QCOMPARE(ends.mid(0, 2).join(", "), QString("1001 hidden, 2001 ~widget"));
        ends.sort();
        QCOMPARE(ends.join(", "),
                 QString("1001 hidden, 1001 ~module, 1001 ~widget, 1002 ~module, 1003 ~module, 2001 ~module, "
                         "2001 ~widget, 3001 ~module, 3001 ~widget"));
        QVERIFY(host.End({"uninit"}));
    }

    // Each row is left to end at whatever moment its messages reach; after it the host lives and can begin
    // again.
    void UninitReturnsFromAnyState_data()
    {
        QTest::addColumn<bool>("started");
        QTest::addColumn<QStringList>("commands");  // after each "wait ..." the line has come
        const QString returned = "wait uninit returned";
        const QString quitInside = "when callback 205 now -> ";
        QTest::newRow("never started") << false << QStringList{"uninit", "uninit"};
        QTest::newRow("while it starts") << false << QStringList{"init 16 32 1", "uninit"};
        QTest::newRow("while it starts, with parked messages")
            << false << QStringList{kObject, kFramed, "init 16 32 1", "uninit"};
        QTest::newRow("asked from inside the loading of modules")
            << false << QStringList{"when loading -> uninit", "init 16 32 1", kFramed, returned, "uninit"};
        QTest::newRow("twice") << true << QStringList{kFramed, "uninit", "uninit"};
        QTest::newRow("from four threads at once")
            << true << QStringList{kFramed,  "thread uninit", "thread uninit", "thread uninit", "uninit",
                                   returned, returned,        returned,        returned};
        QTest::newRow("inside a callback")
            << true
            << QStringList{kFramed, quitInside + "uninit", Tell(1001, "send 205 -1 now"), returned, "uninit"};
        QTest::newRow("inside the asking for a title, of a module without a widget too")
            << true
            << QStringList{"when callback 2 component_id=1002 -> uninit", kFramed, kObject, returned,
                           "uninit"};
        QTest::newRow("inside the last words of a module")
            << true
            << QStringList{kBare, kFramed, Tell(1001, "lastwords now"), quitInside + "uninit", "uninit"};
        QTest::newRow("a message to the panels inside the last words")
            << true << QStringList{kFramed, Tell(1001, "lastwords now"), quitInside + kFramed, "uninit"};
        QTest::newRow("quit sent by the host, with any id")
            << true << QStringList{kFramed, kBare, "notify 0 1001 quit", "uninit"};
        QTest::newRow("quit from inside a callback")
            << true
            << QStringList{kFramed, quitInside + "notify 0 -1 quit", Tell(1001, "send 205 -1 now"), "uninit"};
        QTest::newRow("a module ends the application")
            << true << QStringList{kFramed, kBare, Tell(1001, "quit"), "wait ~module", "uninit"};
        QTest::newRow("inside a nested loop")
            << true << QStringList{kFramed, kObject, Tell(1001, "nest"), "wait nested", "uninit"};
        QTest::newRow("two loops deep, destroyui on its way") << true
                                                              << QStringList{kFramed,
                                                                             kObject,
                                                                             Tell(1001, "nest"),
                                                                             "wait nested",
                                                                             Tell(1002, "nest"),
                                                                             "wait nested",
                                                                             "notify 0 -1 destroyui",
                                                                             kFramed,
                                                                             "uninit"};
        QTest::newRow("quit as a parked message")
            << false << QStringList{"when loading -> hold", "init 16 32 1", "wait held", kFramed,
                                    "notify 0 1 quit",      kBare,          "release",   "uninit"};
    }

    void UninitReturnsFromAnyState()
    {
        QFETCH(bool, started);
        QFETCH(QStringList, commands);
        HostProcess host;
        host.AddModules("other");
        host.AddModules("reporter");
        QVERIFY(started ? host.StartAndInit() : host.Start());
        for (const QString& command : commands) {
            if (command.startsWith("wait ")) {
                QVERIFY(!host.Wait(command.mid(5)).isNull());
            } else {
                host.Do(command);
            }
        }
        host.Do("name over");
        host.Do({"usage", "init 16 32 1", kFramed});
        QVERIFY(!host.Wait("usage").isNull());
        QVERIFY(!host.Wait("1001#").isNull());
        // Nothing of the life before is left: one panel, and the marker of this test.
        host.Settle();
        QCOMPARE(host.Ask(1001, "alive"), QString("2 modules 1 widgets"));
        QVERIFY(host.End({"uninit"}));
    }

    // Sent by a host that hears of the panel's hiding, before the last module is gone.
    void WhatComesDuringDestroyUiWaitsForItsEnd()
    {
        HostProcess host;
        host.AddModules("other");
        QVERIFY(host.StartAndInit());
        host.Do({kFramed, kObject});
        host.Settle();
        host.Do({QString("when hidden -> ") + kFramedOther, "notify 0 -1 destroyui"});
        const QStringList lines = host.Settle();
        QVERIFY2(lines.indexOf(QRegularExpression("1002#\\d+ ~module")) <
                     lines.indexOf(QRegularExpression("2001#\\d+ made.*")),
                 host.Story());
        host.Do(R"(notify 0 -1 {"operate":"hide"})");
        QVERIFY(!host.Wait("2001#").isNull());
        QCOMPARE(host.Ask(2001, "alive"), QString("1 modules 1 widgets"));
        QVERIFY(host.End({"uninit"}));
    }

    void MessagesBehindADestroyUiKeepTheirOrder()
    {
        HostProcess host;
        QVERIFY(host.StartAndInit());
        host.Do({kObject, Tell(1002, "nest")});
        QVERIFY(!host.Wait("nested").isNull());
        host.Do({"notify 0 -1 destroyui", Tell(1001, "nest"), "notify 1 1001 second", "release"});
        QVERIFY(!host.Wait("1001#").isNull());
        QVERIFY(!host.Wait("nested").isNull());
        host.Do({"notify 1 1001 third", "release"});
        QString order;
        for (const QString& line : host.Settle().filter("OnMessage 114")) {
            order += line.section(' ', -1) + ' ';
        }
        QCOMPARE(order, QString("second third "));
        QVERIFY(host.End({"uninit"}));
    }

    // In each row the module is on the stack when its window goes.
    void AModuleOutlivesItsOwnCalls_data()
    {
        QTest::addColumn<QStringList>("commands");
        QTest::addColumn<QString>("last");  // what the module says before its end
        QTest::newRow("closed inside its dialog")
            << QStringList{Tell(1001, "nest"), "wait nested", Tell(1001, "press closebtn_titlebar"),
                           "release"}
            << "left the nest";
        QTest::newRow("closes its window inside its dialog")
            << QStringList{Tell(1001, "nest"), "wait nested", Tell(1001, "close"), "release"}
            << "left the nest";
        QTest::newRow("closes its window in an event") << QStringList{Tell(1001, "soon close")} << "over";
        QTest::newRow("the host takes all panels down while one sends to another")
            << QStringList{"when OnMessage 5 -> notify 0 -1 destroyui", Tell(1001, "soon send 5 2001 x")}
            << "sent 5";
    }

    void AModuleOutlivesItsOwnCalls()
    {
        QFETCH(QStringList, commands);
        QFETCH(QString, last);
        HostProcess host;
        host.AddModules("other");
        QVERIFY(host.StartAndInit());
        host.Do({kFramed, kFramedOther});
        host.Settle();
        for (const QString& command : commands) {
            if (command.startsWith("wait ")) {
                QVERIFY(!host.Wait(command.mid(5)).isNull());
            } else {
                host.Do(command);
            }
        }
        QVERIFY2(!host.Wait("1001#2 " + last).isNull(), host.Story());
        QVERIFY2(!host.Wait("1001#2 ~module").isNull(), host.Story());
        QVERIFY(host.End({"uninit"}));
    }

    void APanelThatClosesAsItComesUpCanBeOpenedAgain()
    {
        HostProcess host;
        QVERIFY(host.StartAndInit());
        host.Do(R"(notify 0 1001 {"operate":"clicked","need_wrapper":"1","need_display":"1",)"
                R"("init_param":"close as shown"})");
        QVERIFY2(!host.Wait("1001#2 ~module").isNull(), host.Story());
        host.Do(kFramed);
        QVERIFY2(!host.Wait("made").isNull(), host.Story());
        QVERIFY(host.End({"uninit"}));
    }

    void WhatComesBehindQuitIsForgotten()
    {
        HostProcess host;
        QVERIFY(host.StartAndInit());
        host.Do({"when OnMessage 114 held -> hold", "notify 1 1002 held"});
        QVERIFY(!host.Wait("held").isNull());
        // All queued while the panels are held: the rest is delivered in the same breath as "quit".
        host.Do({"notify 0 7 quit", "notify 1 1002 dispatched", R"(notify 0 1001 {"operate":"clicked"})",
                 "notify 1 -1 all", "release"});
        QVERIFY(!host.Wait("1002#2 ~module").isNull());
        host.Do({"notify 1 1002 parked", "uninit"});
        QVERIFY(!host.Wait("uninit returned").isNull());
        host.Do("notify 1 1001 new life");
        const QStringList lines = host.Settle();
        QCOMPARE(lines.filter("OnMessage 113"), QStringList("1001#3 OnMessage 113 new life"));
    }

    void AHostMayLeaveItsMainFunctionWithoutUninit_data()
    {
        QTest::addColumn<QStringList>("commands");
        QTest::newRow("nothing started") << QStringList();
        QTest::newRow("while it starts") << QStringList{"init 16 32 1"};
        QTest::newRow("while it starts, with parked messages")
            << QStringList{kFramed, kObject, "init 16 32 1"};
        QTest::newRow("while modules are loaded")
            << QStringList{"when loading -> hold", "init 16 32 1", "wait held"};
        QTest::newRow("panels are open") << QStringList{"init 16 32 1", kObject, kFramed, "wait shown"};
        QTest::newRow("in a callback")
            << QStringList{"init 16 32 1", "when callback 2 -> hold", kFramed, "wait held"};
        QTest::newRow("in a nested loop")
            << QStringList{"init 16 32 1", kFramed, Tell(1001, "nest"), "wait nested"};
        QTest::newRow("after quit") << QStringList{"init 16 32 1", kFramed, "notify 0 -1 quit",
                                                   "wait ~widget"};
        QTest::newRow("an exit function calls Uninit")
            << QStringList{"init 16 32 1", "uninit at exit", kObject, kFramed, "wait shown"};
    }

    void AHostMayLeaveItsMainFunctionWithoutUninit()
    {
        QFETCH(QStringList, commands);
        HostProcess host;
        host.AddModules("reporter");
        // Such a host joins no thread.
        host.Set("TSAN_OPTIONS", qEnvironmentVariable("TSAN_OPTIONS") + ":report_thread_leaks=0");
        QVERIFY(host.Start());
        for (const QString& command : commands) {
            if (command.startsWith("wait ")) {
                QVERIFY(!host.Wait(command.mid(5)).isNull());
            } else {
                host.Do(command);
            }
        }
        QVERIFY(host.End({}, 7));
    }
};

PANELRY_TEST(EndTest)
#include "end_test.moc"
