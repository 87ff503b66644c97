#include <sys/stat.h>

#include <QTemporaryDir>
#include <fstream>

#include "bridge/color_table.h"
#include "bridge/config_json.h"
#include "bridge/config_store.h"
#include "support/rows.h"
#include "support/test.h"

namespace
{

// The sections as they were read, or what was thrown.
template <class Read>
QByteArray Outcome(Read read)
{
    try {
        return QByteArray::fromStdString(nlohmann::json(read()).dump());
    } catch (const nlohmann::json::parse_error&) {
        return "parse_error";
    } catch (const nlohmann::json::type_error& error) {
        return QByteArray(error.what()).replace("[json.exception.type_error.302] ", "");
    }
}

}  // namespace

class ConfigTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void FileOutcome_data()
    {
        const panelry::test::Rows<QByteArray, QByteArray> row("text outcome");
        row("plain", R"({"b": {"k": "1", "a": "行情"}, "a": {}})", R"({"a":{},"b":{"a":"行情","k":"1"}})");
        row("byte order mark, other line ends", "\xef\xbb\xbf{\r\n}\r\n", "{}");
        row("escapes", R"({"s": {"k": "\u884c\n"}})", R"({"s":{"k":"行\n"}})");
        row("blank file", " \n", "parse_error");
        row("cut off", R"({"s": {"k": "v")", "parse_error");
        row("comment", "{} // none", "parse_error");
        row("two documents", "{}{}", "parse_error");
        row("not UTF-8", "{\"s\": {\"k\": \"\xd0\xd0\"}}", "parse_error");
        row("list of pairs", R"([["s", {}]])", "type must be object, but is array");
        row("section is a list", R"({"s": []})", "type must be object, but is array");
        row("value is a number", R"({"s": {"k": 1}})", "type must be string, but is number");
    }

    // The same file in all of the places below the current directory: each reader lets the same exception out.
    void FileOutcome()
    {
        QFETCH(const QByteArray, text);
        const QTemporaryDir folder(QDir::tempPath() + QStringLiteral("/面板 XXXXXX"));
        QVERIFY(QDir::setCurrent(folder.path()));
        for (const char* const path :
             {"sysconfig/config.json", "userconfig/config.json", "sysconfig/color.json"}) {
            QDir().mkpath(QFileInfo(QFile::decodeName(path)).path());
            std::ofstream(path) << text.toStdString();
        }
        QTEST(Outcome([] { return *ConfigStore(nullptr, "none").SystemTable(); }), "outcome");
        QTEST(Outcome([] { return *ConfigStore("none", nullptr).UserTable(); }), "outcome");
        QTEST(Outcome([] { return *ColorTable().Table(); }), "outcome");
        QDir::setCurrent(QDir::rootPath());
    }

    void WhatIsNoFileCountsAsMissing()
    {
        const QTemporaryDir folder;
        const std::string base = folder.path().toStdString();
        QVERIFY(QDir(folder.path()).mkdir(QStringLiteral("folder")));
        QVERIFY(QFile::link(QStringLiteral("nowhere"), folder.filePath(QStringLiteral("dangling"))));
        QVERIFY(QFile::link(QStringLiteral("loop"), folder.filePath(QStringLiteral("loop"))));
        QCOMPARE(mkfifo((base + "/pipe").c_str(), 0600), 0);  // must not wait for a writer either
        for (const char* name : {"/missing", "/folder", "/dangling", "/loop", "/pipe", "/missing/deeper"}) {
            const panelry::ConfigFile file = panelry::ReadConfigFile(base + name);
            QVERIFY2(file.document.is_null() && file.table.empty(), name);
        }
    }
};

PANELRY_TEST(ConfigTest)
#include "config_test.moc"
