// The end of the panels, in whatever state they are, and the lives that follow.

#include "support/host_process.h"
#include "support/rows.h"
#include "support/test.h"

using namespace panelry::test;

namespace
{

constexpr char kFramed[] = R"(notify 0 1001 {"operate":"clicked","need_wrapper":"1"})";
constexpr char kFramedOther[] = R"(notify 0 2001 {"operate":"clicked","need_wrapper":"1"})";
constexpr char kBare[] = R"(notify 0 2001 {"operate":"clicked"})";
constexpr char kObject[] = R"(notify 1 1002 {})";

}  // namespace

class EndTest : public Test
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
        QCOMPARE(ends.mid(0, 2).join(", "), "1001 hidden, 2001 ~widget");
        ends.sort();
        QCOMPARE(ends.join(", "),
                 "1001 hidden, 1001 ~module, 1001 ~widget, 1002 ~module, 1003 ~module, 2001 ~module, "
                 "2001 ~widget, 3001 ~module, 3001 ~widget");
        QVERIFY(host.End({"uninit"}));
    }

    // Each row is left to end at whatever moment its messages reach; after it the host lives and can begin
    // again.
    void UninitReturnsFromAnyState_data()
    {
        const Rows<bool, QStringList> row("started commands");
        const QString returned = "wait uninit returned";
        const QString inside = "when callback 205 now -> ";
        const QString speak = Tell(1001, "send 205 -1 now");
        const QString lastWords = Tell(1001, "lastwords now");

        row("never started", false, {"uninit", "uninit"});
        row("while it starts, with parked messages", false, {kObject, kFramed, "init 16 32 1", "uninit"});
        row("asked from inside the loading of modules", false,
            {"when loading -> uninit", "init 16 32 1", kFramed, returned, "uninit"});
        row("quit as a parked message", false,
            {"when loading -> hold", "init 16 32 1", "wait held", kFramed, "notify 0 1 quit", kBare,
             "release", "uninit"});
        row("twice", true, {kFramed, "uninit", "uninit"});
        row("from four threads at once", true,
            {kFramed, "thread uninit", "thread uninit", "thread uninit", "uninit", returned, returned,
             returned, returned});
        row("inside a callback", true, {kFramed, inside + "uninit", speak, returned, "uninit"});
        row("inside the asking for a title, of a module without a widget too", true,
            {"when callback 2 component_id=1002 -> uninit", kFramed, kObject, returned, "uninit"});
        row("inside the last words of a module", true,
            {kBare, kFramed, lastWords, inside + "uninit", "uninit"});
        row("a message to the panels inside the last words", true,
            {kFramed, lastWords, inside + kFramed, "uninit"});
        row("quit sent by the host, with any id", true, {kFramed, kBare, "notify 0 1001 quit", "uninit"});
        row("quit from inside a callback", true, {kFramed, inside + "notify 0 -1 quit", speak, "uninit"});
        row("a module ends the application", true,
            {kFramed, kBare, Tell(1001, "quit"), "wait ~module", "uninit"});
        row("inside a nested loop", true, {kFramed, kObject, Tell(1001, "nest"), "wait nested", "uninit"});
        row("two loops deep, destroyui on its way", true,
            {kFramed, kObject, Tell(1001, "nest"), "wait nested", Tell(1002, "nest"), "wait nested",
             "notify 0 -1 destroyui", kFramed, "uninit"});
    }

    void UninitReturnsFromAnyState()
    {
        QFETCH(bool, started);
        QFETCH(QStringList, commands);
        HostProcess host;
        host.AddModules("other");
        QVERIFY(started ? host.StartAndInit() : host.Start());
        QVERIFY(host.Do(commands));
        QVERIFY(host.Do({"name over", "usage", "init 16 32 1", kFramed, "wait usage", "wait 1001#"}));
        // Nothing of the life before is left: one panel, and the marker of this test.
        host.Settle();
        QCOMPARE(host.Ask(1001, "alive"), "2 modules 1 widgets");
        QVERIFY(host.End({"uninit"}));
    }

    void MessagesBehindADestroyUiKeepTheirOrder()
    {
        HostProcess host;
        QVERIFY(host.StartAndInit());
        QVERIFY(host.Do({kObject, Tell(1002, "nest"), "wait nested", "notify 0 -1 destroyui",
                         Tell(1001, "nest"), "notify 1 1001 second", "release", "wait 1001#", "wait nested",
                         "notify 1 1001 third", "release"}));
        QString order;
        for (const QString& line : host.Settle().filter("OnMessage 114")) {
            order += line.section(' ', -1) + ' ';
        }
        QCOMPARE(order, "second third ");
        QVERIFY(host.End({"uninit"}));
    }

    // In each row the module is on the stack when its window goes. The waits: what it says before its end.
    void AModuleOutlivesItsOwnCalls_data()
    {
        const Rows<QStringList> row("commands");
        const QStringList inItsDialog{kFramed, Tell(1001, "nest"), "wait nested"};
        row("closed inside its dialog", inItsDialog + QStringList{Tell(1001, "press closebtn_titlebar"),
                                                                  "release", "wait 1001#2 left the nest"});
        row("closes its window inside its dialog",
            inItsDialog + QStringList{Tell(1001, "close"), "release", "wait 1001#2 left the nest"});
        row("closes its window in an event", {kFramed, Tell(1001, "soon close"), "wait 1001#2 over"});
        row("the host takes all panels down while one sends to another",
            {kFramed, kFramedOther, "when OnMessage 5 -> notify 0 -1 destroyui",
             Tell(1001, "soon send 5 2001 x"), "wait 1001#2 sent 5"});
        row("closes as it comes up",
            {R"(notify 0 1001 {"operate":"clicked","need_wrapper":"1","need_display":"1",)"
             R"("init_param":"close as shown"})"});
    }

    void AModuleOutlivesItsOwnCalls()
    {
        QFETCH(QStringList, commands);
        HostProcess host;
        host.AddModules("other");
        QVERIFY(host.StartAndInit());
        QVERIFY(host.Do(commands));
        // It can be opened again.
        QVERIFY(host.Do({"wait 1001#2 ~module", kFramed, "wait made"}));
        QVERIFY(host.End({"uninit"}));
    }

    void WhatComesBehindQuitIsForgotten()
    {
        HostProcess host;
        QVERIFY(host.StartAndInit());
        // All queued while the panels are held: the rest is delivered in the same breath as "quit".
        QVERIFY(
            host.Do({"when OnMessage 114 held -> hold", "notify 1 1002 held", "wait held", "notify 0 7 quit",
                     "notify 1 1002 dispatched", R"(notify 0 1001 {"operate":"clicked"})", "notify 1 -1 all",
                     "release", "wait 1002#2 ~module", "notify 1 1002 parked", "uninit",
                     "wait uninit returned", "notify 1 1001 new life"}));
        const QStringList lines = host.Settle();
        QCOMPARE(lines.filter("OnMessage 113"), QStringList("1001#3 OnMessage 113 new life"));
    }

    void AHostMayLeaveItsMainFunctionWithoutUninit_data()
    {
        const Rows<QStringList> row("commands");
        const QString init = "init 16 32 1";
        row("nothing started", {});
        row("while it starts, with parked messages", {kFramed, kObject, init});
        row("while modules are loaded", {"when loading -> hold", init, "wait held"});
        row("panels are open, a refresh is on its way", {init, kObject, kFramed, "wait shown", "cancel"});
        row("in a callback", {init, "when callback 2 -> hold", kFramed, "wait held"});
        row("in a nested loop", {init, kFramed, Tell(1001, "nest"), "wait nested"});
        row("after quit", {init, kFramed, "notify 0 -1 quit", "wait ~widget"});
        row("an exit function calls Uninit", {init, "uninit at exit", kObject, kFramed, "wait shown"});
    }

    void AHostMayLeaveItsMainFunctionWithoutUninit()
    {
        QFETCH(QStringList, commands);
        HostProcess host;
        // The refresh timers run into the end of the process.
        host.Write("sysconfig/config.json",
                   R"({"system":{"auto_refresh_interval":"1","auto_refresh_afterweituo":"1"}})");
        // Such a host joins no thread.
        host.Set("TSAN_OPTIONS", qEnvironmentVariable("TSAN_OPTIONS") + ":report_thread_leaks=0");
        QVERIFY(host.Start());
        QVERIFY(host.Do(commands));
        QVERIFY(host.End({}, 7));
    }
};

PANELRY_TEST(EndTest)
#include "end_test.moc"
