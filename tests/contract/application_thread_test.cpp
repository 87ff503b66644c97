// What the application thread sets up from the host's folder: directory, language, fonts, configuration.

#include <QApplication>
#include <QDir>
#include <csignal>

#include "support/host_process.h"
#include "support/rows.h"
#include "support/test.h"

using namespace panelry::test;

namespace
{

constexpr char kSystem[] = "sysconfig/config.json";
constexpr char kUser[] = "userconfig/config.json";
constexpr char kColours[] = "sysconfig/color.json";

// Family, points, weight and slant out of QFont::toString().
QString Brief(const QString& font)
{
    const QStringList parts = font.split(',');
    return QStringList{parts.value(0), parts.value(1), parts.value(4), parts.value(5)}.join(',');
}

}  // namespace

class ApplicationThreadTest : public Test
{
    Q_OBJECT

private Q_SLOTS:
    // What both ways of reading make of two files is proved without a host; here: who reads in which way.
    void ConfigurationChoosesTheLanguage_data()
    {
        const Rows<QByteArray, QByteArray, QString, QString> row("system user buy asModulesRead");
        const QByteArray english = R"({"general":{"language":"en"}})";
        const QByteArray blank = R"({"general":{"language":""}})";
        row("no files", "", "", "买入", "");
        row("empty everywhere", blank, blank, "买入", "");
        row("the user's wins", english, R"({"general":{"language":"zh_CN"}})", "买入", "zh_CN");
        row("blanked by the user: modules see that, the catalogue is still the system's", english, blank,
            "Buy", "");
        row("a region's language", R"({"general":{"language":"en_US"}})", "", "Buy", "en_US");
        row("no such catalogue", R"({"general":{"language":"fr"}})", "", "Common_Buy", "fr");
    }

    void ConfigurationChoosesTheLanguage()
    {
        QFETCH(QByteArray, system);
        QFETCH(QByteArray, user);
        HostProcess host;
        for (const auto& [file, content] : {std::pair{kSystem, system}, {kUser, user}}) {
            if (!content.isEmpty()) {
                host.Write(file, content);
            }
        }
        QVERIFY(host.Start());
        host.Do({"init 0 0 1", "notify 1 1001 {}"});
        host.Settle();
        QTEST(host.Ask(1001, "translation Common_Buy"), "buy");
        QTEST(host.Ask(1001, "config general language"), "asModulesRead");
        QVERIFY(!host.Errors().contains("configuration"));
        QCOMPARE(QDir(host.Ask(1001, "directory")), QDir(QDir(host.Folder()).canonicalPath()));
    }

    void FontsAreLoadedUnlessSwitchedOff_data()
    {
        const QString file = OutputOf("fc-match", {"-f", "%{file}", "monospace"});
        const QString family = OutputOf("fc-match", {"-f", "%{family[0]}", "monospace"});
        const Rows<QString, QString, QString> row("loadFont fontFile wanted");  // see Brief()
        // The toolkit's own choice, which this process has too.
        row("off", "0", file, Brief(QApplication::font().toString()));
        row("only the text 0 is off; no font file", "00", "", "Microsoft Yahei,9,50,0");
        row("empty is on", "", "", "Microsoft Yahei,9,50,0");
        if (!file.isEmpty()) {
            row("the family of the regular file", "1", file, family + ",9,50,0");
        }
    }

    void FontsAreLoadedUnlessSwitchedOff()
    {
        QFETCH(QString, loadFont);
        QFETCH(QString, fontFile);
        HostProcess host;
        host.Write(kSystem, QStringLiteral(R"({"system":{"load_font":"%1"}})").arg(loadFont).toUtf8());
        if (!fontFile.isEmpty()) {
            QVERIFY(QFile::copy(fontFile, host.Folder() + "/sysconfig/Alibaba-PuHuiTi-Regular.ttf"));
        }
        QVERIFY(host.Start());
        host.Do({"init 0 0 1", "notify 1 1001 {}"});
        host.Settle();
        QTEST(Brief(host.Ask(1001, "font")), "wanted");
        QCOMPARE(host.Ask(1001, "look"),
                 QString(loadFont == "0" ? "sharp scaled" : "antialiased sharp scaled"));
    }

    void AMalformedFileEndsTheProcess()
    {
        for (const auto& [file, content] : {std::pair{kSystem, "{\"system\":{"},
                                            {kUser, R"({"system":{"auto_refresh_interval":5}})"},
                                            {kColours, R"({"up":"red"})"}}) {
            HostProcess host;
            host.Write(file, content);
            QVERIFY(host.Start());
            if (file == kColours) {  // not read before the first panel
                QVERIFY(host.Do({"init 0 0 1", "uninit", "wait uninit returned"}));
            }
            host.Do("notify 1 1001 {}");
            QVERIFY(host.Dies());
            QCOMPARE(host.Status(), SIGABRT);
            QCOMPARE(host.Errors().count("Malformed configuration file: "), 1);
            QVERIFY2(host.Errors().contains(file), qPrintable(host.Errors()));
            // Only what isn't JSON has a place where reading stopped.
            QVERIFY2(file != kSystem || host.Errors().contains("line 1, column"), qPrintable(host.Errors()));
        }
    }

    void ALaterLifeKeepsTheSettingsOfTheFirst()
    {
        HostProcess host;
        host.Write(kUser, R"({"general":{"language":"en"}})");
        host.Write(kColours, R"({"price":{"up":"255,0,0"}})");
        QVERIFY(host.Start());
        host.Do({"init 0 0 1", "notify 1 1001 {}"});
        QCOMPARE(host.Ask(1001, "translation Common_Buy"), "Buy");
        QCOMPARE(host.Ask(1001, "color price up"), "255,0,0");
        QVERIFY(host.Do({"uninit", "wait uninit returned"}));
        host.Write(kUser, R"({"general":{"language":"zh_CN"}})");
        host.Write(kColours, "broken");
        QVERIFY(host.Do({"notify 1 1001 {}", "wait 1001#2 made"}));
        QCOMPARE(host.Ask(1001, "translation Common_Buy"), "Buy");
        QCOMPARE(host.Ask(1001, "config general language"), "en");
        QCOMPARE(host.Ask(1001, "color price up"), "255,0,0");
        QVERIFY(host.End({"uninit"}));
    }
};

PANELRY_TEST(ApplicationThreadTest)
#include "application_thread_test.moc"
