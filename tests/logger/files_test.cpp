#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QScopeGuard>
#include <filesystem>
#include <functional>
#include <limits>

#include "logger/log4z/old_logs.h"
#include "stage.h"
#include "support/rows.h"
#include "support/test.h"

using namespace log4z;
using namespace panelry::test;
using panelry::logger::Logger;
namespace fs = std::filesystem;

namespace
{

const std::string kMegabyteAndAByte(1024 * 1024 + 1, 'm');

struct Fault {
    std::function<void()> arrange;  // before the logger "bad" writes
    std::function<void()> repair;
    bool switchesOff;  // "bad" stays without file after the repair
};

void SetLimit(__rlimit_resource resource, rlim_t soft)
{
    rlimit limit = {};
    ::getrlimit(resource, &limit);
    limit.rlim_cur = soft == RLIM_INFINITY ? limit.rlim_max : soft;
    ::setrlimit(resource, &limit);
}

void AllowNoMoreFiles()
{
    const int next = ::dup(STDIN_FILENO);
    ::close(next);
    SetLimit(RLIMIT_NOFILE, static_cast<rlim_t>(next));
}

// Root may write anything, nobody may not.
void ActAs(uid_t user)
{
    if (::getuid() == 0) {
        ::chmod(".", 0755);
        QCOMPARE(::seteuid(user), 0);
    }
}

}  // namespace

Q_DECLARE_METATYPE(Fault)

