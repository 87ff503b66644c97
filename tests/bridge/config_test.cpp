#include <sys/stat.h>
#include <unistd.h>

#include <QTemporaryDir>
#include <cstdio>

#include "bridge/color_table.h"
#include "bridge/config_json.h"
#include "bridge/config_store.h"
#include "support/test.h"

namespace
{

// What the process writes to standard error while the object lives.
class CapturedErrors
{
public:
    CapturedErrors() { dup2(fileno(m_file), STDERR_FILENO); }
    ~CapturedErrors()
    {
        dup2(m_saved, STDERR_FILENO);
        close(m_saved);
        std::fclose(m_file);
    }

    QByteArray Text()
    {
        std::fflush(stderr);
        QFile file;
        std::rewind(m_file);
        return file.open(m_file, QFile::ReadOnly) ? file.readAll() : QByteArray("unreadable");
    }

private:
    std::FILE* m_file = std::tmpfile();
    int m_saved = dup(STDERR_FILENO);
};

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
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QByteArray>("outcome");
        const auto row = [](const char* name, const QByteArray& text, const QByteArray& outcome) {
            QTest::newRow(name) << text << outcome;
        };
        row("plain", R"({"b": {"k": "1", "a": "行情"}, "a": {}})", R"({"a":{},"b":{"a":"行情","k":"1"}})");
        row("byte order mark, other line ends", "\xef\xbb\xbf{\r\n}\r\n", "{}");
        row("escapes", R"({"s": {"k": "\u884c\n"}})", R"({"s":{"k":"行\n"}})");
        row("blank file", " \n", "parse_error");
        row("cut off", R"({"s": {"k": "v")", "parse_error");
        row("comment", "{} // none", "parse_error");
        row("two documents", "{}{}", "parse_error");
        row("not UTF-8", "{\"s\": {\"k\": \"\xd0\xd0\"}}", "parse_error");
        row("null", "null", "type must be object, but is null");
        row("list of pairs", R"([["s", {}]])", "type must be object, but is array");
        row("section is a list", R"({"s": []})", "type must be object, but is array");
        row("value is a number", R"({"s": {"k": 1}})", "type must be string, but is number");
        row("value is null", R"({"s": {"k": null}})", "type must be string, but is null");
    }

    // The same file through all of its readers: each lets the same exception out, behind one line that names
    // it.
    void FileOutcome()
    {
        QFETCH(const QByteArray, text);
        QFETCH(const QByteArray, outcome);
        const QTemporaryDir folder;
        QVERIFY(QDir::setCurrent(folder.path()));
        const std::string path = QDir::current().filePath(QStringLiteral("file.json")).toStdString();
        Write(QString::fromStdString(path), text);
        Write(QStringLiteral("sysconfig/color.json"), text);
        const auto check = [&outcome](const std::string& file, const auto& read) {
            CapturedErrors errors;
            QCOMPARE(Outcome(read), outcome);
            const QByteArray line = "Malformed configuration file: " + QByteArray::fromStdString(file) + '\n';
            QCOMPARE(errors.Text(), outcome.startsWith('{') ? QByteArray() : line);
        };
        check(path, [&path] { return *ConfigStore(path.c_str(), "none").SystemTable(); });
        check(path, [&path] { return *ConfigStore("none", path.c_str()).UserTable(); });
        check("sysconfig/color.json", [] { return *ColorTable().Table(); });
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
        CapturedErrors errors;
        for (const char* name : {"/missing", "/folder", "/dangling", "/loop", "/pipe", "/missing/deeper"}) {
            const panelry::ConfigFile file = panelry::ReadConfigFile(base + name);
            QVERIFY2(file.document.is_null() && file.table.empty(), name);
        }
        QCOMPARE(errors.Text(), "");
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
        QCOMPARE((*store.SystemTable())["s"]["a"], "system");
        QCOMPARE((*store.UserTable())["s"]["a"], "user");
        QCOMPARE((*colours.Table())["light"]["rise"], "red");
    }
};

PANELRY_TEST(ConfigTest)
#include "config_test.moc"
