#include <sys/stat.h>
#include <unistd.h>

#include <QFile>
#include <algorithm>

#include "desk/abi_note.h"
#include "desk/desk_process.h"
#include "desk/inspect_settings.h"
#include "support/rows.h"
#include "support/test.h"

using namespace panelry::test;

namespace
{

void CopyModule(const QTemporaryDir& host, const QString& library, const QString& name)
{
    const QString path = WriteFile(host, "adsplugins/" + name, "");
    QVERIFY(QFile::remove(path) && QFile::copy(library, path));
}

QString Inspect(const QString& directory, int wantedStatus)
{
    DeskProcess desk;
    desk.Start("--inspect " + directory, "");
    return desk.Finish() == wantedStatus ? desk.brokenLines.join(QString()) : "! another exit status";
}

// The verdicts on a file, with what is said, blanks folded.
QStringList VerdictsOn(const QString& report, const QString& file)
{
    QStringList verdicts;
    for (const QString& line : report.split('\n')) {
        const QString folded = line.simplified();
        const bool isFault = folded.startsWith("! ");
        const QString verdict = folded.mid(isFault ? 2 : 0);
        if (verdict.startsWith(file + ' ')) {
            verdicts << (isFault ? "!" : QString()) + verdict.mid(file.size() + 1);
        }
    }
    return verdicts;
}

// Whether each text begins as it should; `expected` has "|" between the beginnings.
bool Begin(const QStringList& texts, const QString& expected)
{
    const QStringList beginnings = expected.split('|');
    return std::equal(
        texts.begin(), texts.end(), beginnings.begin(), beginnings.end(),
        [](const QString& text, const QString& beginning) { return text.startsWith(beginning); });
}

}  // namespace

class InspectTest : public Test
{
    Q_OBJECT

private Q_SLOTS:
    void aModule_data()
    {
        // Named as the file; `expected`: the beginnings of the verdicts, "|" between them.
        const Rows<const char*, const char*> row("library expected");
        row("good.so", FAKE_MODULE, "taken 7001 \"One\"|taken 7002 \"Two\"");
        row("large_id.so", FAKE_MODULE, "taken 7001 \"One\"|!warning 2147483648 \"Two\": the id is negative");
        row("null.so", FAKE_MODULE, "!skipped GetModuleInfo returns null");
        row("empty.so", FAKE_MODULE, "!skipped GetModuleInfo returns an empty vector");
        row("crash.so", FAKE_MODULE, "!fatal loading it ends the process: signal 6");
        row("exit.so", FAKE_MODULE, "!fatal loading it ends the process, with exit status 3");
        row("good.SO", FAKE_MODULE, "!skipped doesn't end in \".so\"");
        row("host.so", FAKE_PANELRY, "!skipped CreateModule isn't exported");
        row("demo.so", DEMO_SCRIPT, "!skipped doesn't load: ");
        row("demo.jsonl", DEMO_SCRIPT, "skipped doesn't end in \".so\"");
        row("other.so", FAKE_MODULE_OTHER_ABI,
            "!warning is loaded although it was built for something else, so it wasn't asked what it offers: "
            "cxxabi is 1, here ");
        row("incomplete.so", FAKE_MODULE_INCOMPLETE,
            "taken 7001 \"One\"|taken 7002 \"Two\"|!warning ends the host when it calls what is missing: |"
            "!warning doesn't say what it was built for");
    }

    void aModule()
    {
        QFETCH(QString, library);
        QFETCH(QString, expected);
        const QTemporaryDir host;
        const QString file = QTest::currentDataTag();
        CopyModule(host, library, file);
        const QString report = Inspect(host.path(), expected.contains('!') ? 1 : 0);
        QVERIFY2(Begin(VerdictsOn(report, file), expected), qPrintable(report));
        QVERIFY2(!report.contains("a module may write"), qPrintable(report));
    }

