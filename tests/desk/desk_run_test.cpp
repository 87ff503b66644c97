#include <QFile>
#include <QJsonDocument>

#include "desk/desk_process.h"
#include "support/rows.h"
#include "support/test.h"

using namespace panelry::test;

/// The real program against a stand-in for the panels' library.
class DeskRunTest : public Test
{
    Q_OBJECT

private Q_SLOTS:
    void aScriptIsPlayedByTime()
    {
        const QTemporaryDir directory;
        const QString script = WriteFile(directory, "day.jsonl",
                                         R"({"at":40,"type":1,"id":2,"text":"later"}
{"at":40,"type":0,"id":}
{"at":0,"type":7,"id":-1,"text":{"b":1,"a":"x"}}
{"at":60,"quit":true}
{"at":80,"note":"never"}
)");
        DeskProcess desk;
        desk.Start(script);
        QCOMPARE(desk.Finish(), 1);
        QCOMPARE(desk.Story(),
                 QStringList({"complaint:not JSON at byte 24: syntax error while parsing value - "
                              "unexpected '}'; expected '[', '{', or a literal",
                              "start", "callback:Init", "sent:{\"b\":1,\"a\":\"x\"}",
                              "callback:7 -1 {\"b\":1,\"a\":\"x\"}", "sent:later", "callback:1 2 later",
                              "stop:quit", "callback:Uninit", "end"}));
        QVERIFY(desk.lines[5]["at"].toInt() >= 40);
        QVERIFY2(desk.errors.startsWith(script + ":2: not JSON at byte 24: "), qPrintable(desk.errors));
    }

    void callbacksAreToldAndTitlesAnswered()
    {
        DeskProcess desk;
        desk.Start("- --name 41001=行情 --name 5=old");
        desk.Type("{\"name\":{\"5\":\"a=b\"}}\n");
        for (const auto& [id, title] : {std::pair{"41001", "行情"}, {"5", "a=b"}, {"6", "none"}}) {
            desk.Type(QByteArray(R"({"type":0,"text":"ask the title","id":)") + id + "}\n");
            QVERIFY(desk.SaysNext(QByteArray("\"text\":\"title ") + title + '\"'));
        }
        desk.lines.clear();
        desk.Type("{\"type\":0,\"id\":0,\"text\":\"all codes\"}\nquit\n");
        QCOMPARE(desk.Finish(), 0);
        QStringList told;
        for (QJsonObject line : desk.lines.mid(1, 4)) {
            line.remove("at");
            told << QJsonDocument(line).toJson(QJsonDocument::Compact);
        }
        QCOMPARE(told, QStringList({R"({"code":0,"event":"callback"})",
                                    R"({"code":1,"event":"callback","window":"8388613"})",
                                    "{\"code\":206,\"event\":\"callback\",\"text\":\"\uFFFD\"}",
                                    R"({"code":99,"event":"callback"})"}));
    }

    void linesOfManyThreadsStayWhole()
    {
        DeskProcess desk;
        desk.Start("-");
        desk.Type(QByteArray("{\"type\":0,\"id\":0,\"text\":\"chatter\"}\n").repeated(2) + "quit\n");
        desk.process.closeWriteChannel();
        QCOMPARE(desk.Finish(), 0);
        QCOMPARE(desk.brokenLines, QStringList());
        QCOMPARE(desk.texts.join().count(R"("code":206)"), 2 * 4 * 50);
    }

    void whatIsTypedIsPlayed()
    {
        DeskProcess desk;
        const QTemporaryDir directory;
        desk.Start(WriteFile(directory, "empty.jsonl", "") + " --stay");
        QVERIFY(desk.SaysNext(R"("event":"played")"));
        desk.Type("{\"at\":50,\"note\":\"second\"}\nnote 7\nhelp\n\npush 7 first\nshow ");
        QVERIFY(desk.SaysNext(R"("note":"second")"));
        desk.Type("7\nquit\nhide 7\n");  // a line may come in pieces
        QCOMPARE(desk.Finish(), 0);
        QCOMPARE(desk.Story(),
                 QStringList({"start", "callback:Init", "played",
                              "complaint:unknown command \"note\"; \"help\" lists them", "help", "sent:first",
                              "callback:1 7 first", "note:second", "sent:{\"operate\":\"show\"}",
                              "callback:0 7 {\"operate\":\"show\"}", "stop:quit", "callback:Uninit", "end"}));
        // "at" counts from the typing, which came after "played".
        QVERIFY(desk.lines[7].value("at").toInt() >= desk.lines[2].value("at").toInt() + 50);
        QVERIFY2(desk.errors.startsWith("stdin:2: unknown command \"note\""), qPrintable(desk.errors));
        QVERIFY(desk.errors.contains("destroyui"));  // the list
    }

