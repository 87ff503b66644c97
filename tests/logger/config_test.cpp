#include "logger/log4z/log_config.h"
#include "stage.h"
#include "support/rows.h"
#include "support/test.h"

using namespace log4z;
using namespace panelry::test;
using panelry::logger::Logger;
using panelry::logger::LoggerConfig;

namespace
{

// What differs from the default, in one line for each logger.
std::string Described(const std::string& text)
{
    std::string described;
    const auto warn = [&](const std::string& warning) { described += "!" + warning; };
    for (const auto& [key, c] : panelry::logger::ParseLogConfig(text, warn)) {
        described += key + ": name=" + c.name;
        const LoggerConfig usual;
        const auto add = [&](const char* name, const auto& value, const auto& normal) {
            if (value != normal) {
                std::string shown;
                if constexpr (std::is_convertible_v<decltype(value), std::string>) {
                    shown = value;
                } else {
                    shown = std::to_string(value);
                }
                described += " " + (name + ("=" + shown));
            }
        };
        add("path", c.path, usual.path);
        add("level", c.level, usual.level);
        add("limitsize", c.limitsize, usual.limitsize);
        add("display", c.display, usual.display);
        add("outfile", c.outfile, usual.outfile);
        add("monthdir", c.monthdir, usual.monthdir);
        add("fileline", c.fileline, usual.fileline);
        add("enable", c.enable, usual.enable);
        described += "\n";
    }
    return described;
}

}  // namespace

/// Settings from a text and from a file.
class ConfigTest : public Test
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { UseShanghaiTime(); }

    void ATextIsUnderstood_data()
    {
        const Rows<QByteArray, QByteArray> row("text described");
        row("empty", "", "");
        row("comments and blanks", "# a=b\n\n  \t\r\n  # [x]\r\n", "");
        row("main in any case", "[mAIN]\n", "Main: name=Main\n");
        row("a byte order mark", "\xef\xbb\xbf[main]\nlevel=info", "Main: name=Main level=2\n");
        row("blanks everywhere", " [ a b ] # tail\r\n\tName \t= X y \r\nPATH =d:/Logs\n",
            "a b: name=X y path=d:/Logs\n");
        row("order by key, case kept", "[b]\n[B]\n[a]\n", "B: name=B\na: name=a\nb: name=b\n");
        row("all levels",
            "[a]\nlevel=ALL\n[b]\nlevel=Warning\n[c]\nlevel=fatal\n[d]\nlevel=loud\n[e]\nlevel=6",
            "a: name=a level=0\nb: name=b level=3\nc: name=c level=6\nd: name=d\ne: name=e\n");
        row("switches", "[a]\ndisplay=FALSE\noutfile=0\nmonthdir=yes\nfileline=00\nenable=false\n",
            "a: name=a display=0 outfile=0 monthdir=1 enable=0\n");
        row("numbers",
            "[a]\nlimitsize=25 MB\n[b]\nlimitsize=-3\n[c]\nlimitsize=many\n[d]\nlimitsize=99999999999\n",
            "a: name=a limitsize=25\nb: name=b limitsize=-3\nc: name=c limitsize=0\n"
            "d: name=d limitsize=2147483647\n");
        row("split at the first =, unknown keys, no =", "[a]\nname=x=y\ncolour=red\nnonsense\nreserve=5\n",
            "a: name=x=y\n");
        row("no logger yet", "\n Level = Info \nnonsense\n[a]\n",
            "!log4z configure warning: not found current logger name:[] at line:2, key=Level, value=Info \r\n"
            "a: name=a\n");
        row("the first of two stands, the second's settings are nobody's",
            "[Main]\nlevel=error\n[a]\n[MAIN]\nlevel=info\n[b]\nlevel=warn",
            "!log4z configure warning: duplicate logger key:[Main] at line: 4 \r\n"
            "Main: name=Main level=4\na: name=a\nb: name=b level=3\n");
        row("a bracket that isn't closed", "[abc\nlevel=info\n[\n", ": name=\nabc: name=abc level=2\n");
    }

    void ATextIsUnderstood()
    {
        QFETCH(const QByteArray, text);
        QTEST(QByteArray::fromStdString(Described(text.toStdString())), "described");
    }

    void ATextIsAppliedUnlessItsSumIsTheLastOne()
    {
        SetSurroundings world;
        LogerManager manager(world);
        QVERIFY(manager.ConfigFromText("[main]\nname=\xc3\xa4z\npath=x\n[b]\nlevel=error\n"));
        QCOMPARE(manager.FindLogger("b"), 1);
        QCOMPARE(manager.GetLevel(1), 4);
        QVERIFY(manager.ConfigFromText("[main]\nname=z\xa4\xc3\npath=x\n[b]\nlevel=error\n"));  // isn't read
        QVERIFY(manager.ConfigFromText("[main]\nname=\xc3\xa4z\npath=x\n[b]\nlevel=alarm\n"));
        QCOMPARE(manager.GetLevel(1), 5);
        QVERIFY(manager.Start());
        QVERIFY(manager.Stop());
        QCOMPARE(FilesIn("x"), (std::vector<std::string>{FileName("\xc3\xa4z", "202611222125")}));
        QVERIFY(Printed([&] { QVERIFY(!manager.ConfigFromText(nullptr)); }).find("config file error \r\n") !=
                std::string::npos);
    }

    void OneFileAProcess()
    {
        const Stage stage;
        WriteFile("here.cfg", "[main]\nlevel=error\n");
        LogerManager manager;
        QVERIFY(!manager.RereadConfig());
        QCOMPARE(Printed([&] { QVERIFY(!manager.Config("absent.cfg")); }),
                 std::string(" !!! !!! !!! !!!\r\n"
                             " !!! !!! log4z load config file error. filename=absent.cfg  !!! !!! \r\n"
                             " !!! !!! !!! !!!\r\n"));
        QCOMPARE(Printed([&] { QVERIFY(!manager.Config("here.cfg")); }),
                 std::string(" !!! !!! !!! !!!\r\n"
                             " !!! !!! log4z configure error: too many calls to Config. the old config "
                             "file=absent.cfg,  the new config file=here.cfg !!! !!! \r\n"
                             " !!! !!! !!! !!!\r\n"));
        QCOMPARE(manager.GetLevel(0), 1);
    }

    void AChangedFileIsReadWhileRunning()
    {
        SetSurroundings world;
        WriteFile("log.cfg", "[main]\nlevel=error\n");
        LogerManager manager(world);
        QVERIFY(manager.Config("log.cfg"));
        QCOMPARE(manager.GetLevel(0), 4);
        manager.SetRereadInterval(10);
        QVERIFY(manager.Start());
        WriteFile("log.cfg", "[main]\nlevel=info\n[new]\n");
        world.now += 10;  // not more than the interval
        const int looks = world.looks;
        QTRY_VERIFY(world.looks >= looks + 3);  // the second one saw it, and what it led to is over
        QCOMPARE(manager.GetLevel(0), 4);
        world.now += 1;
        QTRY_COMPARE(manager.GetLevel(0), 2);
        QCOMPARE(manager.FindLogger("new"), -1);
        WriteFile("log.cfg", "[main]\nlevel=fatal\n");
        world.now -= 5000;  // a clock that is set back is no reason to wait for it
        QTRY_COMPARE(manager.GetLevel(0), 6);
    }
};
PANELRY_TEST(ConfigTest)

#include "config_test.moc"