    void theFirstLibraryKeepsAnId()
    {
        const QTemporaryDir host;
        CopyModule(host, FAKE_MODULE, "a.so");
        CopyModule(host, FAKE_MODULE, "b.so");
        const QString report = Inspect(host.filePath("adsplugins"), 1);
        // Which one comes first is the directory's affair.
        QStringList files{"a.so", "b.so"};
        if (report.indexOf(files[1]) < report.indexOf(files[0])) {
            files.swapItemsAt(0, 1);
        }
        QCOMPARE(VerdictsOn(report, files[0]), QStringList({"taken 7001 \"One\"", "taken 7002 \"Two\""}));
        QCOMPARE(VerdictsOn(report, files[1]),
                 QStringList({"!ignored 7001 \"One\": offered by " + files[0] + " before",
                              "!ignored 7002 \"Two\": offered by " + files[0] + " before"}));
    }

    void entriesThatAreNoModules()
    {
        const QTemporaryDir host;
        const QString inside = WriteFile(host, "adsplugins/folder.so/x", "");
        QVERIFY(symlink("nowhere", qPrintable(host.filePath("adsplugins/lost.so"))) == 0);
        QVERIFY(symlink("loop.so", qPrintable(host.filePath("adsplugins/loop.so"))) == 0);
        QVERIFY(mkfifo(qPrintable(host.filePath("adsplugins/pipe")), 0600) == 0);
        QString report = Inspect(host.path(), 1);
        QCOMPARE(VerdictsOn(report, "pipe"), QStringList({"skipped doesn't end in \".so\""}));
        QCOMPARE(VerdictsOn(report, "folder.so"), QStringList({"skipped is a directory"}));
        QCOMPARE(VerdictsOn(report, "lost.so"), QStringList({"!skipped is a link that leads nowhere"}));
        QVERIFY2(Begin(VerdictsOn(report, "loop.so"), "!fatal can't be looked at"), qPrintable(report));
        report = Inspect(inside, 1);  // a file in the place of the directory
        QVERIFY2(report.contains("! x  fatal    can't be read as a directory"), qPrintable(report));
        report = Inspect(host.filePath("nothing/adsplugins"), 1);
        QVERIFY2(report.contains("! adsplugins  missing  there is no such directory"), qPrintable(report));
    }

    void aHostWithoutFault()
    {
        const QTemporaryDir host;
        CopyModule(host, FAKE_MODULE, "good.so");
        WriteFile(host, "userconfig/config.json", "{}");
        const QString report = Inspect(host.path(), 0);
        QVERIFY2(!report.contains('!') && report.contains("no fault found"), qPrintable(report));
        WriteFile(host, "sysconfig/color.json", "{\"a\":");
        QVERIFY(Inspect(host.path(), 1).contains("! sysconfig/color.json"));
    }

    // A reader that trusts what a broken file says about itself reads past its end.
    void aBrokenFileHasNoNote()
    {
        QFile file(FAKE_MODULE_OTHER_ABI);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray whole = file.readAll();
        const QTemporaryDir directory;
        const std::string note = "cxxabi=1;qt=6;sdk=1";
        const auto noteOf = [&](const QByteArray& content) {
            const QString path = WriteFile(directory, "broken.so", content);
            return panelry::desk::ReadAbiNote(path.toStdString());
        };
        for (int size = 0; size < 4096; size += 13) {  // headers and notes stand in front
            const std::optional<std::string> found = noteOf(whole.left(size));
            QVERIFY(!found || *found == note);
        }
        QVERIFY(!noteOf(whole.left(64)));
        QVERIFY(noteOf(whole) == note);
        const int name = whole.indexOf(QByteArray("Panelry", 8));
        for (const int size : {name - 12, name - 8}) {  // of the name and of the text, ahead of the type
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
        WriteFile(host, "sysconfig/config.json", content);
        WriteFile(host, "sysconfig/color.json/is_a_directory", "");
        QStringList others;
        QStringList found;
        for (const panelry::desk::Finding& finding :
             panelry::desk::InspectSettings(host.path().toStdString())) {
            const bool isMain = finding.subject == "sysconfig/config.json";
            QVERIFY(!isMain || finding.isFault == (finding.verdict == "fatal"));
            (isMain ? found : others) << QString::fromStdString(finding.verdict + ' ' + finding.text);
        }
        QVERIFY2(Begin(found, expected), qPrintable(found.join('|')));
        QCOMPARE(others, QStringList({"missing none is needed",
                                      "missing is there, but can't be read as a file: not used"}));
    }
};

PANELRY_TEST(InspectTest)
#include "inspect_test.moc"
