#include <sys/stat.h>

#include <algorithm>
#include <fstream>
#include <limits>
#include <stdexcept>
#include <thread>

#include "stage.h"
#include "support/rows.h"
#include "support/test.h"

using namespace log4z;
using namespace panelry::test;
using panelry::logger::Logger;

namespace
{

// A line of the main logger whose bytes, its head included, are `length`.
bool PushLineOf(LogerManager& manager, std::int32_t length)
{
    LogRecord* const record = manager.MakeRecord(0, Info, nullptr, 0);
    std::fill(record->content + record->length, record->content + length, 'x');
    record->length = length;
    return manager.PushLine(record, nullptr, 0);
}

std::string HeadAt(ManagerOnStage& manager, std::int64_t now)
{
    manager.now = now;
    LogRecord* const record = manager.MakeRecord(0, Debug, nullptr, 0);
    std::string head(record->content, static_cast<std::size_t>(record->length));
    manager.FreeRecord(record);
    return head.substr(0, 25);
}

// Holds a manager's worker in the opening of a pipe that nobody reads, with lines queued behind.
class HungWorker
{
public:
    HungWorker(LogerManager& manager, int lines)
        : m_manager(manager), m_pipe(FileName("Main", "202611222125"))
    {
        QCOMPARE(::mkfifo(m_pipe.c_str(), 0600), 0);
        manager.SetPath(0, ".");
        QVERIFY(manager.Start());
        QTRY_COMPARE(manager.PopCount(), std::uint64_t(1));
        for (int i = 0; i < lines; ++i) {
            PushLineOf(manager, 60);
        }
    }
    ~HungWorker()
    {
        if (!m_reader.joinable()) {
            GoOn();
        }
        m_manager.Stop();
        m_reader.join();
    }
    Q_DISABLE_COPY(HungWorker)

    void GoOn()
    {
        m_reader = std::thread([this] { Contents(m_pipe); });
    }

private:
    LogerManager& m_manager;
    const std::string m_pipe;
    std::thread m_reader;
};

}  // namespace