/// Names, changes, removal and failures of files.
class FilesTest : public Test
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { UseShanghaiTime(); }

    void ARemovedDirectoryComesBackWithTheNextFile()
    {
        ManagerOnStage manager;
        const int other = manager.CreateLogger("other");
        manager.SetPath(other, "other");
        QVERIFY(manager.Start());
        const Logger otherLog(other, manager);
        QTRY_COMPARE(FilesIn("data/log").size(), std::size_t(1));
        QVERIFY(otherLog.Write(Info, "before"));
        fs::remove_all("data");
        manager.now = At(2026, 11, 23);
        QVERIFY(manager.log.Write(Info, "next day") && otherLog.Write(Info, "after"));
        QVERIFY(manager.Stop());
        QCOMPARE(TextsOf("Main"), std::vector<std::string>{"next day"});
        QCOMPARE(TextsOf("other", "other"), (std::vector<std::string>{"before", "after"}));
    }

    void FilesChangeByDayAndBySize()
    {
        ManagerOnStage manager;
        manager.SetLimitSize(0, 1);
        manager.SetMonthDir(0, true);
        manager.now = At(2026, 11, 30, 23, 50);
        // Was there already: goes on counting, and takes one line more than fits.
        WriteFile("data/log/2026_11/" + FileName("Main", "202611302350"), kMegabyteAndAByte + "\n");
        QVERIFY(manager.Start());
        const auto writeAt = [&](std::int64_t now, const char* text) {
            manager.now = now;
            QVERIFY(manager.log.Write(Info, text));
        };
        writeAt(At(2026, 11, 30, 23, 59, 59), "last");
        writeAt(At(2026, 12, 1), "midnight");
        writeAt(At(2026, 12, 1, 23, 59, 59), "same file");
        writeAt(At(2026, 11, 30, 12), "set back");
        writeAt(At(2026, 11, 30, 23, 59, 59), "same again");
        QVERIFY(manager.Stop());
        const std::vector<std::string> wanted = {"2026_11/" + FileName("Main", "202611301200", 0),
                                                 "2026_11/" + FileName("Main", "202611302350", 0),
                                                 "2026_11/" + FileName("Main", "202611302350", 1),
                                                 "2026_12/" + FileName("Main", "202612010000", 0)};
        QCOMPARE(FilesIn("data/log"), wanted);
        QVERIFY(Contents("data/log/" + wanted[1]).find("thread started!") != std::string::npos);
        QCOMPARE(TextsOf("Main", "data/log/2026_12"), (std::vector<std::string>{"midnight", "same file"}));
        QVERIFY(Contents("data/log/" + wanted[2]).find("] last\r\n") != std::string::npos);
        QVERIFY(Contents("data/log/" + wanted[0]).find("] same again\r\n") != std::string::npos);
    }

    void TheSizeLimitIsCountedIn32Bits()
    {
        // No practical limit; half of the range; what comes out as 0, so a file a line; what comes out as 1.
        for (const auto& [megabytes, files] : {std::pair{0, 1U}, {2048, 1U}, {4096, 5U}, {4097, 1U}}) {
            ManagerOnStage manager;
            manager.SetLimitSize(0, megabytes);
            QVERIFY(manager.Start());  // writes two lines
            for (int i = 0; i < 3; ++i) {
                QVERIFY(manager.log.Write(Info, i));
            }
            QVERIFY(manager.Stop());
            QCOMPARE(FilesIn("data/log").size(), std::size_t{files});
        }
    }

    void ExpiredFilesGoAtTheNextChange()
    {
        ManagerOnStage manager;
        manager.SetReserve(0, 10 * 86400);
        QVERIFY(manager.Start());
        QTRY_COMPARE(manager.WriteCount(), std::uint64_t(2));
        const auto writeOnDay = [&](int day) {
            manager.now = At(2026, 1, 1, 12) + day * 86400;
            QVERIFY(manager.log.Write(Info, day));
            QTRY_COMPARE(manager.WriteCount(), manager.PushCount());  // the worker reads the clock, too
        };
        for (int day = 0; day < 14; ++day) {  // and the file of the start: 15
            writeOnDay(day);
        }
        QCOMPARE(FilesIn("data/log").size(), std::size_t(15));
        fs::remove("data/log/" + FileName("Main", "202601021200"));  // gone by another hand
        writeOnDay(14);  // the oldest entry is of November, so still young: it keeps all behind it
        QCOMPARE(FilesIn("data/log").size(), std::size_t(15));
        writeOnDay(400);  // everything is expired
        QCOMPARE(FilesIn("data/log"), (std::vector<std::string>{FileName("Main", "202702051200")}));
        manager.Stop();
    }

    void WithoutAReserveFilesStay()
    {
        for (const int reserve : {0, -1, std::numeric_limits<int>::min()}) {
            ManagerOnStage manager;
            manager.SetPath(0, "logs");  // not where Stop() clears
            manager.SetReserve(0, 1);
            QVERIFY(manager.SetReserve(0, reserve));  // takes the one before back
            QVERIFY(manager.Start());
            QTRY_COMPARE(manager.WriteCount(), std::uint64_t(2));
            for (int day = 0; day < 17; ++day) {
                manager.now += 86400;
                QVERIFY(manager.log.Write(Info, day));
                QTRY_COMPARE(manager.WriteCount(), manager.PushCount());
            }
            QVERIFY(manager.Stop());
            QCOMPARE(FilesIn("logs").size(), std::size_t(18));
        }
    }

    void FourteenOldFilesStay()
    {
        ManagerOnStage manager;
        for (int i = 0; i < 15; ++i) {
            WriteOldFile("data/log/" + std::to_string(i), At(1999, 1, 1) + (i * 7 + 3) % 15 * 60);
        }
        fs::create_directories("data/log/kept/below");
        // Another file has this time: one entry for both.
        WriteOldFile("data/log/twin", At(1999, 1, 1, 0, 5));
        QVERIFY(!manager.Stop());  // clears although nothing runs
        QCOMPARE(FilesIn("data/log").size(), std::size_t(15));
        QVERIFY(!fs::exists("data/log/6"));  // the oldest
        QVERIFY(fs::exists("data/log/twin"));
        QVERIFY(fs::exists("data/log/kept/below"));
    }

    void AnAgeIsCountedBetweenTwoEpochs()
    {
        const Stage stage;
        const std::int64_t written = At(1999, 1, 1);
        const std::int64_t epochs = 11'644'473'600;  // seconds from 1601 to 1970
        WriteOldFile("logs/old", written);
        panelry::logger::ClearOldLogFiles("logs", 14, 604800, written + epochs + 604800);
        QVERIFY(fs::exists("logs/old"));
        panelry::logger::ClearOldLogFiles("logs", 14, 604800, written + epochs + 604801);
        QVERIFY(!fs::exists("logs/old"));
    }

    void AnUnreadableDirectoryLeavesAsItsError()
    {
        ManagerOnStage manager;
        fs::create_directory("data");
        fs::create_symlink("log", "data/log");  // leads to itself
        try {
            manager.Stop();
            QFAIL("nothing was thrown");
        } catch (const fs::filesystem_error& error) {
            QVERIFY2(QByteArray(error.what()).contains(": exists: "), error.what());
        }
        QVERIFY(manager.Start());  // and the destructor swallows it
    }

    void AFailureStaysWithItsLogger_data()
    {
        const Rows<Fault> row("fault");
        const std::string path = "bad/" + FileName("bad", "202611222125");
        const auto removePath = [=] { fs::remove(path); };
        row("a directory in the file's place", {[=] { fs::create_directories(path); }, removePath, true});
        row("a file in the directory's place",
            {[] { WriteFile("bad", ""); }, [] { fs::remove("bad"); }, true});
        row("no more open files", {&AllowNoMoreFiles, [] { SetLimit(RLIMIT_NOFILE, RLIM_INFINITY); }, true});
        const auto protect = [=] {
            WriteFile(path, "");
            ::chmod(path.c_str(), 0444);
            ActAs(65534);
        };
        row("a file that may only be read", {protect, [] { ActAs(::getuid()); }, true});
        const auto fill = [=] {
            fs::create_directories("bad");
            fs::create_symlink("/dev/full", path);
        };
        row("full disk", {fill, removePath, false});
        const auto limit = [=] {
            WriteFile(path, std::string(200'000, 'x') + "\n");
            SetLimit(RLIMIT_FSIZE, 200'000);
        };
        row("limit of a file's size", {limit, [] { SetLimit(RLIMIT_FSIZE, RLIM_INFINITY); }, false});
    }

    void AFailureStaysWithItsLogger()
    {
        QFETCH(const Fault, fault);
        ManagerOnStage manager;
        const int bad = manager.CreateLogger("bad");
        const int good = manager.CreateLogger("good");
        manager.SetPath(bad, "bad");
        manager.SetEnabled(0, false);
        QVERIFY(manager.Start());
        const Logger badLog(bad, manager);
        const Logger goodLog(good, manager);
        QVERIFY(goodLog.Write(Info, "first"));
        QTRY_COMPARE(manager.WriteCount(), std::uint64_t(1));
        fault.arrange();
        const auto repaired = qScopeGuard(fault.repair);  // whatever fails below
        for (int i = 0; i < 1000; ++i) {
            QVERIFY(badLog.Write(Info, "lost ", i) && goodLog.Write(Info, i));
        }
        manager.SaveQueued();  // all is tried
        fault.repair();
        QVERIFY(badLog.Write(Info, "repaired") && goodLog.Write(Info, "last"));
        QVERIFY(manager.Stop());
        QCOMPARE(TextsOf("good").size(), std::size_t(1002));
        QCOMPARE(TextsOf("good").back(), "last");
        const std::vector<std::string> inBad = TextsOf("bad", "bad");
        QCOMPARE(!inBad.empty() && inBad.back() == "repaired", !fault.switchesOff);
    }
};
PANELRY_TEST(FilesTest)

#include "files_test.moc"
