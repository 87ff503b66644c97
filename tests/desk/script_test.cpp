#include "desk/script.h"

#include <QFile>
#include <sstream>

#include "desk/display.h"
#include "desk/scheduler.h"
#include "support/test.h"

using namespace panelry::desk;

namespace
{

struct Describe {
    std::string operator()(const Message& message) const
    {
        return std::to_string(message.type) + ' ' + std::to_string(message.id) + ' ' + message.text;
    }
    std::string operator()(const Titles& titles) const
    {
        std::string text = "titles";
        for (const auto& [id, title] : titles) {
            text += ' ' + std::to_string(id) + '=' + title;
        }
        return text;
    }
    std::string operator()(const Note& note) const { return "note " + note.text; }
    std::string operator()(const Quit&) const { return "quit"; }
    std::string operator()(const Help&) const { return "help"; }
};

std::string DescribeLine(const ParsedLine& parsed)
{
    if (!parsed.error.empty()) {
        return "error: " + parsed.error;
    }
    if (!parsed.line) {
        return "nothing";
    }
    const std::string at = parsed.line->at ? '@' + std::to_string(parsed.line->at->count()) + ' ' : "";
    return at + std::visit(Describe{}, parsed.line->act);
}

}  // namespace

class ScriptTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void aLine_data();  // out of the class: moc doesn't get past its texts
    void aLine()
    {
        QFETCH(QByteArray, text);
        QFETCH(QByteArray, expected);
        const bool isTyped = QByteArray(QTest::currentDataTag()).startsWith("typed: ");
        const ParsedLine parsed =
            isTyped ? ParseTypedLine(text.constData()) : ParseScriptLine(text.constData());
        QCOMPARE(QByteArray::fromStdString(DescribeLine(parsed)), expected);
    }

    void aScriptNumbersItsBadLinesAndGoesOn()
    {
        const std::string deep = std::string(100'000, '[') + std::string(100'000, ']');
        std::istringstream input(
            "{\"note\":\"a\"}\n\n{\"note\":}\n# a comment\n{\"at\":300,\"note\":\"b\"}\n"
            "{\"type\":1,\"id\":1,\"text\":" +
            deep +
            "}\n{\"at\":900}\n{\"at\":1e999,\"note\":\"never\"}\n"
            "{\"at\":100,\"note\":\"c\"}\r\n{\"note\":\"d\"}");
        const Script script = ReadScript(input, "day.jsonl");
        QStringList acts;
        for (const TimedAct& act : script.acts) {
            acts << QString::fromStdString(std::to_string(act.at.count()) + ' ' +
                                           std::visit(Describe{}, act.act));
        }
        QCOMPARE(acts.join(QLatin1Char(',')), QStringLiteral("0 note a,300 note b,100 note c,100 note d"));
        QCOMPARE(script.complaints.size(), 4U);
        QVERIFY(script.complaints[0].starts_with("day.jsonl:3: not JSON at byte 9: "));
        QCOMPARE(script.complaints[1], std::string("day.jsonl:6: nested more than 512 deep"));
        QCOMPARE(script.complaints[2], std::string("day.jsonl:7: \"type\" is missing"));
        QCOMPARE(script.complaints[3], std::string("day.jsonl:8: number overflow parsing '1e999'"));
    }

    void actsOfOneTimeKeepTheirOrder()
    {
        using std::chrono::milliseconds;
        Scheduler schedule;
        schedule.Add(milliseconds(200), Note{"c"});
        schedule.Add(milliseconds(100), Note{"a"});
        schedule.Add(milliseconds(200), Note{"d"});
        schedule.Add(milliseconds(100), Note{"b"});
        QVERIFY(!schedule.TakeDue(milliseconds(99)));
        std::string order;
        while (const std::optional<Act> act = schedule.TakeDue(milliseconds(200))) {
            order += std::get<Note>(*act).text;
        }
        QCOMPARE(order, std::string("abcd"));
        QVERIFY(!schedule.NextAt());
    }

    void theDemoIsAMinuteWithoutComplaints()
    {
        QFile file(QStringLiteral(DEMO_SCRIPT));
        QVERIFY(file.open(QIODevice::ReadOnly));
        std::istringstream input(file.readAll().toStdString());
        const Script script = ReadScript(input, "demo.jsonl");
        QCOMPARE(script.complaints.size(), 0U);
        QVERIFY(std::holds_alternative<Quit>(script.acts.back().act));
        const auto seconds = script.acts.back().at / std::chrono::seconds(1);
        QVERIFY(seconds >= 60 && seconds <= 70);
    }

    void theDisplay()
    {
        // Whether it is usable, the platform and the advice, of which a part will do.
        const auto chooses = [](const DisplayEnvironment& environment, bool usable, const char* platform,
                                const char* advice) {
            const DisplayChoice choice = ChooseDisplay(environment);
            return choice.usable == usable && choice.platform == platform &&
                   choice.advice.empty() == !*advice && choice.advice.find(advice) != std::string::npos;
        };
        QVERIFY(chooses({"", ":0", ""}, true, "xcb", ""));
        QVERIFY(chooses({"", ":0", "wayland-0"}, true, "xcb", ""));
        QVERIFY(chooses({"", "", "wayland-0"}, false, "", "XWayland"));
        QVERIFY(chooses({"", "", ""}, false, "", "no display"));
        QVERIFY(chooses({"offscreen", "", "wayland-0"}, true, "", ""));
        QVERIFY(chooses({"wayland-egl", ":0", "wayland-0"}, true, "", "XWayland"));
    }
};

