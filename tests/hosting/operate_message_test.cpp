#include "hosting/operate_message.h"

#include <QWidget>
#include <sstream>

#include "support/rows.h"
#include "support/test.h"

using nlohmann::json;
using namespace panelry::test;

Q_DECLARE_METATYPE(std::string)

namespace
{

// A message with all the keys of an operate message, each of them said otherwise than its default.
json FullMessage()
{
    return {{"operate", "show"},      {"bussiness", "text"},    {"cmd", "7"},
            {"always_display", "1"},  {"need_display", "0"},    {"need_wrapper", "1"},
            {"need_create_new", "0"}, {"ignord_lock_hide", "1"}};
}

std::string Read(const std::string& text)
{
    const panelry::OperateMessage m = panelry::ReadOperateMessage(text);
    std::ostringstream read;
    read << m.operate << '|' << (m.business == text ? "<text>" : m.business) << '|' << m.command << '|'
         << m.alwaysDisplay << m.needDisplay << m.needCreateNew;
    return read.str();
}

// `levels` nested values, the innermost of them a text.
std::string Nested(std::size_t levels)
{
    const std::size_t lists = levels - 1;
    return R"({"operate": "show", "init_param": )" + std::string(lists, '[') + R"("x")" +
           std::string(lists, ']') + '}';
}

}  // namespace

class OperateMessageTest : public Test
{
    Q_OBJECT

private Q_SLOTS:
    void OperateTexts_data()
    {
        // operate|bussiness|cmd|always_display, need_display, need_create_new
        const Rows<std::string, std::string> row("text read");
        const char* const nothing = "|<text>|-1|011";
        row("empty", "", nothing);
        row("a word", "quit", nothing);
        row("no object", R"(["operate", "show"])", nothing);
        row("something behind", R"({"operate": "show"} x)", nothing);
        row("not UTF-8", "{\"operate\": \"show\", \"x\": \"\xd0\"}", nothing);
        row("half a character", R"({"operate": "show", "x": "\ud800"})", nothing);
        row("a number too large", R"({"operate": "show", "x": 1e999})", nothing);
        row("everything", FullMessage().dump(), "show|text|7|100");
        row("UTF-8", R"({"operate": "\u5c55", "bussiness": "行情"})", "展|行情|-1|011");
        row("flags take nothing but 1",
            R"({"always_display": "true", "need_display": "", "need_create_new": "01"})", "|<text>|-1|000");
        // A value of another type ends the reading: what was read in front of it stands.
        const auto bad = [&row](const char* key, const json& value, const char* read) {
            json message = FullMessage();
            message[key] = value;
            row((std::string(key) + ' ' + value.type_name()).c_str(), message.dump(), read);
        };
        bad("operate", 1, nothing);
        bad("bussiness", json::object(), "show|<text>|-1|011");
        bad("cmd", 5, "show|text|-1|011");
        bad("always_display", true, "show|text|7|011");
        bad("need_display", nullptr, "show|text|7|111");
        bad("need_wrapper", json::array(), "show|text|7|101");
        bad("need_create_new", false, "show|text|7|101");
        bad("ignord_lock_hide", 1, "show|text|7|100");
        bad("init_param", 1, "show|text|7|100");
        row("512 levels", Nested(512), "show|<text>|-1|011");
        row("513 levels", Nested(513), nothing);
        row("a million levels that never end", std::string(1000000, '['), nothing);
    }

    void OperateTexts()
    {
        QFETCH(const std::string, text);
        QTEST(Read(text), "read");
    }

    void CreationTexts_data()
    {
        // The flags: need_wrapper, ignord_lock_hide.
        const Rows<std::string, std::string, const char*> row("text creation flags");
        const auto with = [](const std::string& parameter, char display) {
            return R"({"create_source":"panelry","init_param":)" + parameter + ",\"need_display\":\"" +
                   display + "\"}";
        };
        row("no object", "[1]", with("null", '0'), "00");
        row("everything",
            R"({"need_display": "1", "need_wrapper": "1", "ignord_lock_hide": "1", "init_param": {}})",
            with("{}", '1'), "11");
        row("compact, keys in order, not escaped",
            R"({"init_param": {"b": [1, 2.5, "行"], "a": "\u884c\n"}})",
            with(R"({"a":"行\n","b":[1,2.5,"行"]})", '0'), "00");
        row("bad display", R"({"need_display": 1, "need_wrapper": "1", "init_param": 2})", with("null", '0'),
            "00");
        row("bad frame",
            R"({"need_display": "1", "need_wrapper": 1, "ignord_lock_hide": "1", "init_param": 2})",
            with("null", '1'), "00");
        row("bad lock", R"({"need_wrapper": "1", "ignord_lock_hide": 1, "init_param": 2})", with("null", '0'),
            "10");
        row("other keys may be bad", R"({"operate": 1, "need_wrapper": "1", "init_param": 2})",
            with("2", '0'), "10");
        row("512 levels", Nested(512), with(std::string(511, '[') + R"("x")" + std::string(511, ']'), '0'),
            "00");
        row("513 levels", Nested(513), with("null", '0'), "00");
    }

    void CreationTexts()
    {
        QFETCH(const std::string, text);
        const panelry::CreationMessage message = panelry::ReadCreationMessage(text);
        QTEST(panelry::CreationText(message, nullptr), "creation");
        QTEST(QStringLiteral("%1%2").arg(message.needWrapper).arg(message.ignoreLockHide), "flags");
    }

    void ClonesGetTheDataOfTheirSource()
    {
        QWidget source;
        const auto creation = [&source] { return panelry::CreationText({}, &source); };
        const std::string none =
            R"({"create_source":"panelry","init_data":{},"init_param":null,"need_display":"0"})";
        QCOMPARE(creation(), none);
        source.setProperty("module_data", 5);  // not a map
        QCOMPARE(creation(), none);
        source.setProperty(
            "module_data",
            QVariantMap{{"代码", "六\n"}, {"c", 5}, {"a", true}, {"b", QVariantList{1}}, {"d", QVariant()}});
        QCOMPARE(creation(),
                 R"({"create_source":"panelry","init_data":{"a":"true","b":"","c":"5","d":"","代码":"六\n"},)"
                 R"("init_param":null,"need_display":"0"})");
        source.setProperty("module_data", QVariantMap{{"half", QString(QChar(0xd800))}});
        QVERIFY(json::parse(creation())["init_data"].contains("half"));  // and doesn't throw
    }

    void PushTexts()
    {
        using panelry::PushText;
        for (const std::string& text :
             {std::string(), std::string(R"({"init_param": 1)"), std::string(R"(["init_param"])"),
              std::string(R"({ "x": 1 })"), Nested(513), Nested(100000)}) {
            QCOMPARE(PushText(text), text);
        }
        QCOMPARE(PushText(R"({"init_param": {"b": [1, 2], "a": "行", "c": {}}, "operate": 1})"),
                 "{\n\"a\": \"行\",\n\"b\": [\n1,\n2\n],\n\"c\": {}\n}");
        QCOMPARE(PushText(R"({"init_param": null})"), "null");
    }
};

PANELRY_TEST(OperateMessageTest)
#include "operate_message_test.moc"
