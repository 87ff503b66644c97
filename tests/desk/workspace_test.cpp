#include "desk/workspace.h"

#include <QDir>
#include <QTemporaryDir>

#include "desk/desk_process.h"
#include "desk/event_text.h"
#include "support/rows.h"
#include "support/test.h"

using namespace panelry::desk;
using namespace panelry::test;
using std::chrono::milliseconds;

/// What a workspace file says, and how events look.
class WorkspaceTest : public Test
{
    Q_OBJECT

private Q_SLOTS:
    void aWorkspaceIsReadWhole()
    {
        const QTemporaryDir directory;
        const Workspace workspace = ReadWorkspace(WriteFile(directory, "mine.json", R"({
            "title": "t", "script": "a.jsonl", "state": "/s/kept.sqlite",
            "panels": [{"id": 1, "title": "one", "init": {"b": 1, "a": [2]}}, {"id": 2, "open": false},
                       {"id": 3, "place": [0, 50, 100, 50]}, {"id": 4, "place": [1, 2, 3, 4], "init": {"b": 1}}],
            "market": {"securities": "s.json", "speed": 0.5, "start": "10:00", "rate": 7, "seed": 9},
            "feeds": [{"panel": 1, "codes": ["600000", "000001@33"], "every": 250}]})")
                                                      .toStdString());
        const std::filesystem::path home = directory.path().toStdString();
        QVERIFY(workspace.PanelTitles() == (Titles{{1, "one"}}));
        QCOMPARE(workspace.Openings().size(), 3U);
        QCOMPARE(
            workspace.Openings()[0].text,
            std::string(R"({"operate":"clicked","need_wrapper":"1","need_display":"1","always_display":"1",)"
                        R"("init_param":{"b":1,"a":[2]}})"));
        QCOMPARE(workspace.Openings()[1].id, 3);
        const auto ending = [&](std::size_t panel) {
            return QString::fromStdString(workspace.Openings()[panel].text).section(QLatin1String("init"), 1);
        };
        QCOMPARE(ending(1), QStringLiteral("_param\":{\"place\":[0,50,100,50]}}"));
        QCOMPARE(ending(2), QStringLiteral("_param\":{\"b\":1,\"place\":[1,2,3,4]}}"));
        QVERIFY(workspace.script == home / "a.jsonl" && workspace.market.state == "/s/kept.sqlite");
        QVERIFY(workspace.market.securities == home / "s.json" && !workspace.market.accounts);
        QVERIFY(workspace.market.speed == 0.5 && workspace.market.start == milliseconds(36'000'000));
        QVERIFY(workspace.market.rate == 7 && workspace.market.seed == 9U);
        QVERIFY(workspace.feeds[0].every == milliseconds(250) && workspace.feeds[0].codes[1].market == 33);

        MarketWish stronger;
        stronger.seed = 3;
        const MarketWish wish = Merged(stronger, workspace.market);
        QVERIFY(wish.seed == 3U && wish.rate == 7);
    }

    void aBadWorkspaceIsRefused_data();  // out of the class: moc doesn't get past its texts
    void aBadWorkspaceIsRefused()
    {
        QFETCH(QByteArray, text);
        QFETCH(QString, reason);
        const QTemporaryDir directory;
        const QString file = WriteFile(directory, "bad.json", text);
        try {
            (void)ReadWorkspace(file.toStdString());
            QFAIL("it was read");
        } catch (const std::runtime_error& error) {
            QCOMPARE(QString::fromUtf8(error.what()), file + ": " + reason);
        }
    }

    void anEventInBothForms_data();
    void anEventInBothForms()
    {
        QFETCH(QByteArray, json);
        QFETCH(QByteArray, text);
        Fields fields = Fields::parse(json.toStdString());
        const std::string event = fields["event"];
        const milliseconds at(fields["at"].get<int>());
        fields.erase("event");
        fields.erase("at");
        QCOMPARE(QByteArray::fromStdString(EventJson(at, event, fields)), json + '\n');
        QCOMPARE(QByteArray::fromStdString(EventText(at, event, fields)), text + '\n');
    }

    void brokenTextIsMadeWhole()
    {
        const Fields fields{{"code", 206}, {"text", "a\xff\n\x1b[2J"}};
        QCOMPARE(EventJson(milliseconds(0), "callback", fields),
                 std::string("{\"at\":0,\"event\":\"callback\",\"code\":206,"
                             "\"text\":\"a\uFFFD\\n\\u001b[2J\"}\n"));
        QCOMPARE(EventText(milliseconds(0), "callback", fields),
                 std::string("    0.000  callback  206 text a\uFFFD  [2J\n"));
    }
};

