// What the panels see of the host's messages, and the host of the panels.

#include "support/host_process.h"
#include "support/test.h"

using panelry::test::HostProcess;

namespace
{

/// {"operate":VERB, and what follows it}; keys are given without blanks.
QString Operate(int id, const char* verb, const char* keys = "")
{
    return QStringLiteral(R"(notify 0 %1 {"operate":"%2"%3})")
        .arg(QString::number(id), verb, *keys ? QString(",") + keys : QString());
}

QString Tell(int id, const char* command)
{
    return QStringLiteral(R"(notify 0 %1 {"operate":"notify","cmd":"900","bussiness":"%2"})")
        .arg(id)
        .arg(command);
}

// The lines in one, without the numbers of the objects; the most frequent panel has a short name.
QString Short(const QStringList& lines)
{
    static const QRegularExpression handle("callback 1 [1-9]\\d*\\b");
    QString text = lines.join(", ").replace(QRegularExpression("#\\d+ "), " ").replace("1001 ", "1 ");
    return text.replace(handle, "callback 1 N");
}

constexpr char kFramed[] = R"("need_wrapper":"1","need_display":"1")";

}  // namespace

class DispatchTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void Operations_data()
    {
        QTest::addColumn<QStringList>("opened");  // sent first, seen by nobody
        QTest::addColumn<QStringList>("messages");
        QTest::addColumn<QString>("seen");
        const QStringList none;
        const QStringList one{Operate(1001, "clicked")};
        const QStringList framed{Operate(1001, "clicked", kFramed)};
        const QStringList object{"notify 1 1002 {}"};
        // One bare, one framed, one without a widget, one that "show" and "hide" to all pass over.
        const QStringList four{Operate(1001, "clicked"), Operate(2001, "clicked", kFramed),
                               "notify 1 1002 {}",
                               Operate(3001, "clicked", R"("ignord_lock_hide":"1","always_display":"1")")};

        QTest::newRow("clicks toggle") << one << QStringList{one + one} << "1 hidden, 1 shown";
        QTest::newRow("clicks toggle a frame") << framed << QStringList{one + one} << "1 hidden, 1 shown";
        QTest::newRow("always_display")
            << one << QStringList{Operate(1001, "clicked", R"("always_display":"1")"), one[0]} << "1 hidden";
        QTest::newRow("made hidden; the next click shows")
            << none
            << QStringList{Operate(1001, "clicked", R"("need_wrapper":"1","need_display":"0")"), one[0]}
            << "1 made, 1 shown";
        QTest::newRow(
            "one flag for all components: after a hide of another one, a click leaves this one shown")
            << one << QStringList{Operate(9, "hide"), one[0], one[0]} << "1 hidden";
        QTest::newRow("a click sends before it shows, with the id and text of the message")
            << one << QStringList{Operate(1001, "clicked", R"("cmd":"12","bussiness":"b")")}
            << "1 OnMessage 12 b, 1 hidden";
        QTest::newRow("a click on an unknown component opens nothing, but decides the flag")
            << one << QStringList{Operate(77, "clicked", R"("need_display":"0")"), one[0]} << "";

        QTest::newRow("an addressed hide hides first and sends after; so does show")
            << framed
            << QStringList{Operate(1001, "hide", R"("cmd":"3","bussiness":"x")"),
                           Operate(1001, "show", R"("cmd":"4","bussiness":"y")")}
            << "1 hidden, 1 OnMessage 3 x, 1 shown, 1 OnMessage 4 y";
        QTest::newRow("hide to all sends first and hides after, in the order of the ids")
            << four << QStringList{Operate(-1, "hide", R"("cmd":"3","bussiness":"x")")}
            << "1 OnMessage 3 x, 1 hidden, 1002 OnMessage 3 x, 2001 OnMessage 3 x, 2001 hidden, 3001 "
               "OnMessage 3 x";
        QTest::newRow("any negative id means all; addressed, the lock doesn't hold")
            << four
            << QStringList{Operate(-7, "hide", R"("cmd":"0","bussiness":"")"),
                           Operate(3001, "hide", R"("cmd":"0","bussiness":"")")}
            << "1 OnMessage 0 , 1 hidden, 1002 OnMessage 0 , 2001 OnMessage 0 , 2001 hidden, 3001 OnMessage "
               "0 , 3001 hidden, 3001 OnMessage 0 ";
        QTest::newRow("without cmd show and hide send -1 and the whole text")
            << one << QStringList{Operate(1001, "hide"), Operate(-1, "show")}
            << R"(1 hidden, 1 OnMessage -1 {"operate":"hide"}, 1 OnMessage -1 {"operate":"show"}, 1 shown)";
        QTest::newRow("hide of what isn't open opens nothing")
            << none << QStringList{Operate(1001, "hide"), Operate(1001, "show")} << "";

        QTest::newRow("notify sends and leaves the windows alone")
            << four
            << QStringList{Operate(2001, "notify", R"("cmd":"5","bussiness":"n")"),
                           Operate(-1, "notify", R"("cmd":"6","bussiness":"a")")}
            << "2001 OnMessage 5 n, 1 OnMessage 6 a, 1002 OnMessage 6 a, 2001 OnMessage 6 a, 3001 OnMessage "
               "6 a";
        QTest::newRow("notify without cmd opens and sends nothing")
            << none << QStringList{Operate(1001, "notify"), Operate(-1, "notify")} << "1 made";
        QTest::newRow("notify opens what it then tells, and decides the flag")
            << none << QStringList{Operate(1001, "notify", R"("cmd":"5","bussiness":"n")"), one[0], one[0]}
            << "1 made, 1 OnMessage 5 n, 1 shown";
        QTest::newRow("notify need not open")
            << none << QStringList{Operate(1001, "notify", R"("cmd":"5","need_create_new":"0")")} << "";

        QTest::newRow("numbers of cmd")
            << object
            << QStringList{Operate(1002, "notify", R"("cmd":"abc","bussiness":"")"),
                           Operate(1002, "notify", R"("cmd":" 7x","bussiness":"")"),
                           Operate(1002, "notify", R"("cmd":"-5","bussiness":"")"),
                           Operate(1002, "notify", R"("cmd":"-1","bussiness":"")"),
                           Operate(1002, "notify", R"("cmd":"","bussiness":"")"),
                           Operate(1002, "notify", R"("cmd":"99999999999","bussiness":"")")}
            << "1002 OnMessage 0 , 1002 OnMessage 7 , 1002 OnMessage -5 , 1002 OnMessage 0 , 1002 OnMessage "
               "2147483647 ";
        QTest::newRow("a number as cmd ends the reading: what stood before counts, flags keep their defaults")
            << one
            << QStringList{Operate(1001, "hide", R"("bussiness":"b","cmd":5,"always_display":"1")"),
                           Operate(1001, "clicked", R"("cmd":5,"always_display":"1")"), one[0]}
            << "1 hidden, 1 OnMessage -1 b, 1 shown, 1 hidden";
        QTest::newRow("what is no operation") << one
                                              << QStringList{"notify 0 1001 ",
                                                             "notify 0 1001 {",
                                                             R"(notify 0 1001 ["operate"])",
                                                             R"(notify 0 1001 {"operate":5})",
                                                             Operate(1001, "Hide"),
                                                             Operate(1001, ""),
                                                             Operate(1001, "quit"),
                                                             Operate(-1, "destroyui"),
                                                             "notify 0 1001 quit ",
                                                             "notify 0 1001 Destroyui",
                                                             R"(notify 7 1001 {"operate":"hide"})",
                                                             R"(notify 2147483647 1001 {"operate":"hide"})"}
                                              << "";

        QTest::newRow("destroyui takes all down; a click makes new ones from the same libraries")
            << framed << QStringList{"notify 0 5 destroyui", one[0]}
            << "1 hidden, 1 ~module, 1 ~widget, 1 made, 1 shown";
        QTest::newRow("a bare widget goes before its module")
            << one << QStringList{"notify 0 -1 destroyui"} << "1 ~widget, 1 ~module";

        QTest::newRow(
            "a module without a widget: clicks open it once and tell it nothing; all else reaches it")
            << none
            << QStringList{Operate(1002, "clicked", R"("need_wrapper":"1","cmd":"1")"),
                           Operate(1002, "clicked", R"("cmd":"1")"),
                           Operate(1002, "hide", R"("cmd":"2","bussiness":"h")"), "notify 1 1002 p",
                           "notify 1 -1 q"}
            << "1002 made, 1002 OnMessage 2 h, 1002 OnMessage 113 p, 1002 OnMessage 114 p, 1002 OnMessage "
               "114 q";
        QTest::newRow("neither widget nor object: each click makes another one, which hears nothing")
            << none
            << QStringList{Operate(1003, "clicked", R"("cmd":"1")"),
                           Operate(1003, "clicked", R"("need_wrapper":"1","cmd":"1")"), "notify 1 -1 q"}
            << "1003 made, 1003 made";

        QTest::newRow("push data opens a closed component, hidden; the next click shows it")
            << none << QStringList{"notify 1 1001 raw", "notify 1 1001 ", one[0]}
            << "1 made, 1 OnMessage 113 raw, 1 OnMessage 114 raw, 1 OnMessage 113 , 1 OnMessage 114 , 1 "
               "shown";
        QTest::newRow("push data that asks to be shown")
            << none << QStringList{R"(notify 1 1001 {"need_display":"1","init_param":"s"})"}
            << R"(1 made, 1 shown, 1 OnMessage 113 "s", 1 OnMessage 114 "s")";
        QTest::newRow("init_param is printed one element a line")
            << object << QStringList{R"(notify 1 1002 {"x":1,"init_param":{"b":[1,2],"a":"字"}})"}
            << R"(1002 OnMessage 113 {\n"a": "字",\n"b": [\n1,\n2\n]\n}, 1002 OnMessage 114 {\n"a": "字",\n"b": [\n1,\n2\n]\n})";
        QTest::newRow("push data to all: 114 alone, as it came; -2 is not all")
            << four << QStringList{"notify 1 -2 no", R"(notify 1 -1 {"init_param":1})"}
            << R"(1 OnMessage 114 {"init_param":1}, 1002 OnMessage 114 {"init_param":1}, 2001 OnMessage 114 {"init_param":1}, 3001 OnMessage 114 {"init_param":1})";

        QTest::newRow("a module speaks to the host")
            << object
            << QStringList{Tell(1002, "send 205 -1 five"), Tell(1002, "send 206 1001 six"),
                           Tell(1002, "send 207 -1 no"), Tell(1002, "send 203 -1 no")}
            << "callback 205 five, 1002 sent 205, callback 206 six, 1002 sent 206, 1002 sent 207, 1002 sent "
               "203";
        QTest::newRow("a frameless module speaks to all others, a framed one to nobody beside its frame")
            << framed + object
            << QStringList{Tell(1002, "send 777 -1 all"), Tell(1001, "send 777 -1 none"),
                           Tell(1001, "send 777 1002 one"), Tell(1002, "send 777 1002 itself")}
            << "1 OnMessage 777 all, 1002 sent 777, 1 sent 777, 1002 OnMessage 777 one, 1 sent 777, 1002 "
               "sent 777";
        QTest::newRow("a sub-module hears what its parent hears, goes with it, and gets no set-up of its own")
            << framed
            << QStringList{Tell(1001, "sub 3001"),
                           Tell(1001, "sub 77"),
                           "notify 1 1002 {}",
                           Tell(1002, "send 777 -1 all"),
                           Tell(1002, "send 778 3001 one"),
                           Tell(1001, "press closebtn_titlebar")}
            << "3001 made, 1 sub-module, 1 no sub-module, 1002 made, 1002 OnMessage 113 {}, 1002 OnMessage "
               "114 {}, 1 OnMessage 777 all, 3001 OnMessage 777 all, 1002 sent 777, 3001 OnMessage 778 one, "
               "1002 sent 778, "
               "1 hidden, 1 ~module, 1 ~widget, 3001 ~module, 3001 ~widget";
    }

    void Operations()
    {
        QFETCH(QStringList, opened);
        QFETCH(QStringList, messages);
        QFETCH(QString, seen);
        HostProcess host;
        host.AddModules("other");
        QVERIFY(host.StartAndInit());
        host.Do(opened);
        host.Settle();
        host.Do(messages);
        QCOMPARE(Short(host.SettleBriefly()), seen);
    }

    void WhatComesBackFromInsideACall_data()
    {
        QTest::addColumn<QString>("open");
        QTest::addColumn<QStringList>("messages");
        QTest::addColumn<QString>("seen");
        const QString bare = Operate(1001, "clicked");
        const QString framed = Operate(1001, "clicked", kFramed);
        const QString speak = Tell(1001, "send 205 -1 now");
        const QString onSpeech = "when callback 205 now -> ";
        const QString onTitle = "when callback 2 component_id=1001 -> ";

        QTest::newRow("a click on the panel that speaks")
            << framed << QStringList{onSpeech + bare, speak} << "callback 205 now, 1 hidden, 1 sent 205";
        for (const auto& [name, open, gone] :
             {std::tuple{"bare", bare, "1 ~widget, 1 ~module"},
              std::tuple{"framed", framed, "1 hidden, 1 ~module, 1 ~widget"}}) {
            QTest::addRow("destroyui waits until the panel has spoken, what comes behind waits for it (%s)",
                          name)
                << open << QStringList{onSpeech + "notify 0 -1 destroyui", speak, bare}
                << QStringLiteral("callback 205 now, 1 sent 205, %1, 1 made, 1 shown").arg(gone);
        }
        QTest::newRow("destroyui while the title is asked for")
            << "" << QStringList{onTitle + "notify 0 -1 destroyui", framed}
            << "1 made, 1 shown, 1 hidden, 1 ~module, 1 ~widget";
        QTest::newRow("the host hears of a frame that isn't its component's first")
            << ""
            << QStringList{"when callback 205 early -> " + framed,
                           Operate(1001, "clicked",
                                   R"("need_wrapper":"1","need_display":"1","init_param":"speak early")")}
            << "1 made, callback 205 early, 1 made, 1 shown, 1 shown, callback 1 N";
        QTest::newRow("a frame closed from inside its own message")
            << framed << QStringList{Tell(1001, "press closebtn_titlebar"), bare}
            << "1 hidden, 1 ~module, 1 ~widget, 1 made, 1 shown";
        QTest::newRow("a frame closed by its window, then a message to all")
            << framed << QStringList{Tell(1001, "close"), Operate(-1, "hide"), bare}
            << "1 hidden, 1 ~module, 1 ~widget, 1 made, 1 shown";
        QTest::newRow("a panel opened by the last words of another one")
            << bare
            << QStringList{Tell(1001, "lastwords now"), onSpeech + Operate(1002, "clicked"),
                           "notify 0 -1 destroyui"}
            << "1 ~widget, 1 ~module, callback 205 now, 1002 made";
        QTest::newRow("destroyui in the last words")
            << framed
            << QStringList{Tell(1001, "lastwords now"), onSpeech + "notify 0 -1 destroyui",
                           "notify 0 -1 destroyui", framed}
            << "1 hidden, 1 ~module, 1 ~widget, callback 205 now, 1 made, 1 shown";
    }

    void WhatComesBackFromInsideACall()
    {
        QFETCH(QString, open);
        QFETCH(QStringList, messages);
        QFETCH(QString, seen);
        HostProcess host;
        QVERIFY(host.StartAndInit());
        host.Do(open.isEmpty() ? "name " : open);
        host.Settle();
        host.Do(messages);
        QCOMPARE(Short(host.SettleBriefly()), seen);
        QVERIFY(host.End({"uninit"}));
    }

    void ButtonsOfTheFrameCloneAndClose()
    {
        HostProcess host;
        QVERIFY(host.StartAndInit());
        host.Do({Operate(1001, "clicked", kFramed), Tell(1001, "data"),
                 Tell(1001, "presslater clonebtn_titlebar")});
        QVERIFY(
            !host.Wait(
                     R"(1001#3 Initialize 1001 [] [] {"create_source":"panelry","init_data":{"on":"true","名":"值"},"init_param":null,"need_display":"0"})")
                 .isNull());
        host.Settle();
        host.Do(Operate(1001, "show", R"("cmd":"1","bussiness":"")"));
        QCOMPARE(host.SettleBriefly().join(", "),
                 QString("1001#2 OnMessage 1 , 1001#3 shown, 1001#3 OnMessage 1 "));
        for (int presses = 0; presses < 12; ++presses) {
            host.Do(Tell(1001, "press clonebtn_titlebar"));
        }
        QCOMPARE(host.SettleBriefly().filter(" made").size(),
                 8);  // ten windows with the frame and the first clone
        QVERIFY(host.Ask(1001, "frame").endsWith("clone=shown,disabled"));
        host.Settle();
        host.Do(Tell(1001, "presslater closebtn_titlebar"));
        QVERIFY(!host.Wait("1001#2 ~widget").isNull());
        host.Do(Operate(1001, "notify", R"("cmd":"1","bussiness":"")"));
        QCOMPARE(host.SettleBriefly().filter("OnMessage 1 ").size(), 9);
        QVERIFY(host.End({"uninit"}));
    }

    void ATeardownInsideANestedLoopWaitsForItsEnd()
    {
        HostProcess host;
        QVERIFY(host.StartAndInit());
        host.Do({Operate(1001, "clicked", kFramed), "notify 1 1002 {}", Tell(1001, "nest")});
        QVERIFY(!host.Wait("nested").isNull());
        // Messages still flow inside the loop, up to the one that asks for the teardown.
        host.Do({"notify 1 1002 inside", "notify 0 -1 destroyui", "notify 1 1002 behind"});
        QVERIFY(!host.Wait("OnMessage 114 inside").isNull());
        host.Do("release");
        // Where the other module dies among these depends on its address.
        QCOMPARE(
            Short(host.SettleBriefly()).remove(", 1002 ~module"),
            QString("1 left the nest, 1 hidden, 1 ~module, 1 ~widget, 1002 made, 1002 OnMessage 113 behind, "
                    "1002 OnMessage 114 behind"));
        QVERIFY(host.End({"uninit"}));
    }
};

PANELRY_TEST(DispatchTest)
#include "dispatch_test.moc"
