#include <sys/stat.h>
#include <unistd.h>

#include <QFile>
#include <algorithm>

#include "desk/abi_note.h"
#include "desk/desk_process.h"
#include "desk/inspect_settings.h"
#include "support/rows.h"
#include "support/test.h"

using panelry::test::DeskProcess;
using panelry::test::Rows;
using panelry::test::Text;
using panelry::test::Texts;
using panelry::test::WriteFile;

namespace
{

void CopyModule(const QTemporaryDir& host, const char* library, const char* name)
{
    const QString path = WriteFile(host, QStringLiteral("adsplugins/") + Text(name), "");
    QVERIFY(QFile::remove(path) && QFile::copy(Text(library), path));
}

QString Inspect(const QString& directory, int& status)
{
    DeskProcess desk;
    desk.Start({QStringLiteral("--inspect"), directory}, {});
    status = desk.Finish();
    return desk.brokenLines.join(QString());
}

// The verdicts on a file, with what is said, blanks folded.
QStringList VerdictsOn(const QString& report, const QString& file)
{
    QStringList verdicts;
    for (const QString& line : report.split(QLatin1Char('\n'))) {
        const QString folded = line.simplified();
        const bool isFault = folded.startsWith(QLatin1String("! "));
        const QString verdict = folded.mid(isFault ? 2 : 0);
        if (verdict.startsWith(file + QLatin1Char(' '))) {
            verdicts << (isFault ? Text("!") : QString()) + verdict.mid(file.size() + 1);
        }
    }
    return verdicts;
}

// Whether each text begins as it should; `expected` has "|" between the beginnings.
bool Begin(const QStringList& texts, const QString& expected)
{
    const QStringList beginnings = expected.split(QLatin1Char('|'));
    return std::equal(
        texts.begin(), texts.end(), beginnings.begin(), beginnings.end(),
        [](const QString& text, const QString& beginning) { return text.startsWith(beginning); });
}

}  // namespace

class InspectTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void aModule_data()
    {
        QTest::addColumn<QByteArray>("library");
        QTest::addColumn<QByteArray>("name");
        QTest::addColumn<QString>("expected");  // the beginnings of the verdicts, "|" between them
        const auto row = [](const char* library, const char* name, const char* expected) {
            QTest::newRow(
                qPrintable(Text(library).section(QLatin1Char('/'), -1) + QStringLiteral(" as ") + Text(name)))
                << QByteArray(library) << QByteArray(name) << Text(expected);
        };
        row(FAKE_MODULE, "good.so", "taken 7001 \"One\"|taken 7002 \"Two\"");
        row(FAKE_MODULE, "large_id.so", "taken 7001 \"One\"|!warning 2147483648 \"Two\": the id is negative");
        row(FAKE_MODULE, "null.so", "!skipped GetModuleInfo returns null");
        row(FAKE_MODULE, "empty.so", "!skipped GetModuleInfo returns an empty vector");
        row(FAKE_MODULE, "crash.so", "!fatal loading it ends the process: signal 6");
        row(FAKE_MODULE, "exit.so", "!fatal loading it ends the process, with exit status 3");
        row(FAKE_MODULE, "good.SO", "!skipped doesn't end in \".so\"");
        row(FAKE_PANELRY, "host.so", "!skipped CreateModule isn't exported");
        row(DEMO_SCRIPT, "demo.so", "!skipped doesn't load: ");
        row(DEMO_SCRIPT, "demo.jsonl", "skipped doesn't end in \".so\"");
        row(FAKE_MODULE_OTHER_ABI, "other.so",
            "!warning is loaded although it was built for something else, so it wasn't asked what it offers: "
            "cxxabi is 1, "
            "here ");
        row(FAKE_MODULE_INCOMPLETE, "incomplete.so",
            "taken 7001 \"One\"|taken 7002 \"Two\"|!warning ends the host when it calls what is missing: |"
            "!warning doesn't say what it was built for");
    }

    void aModule()
    {
        QFETCH(QByteArray, library);
        QFETCH(QByteArray, name);
        QFETCH(QString, expected);
        const QTemporaryDir host;
        CopyModule(host, library.constData(), name.constData());
        int status = -1;
        const QString report = Inspect(host.path(), status);
        QVERIFY2(Begin(VerdictsOn(report, Text(name)), expected), qPrintable(report));
        QCOMPARE(status, expected.contains(QLatin1Char('!')) ? 1 : 0);
        QVERIFY2(!report.contains(Text("a module may write")), qPrintable(report));
    }

    void theFirstLibraryKeepsAnId()
    {
        const QTemporaryDir host;
        CopyModule(host, FAKE_MODULE, "a.so");
        CopyModule(host, FAKE_MODULE, "b.so");
        int status = -1;
        const QString report = Inspect(host.filePath(QStringLiteral("adsplugins")), status);
        // Which one comes first is the directory's affair.
        QStringList files{QStringLiteral("a.so"), QStringLiteral("b.so")};
        if (report.indexOf(files[1]) < report.indexOf(files[0])) {
            files.swapItemsAt(0, 1);
        }
        QCOMPARE(VerdictsOn(report, files[0]), Texts({"taken 7001 \"One\"", "taken 7002 \"Two\""}));
        QCOMPARE(VerdictsOn(report, files[1]),
                 QStringList() << Text("!ignored 7001 \"One\": offered by %1 before").arg(files[0])
                               << Text("!ignored 7002 \"Two\": offered by %1 before").arg(files[0]));
        QCOMPARE(status, 1);
    }

    void entriesThatAreNoModules()
    {
        const QTemporaryDir host;
        const QString inside = WriteFile(host, QStringLiteral("adsplugins/folder.so/x"), "");
        QVERIFY(symlink("nowhere", qPrintable(host.filePath(QStringLiteral("adsplugins/lost.so")))) == 0);
        QVERIFY(symlink("loop.so", qPrintable(host.filePath(QStringLiteral("adsplugins/loop.so")))) == 0);
        QVERIFY(mkfifo(qPrintable(host.filePath(QStringLiteral("adsplugins/pipe"))), 0600) == 0);
        int status = -1;
        QString report = Inspect(host.path(), status);
        QCOMPARE(VerdictsOn(report, QStringLiteral("pipe")), Texts({"skipped doesn't end in \".so\""}));
        QCOMPARE(VerdictsOn(report, QStringLiteral("folder.so")), Texts({"skipped is a directory"}));
        QCOMPARE(VerdictsOn(report, QStringLiteral("lost.so")),
                 Texts({"!skipped is a link that leads nowhere"}));
        QVERIFY2(Begin(VerdictsOn(report, QStringLiteral("loop.so")), Text("!fatal can't be looked at")),
                 qPrintable(report));
        report = Inspect(inside, status);  // a file in the place of the directory
        QVERIFY2(report.contains(Text("! x  fatal    can't be read as a directory")), qPrintable(report));
        report = Inspect(host.filePath(QStringLiteral("nothing/adsplugins")), status);
        QVERIFY2(report.contains(Text("! adsplugins  missing  there is no such directory")),
                 qPrintable(report));
        QCOMPARE(status, 1);
    }

    void aHostWithoutFault()
    {
        const QTemporaryDir host;
        CopyModule(host, FAKE_MODULE, "good.so");
        WriteFile(host, QStringLiteral("userconfig/config.json"), "{}");
        int status = -1;
        const QString report = Inspect(host.path(), status);
        QCOMPARE(status, 0);
        QVERIFY2(!report.contains(QLatin1Char('!')) && report.contains(Text("no fault found")),
                 qPrintable(report));
        WriteFile(host, QStringLiteral("sysconfig/color.json"), "{\"a\":");
        QVERIFY(Inspect(host.path(), status).contains(Text("! sysconfig/color.json")));
        QCOMPARE(status, 1);
    }

    // A reader that trusts what a broken file says about itself reads past its end.
    void aBrokenFileHasNoNote()
    {
        QFile file(QStringLiteral(FAKE_MODULE_OTHER_ABI));
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray whole = file.readAll();
        const QTemporaryDir directory;
        const std::string note = "cxxabi=1;qt=6;sdk=1";
        const auto noteOf = [&](const QByteArray& content) {
            const QString path = WriteFile(directory, QStringLiteral("broken.so"), content);
            return panelry::desk::ReadAbiNote(path.toStdString());
        };
        for (int size = 0; size < 4096; size += 13) {  // headers and notes stand in front
            const std::optional<std::string> found = noteOf(whole.left(size));
            QVERIFY(!found || *found == note);
        }
        QVERIFY(!noteOf(whole.left(64)));
        QVERIFY(noteOf(whole) == note);
        const int name =
            whole.indexOf(QByteArray("Panelry", 8));  // behind the sizes of name and text, and the type
        for (const int size : {name - 12, name - 8}) {
            QVERIFY(!noteOf(QByteArray(whole).replace(size, 4, "\xff\xff\xff\x7f")));
        }
    }

    void settings_data()
    {
        const Rows<QByteArray, const char*> row("content expected");
        row("sound", R"({"general":{"language":"en"},"empty":{}})", "fine ");
        row("empty", "", "fatal parse error at line 1, column 1: ");
        row("cut off", "{\n\"a\":{\n  \"b\" \"c\"}}", "fatal parse error at line 3, column 9: ");
        row("not UTF-8", "{\"a\":{\"b\":\"\xb9\xfa\"}}", "fatal parse error at line 1, column 12: ");
        row("a section that is none", R"({"a":"b"})",
            "fatal section \"a\" is of type string; must be an object");
        row("values that are no texts", R"({"a":{"b":1.50,"c":"d"},"e":{"f":{"g":"h"}},"i":{"j":true}})",
            "fatal section \"a\", key \"b\": 1.5 isn't a text; write it in quotes|"
            "fatal section \"e\", key \"f\": object isn't a text; write it in quotes|"
            "fatal section \"i\", key \"j\": true isn't a text; write it in quotes");
    }

    void settings()
    {
        QFETCH(QByteArray, content);
        QFETCH(QString, expected);
        const QTemporaryDir host;
        WriteFile(host, QStringLiteral("sysconfig/config.json"), content);
        WriteFile(host, QStringLiteral("sysconfig/color.json/is_a_directory"), "");
        QStringList others;
        QStringList found;
        for (const panelry::desk::Finding& finding :
             panelry::desk::InspectSettings(host.path().toStdString())) {
            const bool isMain = finding.subject == "sysconfig/config.json";
            QVERIFY(!isMain || finding.isFault == (finding.verdict == "fatal"));
            (isMain ? found : others) << QString::fromStdString(finding.verdict + ' ' + finding.text);
        }
        QVERIFY2(Begin(found, expected), qPrintable(found.join(QLatin1Char('|'))));
        QCOMPARE(others, Texts({"missing none is needed",
                                "missing is there, but can't be read as a file: not used"}));
    }
};

PANELRY_TEST(InspectTest)
#include "inspect_test.moc"