void WorkspaceTest::aBadWorkspaceIsRefused_data()
{
    const Rows<QByteArray, const char*> row("text reason");
    row("another value", "[]", "not a JSON object");
    row("a key of none", R"({"panel": []})", "unknown key \"panel\"");
    row("no list", R"({"panels": {}})", "\"panels\" must be a list");
    row("no panel", R"({"panels": [{"id": 1}, 7]})", "\"panels\", entry 2: must be an object");
    row("no id", R"({"panels": [{"title": "x"}]})", "\"panels\", entry 1: \"id\" is missing");
    row("an id for all", R"({"panels": [{"id": -1}]})",
        "\"panels\", entry 1: \"id\" must be the id of a panel");
    row("a panel twice", R"({"panels": [{"id": 1}, {"id": 1}]})",
        "\"panels\", entry 2: the panel 1 stands there twice");
    row("a word for a flag", R"({"panels": [{"id": 1, "open": "no"}]})",
        "\"panels\", entry 1: \"open\": must be true or false");
    const char* const noPlace =
        "\"panels\", entry 1: \"place\": must be a list of four: x, y, width and height in hundredths of the "
        "screen";
    row("a place of three", R"({"panels": [{"id": 1, "place": [0, 0, 50]}]})", noPlace);
    row("a place without a width", R"({"panels": [{"id": 1, "place": [0, 0, 0, 50]}]})", noPlace);
    row("a place beyond the screen", R"({"panels": [{"id": 1, "place": [60, 0, 41, 50]}]})", noPlace);
    row("a place for a panel that gets a list",
        R"({"panels": [{"id": 1, "place": [0, 0, 9, 9], "init": []}]})",
        "\"panels\", entry 1: \"place\": needs an object in \"init\"");
    row("a number for a title", R"({"title": 1})", "\"title\": must be a text");
    row("a market's key", R"({"market": {"sped": 1}})", "\"market\": unknown key \"sped\"");
    row("a speed back", R"({"market": {"speed": -1}})",
        "\"market\": \"speed\": must be a number from 0 to 100000");
    row("no time", R"({"market": {"start": "9.30"}})",
        "\"market\": \"start\": must be a time of day as \"09:29:30\"");
    row("a seed with a point", R"({"market": {"seed": 1.5}})",
        "\"market\": \"seed\": must be a whole number from 0 to 9223372036854775807");
    row("a feed of nothing", R"({"feeds": [{"panel": 1, "codes": []}]})",
        "\"feeds\", entry 1: \"codes\" must be a list of codes");
    row("a feed of no code", R"({"feeds": [{"panel": 1, "codes": ["1@x"]}]})",
        "\"feeds\", entry 1: \"codes\": \"1@x\" is no CODE or CODE@MARKET");
    row("a feed that floods", R"({"feeds": [{"panel": 1, "codes": ["1"], "every": 1}]})",
        "\"feeds\", entry 1: \"every\": must be a whole number from 50 to 3600000");
}

void WorkspaceTest::anEventInBothForms_data()
{
    const Rows<QByteArray, QByteArray> row("json text");
    row("nothing to tell", R"({"at":0,"event":"start"})", "    0.000  start");
    row("a long time", R"({"at":123456789,"event":"stop","reason":"quit"})", "123456.789  stop  quit");
    row("a message", R"({"at":12,"event":"sent","type":0,"id":-1,"text":"quit"})",
        "    0.012  sent  operate -1 quit");
    row("another message", R"({"at":12,"event":"sent","type":7,"id":1,"text":"x"})",
        "    0.012  sent  7 1 x");
    row("an order",
        R"({"at":1000,"event":"order","what":"refused","contract":"7","account":"margin","code":"600000",)"
        R"("market":17,"name":"演示","side":"buy","price":"10.05","quantity":100,"dealt":0,"state":"废单","reason":"无"})",
        "    1.000  order  7 margin buy 600000 演示 10.05 x 100, dealt 0, 废单: 无");
    row("no deals", R"({"at":0,"event":"deals","deals":[]})", "    0.000  deals  none");
    row("funds",
        R"({"at":0,"event":"funds","funds":[{"account":"normal","balance":"1.00"},{"account":"margin"}]})",
        "    0.000  funds  2\n  normal, balance 1.00\n  margin, ");
    row("a quote",
        R"({"at":0,"event":"quote","code":"1","market":17,"name":"n","last":"2.00","bids":[["1.99",5],["1.98",6]],"asks":[]})",
        "    0.000  quote  1 n: last 2.00\n  sell  nobody\n  buy   1.99 x 5  1.98 x 6");
    row("a fault", R"({"at":0,"event":"fault","fault":"late","on":true,"number":5})",
        "    0.000  fault  late on, 5");
    row("a scenario", R"({"at":0,"event":"scenario","scenario":"limit-up","arguments":["1","17"]})",
        "    0.000  scenario  limit-up 1 17");
    row("an event without a form of its own", R"({"at":0,"event":"login","state":1,"x":[1]})",
        "    0.000  login  state 1, x [1]");
}

PANELRY_TEST(WorkspaceTest)
#include "workspace_test.moc"
