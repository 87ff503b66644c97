// What the built libraries show to the dynamic linker.

#include "support/host_process.h"
#include "support/rows.h"
#include "support/test.h"

using panelry::test::HostProcess;
using panelry::test::OutputOf;
using panelry::test::Rows;

namespace
{

const QString kModules = QStringLiteral(PANELRY_TEST_MODULES "/");

}  // namespace

class ExportsTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void DynamicSymbolsAreTheExportsAlone_data()
    {
        const Rows<QString, QStringList> row("file symbols");
        const QStringList ofModule{"CreateModule", "GetModuleInfo"};
        row("library", PANELRY_TEST_LIBRARY_FILE, {"Init", "NotifyMsg", "Uninit"});
        row("module library", kModules + "reporter.so", ofModule);
        row("another one", kModules + "other.so", ofModule);
    }

    void DynamicSymbolsAreTheExportsAlone()
    {
        QFETCH(QString, file);
        QStringList found;
        const QString listed = OutputOf("nm", {"-D", "--defined-only", "--format=posix", file});
        for (const QString& line : listed.split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
            found.append(line.section(QLatin1Char(' '), 0, 0));
        }
        found.sort();
        QTEST(found, "symbols");
    }

    void AModuleSaysWhatAbiItWasBuiltFor()
    {
        const QString note = OutputOf("readelf", {"-n", "-p", ".note.panelry.abi", kModules + "reporter.so"});
        QVERIFY2(note.contains(QRegularExpression("Panelry +0x")), qPrintable(note));
        QVERIFY2(note.contains(QRegularExpression("cxxabi=\\d+;stdlib=[^;]+;qt=5;sdk=1")), qPrintable(note));
    }

    void EachLibraryHasItsOwnResourcesEvenWhenLoadedGlobally()
    {
        HostProcess host;
        host.AddModules("other");
        host.Write("sysconfig/config.json", R"({"system":{"load_font":"0"},"a":{"b":"c"}})");
        QVERIFY(host.Start({"global"}));
        host.Do({"init 0 0 1", "notify 1 1001", "notify 1 2001"});
        const QString first = host.Ask(1001, "resources");
        const QString second = host.Ask(2001, "resources");
        QVERIFY(!first.isEmpty() && !second.isEmpty() && first != second);
        QCOMPARE(host.Ask(1001, "config a b"), "c");
        QCOMPARE(host.Ask(2001, "config a b"), "c");
        QVERIFY(host.End({"uninit"}));
    }
};

PANELRY_TEST(ExportsTest)
#include "exports_test.moc"
