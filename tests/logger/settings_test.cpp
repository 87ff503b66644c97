#include "logger/log4z/log_config.h"

#include <functional>
#include <sstream>
#include <thread>

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
    std::ostringstream described;
    const LoggerConfig usual;
    const auto add = [&](const char* name, const auto& value, const auto& normal) {
        if (value != normal) {
            described << ' ' << name << '=' << value;
        }
    };
    const auto warn = [&](const std::string& warning) { described << '!' << warning; };
    for (const auto& [key, c] : panelry::logger::ParseLogConfig(text, warn)) {
        described << key << ": name=" << c.name;
        add("path", c.path, usual.path);
        add("level", c.level, usual.level);
        add("limitsize", c.limitsize, usual.limitsize);
        add("display", c.display, usual.display);
        add("outfile", c.outfile, usual.outfile);
        add("monthdir", c.monthdir, usual.monthdir);
        add("fileline", c.fileline, usual.fileline);
        add("enable", c.enable, usual.enable);
        described << '\n';
    }
    return described.str();
}

}  // namespace

/// Settings from a text and from a file; ids, life and settings of loggers.
class SettingsTest : public Test
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
        ManagerOnStage manager;
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
        ManagerOnStage manager;
        WriteFile("here.cfg", "[main]\nlevel=error\n");
        QVERIFY(!manager.RereadConfig());
        QCOMPARE(Printed([&] { QVERIFY(!manager.Config("absent.cfg")); }),
                 " !!! !!! !!! !!!\r\n"
                 " !!! !!! log4z load config file error. filename=absent.cfg  !!! !!! \r\n"
                 " !!! !!! !!! !!!\r\n");
        QCOMPARE(Printed([&] { QVERIFY(!manager.Config("here.cfg")); }),
                 " !!! !!! !!! !!!\r\n"
                 " !!! !!! log4z configure error: too many calls to Config. the old config "
                 "file=absent.cfg,  the new config file=here.cfg !!! !!! \r\n"
                 " !!! !!! !!! !!!\r\n");
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

    void TwentyLoggersAndNoMore()
    {
        ManagerOnStage manager;
        QCOMPARE(manager.FindLogger("Main"), 0);
        QCOMPARE(manager.FindLogger("main"), -1);
        QCOMPARE(manager.CreateLogger(" \t Main\r\n"), 0);
        for (int id = 1; id < 20; ++id) {
            QCOMPARE(manager.CreateLogger(("key " + std::to_string(id)).c_str()), id);
        }
        const std::string message = Printed([&] { QCOMPARE(manager.CreateLogger("one more"), -1); }, true);
        QVERIFY2(message.find("loggerid need < LOGGER_MAX! \r\n") != std::string::npos, message.c_str());
        QCOMPARE(manager.FindLogger("one more"), -1);
        QCOMPARE(manager.CreateLogger("key 7"), 7);
        QCOMPARE(manager.CreateLogger(nullptr), -1);
        QCOMPARE(manager.ActiveLoggers(), 20U);
        manager.SetEnabled(3, false);
        QCOMPARE(manager.ActiveLoggers(), 19U);
    }

    void SettersRefuseWhatIsWrong()
    {
        ManagerOnStage manager;
        QVERIFY(!manager.SetName(0, nullptr) && !manager.SetName(0, ""));
        QVERIFY(!manager.SetPath(0, nullptr) && !manager.SetPath(0, ""));
        const std::string longest(8191, 'n');
        QVERIFY(manager.SetName(0, longest.c_str()));
        QVERIFY(!manager.SetName(0, (longest + "n").c_str()));
        QVERIFY(!manager.SetPath(0, longest.c_str()));  // one more with its "/"
        for (const int id : {-1, 1, 20}) {
            QVERIFY(!manager.SetEnabled(id, true) && !manager.SetEnabled(id, false));
            QVERIFY(!manager.SetLevel(id, 0) && !manager.SetLevel(id, 6));
            QVERIFY(!manager.SetName(id, "x") && !manager.SetReserve(id, 1) && !manager.IsEnabled(id));
            QCOMPARE(manager.GetLevel(id), 6);
        }
    }

    void ChangesKeepTheirPlaceAmongTheLines()
    {
        ManagerOnStage manager;
        manager.SetFileLine(0, true);
        QVERIFY(manager.Start());
        std::vector<std::string> wantedInA;
        for (int i = 0; i < 200; ++i) {
            const bool inA = i % 2 == 0;
            manager.SetName(0, inA ? "a" : "b");
            QVERIFY(manager.log.Write(Info, i));
            if (inA) {
                wantedInA.push_back(std::to_string(i));
            }
        }
        QVERIFY(manager.Stop());
        QCOMPARE(TextsOf("a"), wantedInA);
        QCOMPARE(TextsOf("b").size(), std::size_t(100));
    }

    void QueuedLinesAreJudgedAgainByTheLevelInForce()
    {
        RunningManager manager;
        QVERIFY(manager.log.Write(Debug, "before"));
        QVERIFY(manager.SetLevel(0, Error));
        manager.log.Write(Info, "behind");  // taken or refused, it isn't written
        QTRY_COMPARE(manager.GetLevel(0), static_cast<int>(Error));
        QVERIFY(!manager.log.Write(Warn, "refused"));
        QVERIFY(manager.log.Write(Error, "last"));
        QTRY_COMPARE(TextsOf("Main").size(), std::size_t(2));  // all before it has been judged
        QVERIFY(manager.SetLevel(0, Trace));                   // at once
        QVERIFY(manager.log.Write(Trace, "lowered"));
        QVERIFY(manager.SetEnabled(0, false));
        QTRY_VERIFY(!manager.IsEnabled(0));
        QVERIFY(!manager.log.Write(Fatal, "off"));
        QVERIFY(manager.SetEnabled(0, true));  // at once
        QVERIFY(manager.log.Write(Trace, "on"));
        QVERIFY(manager.Stop());
        QCOMPARE(TextsOf("Main"), (std::vector<std::string>{"before", "last", "lowered", "on"}));
    }

    void SwitchesActOnWhatFollows()
    {
        const std::string name = FileName("Main", "202611222125");
        using Set = std::function<void(LogerManager&)>;
        const std::vector<std::pair<Set, std::string>> switches{
            // and the file of the second line
            {[](LogerManager& m) { m.SetPath(0, "x\\y"); }, "x\\y/" + name},
            {[](LogerManager& m) { m.SetMonthDir(0, true); }, "data/log/2026_11/" + name},
            {[](LogerManager& m) { m.SetOutFile(0, false); }, ""}};
        for (const auto& [set, file] : switches) {
            RunningManager manager;
            manager.log.Write(Info, "one");
            set(manager);
            manager.log.Write(Info, "two");
            QVERIFY(manager.Stop());
            for (const std::string& path : FilesIn(".")) {
                QCOMPARE(Contents(path).find("] two\r\n") != std::string::npos, path == file);
            }
            QCOMPARE(FilesIn(".").size(), file.empty() ? std::size_t{1} : std::size_t{2});
        }
    }

    void ASecondStartIsSilentUntilLoggersAreEnabled()
    {
        ManagerOnStage manager;
        QVERIFY(!manager.Stop());
        QVERIFY(manager.Start());
        QVERIFY(!manager.Start());
        QVERIFY(manager.log.Write(Info, "first life"));
        QVERIFY(manager.Stop());
        QVERIFY(!manager.Stop());
        QVERIFY(!manager.IsEnabled(0));
        QVERIFY(manager.Start());
        QVERIFY(!manager.log.Write(Info, "refused"));
        QVERIFY(manager.SetEnabled(0, true));
        QVERIFY(manager.log.Write(Info, "second life"));
        QVERIFY(manager.Stop());
        QCOMPARE(TextsOf("Main"), (std::vector<std::string>{"first life", "second life"}));
    }

    void OneOfManyStartsWins()
    {
        ManagerOnStage manager;
        std::atomic<int> won{0};
        std::vector<std::jthread> starters;
        for (int i = 0; i < 4; ++i) {
            starters.emplace_back([&] { won += manager.Start() ? 1 : 0; });
        }
        starters.clear();  // joins them
        QCOMPARE(won.load(), 1);
    }

    void ChangesFromAllSidesWhileItStopsAndStarts()
    {
        const Stage stage;
        LogerManager manager;
        std::atomic<bool> enough{false};
        std::thread changer([&] {
            for (int i = 0; !enough; ++i) {
                manager.SetName(0, i % 2 == 0 ? "a name that is kept on the heap" : "another such long name");
                manager.SetEnabled(0, true);
                manager.CreateLogger(std::to_string(i % 25).c_str());
            }
        });
        const Logger log(0, manager);
        for (int i = 0; i < 5; ++i) {
            manager.Start();
            log.Write(Info, "line");
            manager.Stop();
        }
        enough = true;
        changer.join();
        QVERIFY(manager.PopCount() > 0);
    }
};
PANELRY_TEST(SettingsTest)

#include "settings_test.moc"
