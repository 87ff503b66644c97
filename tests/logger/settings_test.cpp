#include <functional>
#include <thread>

#include "stage.h"
#include "support/test.h"

using namespace log4z;
using namespace panelry::test;
using panelry::logger::Logger;

/// Ids, life and settings of loggers.
class SettingsTest : public Test
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { UseShanghaiTime(); }

    void TwentyLoggersAndNoMore()
    {
        const Stage stage;
        LogerManager manager;
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
        const Stage stage;
        LogerManager manager;
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
        SetSurroundings world;
        LogerManager manager(world);
        manager.SetFileLine(0, true);
        QVERIFY(manager.Start());
        const Logger log(0, manager);
        std::vector<std::string> wantedInA;
        for (int i = 0; i < 200; ++i) {
            const bool inA = i % 2 == 0;
            manager.SetName(0, inA ? "a" : "b");
            QVERIFY(log.Write(Info, i));
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
        SetSurroundings world;
        LogerManager manager(world);
        QVERIFY(manager.Start());
        const Logger log(0, manager);
        QVERIFY(log.Write(Debug, "before"));
        QVERIFY(manager.SetLevel(0, Error));
        log.Write(Info, "behind");  // taken or refused, it isn't written
        QTRY_COMPARE(manager.GetLevel(0), static_cast<int>(Error));
        QVERIFY(!log.Write(Warn, "refused"));
        QVERIFY(log.Write(Error, "last"));
        QTRY_COMPARE(TextsOf("Main").size(), std::size_t(2));  // all before it has been judged
        QVERIFY(manager.SetLevel(0, Trace));                   // at once
        QVERIFY(log.Write(Trace, "lowered"));
        QVERIFY(manager.SetEnabled(0, false));
        QTRY_VERIFY(!manager.IsEnabled(0));
        QVERIFY(!log.Write(Fatal, "off"));
        QVERIFY(manager.SetEnabled(0, true));  // at once
        QVERIFY(log.Write(Trace, "on"));
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
            SetSurroundings world;
            LogerManager manager(world);
            QVERIFY(manager.Start());
            const Logger log(0, manager);
            log.Write(Info, "one");
            set(manager);
            log.Write(Info, "two");
            QVERIFY(manager.Stop());
            for (const std::string& path : FilesIn(".")) {
                QCOMPARE(Contents(path).find("] two\r\n") != std::string::npos, path == file);
            }
            QCOMPARE(FilesIn(".").size(), file.empty() ? std::size_t{1} : std::size_t{2});
        }
    }

    void ASecondStartIsSilentUntilLoggersAreEnabled()
    {
        SetSurroundings world;
        LogerManager manager(world);
        const Logger log(0, manager);
        QVERIFY(!manager.Stop());
        QVERIFY(manager.Start());
        QVERIFY(!manager.Start());
        QVERIFY(log.Write(Info, "first life"));
        QVERIFY(manager.Stop());
        QVERIFY(!manager.Stop());
        QVERIFY(!manager.IsEnabled(0));
        QVERIFY(manager.Start());
        QVERIFY(!log.Write(Info, "refused"));
        QVERIFY(manager.SetEnabled(0, true));
        QVERIFY(log.Write(Info, "second life"));
        QVERIFY(manager.Stop());
        QCOMPARE(TextsOf("Main"), (std::vector<std::string>{"first life", "second life"}));
    }

    void OneOfManyStartsWins()
    {
        const Stage stage;
        LogerManager manager;
        std::atomic<int> won{0};
        std::vector<std::thread> starters;
        for (int i = 0; i < 4; ++i) {
            starters.emplace_back([&] { won += manager.Start() ? 1 : 0; });
        }
        for (std::thread& starter : starters) {
            starter.join();
        }
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