void ScriptTest::aLine_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("expected");
    const auto script = [](const char* text, const char* expected) {
        QTest::newRow(text) << QByteArray(text) << QByteArray(expected);
    };
    const auto typed = [](const char* text, const char* expected) {
        QTest::newRow((QByteArray("typed: ") + text).constData()) << QByteArray(text) << QByteArray(expected);
    };
    script("", "nothing");
    script("  # {\"quit\":true}\r", "nothing");
    script(R"({"at":1500,"type":0,"id":41001,"text":"quit"})", "@1500 0 41001 quit");
    script(R"({"type":"push","id":-1,"text":{"b":[1,"行"],"a":"\u0000"}})",
           R"(1 -1 {"b":[1,"行"],"a":"\u0000"})");
    script(R"({"type":-2147483648,"id":2147483647,"text":""})", "-2147483648 2147483647 ");
    script(R"({"at":604800000,"quit":true})", "@604800000 quit");
    script(R"({"name":{"41001":"行情","-3":""}})", "titles -3= 41001=行情");
    script("open 41001",
           "error: not JSON at byte 1: syntax error while parsing value - invalid literal; "
           "last read: 'o'");
    script("[0,1]", "error: not a JSON object");
    for (const char* const line : {R"({"at":-1,"quit":true})", R"({"at":1.5,"quit":true})",
                                   R"({"at":18446744073709551615,"quit":true})"}) {
        script(line, "error: \"at\" must be a whole number of milliseconds from 0 to 604800000");
    }
    script(R"({"quit":1})", "error: \"quit\" must be true");
    script(R"({"tpye":0,"id":1,"text":""})", "error: unknown key \"tpye\"");
    script(R"({"type":0,"id":1})", "error: \"text\" is missing");
    script(R"({"type":0,"id":1,"text":5})", "error: \"text\" must be a string, an object or an array");
    script(R"({"type":0,"id":1,"text":"a\u0000b"})",
           "error: \"text\" holds a NUL character, at which it would end");
    script(R"({"type":"show","id":1,"text":""})",
           "error: \"type\" must be \"operate\", \"push\" or a 32-bit number");
    script(R"({"type":0,"id":2147483648,"text":""})", "error: \"id\" must be a 32-bit number");
    script(R"({"name":{"all":"x"}})", "error: \"name\": \"all\" must be a component id with a title text");

    const auto refused = [](int id) {
        return "error: \"cmd\" " + std::to_string(id) + ": what modules get under this id isn't a text";
    };
    script(R"({"type":0,"id":1,"text":{"operate":"notify","cmd":"102"}})", refused(102).c_str());
    script(R"({"type":"operate","id":-1,"text":"{\"operate\":\"show\",\"cmd\":\" +207x\"}"})",
           refused(207).c_str());
    script(R"({"type":1,"id":1,"text":{"cmd":"102"}})",
           R"(1 1 {"cmd":"102"})");                                           // a push: a text by contract
    script(R"({"type":0,"id":1,"text":{"cmd":102}})", R"(0 1 {"cmd":102})");  // not read as an id
    script(R"({"type":0,"id":1,"text":"[\"cmd\",1e999]"})", R"(0 1 ["cmd",1e999])");

    typed(R"({"at":20,"type":1,"id":2,"text":"x"})", "@20 1 2 x");
    typed("  open   41001 ",
          R"(0 41001 {"operate":"clicked","need_wrapper":"1","need_display":"1","always_display":"1"})");
    typed("hide -1", R"(0 -1 {"operate":"hide"})");
    typed("notify 7 1  two  \"words\" ",
          R"(0 7 {"operate":"notify","cmd":"1","bussiness":"two  \"words\"","need_create_new":"0"})");
    typed("push 7 {\"a\": 1}", "1 7 {\"a\": 1}");
    typed("destroyui", "0 -1 destroyui");
    typed("quit", "quit");
    typed("quit now", "error: \"now\" is too much");
    typed("show", "error: ID is missing");
    typed("notify 7 9001x", "error: CMD must be a 32-bit number, not \"9001x\"");
    typed("notify 41002 102 600519", refused(102).c_str());
    typed("notify 7 1000000 x", refused(1'000'000).c_str());
    typed("notify 7 500 x", R"(0 7 {"operate":"notify","cmd":"500","bussiness":"x","need_create_new":"0"})");
    typed("notify 7 1 \xFF", "error: invalid UTF-8 byte at index 0: 0xFF");
    typed("opne 7", "error: unknown command \"opne\"; \"help\" lists them");
}

PANELRY_TEST(ScriptTest)
#include "script_test.moc"
