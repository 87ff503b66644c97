// What the panels see of the host's messages, and the host of the panels.

#include "support/host_process.h"
#include "support/rows.h"
#include "support/test.h"

using namespace panelry::test;

namespace
{

// The lines in one, without the numbers of the objects; the most frequent panel has a short name.
QString Short(const QStringList& lines)
{
    static const QRegularExpression handle("callback 1 [1-9]\\d*\\b");
    QString text = lines.join(", ").replace(QRegularExpression("#\\d+ "), " ").replace("1001 ", "1 ");
    return text.replace(handle, "callback 1 N");
}

constexpr char kFramed[] = R"("need_wrapper":"1","need_display":"1")";

}  // namespace

class DispatchTest : public Test
{
    Q_OBJECT

private Q_SLOTS:
    void Operations_data()
    {
        // `opened` is sent first and seen by nobody.
        const Rows<QStringList, QStringList, QString> row("opened messages seen");
        const QStringList none;
        const QStringList one{Operate(1001, "clicked")};
        const QStringList framed{Operate(1001, "clicked", kFramed)};
        const QStringList object{"notify 1 1002 {}"};
        // One bare, one framed, one without a widget, one that "show" and "hide" to all pass over.
        const QStringList four{Operate(1001, "clicked"), Operate(2001, "clicked", kFramed), object[0],
                               Operate(3001, "clicked", R"("ignord_lock_hide":"1","always_display":"1")")};

        row("clicks toggle", one, {one[0], one[0]}, "1 hidden, 1 shown");
        row("always_display", one, {Operate(1001, "clicked", R"("always_display":"1")"), one[0]}, "1 hidden");
        row("made hidden; the next click shows", none,
            {Operate(1001, "clicked", R"("need_wrapper":"1","need_display":"0")"), one[0]},
            "1 made, 1 shown");
        row("one flag for all components: after a hide of another one, a click leaves this one shown", one,
            {Operate(9, "hide"), one[0], one[0]}, "1 hidden");
        row("a click sends before it shows, with the id and text of the message", one,
            {Operate(1001, "clicked", R"("cmd":"12","bussiness":"b")")}, "1 OnMessage 12 b, 1 hidden");
        row("a click on an unknown component opens nothing, but decides the flag", one,
            {Operate(77, "clicked", R"("need_display":"0")"), one[0]}, "");

        row("an addressed hide hides first and sends after; so does show", framed,
            {Operate(1001, "hide", R"("cmd":"3","bussiness":"x")"),
             Operate(1001, "show", R"("cmd":"4","bussiness":"y")")},
            "1 hidden, 1 OnMessage 3 x, 1 shown, 1 OnMessage 4 y");
        row("any negative id means all: sends first and hides after, in the order of the ids", four,
            {Operate(-7, "hide", R"("cmd":"3","bussiness":"x")")},
            "1 OnMessage 3 x, 1 hidden, 1002 OnMessage 3 x, 2001 OnMessage 3 x, 2001 hidden, "
            "3001 OnMessage 3 x");
        row("addressed, the lock doesn't hold", four, {Operate(3001, "hide", R"("cmd":"0","bussiness":"")")},
            "3001 hidden, 3001 OnMessage 0 ");
        row("without cmd show and hide send -1 and the whole text", one,
            {Operate(1001, "hide"), Operate(-1, "show")},
            R"(1 hidden, 1 OnMessage -1 {"operate":"hide"}, 1 OnMessage -1 {"operate":"show"}, 1 shown)");
        row("hide of what isn't open opens nothing", none, {Operate(1001, "hide"), Operate(1001, "show")},
            "");

        row("notify sends and leaves the windows alone", four,
            {Operate(2001, "notify", R"("cmd":"5","bussiness":"n")"),
             Operate(-1, "notify", R"("cmd":"6","bussiness":"a")")},
            "2001 OnMessage 5 n, 1 OnMessage 6 a, 1002 OnMessage 6 a, 2001 OnMessage 6 a, "
            "3001 OnMessage 6 a");
        row("notify without cmd opens and sends nothing", none,
            {Operate(1001, "notify"), Operate(-1, "notify")}, "1 made");
        row("notify opens what it then tells, and decides the flag", none,
            {Operate(1001, "notify", R"("cmd":"5","bussiness":"n")"), one[0], one[0]},
            "1 made, 1 OnMessage 5 n, 1 shown");
        row("notify need not open", none, {Operate(1001, "notify", R"("cmd":"5","need_create_new":"0")")},
            "");

        row("numbers of cmd", object,
            {Operate(1002, "notify", R"("cmd":"abc","bussiness":"")"),
             Operate(1002, "notify", R"("cmd":" 7x","bussiness":"")"),
             Operate(1002, "notify", R"("cmd":"-1","bussiness":"")"),
             Operate(1002, "notify", R"("cmd":"99999999999","bussiness":"")")},
            "1002 OnMessage 0 , 1002 OnMessage 7 , 1002 OnMessage 2147483647 ");
        row("what is no operation", one,
            {"notify 0 1001 ", "notify 0 1001 {", R"(notify 0 1001 {"operate":5})", Operate(1001, "Hide"),
             Operate(1001, ""), Operate(1001, "quit"), Operate(-1, "destroyui"), "notify 0 1001 quit ",
             "notify 0 1001 Destroyui", R"(notify 7 1001 {"operate":"hide"})"},
            "");

        row("destroyui takes all down; a click makes new ones from the same libraries", framed,
            {"notify 0 5 destroyui", one[0]}, "1 hidden, 1 ~module, 1 ~widget, 1 made, 1 shown");
        row("a bare widget goes before its module", one, {"notify 0 -1 destroyui"}, "1 ~widget, 1 ~module");

        row("a module without a widget: clicks open it once and tell it nothing; all else reaches it", none,
            {Operate(1002, "clicked", R"("need_wrapper":"1","cmd":"1")"),
             Operate(1002, "clicked", R"("cmd":"1")"), Operate(1002, "hide", R"("cmd":"2","bussiness":"h")"),
             "notify 1 1002 p", "notify 1 -1 q"},
            "1002 made, 1002 OnMessage 2 h, 1002 OnMessage 113 p, 1002 OnMessage 114 p, 1002 OnMessage 114 "
            "q");
        row("neither widget nor object: each click makes another one, which hears nothing", none,
            {Operate(1003, "clicked", R"("cmd":"1")"),
             Operate(1003, "clicked", R"("need_wrapper":"1","cmd":"1")"), "notify 1 -1 q"},
            "1003 made, 1003 made");

        row("push data opens a closed component, hidden; the next click shows it", none,
            {"notify 1 1001 raw", "notify 1 1001 ", one[0]},
            "1 made, 1 OnMessage 113 raw, 1 OnMessage 114 raw, 1 OnMessage 113 , 1 OnMessage 114 , 1 shown");
        row("push data that asks to be shown, its init_param one element a line", none,
            {R"(notify 1 1001 {"need_display":"1","init_param":[1,"字"]})"},
            R"(1 made, 1 shown, 1 OnMessage 113 [\n1,\n"字"\n], 1 OnMessage 114 [\n1,\n"字"\n])");
        row("push data to all: 114 alone, as it came; -2 is not all", four,
            {"notify 1 -2 no", R"(notify 1 -1 {"init_param":1})"},
            R"(1 OnMessage 114 {"init_param":1}, 1002 OnMessage 114 {"init_param":1}, )"
            R"(2001 OnMessage 114 {"init_param":1}, 3001 OnMessage 114 {"init_param":1})");

        row("a module speaks to the host", object,
            {Tell(1002, "send 205 -1 five"), Tell(1002, "send 206 1001 six"), Tell(1002, "send 207 -1 no"),
             Tell(1002, "send 203 -1 no")},
            "callback 205 five, 1002 sent 205, callback 206 six, 1002 sent 206, 1002 sent 207, 1002 sent "
            "203");
        row("a framed module speaks to nobody beside its frame", framed + object,
            {Tell(1001, "send 777 -1 none"), Tell(1001, "send 777 1002 one")},
            "1 sent 777, 1002 OnMessage 777 one, 1 sent 777");
        row("a sub-module hears what its parent hears, goes with it, and gets no set-up of its own", framed,
            {Tell(1001, "sub 3001"), Tell(1001, "sub 77"), object[0], Tell(1002, "send 777 -1 all"),
             Tell(1001, "press closebtn_titlebar")},
            "3001 made, 1 sub-module, 1 no sub-module, 1002 made, 1002 OnMessage 113 {}, "
            "1002 OnMessage 114 {}, 1 OnMessage 777 all, 3001 OnMessage 777 all, 1002 sent 777, "
            "1 hidden, 1 ~module, 1 ~widget, 3001 ~module, 3001 ~widget");

        // What comes back from inside a call.
        const QString speak = Tell(1001, "send 205 -1 now");
        const QString onSpeech = "when callback 205 now -> ";
        const QString destroy = "notify 0 -1 destroyui";

        row("a click on the panel that speaks", framed, {onSpeech + one[0], speak},
            "callback 205 now, 1 hidden, 1 sent 205");
        row("destroyui waits until the panel has spoken, what comes behind waits for it", framed,
            {onSpeech + destroy, speak, one[0]},
            "callback 205 now, 1 sent 205, 1 hidden, 1 ~module, 1 ~widget, 1 made, 1 shown");
        row("destroyui while the title is asked for", none,
            {"when callback 2 component_id=1001 -> " + destroy, framed[0]},
            "1 made, 1 shown, 1 hidden, 1 ~module, 1 ~widget");
        row("the host hears of a frame that isn't its component's first", none,
            {"when callback 205 early -> " + framed[0],
             Operate(1001, "clicked", R"("need_wrapper":"1","need_display":"1","init_param":"speak early")")},
            "1 made, callback 205 early, 1 made, 1 shown, 1 shown, callback 1 N");
        row("a frame closed by its window, then a message to all", framed,
            {Tell(1001, "close"), Operate(-1, "hide"), one[0]},
            "1 hidden, 1 ~module, 1 ~widget, 1 made, 1 shown");
        row("a panel opened as another one is taken down", framed,
            {"when hidden -> " + Operate(1002, "clicked"), destroy},
            "1 hidden, 1 ~module, 1 ~widget, 1002 made");
        row("a panel opened by the last words of another one", one,
            {Tell(1001, "lastwords now"), onSpeech + Operate(1002, "clicked"), destroy},
            "1 ~widget, 1 ~module, callback 205 now, 1002 made");
        row("destroyui in the last words", framed,
            {Tell(1001, "lastwords now"), onSpeech + destroy, destroy, framed[0]},
            "1 hidden, 1 ~module, 1 ~widget, callback 205 now, 1 made, 1 shown");
    }

