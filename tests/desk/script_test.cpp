#include "desk/script.h"

#include <fstream>
#include <sstream>

#include "desk/commands.h"
#include "desk/completion.h"
#include "desk/display.h"
#include "desk/scheduler.h"
#include "support/test.h"

using namespace panelry::desk;

namespace
{

template <class... Parts>
std::string Said(const Parts&... parts)
{
    std::ostringstream text;
    (text << ... << parts);
    return text.str();
}

std::string Said(const CodeName& name)
{
    return name.code + (name.market ? '@' + std::to_string(*name.market) : "");
}

// An act in words; enumerators as numbers.
struct Describe {
    std::string operator()(const Message& m) const { return Said(m.type, ' ', m.id, ' ', m.text); }
    std::string operator()(const Titles& titles) const
    {
        std::string text = "titles";
        for (const auto& [id, title] : titles) {
            text += Said(' ', id, '=', title);
        }
        return text;
    }
    std::string operator()(const Note& note) const { return "note " + note.text; }
    std::string operator()(const Quit&) const { return "quit"; }
    std::string operator()(const Help& help) const { return "help " + help.command; }
    std::string operator()(const MarketAct& act) const
    {
        return std::visit(*this, act.command) + (act.where.empty() ? "" : " at " + act.where);
    }
    std::string operator()(const PlaceOrder& order) const
    {
        return Said(order.side == Side::Buy ? "buy " : "sell ", Said(order.security), ' ', order.price, ' ',
                    order.quantity, " account ", int(order.account), " funding ", int(order.funding));
    }
    std::string operator()(const CancelOrder& cancel) const { return "cancel " + cancel.contract; }
    std::string operator()(const ListAccounts& list) const
    {
        return Said("list ", int(list.what), list.account ? Said(" account ", int(*list.account)) : "");
    }
    std::string operator()(const ShowQuote& quote) const { return "quote " + Said(quote.security); }
    std::string operator()(const FillOrder& fill) const
    {
        return Said("fill ", fill.contract, ' ', fill.quantity.value_or(-1), " in ", fill.parts);
    }
    std::string operator()(const ShowPhase&) const { return "phase?"; }
    std::string operator()(const MoveToPhase& move) const { return "phase " + PhaseName(move.phase); }
    std::string operator()(const ShowClock&) const { return "clock?"; }
    std::string operator()(const SetSpeed& speed) const { return Said("speed ", speed.speed); }
    std::string operator()(const StepClock& step) const { return Said("step ", step.by.count()); }
    std::string operator()(const MoveClock& move) const { return "to " + ClockText(move.ofDay); }
    std::string operator()(const RunScenario& scenario) const
    {
        std::string text = "scenario";
        for (const std::string& word : scenario.words) {
            text += ' ' + word;
        }
        return text;
    }
    std::string operator()(const SwitchFault& fault) const
    {
        return Said("fault ", fault.name, fault.on ? " on " : " off ", fault.number.value_or(-1));
    }
};

std::string DescribeLine(const ParsedLine& parsed)
{
    if (!parsed.error.empty()) {
        return "error: " + parsed.error;
    }
    if (!parsed.line) {
        return "nothing";
    }
    const std::string at = parsed.line->at ? Said('@', parsed.line->at->count(), ' ') : "";
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
        const bool isTyped = QByteArray(QTest::currentDataTag()).startsWith("typed: ");
        const ParsedLine parsed =
            isTyped ? ParseTypedLine(text.constData()) : ParseScriptLine(text.constData());
        QTEST(QByteArray::fromStdString(DescribeLine(parsed)), "expected");
    }