    void theEndOfInputLeavesWhatIsStillToPlay()
    {
        DeskProcess desk;
        desk.Start("-");
        QVERIFY(desk.SaysNext(R"("text":"Init")"));
        desk.Type("{\"at\":60,\"note\":\"late\"}\npush 7 last line without an end");
        desk.process.closeWriteChannel();
        QCOMPARE(desk.Finish(), 0);
        QCOMPARE(desk.Story().mid(2),
                 QStringList({"sent:last line without an end", "callback:1 7 last line without an end",
                              "note:late", "played", "stop:nothing left to play", "callback:Uninit", "end"}));
    }

    void aSignalEndsThroughUninit()
    {
        for (const auto& [signal, ignored, stop] : {std::tuple{SIGINT, false, "stop:SIGINT"},
                                                    {SIGTERM, false, "stop:SIGTERM"},
                                                    {SIGHUP, false, "stop:SIGHUP"},
                                                    {SIGHUP, true, "stop:quit"}}) {
            DeskProcess desk;
            desk.process.ignoresHangUp = ignored;
            desk.Start("-");
            QVERIFY(desk.SaysNext(R"("text":"Init")"));
            desk.Signal(signal);
            desk.Type(ignored ? "quit\n" : "");
            QCOMPARE(desk.Finish(), 0);
            QCOMPARE(desk.Story().mid(2), QStringList({stop, "callback:Uninit", "end"}));
        }
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
        desk.Start("-");
        desk.Type(typed);
        QTRY_VERIFY_WITH_TIMEOUT(reader.IsFull(), 30'000);
        desk.Signal(SIGTERM);
        QCOMPARE(desk.Finish(), 0);  // only a desk that has called Uninit gets that far
        QCOMPARE(desk.errors.count("lines are left out"), errorsToo ? 0 : 1);
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
        desk.Start("-");
        reader.start("head", {"-n1"});
        QVERIFY(reader.waitForFinished());
        QVERIFY(reader.readAll().contains("start"));
        QCOMPARE(desk.Finish(), 0);
    }

    void withoutArgumentsTheWorkspaceBesideTheProgramIsOpened();  // out of the class, too

    void onTheMarket_data();  // out of the class: moc doesn't get past its texts
    void onTheMarket()
    {
        QFETCH(QByteArray, typed);
        QFETCH(QByteArrayList, told);
        DeskProcess desk;
        desk.Start("- --memory --speed 0 --rate 0 --start 10:00 --requests");
        desk.Type(typed + "\n");
        for (const QByteArray& part : qAsConst(told)) {
            QVERIFY2(desk.SaysNext(part), part + " isn't in\n" + desk.texts.join());
        }
        desk.Type("quit\n");
        QCOMPARE(desk.Finish(), 0);  // what is typed wrong is no fault of the program
    }

    void whatIsKeptIsThereAgain();  // out of the class, too

    void itEndsByItself()
    {
        DeskProcess desk;
        const QTemporaryDir directory;
        QFile tape(directory.filePath("tape"));
        desk.Start(WriteFile(directory, "w.json", "{}") + " --for 0.2 --memory --tape " + tape.fileName());
        QCOMPARE(desk.Finish(), 0);
        QVERIFY(tape.open(QIODevice::ReadOnly) &&
                tape.readAll().contains("1 09:15:00.000 phase opening auction\n"));
        QVERIFY(desk.Story().contains("stop:time is over"));
        QVERIFY(desk.lines.last()["at"].toInt() >= 200);
    }

    void whatKeepsItFromStarting_data()
    {
        const Rows<const char*, const char*> row("arguments error");
        row("unknown option", "- --colour", "--colour");
        row("a title without an id", "- --name x=y", "isn't ID=TITLE");
        row("no such script", "/nowhere/day.jsonl", "can't read the script /nowhere/day.jsonl");
        row("no such library", "- --library /nowhere/libpanelry.so", "/nowhere/libpanelry.so");
        row("another library", "- --library " FAKE_MODULE, ": Init is missing");
        row("two forms", "- --json --text", "--json excludes --text");
        row("unknown fault", "- --fault rain", "unknown fault \"rain\"; there are late,");
        row("unknown scenario", "- --scenario rain", "unknown scenario");
        row("no time of day", "- --start 25:00", "is no time of day");
        row("no speed", "- --speed fast", "is no number from 0 to 100000");
        row("no market", "- --market /nowhere/s.json", "/nowhere/s.json: can't be read");
        row("no workspace", "/nowhere/w.json", "can't read the workspace /nowhere/w.json");
        row("a feed of what the market lacks", "feeds.json --memory",
            "feeds.json: \"feeds\", entry 2: the market has no 000001@17");
        row("kept where nothing can be", "- --state /proc/kept", "/proc/kept");
        row("no display", "-", "no display");
    }

    void whatKeepsItFromStarting()
    {
        QFETCH(QString, arguments);
        QFETCH(QString, error);
        const QTemporaryDir directory;
        WriteFile(directory, "feeds.json",
                  "{\"feeds\":[{\"panel\":7,\"codes\":[\"510300\"]},"
                  "{\"panel\":7,\"codes\":[\"600000\",\"000001@17\"]}]}");
        DeskProcess desk;
        desk.process.setWorkingDirectory(directory.path());
        if (error == "no display") {
            QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
            for (const char* const name : {"QT_QPA_PLATFORM", "DISPLAY", "WAYLAND_DISPLAY"}) {
                environment.remove(name);
            }
            desk.process.setProcessEnvironment(environment);
        }
        desk.Start(arguments, arguments.contains("--library") ? "" : FAKE_PANELRY);
        QCOMPARE(desk.Finish(), 2);
        QVERIFY2(desk.errors.contains(error), qPrintable(desk.errors));
        QCOMPARE(desk.lines.size(), 0);
    }
};

void DeskRunTest::onTheMarket_data()
{
    const Rows<QByteArray, QByteArrayList> row("typed told");
    row("an order, dealt in parts",
        "order buy 600000 10.02 1000\nfill 10000001 400 2\nfill 10000001\nholdings normal",
        {R"("event":"order","what":"accepted","contract":"10000001","account":"normal")",
         R"("side":"buy","price":"10.02","quantity":200)", R"("dealt":200)", R"("quantity":200)",
         R"("dealt":400)", R"("quantity":600)", R"("what":"dealt")", R"("event":"holdings")"});
    row("an order taken back", "order sell 510300 4.000 1000\ncancel 10000001\norders normal",
        {R"("what":"accepted")", R"("what":"cancelled")",
         R"("event":"orders","orders":[{"contract":"10000001")"});
    row("the broker refuses", "order buy 600519 1700 100000", {R"("state":"废单","reason":"可用资金不足")"});
    row("other accounts", "order buy 600000 10 100 borrowed\norder buy 00700 380 100 connect\nfunds margin",
        {R"("account":"margin","code":"600000")", R"("account":"connect","code":"00700")",
         R"("event":"funds","funds":[{"account":"margin")"});
    row("a code on two markets", "quote 000001\nquote 000001@16\nquote 000001@17",
        {R"("code":"000001","market":33)", R"("code":"000001","market":16)",
         R"("where":"stdin:3","reason":"the market has no 000001@17")"});
    row("the clock", "phase\nclock +60\nclock 11:00\nclock 2.5",
        {R"("event":"phase","day":1,"time":"10:00:00","phase":"continuous")", R"("time":"10:01:00")",
         R"("time":"11:00:00")", R"("speed":2.5)"});
    row("phases", "phase closing-auction\nphase opening-auction\nclock",
        {R"("phase":"break")", R"("phase":"closing auction")", R"("event":"day","day":2)",
         R"("day":2,"time":"09:15:00","phase":"opening auction")"});
    row("a scenario", "scenario suspend 000001@33\nquote 000001@33\nscenario",
        {R"("event":"scenario","scenario":"suspend","arguments":["000001@33"])", R"("suspended":true)",
         R"("name":"thousand-fills")"});
    row("a scenario in vain", "scenario limit-up 999999",
        {R"("event":"complaint","where":"stdin:1","reason":")"});
    row("faults", "fault late 7\nfault\nfault late off",
        {R"("event":"fault","fault":"late","on":true,"number":7)", R"({"name":"late","on":true,"number":7)",
         R"("event":"fault","fault":"late","on":false})"});
    row("what isn't there", "cancel 1\nfill 1\norder buy 1 1 1",
        {"there is no order 1", "there is no order 1", "the market has no 1"});
}

void DeskRunTest::withoutArgumentsTheWorkspaceBesideTheProgramIsOpened()
{
    const QTemporaryDir directory;
    const QString program = directory.filePath("desk copy");
    QVERIFY(QFile::copy(DESK_PROGRAM, program));
    QVERIFY(QFile::copy(FAKE_PANELRY, directory.filePath("libpanelry.so")));
    QVERIFY(QFile::copy(SECURITIES, directory.filePath("securities.json")));
    QVERIFY(QFile::copy(ACCOUNTS, directory.filePath("accounts.json")));
    WriteFile(directory, "day.jsonl", "{\"desk\":\"phase\"}\n{\"at\":1,\"desk\":\"cancel 9\"}");
    WriteFile(directory, "workspace.json",
              R"({"title":"mine","panels":[{"id":7,"title":"a"},{"id":8,"open":false}],"script":"day.jsonl",
                  "market":{"speed":0,"start":"10:00:00"},
                  "feeds":[{"panel":7,"codes":["510300","000001@16"],"every":50}]})");
    const QString link = directory.filePath("link");
    QVERIFY(QFile::link(program, link) && QFile::rename(link, link + " elsewhere"));
    DeskProcess desk;
    desk.Start("", "", link + " elsewhere");
    desk.process.closeWriteChannel();  // a workspace stays
    for (const char* const told :
         {R"("panels":[7,8])", R"("text":"Init with providers")", R"("event":"sent","type":0,"id":7,)",
          R"("event":"phase")", R"("reason":"there is no order 9")", R"("event":"played")"}) {
        QVERIFY2(desk.SaysNext(told), told);
    }
    for (int i = 0; i < 2; ++i) {  // again and again
        QVERIFY(desk.SaysNext(R"("text":"0 7 {\"operate\":\"notify\",\"cmd\":\"114\",)"
                              R"(\"bussiness\":\"{\\\"quotes\\\":[{\\\"code\\\":\\\"510300\\\")"));
    }
    QVERIFY(QFile::exists(desk.memory.filePath("panelry/desk.sqlite")));
    desk.Signal(SIGTERM);
    QCOMPARE(desk.Finish(), 1);  // a line of the script couldn't be done
}

void DeskRunTest::whatIsKeptIsThereAgain()
{
    const QTemporaryDir directory;
    const QString file = directory.filePath("deep/kept.sqlite");
    const QString arguments = "- --speed 0 --state " + file;
    const auto holds = [](const QString& options, const char* typed, const char* part) {
        DeskProcess desk;
        desk.Start(options);
        desk.Type(typed);
        const bool said = desk.SaysNext(part);
        desk.Type("quit\n");
        return desk.Finish() == 0 && said;
    };
    QVERIFY(holds(arguments, "order buy 510300 3.600 700\n", R"("what":"accepted")"));
    QVERIFY(holds(arguments, "orders\n", R"("price":"3.600","quantity":700,)"));
    QVERIFY(holds(arguments + " --fresh", "orders\n", R"("orders":[])"));
}

PANELRY_TEST(DeskRunTest)
#include "desk_run_test.moc"
