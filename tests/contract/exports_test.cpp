// What the built libraries show to the dynamic linker.

#include <QProcess>

#include "support/host_process.h"
#include "support/test.h"

using panelry::test::HostProcess;

namespace
{

const QString kModules = QStringLiteral(PANELRY_TEST_MODULES "/");

QString OutputOf(const QString& program, const QStringList& arguments)
{
    QProcess process;
    process.start(program, arguments);
    process.waitForFinished();
    return QString::fromUtf8(process.readAllStandardOutput());
}

}  // namespace

class ExportsTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void DynamicSymbolsAreTheExportsAlone_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<QStringList>("symbols");
        const QStringList ofModule{"CreateModule", "GetModuleInfo"};
        QTest::newRow("library") << QStringLiteral(PANELRY_TEST_LIBRARY_FILE)
                                 << QStringList{"Init", "NotifyMsg", "Uninit"};
        QTest::newRow("module library") << kModules + "reporter.so" << ofModule;
        QTest::newRow("another one") << kModules + "other.so" << ofModule;
    }

    void DynamicSymbolsAreTheExportsAlone()
    {
        QFETCH(QString, file);
        QFETCH(QStringList, symbols);
        QStringList found;
        const QString listed = OutputOf("nm", {"-D", "--defined-only", "--format=posix", file});
        for (const QString& line : listed.split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
            found.append(line.section(QLatin1Char(' '), 0, 0));
        }
        found.sort();
        QCOMPARE(found, symbols);
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
        host.AddModules("reporter");
        host.AddModules("other");
        host.Write("sysconfig/config.json", R"({"system":{"load_font":"0"},"a":{"b":"c"}})");
        QVERIFY(host.Start({"global"}));
        host.Do({"init 0 0 1", "notify 1 1001", "notify 1 2001"});
        const QString first = host.Ask(1001, "resources");
        const QString second = host.Ask(2001, "resources");
        QVERIFY(!first.isEmpty());
        QVERIFY(!second.isEmpty());
        QVERIFY(first != second);
        QCOMPARE(host.Ask(1001, "config a b"), "c");
        QCOMPARE(host.Ask(2001, "config a b"), "c");
        QVERIFY(host.End({"uninit"}));
    }
};

PANELRY_TEST(ExportsTest)
#include "exports_test.moc"