    void aScriptNumbersItsBadLinesAndGoesOn()
    {
        const std::string deep = std::string(100'000, '[') + std::string(100'000, ']');
        std::istringstream input(
            "{\"note\":\"a\"}\n\n{\"note\":}\n# a comment\n{\"at\":300,\"note\":\"b\"}\n"
            "{\"type\":1,\"id\":1,\"text\":" +
            deep +
            "}\n{\"at\":900}\n{\"at\":1e999,\"note\":\"never\"}\n"
            "{\"at\":100,\"note\":\"c\"}\r\n{\"note\":\"d\"}\n{\"desk\":\"cancel 7\"}");
        const Script script = ReadScript(input, "day.jsonl");
        std::string acts;
        for (const TimedAct& act : script.acts) {
            acts += Said(act.at.count(), ' ', std::visit(Describe{}, act.act), '\n');
        }
        QCOMPARE(acts, "0 note a\n300 note b\n100 note c\n100 note d\n100 cancel 7 at day.jsonl:11\n");
        std::vector<std::string> told;
        for (const Complaint& complaint : script.complaints) {
            told.push_back(complaint.where + ": " + complaint.reason);
        }
        QCOMPARE(told.size(), 4U);
        QVERIFY(told[0].starts_with("day.jsonl:3: not JSON at byte 9: "));
        QCOMPARE(told[1], "day.jsonl:6: nested more than 512 deep");
        QCOMPARE(told[2], "day.jsonl:7: \"type\" is missing");
        QCOMPARE(told[3], "day.jsonl:8: number overflow parsing '1e999'");
    }

    void whatAWordCanBecome()
    {
        const auto completions = [](const char* line) {
            std::string found;
            for (const std::string& word :
                 Completions(line, {{"41001", "41005"}, {"600000", "600519", "000001@16", "000001@33"}})) {
                found += word + ' ';
            }
            return found;
        };
        QCOMPARE(completions("or"), "order orders ");
        QCOMPARE(completions("x"), "");
        QCOMPARE(completions("  fau"), "fault ");
        QCOMPARE(completions("open "), "41001 41005 ");
        QCOMPARE(completions("hide 41005"), "41005 ");
        QCOMPARE(completions("order s"), "sell ");
        QCOMPARE(completions("order buy 6"), "600000 600519 ");
        QCOMPARE(completions("quote 000001@"), "000001@16 000001@33 ");
        QCOMPARE(completions("order buy 600000 1"), "");  // a free word
        QCOMPARE(completions("order buy 600000 10 100 m"), "margin ");
        QCOMPARE(completions("phase c"), "closed continuous closing-auction ");
        QCOMPARE(completions("scenario limit"), "limit-up limit-down ");
        QCOMPARE(completions("scenario limit-up 6005"), "600519 ");
        QCOMPARE(completions("fault l"), "late lost ");
        QCOMPARE(completions("fault late o"), "on off ");
        QCOMPARE(completions("phase closed c"), "");  // beyond the arguments
        QCOMPARE(completions("opne 4"), "");
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
        std::ifstream input(DEMO_SCRIPT);
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
    const auto script = [](const QByteArray& text, const QByteArray& expected) {
        QTest::newRow(text.constData()) << text << expected;
    };
    const auto typed = [](const QByteArray& text, const QByteArray& expected) {
        QTest::newRow(("typed: " + text).constData()) << text << expected;
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
        return "error: \"cmd\" " + QByteArray::number(id) + ": what modules get under this id isn't a text";
    };
    script(R"({"type":0,"id":1,"text":{"operate":"notify","cmd":"102"}})", refused(102));
    script(R"({"type":"operate","id":-1,"text":"{\"operate\":\"show\",\"cmd\":\" +207x\"}"})", refused(207));
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
    typed("help", "help ");
    typed("quit now", "error: \"now\" is too much");
    typed("show", "error: ID is missing");
    typed("notify 7 9001x", "error: CMD must be a 32-bit number, not \"9001x\"");
    typed("notify 41002 102 600519", refused(102));
    typed("notify 7 1000000 x", refused(1'000'000));
    typed("notify 7 500 x", R"(0 7 {"operate":"notify","cmd":"500","bussiness":"x","need_create_new":"0"})");
    typed("notify 7 1 \xFF", "error: invalid UTF-8 byte at index 0: 0xFF");
    script(R"({"at":7,"desk":"help order"})", "@7 help order");
    script(R"({"desk":"order buy"})", "error: CODE is missing");
    script(R"({"desk":["quit"]})", "error: \"desk\" must be a string");
    script(R"({"desk":"notify 7 102 x"})", refused(102));

    typed("order buy 600000 10.05 1000", "buy 600000 10050 1000 account 0 funding 0");
    typed("order sell 000001@33 9 100 margin payback", "sell 000001@33 9000 100 account 1 funding 2");
    typed("order buy 1 0.001 5 borrowed", "buy 1 1 5 account 1 funding 1");
    typed("order buy 00700 380 100 connect", "buy 00700 380000 100 account 2 funding 0");
    typed("order buy 00700 380 100 borrowed connect", "error: only the margin account borrows and pays back");
    typed("order hold 1 1 1", "error: must be buy or sell, not \"hold\"");
    for (const char* const price : {"0", "-1", "1,5", "1.2345", "1e3"}) {
        typed(QByteArray("order buy 1 ") + price + " 100",
              QByteArray("error: PRICE must be a decimal number above 0, not \"") + price + '"');
    }
    typed("order buy 1 1 0", "error: QUANTITY must be a whole number above 0, not \"0\"");
    typed("order buy 1 1", "error: QUANTITY is missing");
    typed("order buy 1 1 1 credit",
          "error: \"credit\" is none of normal, margin, connect, borrowed, payback");
    typed("quote 1@256", "error: \"1@256\" is no CODE or CODE@MARKET");
    typed("quote @33", "error: \"@33\" is no CODE or CODE@MARKET");
    typed("orders", "list 0");
    typed("funds connect", "list 3 account 2");
    typed("deals all", "error: ACCOUNT must be normal, margin or connect, not \"all\"");
    typed("fill 7", "fill 7 -1 in 1");
    typed("fill 7 500 500", "fill 7 500 in 500");
    typed("fill 7 500 501", "error: PARTS must not be more than QUANTITY");
    typed("phase", "phase?");
    typed("phase closing-auction", "phase closing auction");
    typed("clock", "clock?");
    typed("clock 0.5", "speed 0.5");
    typed("clock +1.5", "step 1500");
    typed("clock 09:30", "to 09:30:00");
    typed("clock 23:59:59", "to 23:59:59");
    const QByteArray noClock =
        "error: must be a speed (2), a step of up to a day (+90) or a time (14:56:30), not \"";
    for (const char* const word : {"24:00", "9:30", "+86401", "-1", "1e3", "100001", "09:60"}) {
        typed(QByteArray("clock ") + word, noClock + word + '"');
    }
    typed("scenario limit-up 600000", "scenario limit-up 600000");
    typed("scenario rain", "error: unknown scenario \"rain\"; \"scenario\" lists them");
    typed("fault late", "fault late on -1");
    typed("fault late 500", "fault late on 500");
    typed("fault late off", "fault late off -1");
    typed("fault late -5", "error: must be on, off or a whole number, not \"-5\"");
    typed(R"(probe {"request": "tree"})",
          R"(0 41009 {"operate":"notify","cmd":"9100","bussiness":"{\"request\":\"tree\"}",)"
          R"("need_create_new":"1"})");
    typed("probe tree",
          "error: not JSON at byte 3: syntax error while parsing value - invalid literal; last "
          "read: 'tre'");
    typed("help nothing", "error: there is no command \"nothing\"");
    typed("opne 7", "error: unknown command \"opne\"; \"help\" lists them");
}

PANELRY_TEST(ScriptTest)
#include "script_test.moc"
