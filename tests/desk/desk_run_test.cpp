#include <signal.h>

#include <QFile>
#include <QJsonDocument>

#include "desk/desk_process.h"
#include "support/rows.h"
#include "support/test.h"

using panelry::test::DeskProcess;
using panelry::test::Pipe;
using panelry::test::Rows;
using panelry::test::Text;
using panelry::test::Texts;
using panelry::test::WriteFile;

namespace
{

constexpr char kTyped[] = "-";

}  // namespace

/// The real program against a stand-in for the panels' library.
class DeskRunTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void aScriptIsPlayedByTime()
    {
        const QTemporaryDir directory;
        const QString script = WriteFile(directory, QStringLiteral("day.jsonl"),
                                         R"({"at":40,"type":1,"id":2,"text":"later"}
{"at":40,"type":0,"id":}
{"at":0,"type":7,"id":-1,"text":{"b":1,"a":"x"}}
{"at":60,"quit":true}
{"at":80,"note":"never"}
)");
        DeskProcess desk;
        desk.Start({script});
        QCOMPARE(desk.Finish(), 1);
        QCOMPARE(desk.Story(), Texts({"start", "callback:Init", "sent:{\"b\":1,\"a\":\"x\"}",
                                      "callback:7 -1 {\"b\":1,\"a\":\"x\"}", "sent:later",
                                      "callback:1 2 later", "stop:quit", "callback:Uninit", "end"}));
        QVERIFY(desk.lines[4][QStringLiteral("at")].toInt() >= 40);
        QVERIFY2(desk.errors.startsWith(script + QStringLiteral(":2: not JSON at byte 24: ")),
                 qPrintable(desk.errors));
    }

    void callbacksAreToldAndTitlesAnswered()
    {
        DeskProcess desk;
        desk.Start({Text(kTyped), Text("--name"), Text("41001=行情"), Text("--name"), Text("5=old")});
        desk.Type("{\"name\":{\"5\":\"a=b\"}}\n");
        for (const char* const id : {"41001", "5", "6"}) {
            desk.Type(
                ("{\"type\":0,\"id\":" + QByteArray(id) + ",\"text\":\"ask the title\"}\n").constData());
        }
        QVERIFY(desk.WaitFor("text", Text("title 行情")));
        QVERIFY(desk.WaitFor("text", Text("title a=b")));
        QVERIFY(desk.WaitFor("text", Text("title none")));
        desk.lines.clear();
        desk.Type("{\"type\":0,\"id\":0,\"text\":\"all codes\"}\nquit\n");
        QCOMPARE(desk.Finish(), 0);
        QStringList told;
        for (QJsonObject line : desk.lines.mid(1, 4)) {
            line.remove(QStringLiteral("at"));
            told << Text(QJsonDocument(line).toJson(QJsonDocument::Compact).constData());
        }
        QCOMPARE(told, QStringList({Text(R"({"code":0,"event":"callback"})"),
                                    Text(R"({"code":1,"event":"callback","window":"8388613"})"),
                                    Text("{\"code\":206,\"event\":\"callback\",\"text\":\"\uFFFD\"}"),
                                    Text(R"({"code":99,"event":"callback"})")}));
    }

    void linesOfManyThreadsStayWhole()
    {
        DeskProcess desk;
        desk.Start({Text(kTyped)});
        desk.Type(
            "{\"type\":0,\"id\":0,\"text\":\"chatter\"}\n{\"type\":0,\"id\":0,\"text\":\"chatter\"}\nquit\n");
        desk.process.closeWriteChannel();
        QCOMPARE(desk.Finish(), 0);
        QCOMPARE(desk.brokenLines, QStringList());
        int chatter = 0;
        for (const QJsonObject& line : qAsConst(desk.lines)) {
            chatter += line[QStringLiteral("code")].toInt() == 206 ? 1 : 0;
        }
        QCOMPARE(chatter, 2 * 4 * 50);
    }

    void whatIsTypedIsPlayed()
    {
        DeskProcess desk;
        const QTemporaryDir directory;
        desk.Start({WriteFile(directory, QStringLiteral("empty.jsonl"), ""), Text("--stay")});
        QVERIFY(desk.WaitFor("event", Text("played")));
        desk.Type("{\"at\":50,\"note\":\"second\"}\nnote 7\nhelp\n\npush 7 first\nshow ");
        QVERIFY(desk.WaitFor("note", Text("second")));
        desk.Type("7\nquit\nhide 7\n");  // a line may come in pieces
        QCOMPARE(desk.Finish(), 0);
        QCOMPARE(desk.Story(),
                 Texts({"start", "callback:Init", "played", "sent:first", "callback:1 7 first", "note:second",
                        "sent:{\"operate\":\"show\"}", "callback:0 7 {\"operate\":\"show\"}", "stop:quit",
                        "callback:Uninit", "end"}));
        // "at" counts from the typing, which came after "played".
        QVERIFY(desk.lines[5].value(QStringLiteral("at")).toInt() >=
                desk.lines[2].value(QStringLiteral("at")).toInt() + 50);
        QVERIFY2(desk.errors.startsWith(Text("stdin:2: unknown command \"note\"")), qPrintable(desk.errors));
        QVERIFY(desk.errors.contains(Text("destroyui")));  // the list
    }

    void theEndOfInputLeavesWhatIsStillToPlay()
    {
        DeskProcess desk;
        desk.Start({Text(kTyped)});
        QVERIFY(desk.WaitFor("text", Text("Init")));
        desk.Type("{\"at\":60,\"note\":\"late\"}\npush 7 last line without an end");
        desk.process.closeWriteChannel();
        QCOMPARE(desk.Finish(), 0);
        QCOMPARE(desk.Story().mid(2),
                 Texts({"sent:last line without an end", "callback:1 7 last line without an end", "note:late",
                        "played", "stop:nothing left to play", "callback:Uninit", "end"}));
    }

    void aSignalEndsThroughUninit()
    {
        for (const auto& [signal, stop] :
             {std::pair{SIGINT, "stop:SIGINT"}, {SIGTERM, "stop:SIGTERM"}, {SIGHUP, "stop:SIGHUP"}}) {
            DeskProcess desk;
            desk.Start({Text(kTyped)});
            QVERIFY(desk.WaitFor("text", Text("Init")));
            kill(static_cast<pid_t>(desk.process.processId()), signal);
            QCOMPARE(desk.Finish(), 0);
            QCOMPARE(desk.Story().mid(2), Texts({stop, "callback:Uninit", "end"}));
        }
    }

    void anIgnoredHangUpIsNoEnd()
    {
        DeskProcess desk;
        desk.process.ignoresHangUp = true;
        desk.Start({Text(kTyped)});
        QVERIFY(desk.WaitFor("text", Text("Init")));
        kill(static_cast<pid_t>(desk.process.processId()), SIGHUP);
        desk.Type("quit\n");
        QCOMPARE(desk.Finish(), 0);
        QVERIFY(desk.Story().contains(Text("stop:quit")));
    }

    void aReaderThatStopsReadingDoesntHoldUpTheEnd_data()
    {
        const Rows<QByteArray, bool> row("typed errorsToo");
        const QByteArray longText(20'000, 'x');
        row("the panels' threads speak", "{\"type\":0,\"id\":0,\"text\":\"chatter\"}\n", false);
        row("the desk speaks", ("{\"note\":\"" + longText + "\"}\n").repeated(4), false);
        row("the desk complains", (longText + '\n').repeated(4), true);
    }

    void aReaderThatStopsReadingDoesntHoldUpTheEnd()
    {
        QFETCH(QByteArray, typed);
        QFETCH(bool, errorsToo);
        const Pipe reader;
        DeskProcess desk;
        desk.process.setStandardOutputFile(reader.WritersPath());
        desk.process.setProcessChannelMode(errorsToo ? QProcess::MergedChannels : QProcess::SeparateChannels);
        desk.Start({Text(kTyped)});
        desk.Type(typed.constData());
        QTRY_VERIFY_WITH_TIMEOUT(reader.IsFull(), 30'000);
        kill(static_cast<pid_t>(desk.process.processId()), SIGTERM);
        QCOMPARE(desk.Finish(), 0);  // only a desk that has called Uninit gets that far
        QCOMPARE(desk.errors.count(Text("lines are left out")), errorsToo ? 0 : 1);
        QList<QByteArray> lines = QByteArray::fromStdString(reader.TakeAll()).split('\n');
        lines.removeLast();  // it may be cut
        for (const QByteArray& line : qAsConst(lines)) {
            QVERIFY2(line.startsWith("stdin:") || QJsonDocument::fromJson(line).isObject(), line.left(80));
        }
    }

    void aReaderThatGoesAwayEndsTheDesk()
    {
        DeskProcess desk;
        QProcess reader;
        desk.process.setStandardOutputProcess(&reader);
        desk.Start({Text(kTyped)});
        reader.start(QStringLiteral("head"), {Text("-n1")});
        QVERIFY(reader.waitForFinished());
        QVERIFY(reader.readAll().contains("start"));
        QCOMPARE(desk.Finish(), 0);
    }

    void withoutArgumentsTheDemoBesideTheProgramIsPlayed()
    {
        const QTemporaryDir directory;
        const QString program = directory.filePath(QStringLiteral("desk copy"));
        QVERIFY(QFile::copy(QStringLiteral(DESK_PROGRAM), program));
        QVERIFY(
            QFile::copy(QStringLiteral(FAKE_PANELRY), directory.filePath(QStringLiteral("libpanelry.so"))));
        WriteFile(directory, QStringLiteral("demo.jsonl"), "{\"note\":\"the demo\"}");
        const QString link = directory.filePath(QStringLiteral("link"));
        QVERIFY(QFile::link(program, link) && QFile::rename(link, link + QStringLiteral(" elsewhere")));
        DeskProcess desk;
        desk.Start({}, {}, link + QStringLiteral(" elsewhere"));
        QCOMPARE(desk.Finish(), 0);
        QVERIFY(desk.Story().contains(Text("note:the demo")));
        QVERIFY(desk.Story().contains(Text("callback:Uninit")));
    }

    void whatKeepsItFromStarting_data()
    {
        const Rows<QStringList, QString, bool, const char*> row("arguments library display error");
        const QString fake = QStringLiteral(FAKE_PANELRY);
        const QStringList typed{Text(kTyped)};
        row("unknown option", typed + Texts({"--colour"}), fake, true, "--colour");
        row("a title without an id", typed + Texts({"--name", "x=y"}), fake, true, "isn't ID=TITLE");
        row("no such script", {Text("/nowhere/day.jsonl")}, fake, true,
            "can't read the script /nowhere/day.jsonl");
        row("no such library", typed, Text("/nowhere/libpanelry.so"), true, "/nowhere/libpanelry.so");
        row("another library", typed, QStringLiteral(FAKE_MODULE), true, ": Init is missing");
        row("no display", typed, fake, false, "no display");
    }

    void whatKeepsItFromStarting()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, library);
        QFETCH(bool, display);
        QFETCH(QString, error);
        DeskProcess desk;
        if (!display) {
            QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
            for (const char* const name : {"QT_QPA_PLATFORM", "DISPLAY", "WAYLAND_DISPLAY"}) {
                environment.remove(Text(name));
            }
            desk.process.setProcessEnvironment(environment);
        }
        desk.Start(arguments, library);
        QCOMPARE(desk.Finish(), 2);
        QVERIFY2(desk.errors.contains(error), qPrintable(desk.errors));
        QCOMPARE(desk.lines.size(), 0);
    }
};

PANELRY_TEST(DeskRunTest)
#include "desk_run_test.moc"