    void Operations()
    {
        QFETCH(QStringList, opened);
        QFETCH(QStringList, messages);
        HostProcess host;
        host.AddModules("other");
        QVERIFY(host.StartAndInit());
        host.Do(opened);
        host.Settle();
        host.Do(messages);
        QTEST(Short(host.SettleBriefly()), "seen");
        QVERIFY(host.End({"uninit"}));
    }

    void ButtonsOfTheFrameCloneAndClose()
    {
        HostProcess host;
        QVERIFY(host.StartAndInit());
        QVERIFY(host.Do({Operate(1001, "clicked", kFramed), Tell(1001, "data"),
                         Tell(1001, "soon press clonebtn_titlebar"),
                         R"(wait 1001#3 Initialize 1001 [] [] {"create_source":"panelry",)"
                         R"("init_data":{"on":"true","名":"值"},"init_param":null,"need_display":"0"})"}));
        host.Settle();
        host.Do(Operate(1001, "show", R"("cmd":"1","bussiness":"")"));
        QCOMPARE(host.SettleBriefly().join(", "), "1001#2 OnMessage 1 , 1001#3 shown, 1001#3 OnMessage 1 ");
        QVERIFY(host.Do({Tell(1001, "soon press closebtn_titlebar"), "wait 1001#2 ~widget"}));
        host.Do(Operate(1001, "notify", R"("cmd":"1","bussiness":"")"));
        QCOMPARE(host.SettleBriefly(), QStringList("1001#3 OnMessage 1 "));
        QVERIFY(host.End({"uninit"}));
    }

    void ATeardownInsideANestedLoopWaitsForItsEnd()
    {
        HostProcess host;
        QVERIFY(host.StartAndInit());
        // Messages still flow inside the loop, up to the one that asks for the teardown.
        QVERIFY(host.Do({Operate(1001, "clicked", kFramed), "notify 1 1002 {}", Tell(1001, "nest"),
                         "wait nested", "notify 1 1002 inside", "notify 0 -1 destroyui",
                         "notify 1 1002 behind", "wait OnMessage 114 inside", "release"}));
        // Where the other module dies among these depends on its address.
        QCOMPARE(Short(host.SettleBriefly()).remove(", 1002 ~module"),
                 "1 left the nest, 1 hidden, 1 ~module, 1 ~widget, 1002 made, "
                 "1002 OnMessage 113 behind, 1002 OnMessage 114 behind");
        QVERIFY(host.End({"uninit"}));
    }
};

PANELRY_TEST(DispatchTest)
#include "dispatch_test.moc"
