#include <sys/stat.h>

#include <QTemporaryDir>

#include "bridge/color_table.h"
#include "bridge/config_json.h"
#include "bridge/config_store.h"
#include "support/rows.h"
#include "support/test.h"

namespace
{

void Write(const QString& path, const QByteArray& text)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    QVERIFY(file.open(QFile::WriteOnly) && file.write(text) == text.size());
}

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

    // The same file through all of its readers: each lets the same exception out.
    void FileOutcome()
    {
        QFETCH(const QByteArray, text);
        const QTemporaryDir folder;
        QVERIFY(QDir::setCurrent(folder.path()));
        const std::string path = QDir::current().filePath(QStringLiteral("file.json")).toStdString();
        Write(QString::fromStdString(path), text);
        Write(QStringLiteral("sysconfig/color.json"), text);
        QTEST(Outcome([&path] { return *ConfigStore(path.c_str(), "none").SystemTable(); }), "outcome");
        QTEST(Outcome([&path] { return *ConfigStore("none", path.c_str()).UserTable(); }), "outcome");
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

    void DefaultPlacesAreBelowTheCurrentDirectory()
    {
        const QTemporaryDir folder(QDir::tempPath() + QStringLiteral("/面板 XXXXXX"));
        QVERIFY(QDir::setCurrent(folder.path()));
        Write(QStringLiteral("sysconfig/config.json"), R"({"s": {"a": "system", "b": "system"}})");
        Write(QStringLiteral("userconfig/config.json"), R"({"s": {"a": "user"}})");
        Write(QStringLiteral("sysconfig/color.json"), R"({"light": {"rise": "red"}})");
        ConfigStore store;
        ColorTable colours;
        QDir::setCurrent(QDir::rootPath());
        QCOMPARE(store.Read("a", "s"), "user");
        QCOMPARE(store.Read("b", "s"), "system");
        QCOMPARE((*colours.Table())["light"]["rise"], "red");
    }
};

PANELRY_TEST(ConfigTest)
#include "config_test.moc"
