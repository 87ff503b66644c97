// What the built libraries show to the dynamic linker.

#include "support/host_process.h"
#include "support/test.h"

using namespace panelry::test;

static constexpr char kReporter[] = PANELRY_TEST_MODULES "/reporter.so";

class ExportsTest : public Test
{
    Q_OBJECT

private Q_SLOTS:
    void DynamicSymbolsAreTheExportsAlone()
    {
        const auto symbolsOf = [](const QString& file) {
            QString symbols;
            const QString listed = OutputOf("nm", {"-D", "--defined-only", "--format=posix", file});
            for (const QString& line : listed.split('\n', Qt::SkipEmptyParts)) {
                symbols += line.section(' ', 0, 0) + ' ';
            }
            return symbols;  // in the order of their names
        };
        QCOMPARE(symbolsOf(PANELRY_TEST_LIBRARY_FILE), "Init NotifyMsg Uninit ");
        QCOMPARE(symbolsOf(kReporter), "CreateModule GetModuleInfo ");
    }

    void AModuleSaysWhatAbiItWasBuiltFor()
    {
        const QString note = OutputOf("readelf", {"-n", "-p", ".note.panelry.abi", kReporter});
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
