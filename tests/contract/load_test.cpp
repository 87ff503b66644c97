// Many threads, many lives, many strange texts: fewer under sanitizers, more with PANELRY_SOAK=1 in the environment.

#include <QRandomGenerator>
#include <algorithm>

#include "support/host_process.h"
#include "support/sanitized.h"
#include "support/test.h"

using namespace panelry::test;

namespace
{

const bool kSoak = qEnvironmentVariableIntValue("PANELRY_SOAK") != 0;
const bool kLong = kSoak || !kSanitized;
constexpr char kFramed[] = R"(notify 0 1001 {"operate":"clicked","need_wrapper":"1"})";

}  // namespace

class LoadTest : public Test
{
    Q_OBJECT

private Q_SLOTS:
    void MessagesOfEightThreadsArriveOnceAndInTheirOrder()
    {
        const int threads = 8;
        // A multiple of three: a third has a type that is dropped.
        const int each = kSoak ? 100'002 : kSanitized ? 2'502 : 12'501;
        HostProcess host;
        QVERIFY(host.Start());
        host.Do({QStringLiteral("flood 1002 %1 %2").arg(threads).arg(each), "init 16 32 1", "join"});
        QVector<int> next(threads);
        for (const QString& line : host.Settle().filter(" OnMessage ")) {
            const QStringList words = line.split(' ');         // name, "OnMessage", id, thread, octal number
            if (words[2] == "7" || words[2] == "114") {        // 102 comes at the making, 113 ahead of 114
                int& expected = next[words.value(3).toInt()];  // of a strange thread there are more words
                const bool isPush = expected % 3 == 1;
                QVERIFY2(words.size() == 5 && words[4].toInt(nullptr, 8) == expected &&
                             isPush == (words[2] == "114"),
                         qPrintable(line));
                expected += isPush ? 2 : 1;
            }
        }
        QCOMPARE(next, QVector<int>(threads, each));
        QVERIFY(host.End({"uninit"}));
    }

    void ManyLivesLeaveNothingBehind()
    {
        const int lives = kLong ? 100 : 15;
        HostProcess host;
        QVERIFY(host.Start());
        host.Do("usage");
        int threads = host.Wait("usage").section(' ', 1, 1).toInt();
        QString windows;
        int kilobytesAtTen = 0;
        int kilobytes = 0;
        for (int life = 1; life <= lives; ++life) {
            host.Do({"init 16 32 1", kFramed, "notify 1 1002 {}"});
            host.Settle();
            QCOMPARE(host.Ask(1001, "alive"), "3 modules 1 widgets");
            const QString now = host.Ask(1001, "windows");
            QVERIFY(life == 1 || now == windows);
            windows = now;
            host.Do("uninit");
            // An ended thread is listed for a moment longer, and so is the hook library's where there is no screen.
            const auto noNewThreads = [&] {
                host.Do("usage");
                const QString usage = host.Wait("usage");
                const int running = usage.section(' ', 1, 1).toInt();
                kilobytes = usage.section(' ', 2, 2).toInt();
                threads = std::min(threads, running);
                return running == threads;
            };
            QVERIFY(QTest::qWaitFor(noNewThreads));
            kilobytesAtTen = life == 10 ? kilobytes : kilobytesAtTen;
        }
        qInfo("%d KiB after 10 lives, %d KiB after %d", kilobytesAtTen, kilobytes, lives);
        QVERIFY(!kLong || kSanitized || kilobytes - kilobytesAtTen <= 1024);
        QVERIFY(host.End({}));
    }

    void RandomTextsHarmNoPanel()
    {
        const int count = kLong ? 10'000 : 1'000;
        const QByteArray given = qgetenv("PANELRY_SEED");
        const quint32 seed = given.isEmpty() ? QRandomGenerator::global()->generate() : given.toUInt();
        qInfo("PANELRY_SEED=%u repeats this run", seed);
        HostProcess host;
        QVERIFY(host.StartAndInit());
        host.Do({kFramed, R"(notify 0 3001 {"operate":"clicked"})", "notify 1 1002 {}"});
        host.Settle();
        host.Do(QStringLiteral("random %1 %2 1001 3001 1002 1003 77 0 -1 -2 -2147483648 2147483647")
                    .arg(seed)
                    .arg(count));
        QVERIFY2(!host.Wait("random done").isNull(), qPrintable(host.Errors()));
        QVERIFY2(host.Settle() != QStringList("no marker"), qPrintable(host.Errors()));
        // The panels of before, in their windows, still answer.
        host.Do(R"(notify 0 -1 {"operate":"show","cmd":"2","bussiness":"all"})");
        const QStringList lines = host.Settle();
        for (const char* panel : {"1001#2", "3001#3", "1002#4"}) {
            QCOMPARE(lines.count(QString(panel) + " OnMessage 2 all"), 1);
        }
        QCOMPARE(host.Ask(1001, "titles"), "title=Panel 1001 label=Panel 1001 name=");
        QVERIFY(host.End({"uninit"}));
    }
};

PANELRY_TEST(LoadTest)
#include "load_test.moc"
