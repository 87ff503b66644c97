// What the application thread sets up from the host's folder: directory, language, fonts, configuration.

#include <QApplication>
#include <QDir>
#include <csignal>

#include "support/host_process.h"
#include "support/test.h"

using panelry::test::HostProcess;

namespace
{

constexpr char kSystem[] = "sysconfig/config.json";
constexpr char kUser[] = "userconfig/config.json";

QString OutputOf(const QString& program, const QStringList& arguments)
{
    QProcess process;
    process.start(program, arguments);
    process.waitForFinished();
    return QString::fromUtf8(process.readAllStandardOutput()).trimmed();
}

// Family, points, weight and slant out of QFont::toString().
QString Brief(const QString& font)
{
    const QStringList parts = font.split(',');
    return QStringList{parts.value(0), parts.value(1), parts.value(4), parts.value(5)}.join(',');
}

}  // namespace

class ApplicationThreadTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void ConfigurationChoosesTheLanguage_data()
    {
        QTest::addColumn<QByteArray>("system");
        QTest::addColumn<QByteArray>("user");
        QTest::addColumn<QString>("buy");
        QTest::addColumn<QString>("asModulesRead");  // ["general"]["language"]
        QTest::newRow("no files") << QByteArray() << QByteArray() << "买入"
                                  << "";
        QTest::newRow("empty everywhere") << QByteArray(R"({"general":{"language":""}})")
                                          << QByteArray(R"({"general":{"language":""}})") << "买入"
                                          << "";
        QTest::newRow("the system's")
            << QByteArray(R"({"general":{"language":"en"}})") << QByteArray() << "Buy"
            << "en";
        QTest::newRow("the user's wins") << QByteArray(R"({"general":{"language":"en"}})")
                                         << QByteArray(R"({"general":{"language":"zh_CN"}})") << "买入"
                                         << "zh_CN";
        QTest::newRow("the user's section lacks the key") << QByteArray(R"({"general":{"language":"en"}})")
                                                          << QByteArray(R"({"general":{"x":"y"}})") << "Buy"
                                                          << "en";
        QTest::newRow("blanked by the user: modules see that, the catalogue is still the system's")
            << QByteArray(R"({"general":{"language":"en"}})") << QByteArray(R"({"general":{"language":""}})")
            << "Buy"
            << "";
        QTest::newRow("section and key swapped")
            << QByteArray(R"({"language":{"general":"en"}})") << QByteArray() << "买入"
            << "";
        QTest::newRow("a region's language")
            << QByteArray(R"({"general":{"language":"en_US"}})") << QByteArray() << "Buy"
            << "en_US";
        QTest::newRow("no such catalogue")
            << QByteArray(R"({"general":{"language":"fr"}})") << QByteArray() << "Common_Buy"
            << "fr";
    }

    void ConfigurationChoosesTheLanguage()
    {
        QFETCH(QByteArray, system);
        QFETCH(QByteArray, user);
        QFETCH(QString, buy);
        QFETCH(QString, asModulesRead);
        HostProcess host;
        host.AddModules("reporter");
        if (!system.isEmpty()) {
            host.Write(kSystem, system);
        }
        if (!user.isEmpty()) {
            host.Write(kUser, user);
        }
        QVERIFY(host.Start());
        host.Do({"init 0 0 1", "notify 1 1001 {}"});
        host.Settle();
        QCOMPARE(host.Ask(1001, "translation Common_Buy"), buy);
        QCOMPARE(host.Ask(1001, "config general language"), asModulesRead);
        QCOMPARE(QDir(host.Ask(1001, "directory")), QDir(QDir(host.Folder()).canonicalPath()));
    }

    void FontsAreLoadedUnlessSwitchedOff_data()
    {
        const QString file = OutputOf("fc-match", {"-f", "%{file}", "monospace"});
        const QString family = OutputOf("fc-match", {"-f", "%{family[0]}", "monospace"});
        QTest::addColumn<QString>("loadFont");
        QTest::addColumn<QString>("fontFile");
        QTest::addColumn<QString>("wanted");  // family, size, weight, italic
        // The toolkit's own choice, which this process has too.
        QTest::newRow("off") << "0" << file << Brief(QApplication::font().toString());
        QTest::newRow("no font file") << "1"
                                      << ""
                                      << "Microsoft Yahei,9,50,0";
        QTest::newRow("only the text 0 is off") << "00"
                                                << ""
                                                << "Microsoft Yahei,9,50,0";
        QTest::newRow("empty is on") << ""
                                     << ""
                                     << "Microsoft Yahei,9,50,0";
        if (!file.isEmpty()) {
            QTest::newRow("the family of the regular file") << "1" << file << family + ",9,50,0";
        }
    }

    void FontsAreLoadedUnlessSwitchedOff()
    {
        QFETCH(QString, loadFont);
        QFETCH(QString, fontFile);
        QFETCH(QString, wanted);
        HostProcess host;
        host.AddModules("reporter");
        host.Write(kSystem, QStringLiteral(R"({"system":{"load_font":"%1"}})").arg(loadFont).toUtf8());
        if (!fontFile.isEmpty()) {
            QVERIFY(QFile::copy(fontFile, host.Folder() + "/sysconfig/Alibaba-PuHuiTi-Regular.ttf"));
        }
        QVERIFY(host.Start());
        host.Do({"init 0 0 1", "notify 1 1001 {}"});
        host.Settle();
        QCOMPARE(Brief(host.Ask(1001, "font")), wanted);
        QCOMPARE(host.Ask(1001, "look"),
                 QString(loadFont == "0" ? "sharp scaled" : "antialiased sharp scaled"));
    }

    void AMalformedFolderEndsTheProcess_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("error");
        QTest::newRow("cut off") << kSystem << QByteArray("{\"system\":{") << "/sysconfig/config.json";
        QTest::newRow("empty file") << kSystem << QByteArray() << "/sysconfig/config.json";
        QTest::newRow("a number") << kUser << QByteArray(R"({"system":{"auto_refresh_interval":5}})")
                                  << "type must be string, but is number";
        QTest::newRow("an array") << kUser << QByteArray("[]") << "type must be object, but is array";
        QTest::newRow("null") << kUser << QByteArray("null") << "/userconfig/config.json";
        QTest::newRow("colours") << "sysconfig/color.json" << QByteArray(R"({"up":"red"})")
                                 << "sysconfig/color.json";
        QTest::newRow("a file in the place of the plug-in directory")
            << "adsplugins" << QByteArray("x") << "directory_iterator";
    }

    void AMalformedFolderEndsTheProcess()
    {
        QFETCH(QString, file);
        QFETCH(QByteArray, content);
        QFETCH(QString, error);
        HostProcess host;
        host.Write(file, content);
        if (file != "adsplugins") {
            host.AddModules("reporter");
        }
        QVERIFY(host.Start());
        if (file.contains("color")) {
            // Not read before the first panel.
            host.Do({"init 0 0 1", "uninit", "init 0 0 1"});
            QVERIFY(!host.Wait("uninit returned").isNull());
        }
        host.Do("notify 1 1001 {}");
        QVERIFY(host.Dies());
        QCOMPARE(host.Status(), SIGABRT);
        QVERIFY2(host.Errors().contains(error), qPrintable(host.Errors()));
        QCOMPARE(host.Errors().contains("Malformed configuration file: "), file != "adsplugins");
    }

    void WhatIsMissingIsNoError()
    {
        HostProcess host;
        host.Write("sysconfig/config.json/a", "a folder by the name of the file");
        host.Write("sysconfig/color.json/a", "");
        QVERIFY(host.Start());
        QVERIFY(host.End({"init 0 0 1", "notify 0 1001 {\"operate\":\"clicked\"}", "uninit"}));
    }

    void ALaterLifeKeepsTheSettingsOfTheFirst()
    {
        HostProcess host;
        host.AddModules("reporter");
        host.Write(kUser, R"({"general":{"language":"en"}})");
        host.Write("sysconfig/color.json", R"({"price":{"up":"255,0,0"}})");
        QVERIFY(host.Start());
        host.Do({"init 0 0 1", "notify 1 1001 {}"});
        QCOMPARE(host.Ask(1001, "translation Common_Buy"), QString("Buy"));
        QCOMPARE(host.Ask(1001, "color price up"), QString("255,0,0"));
        host.Do("uninit");
        QVERIFY(!host.Wait("uninit returned").isNull());
        host.Write(kUser, R"({"general":{"language":"zh_CN"}})");
        host.Write("sysconfig/color.json", "broken");
        host.Do("notify 1 1001 {}");
        QVERIFY(!host.Wait("1001#2 made").isNull());
        QCOMPARE(host.Ask(1001, "translation Common_Buy"), QString("Buy"));
        QCOMPARE(host.Ask(1001, "config general language"), QString("en"));
        QCOMPARE(host.Ask(1001, "color price up"), QString("255,0,0"));
        QVERIFY(host.End({"uninit"}));
    }
};

PANELRY_TEST(ApplicationThreadTest)
#include "application_thread_test.moc"