/// From a caller's text to the bytes in the file.
class LinesTest : public Test
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { UseShanghaiTime(); }

    void ADateIsRightWhateverTheClockDoes()
    {
        ManagerOnStage manager;
        const auto head = [&](std::int64_t now) { return HeadAt(manager, now); };
        QCOMPARE(head(At(2026, 11, 30, 23, 59, 59)), "[2026-11-30 23:59:59.007]");
        QCOMPARE(head(At(2026, 12, 1)), "[2026-12-01 00:00:00.007]");
        QCOMPARE(head(At(2026, 11, 30, 12, 5, 9)), "[2026-11-30 12:05:09.007]");  // set back
        QCOMPARE(head(At(2028, 2, 28, 23, 59, 59) + 1), "[2028-02-29 00:00:00.007]");
        QCOMPARE(head(At(1999, 1, 2, 3, 4, 5)), "[1999-01-02 03:04:05.007]");
        manager.millis = 999;
        std::string other;
        std::thread([&] { other = head(At(1999, 1, 2, 3, 4, 5)); }).join();  // a calendar of its own
        QCOMPARE(other, "[1999-01-02 03:04:05.999]");
    }

    void AHeadNamesThreadLevelAndPlace_data()
    {
        const Rows<QByteArray, int, QByteArray> row("file level tail");
        row("slashes", "/a/b.d/c.cpp", 0, "[TRACE][c.cpp:42] ");
        row("backslashes", "x:\\a/b\\c.cpp", 2, "[INFO ][c.cpp:42] ");
        row("bare", "c.cpp", 6, "[FATAL][c.cpp:42] ");
        row("no file", {}, 3, "[WARN ]");
        row("a file name beyond the record", QByteArray(9000, 'f'), 4, ":42] ");
    }

    void AHeadNamesThreadLevelAndPlace()
    {
        QFETCH(const QByteArray, file);
        QFETCH(const int, level);
        QFETCH(const QByteArray, tail);
        ManagerOnStage manager;
        LogRecord* const record =
            manager.MakeRecord(0, level, file.isNull() ? nullptr : file.constData(), 42);
        char thread[16];
        std::snprintf(thread, sizeof thread, "][%04d][", ::gettid());
        const QByteArray content(record->content, record->length);
        QVERIFY2(content.contains(thread), content.constData());
        QVERIFY2(content.endsWith(tail), content.constData());
        QVERIFY(record->length <= static_cast<int>(kContentBytes));
        QCOMPARE(record->time, At(2026, 11, 22, 21, 25, 58));
        manager.SetFileLine(0, false);
        LogRecord* const bare = manager.MakeRecord(0, level, "c.cpp", 42);
        QCOMPARE(bare->content[bare->length - 1], ']');
        QVERIFY(!QByteArray(bare->content, bare->length).contains("c.cpp"));
        manager.FreeRecord(record);
        manager.FreeRecord(bare);
    }

    void ALongLineIsCutAndKeepsItsEnd()
    {
        // Short; the longest that stays whole; one too long; a full record.
        const std::vector<std::pair<int, int>> lengths{{100, 102}, {8189, 8191}, {8190, 8191}, {8192, 8191}};
        for (const auto& [length, inFile] : lengths) {
            RunningManager manager;
            QVERIFY(PushLineOf(manager, length));
            QVERIFY(manager.Stop());
            const std::string text = Contents("data/log/" + FileName("Main", "202611222125"));
            const std::size_t start = text.rfind('\n', text.size() - 2) + 1;
            QCOMPARE(static_cast<int>(text.size() - start), inFile);
            QCOMPARE(text.substr(text.size() - 3), "x\r\n");
        }
    }

    void OnlyLinesThatPassAreTaken()
    {
        ManagerOnStage manager;
        const auto push = [&](int id, int level) {
            return manager.PushLine(manager.MakeRecord(id, level, nullptr, 0), nullptr, 0);
        };
        for (const int level : {int{Fatal}, std::numeric_limits<int>::max()}) {
            QVERIFY(!manager.CanPush(0, level) && !push(0, level));  // stopped
        }
        QVERIFY(manager.Start());
        QVERIFY(manager.CanPush(0, Debug) && push(0, Debug));
        QVERIFY(!manager.CanPush(0, Trace) && !push(0, Trace));
        for (const int id : {-1, 1, 20, 2'000'000'000}) {
            QVERIFY(!manager.CanPush(id, Fatal) && !push(id, Fatal));
        }
        const int off = manager.CreateLogger("off");
        QVERIFY(manager.CanPush(off, std::numeric_limits<int>::max()));
        manager.SetEnabled(off, false);
        QTRY_VERIFY(!manager.IsEnabled(off));
        QTRY_VERIFY(!manager.CanPush(off, std::numeric_limits<int>::max()));
        const std::uint64_t before = manager.PushCount();
        QVERIFY(push(0, Info));
        QVERIFY(manager.SetName(0, "renamed"));  // a command counts as pushed, and not as popped
        QCOMPARE(manager.PushCount(), before + 2);
        QVERIFY(manager.Stop());
        QCOMPARE(manager.PopCount(), manager.PushCount() - 2);
        QCOMPARE(manager.WriteCount(), manager.PopCount());
        QCOMPARE(manager.WriteBytes(), Contents("data/log/" + FilesIn("data/log").front()).size());
    }

    void ABacklogSlowsItsCallersDown_data()
    {
        const Rows<int, int, int> row("backlog random slept");
        row("one above the limit: the rate is still 0", 20001, 0, 0);
        row("rate 1", 20200, 0, 1);
        row("30000, luck", 30000, 50, 0);
        row("30000, no luck", 30000, 149, 50);
        row("just below 40000: the rate is 99", 39999, 99, 0);
        row("40000: the rate is 100", 40000, 99, 100);
        row("no more than 100 ms", 45000, 99, 100);
    }

    void ABacklogSlowsItsCallersDown()
    {
        QFETCH(const int, backlog);
        QFETCH(const int, random);
        ManagerOnStage manager;
        HungWorker worker(manager, backlog);
        manager.random = static_cast<std::uint32_t>(random);
        QVERIFY(manager.CanPush(0, Info));
        QTEST(manager.slept.load(), "slept");
        worker.GoOn();
        manager.Stop();
        QCOMPARE(manager.PopCount(), static_cast<std::uint64_t>(backlog) + 2);
    }

    void AQueueThatIsEmptyByNow()
    {
        // Up to a rate of 50 nobody looks again.
        for (const auto& [backlog, slept] : {std::pair{30000, 50}, {30200, 0}}) {
            ManagerOnStage manager;
            HungWorker worker(manager, backlog);
            manager.atRandom = [&] {
                worker.GoOn();
                QTRY_COMPARE(manager.PopCount(), manager.PushCount());
            };
            QVERIFY(manager.CanPush(0, Info));
            QCOMPARE(manager.slept.load(), slept);
        }
    }

    void AcceptedLinesSurviveAStop()
    {
        RunningManager manager;
        std::atomic<int> accepted{0};
        std::vector<std::jthread> producers;
        for (int i = 0; i < 4; ++i) {
            producers.emplace_back([&] {
                while (manager.log.Write(Info, "line")) {
                    ++accepted;
                }
            });
        }
        QTRY_VERIFY(accepted > 1000);
        QVERIFY(manager.Stop());
        producers.clear();  // joins them
        QCOMPARE(static_cast<int>(TextsOf("Main").size()), accepted.load());
    }

    void PartsBecomeText()
    {
        ManagerOnStage manager;
        manager.SetLevel(0, Info);
        QVERIFY(manager.Start());
        const char* const null = nullptr;
        const std::string letter("b");
        const int line = __LINE__ + 1;
        const bool written = manager.log.Write(Warn, 'a', letter, -5, ' ', ~0ULL, 1688.25, true, null, Alarm);
        QVERIFY(written && manager.log.Write(Warn, [] { return "made"; }));
        bool called = false;
        QVERIFY(!manager.log.Write(Debug, [&] { return called = true; }));
        QVERIFY(!called);
        QVERIFY(manager.Stop());
        const std::string text = Contents("data/log/" + FileName("Main", "202611222125"));
        const std::string wanted = "[WARN ][lines_test.cpp:" + std::to_string(line) +
                                   "] ab-5 184467440737095516151688.25true(null)5\r\n";
        QVERIFY2(text.find(wanted) != std::string::npos, text.c_str());
        QVERIFY2(text.find("] made\r\n") != std::string::npos, text.c_str());
    }

    void ALineWhosePartThrowsIsDroppedAndItsRecordUsedAgain()
    {
        RunningManager manager;
        LogRecord* const kept = manager.MakeRecord(0, Info, nullptr, 0);
        manager.FreeRecord(kept);  // the thread's next line takes it
        QVERIFY_EXCEPTION_THROWN(
            manager.log.Write(Info, "half ", []() -> int { throw std::runtime_error("part"); }),
            std::runtime_error);
        LogRecord* const next = manager.MakeRecord(0, Info, nullptr, 0);
        QCOMPARE(next, kept);
        manager.FreeRecord(next);
        QVERIFY(manager.Stop());
        QVERIFY(TextsOf("Main").empty());
    }

    void WhatALoggerDisplaysIsPrinted()
    {
        const std::string printed = Printed([] {
            RunningManager manager;
            manager.log.Write(Debug, "shown");
            manager.log.Write(Error, "for terminals");
            manager.SetDisplay(0, false);
            manager.log.Write(Debug, "hidden");
            manager.Stop();
        });
        QVERIFY2(printed.find("] shown\r\n") != std::string::npos, printed.c_str());
        QCOMPARE(std::count(printed.begin(), printed.end(), '\n'), std::ptrdiff_t(1));
    }

    void ConsoleColoursAreForTerminals()
    {
        const std::vector<std::pair<int, QByteArray>> colours{{1, ""},   {2, "36"}, {3, "33"}, {4, "31"},
                                                              {5, "32"}, {6, "35"}, {7, ""}};
        for (const auto& [level, colour] : colours) {
            const auto shown = [level = level](bool toTerminal) {
                const auto show = [level] {
                    panelry::logger::Console console;
                    console.Refresh();
                    console.Show("text", level);
                };
                return QByteArray::fromStdString(Printed(show, toTerminal));
            };
            const bool isPlain = colour.isEmpty();
            QCOMPARE(shown(true), isPlain ? "text" : "\x1b[" + colour + "mtext\x1b[0m");
            QCOMPARE(shown(false), isPlain ? "text" : "");
        }
    }
};
PANELRY_TEST(LinesTest)

#include "lines_test.moc"
