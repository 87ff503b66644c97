#include "base/singleton.h"

#include <sys/wait.h>
#include <unistd.h>

#include <latch>
#include <set>
#include <thread>

#include "support/test.h"

using panelry::AtExit;

namespace
{

class Counted : public panelry::Singleton<Counted>
{
public:
    Counted()
    {
        ++made;
        std::this_thread::yield();  // time for a second thread to come
    }
    ~Counted()
    {
        --made;
        found = Instance(true);
    }

    static inline std::atomic<int> made = 0;
    static inline Counted* found = nullptr;
};

template <AtExit end>
class Farewell : public panelry::Singleton<Farewell<end>, end>
{
public:
    ~Farewell() { written = write(pipe, "x", 1); }

    static inline int pipe = -1;
    ssize_t written = 0;
};

// In a process of its own, which makes the object twice, ends, and tells how often the object died.
template <AtExit end>
QByteArray DeathsAtExit(bool threadAlive)
{
    int ends[2] = {};
    if (pipe(ends) != 0) {
        return "no pipe";
    }
    const pid_t child = fork();
    if (child == 0) {
        Farewell<end>::pipe = ends[1];
        Farewell<end>::Instance(true);
        Farewell<end>::Destroy();
        Farewell<end>::Instance(true);
        panelry::ApplicationThreadAlive = threadAlive;
        std::exit(0);
    }
    close(ends[1]);
    QByteArray text;
    char byte = 0;
    while (read(ends[0], &byte, 1) == 1) {
        text += byte;
    }
    close(ends[0]);
    waitpid(child, nullptr, 0);
    return text;
}

}  // namespace

class SingletonTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void IsMadeOnDemandAndAgainAfterItsEnd()
    {
        QVERIFY(!Counted::Instance(false));
        Counted* const first = Counted::Instance(true);
        QVERIFY(first);
        QCOMPARE(Counted::Instance(false), first);
        QCOMPARE(Counted::Instance(true), first);
        Counted::Destroy();
        QCOMPARE(Counted::found, first);  // a dying object isn't made a second time
        QVERIFY(!Counted::Instance(false));
        QVERIFY(Counted::Instance(true));
        Counted::Destroy();
        Counted::Destroy();
        QCOMPARE(Counted::made.load(), 0);
    }

    void ManyThreadsGetOneObject()
    {
        constexpr int kThreads = 8;
        for (int round = 0; round < 50; ++round) {
            std::latch start(kThreads);
            std::vector<Counted*> seen(kThreads);
            {
                std::vector<std::jthread> threads;
                for (Counted*& mine : seen) {
                    threads.emplace_back([&start, &mine] {
                        start.arrive_and_wait();
                        mine = Counted::Instance(true);
                    });
                }
            }
            QCOMPARE(std::set<Counted*>(seen.begin(), seen.end()),
                     std::set<Counted*>{Counted::Instance(false)});
            QCOMPARE(Counted::made.load(), 1);
            Counted::Destroy();
        }
    }

    void ExitOfTheProcess()
    {
        std::fflush(nullptr);  // or the children print it again
        QCOMPARE(DeathsAtExit<AtExit::Destroy>(false), "xx");
        QCOMPARE(DeathsAtExit<AtExit::Destroy>(true), "xx");
        QCOMPARE(DeathsAtExit<AtExit::LeaveIfRunning>(false), "xx");
        QCOMPARE(DeathsAtExit<AtExit::LeaveIfRunning>(true), "x");
    }
};

PANELRY_TEST(SingletonTest)
#include "singleton_test.moc"
