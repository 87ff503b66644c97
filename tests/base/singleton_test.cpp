#include "base/singleton.h"

#include <sys/wait.h>
#include <unistd.h>

#include <latch>
#include <set>
#include <thread>

#include "support/test.h"

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

class Farewell : public panelry::Singleton<Farewell>
{
public:
    ~Farewell() { written = write(pipe, "x", 1); }

    static inline int pipe = -1;
    ssize_t written = 0;
};

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

    // What is left at the exit while the application thread lives is proved with a real host.
    void TheExitOfTheProcessDestroysWhatWasMadeAgain()
    {
        std::fflush(nullptr);  // or the child prints it again
        int ends[2] = {};
        QCOMPARE(pipe(ends), 0);
        const pid_t child = fork();
        if (child == 0) {
            Farewell::pipe = ends[1];
            Farewell::Instance(true);
            Farewell::Destroy();
            Farewell::Instance(true);
            std::exit(0);
        }
        waitpid(child, nullptr, 0);
        close(ends[1]);
        char deaths[4];
        QCOMPARE(read(ends[0], deaths, sizeof deaths), ssize_t{2});
        close(ends[0]);
    }
};

PANELRY_TEST(SingletonTest)
#include "singleton_test.moc"
