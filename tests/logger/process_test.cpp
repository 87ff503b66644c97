// What must hold for a whole process: its crash, its end, two lives of the library in it, and a day's load.

#include <signal.h>

#include <QProcess>
#include <filesystem>
#include <map>
#include <sstream>
#include <thread>

#include "stage.h"
#include "support/rows.h"
#include "support/sanitized.h"
#include "support/test.h"

using namespace log4z;
using namespace panelry::test;
using panelry::logger::Logger;

namespace
{

constexpr int kVictimLines = 5000;

std::vector<std::string> NumbersUpTo(int count)
{
    std::vector<std::string> numbers;
    for (int i = 0; i < count; ++i) {
        numbers.push_back(std::to_string(i));
    }
    return numbers;
}

// Reads "thread number payload" and checks that each thread counts on by one.
void CheckInOrder(const std::vector<std::string>& lines, int threads, int linesAThread)
{
    std::map<int, int> next;
    for (const std::string& line : lines) {
        std::istringstream parts(line);
        int thread = -1;
        int number = -1;
        std::string payload;
        parts >> thread >> number >> payload;
        QCOMPARE(number, next[thread]++);
        QCOMPARE(payload, std::string(static_cast<std::size_t>(number % 97), '#') + ".");
    }
    std::map<int, int> wanted;
    for (int thread = 0; thread < threads; ++thread) {
        wanted[thread] = linesAThread;
    }
    QCOMPARE(next, wanted);
}

}  // namespace

Q_DECLARE_METATYPE(std::vector<std::string>)

class ProcessTest : public Test
{
    Q_OBJECT

private Q_SLOTS:
    void ACrashWritesWhatIsQueued_data()
    {
        const Rows<int> row("signal");
        row("null", SIGSEGV);
        row("overflow", SIGSEGV);
        row("worker", SIGFPE);
        row("busy", SIGABRT);
        row("forbidden", SIGSYS);
        row("lost page", SIGBUS);
        if (!kSanitized) {
            row("heap", SIGABRT);
        }
    }

    void ACrashWritesWhatIsQueued()
    {
        QFETCH(const int, signal);
        const Stage stage;
        QCOMPARE(ExitCodeOf(QTest::currentDataTag()), -signal);
        std::vector<std::string> texts = TextsOf("Main", "log");
        std::erase(texts, "noise");
        QCOMPARE(texts, NumbersUpTo(kVictimLines));
    }

    void AnEndWithoutAStopWritesAllAndClears_data()
    {
        const Rows<std::vector<std::string>> row("texts");
        row("exit", {"before the end"});
        row("stuck", {"first", "goes on", "second"});  // where old logs stay the logger goes on
    }

    void AnEndWithoutAStopWritesAllAndClears()
    {
        const Stage stage;
        std::filesystem::permissions(".", std::filesystem::perms(0755));
        for (int i = 0; i < 15; ++i) {
            WriteOldFile("data/log/" + std::to_string(i), At(2000, 1, 1 + i));
        }
        QCOMPARE(ExitCodeOf(QTest::currentDataTag()), 0);
        QTEST(TextsOf("Main", "log"), "texts");
        QCOMPARE(FilesIn("data/log").size(), std::size_t(14));
    }

    void AModulesTextIsHarmless()
    {
        const Stage stage;
        QCOMPARE(ExitCodeOf("module"), 0);
        const std::string text = Contents("log/" + FilesIn("log").front());
        QVERIFY2(text.find("[WARN ]100% %d %s %n % %\r\n") != std::string::npos, text.c_str());
        QVERIFY(text.find("never") == std::string::npos);
        QVERIFY(text.find(std::string(7000, 'y')) != std::string::npos);
        QCOMPARE(text.substr(text.size() - 3), std::string("y\r\n"));
    }

    void EachLineOnceWholeAndInOrder()
    {
        const int threads = 8;
        const bool soak = qEnvironmentVariableIntValue("PANELRY_SOAK") != 0;
        const int linesAThread = soak || !kSanitized ? 125'000 : 10'000;
        const Stage stage;
        LogerManager manager;
        manager.SetPath(0, "logs");  // not where Stop() clears
        manager.SetLimitSize(0, 1);
        manager.SetDisplay(0, false);
        QVERIFY(manager.Start());
        std::vector<std::jthread> producers;
        for (int thread = 0; thread < threads; ++thread) {
            producers.emplace_back([&, thread] {
                const Logger log(0, manager);
                for (int i = 0; i < linesAThread; ++i) {
                    log.Write(Info, thread, ' ', i, ' ', std::string(static_cast<std::size_t>(i % 97), '#'),
                              '.');
                }
            });
        }
        producers.clear();  // joins them
        QVERIFY(manager.Stop());
        const std::vector<std::string> files = FilesIn("logs");
        QVERIFY(files.size() > 5);
        for (const std::string& file : files) {
            QVERIFY(Contents("logs/" + file).size() < 1024 * 1024 + 400);  // the limit and a line
        }
        CheckInOrder(TextsOf("Main", "logs"), threads, linesAThread);
    }

private:
    // Of the victim; the number of the signal that ended it, negative.
    static int ExitCodeOf(const char* fate)
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        for (const char* const tool : {"ASAN_OPTIONS", "TSAN_OPTIONS", "UBSAN_OPTIONS"}) {
            const QString name = QString::fromLatin1(tool);
            environment.insert(
                name, environment.value(name) +
                          QStringLiteral(":handle_segv=0:handle_abort=0:handle_sigbus=0:handle_sigfpe=0"));
        }
        QProcess victim;
        victim.setProcessEnvironment(environment);
        victim.start(QStringLiteral(LOGGER_VICTIM), {QString::fromLatin1(fate)});
        const bool isOver = victim.waitForFinished(60'000);
        return !isOver                                      ? 1
               : victim.exitStatus() == QProcess::CrashExit ? -victim.exitCode()
                                                            : victim.exitCode();
    }
};
PANELRY_TEST(ProcessTest)

#include "process_test.moc"
