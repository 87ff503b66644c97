#include "services/interval_timer.h"

#include <atomic>
#include <latch>
#include <optional>
#include <stdexcept>
#include <thread>

#include "support/test.h"

namespace
{

constexpr int kAtOnceMs = 0;
constexpr int kNeverMs = 24 * 60 * 60 * 1000;

// Counted down by tasks as often as they like; opens at the first time.
class Gate
{
public:
    void Open()
    {
        m_open = true;
        m_open.notify_all();
    }
    void Wait() const { m_open.wait(false); }

private:
    std::atomic<bool> m_open{false};
};

enum class SelfAct { Stop, StopAndStart, Destroy };

}  // namespace

Q_DECLARE_METATYPE(SelfAct)

// What doesn't return here fails by the time limit of the executable.
class IntervalTimerTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void RunsGoOnAndNeverOverlap()
    {
        std::atomic<int> inside{0};
        std::atomic<bool> overlapped{false};
        std::latch runs(20);
        std::atomic<int> left{20};
        IntervalTimer timer;
        timer.Start(kAtOnceMs, [&] {
            overlapped = overlapped || ++inside > 1;
            std::this_thread::yield();
            --inside;
            if (left-- > 0) {
                runs.count_down();
            }
            throw std::runtime_error("the ticking goes on all the same");
        });
        runs.wait();
        timer.Stop();
        QVERIFY(!overlapped);
        const int afterStop = left;
        std::this_thread::yield();
        QCOMPARE(left.load(), afterStop);
    }

    void ALongWaitEndsAtOnceWithoutARun()
    {
        for (int i = 0; i < 300; ++i) {
            std::atomic<int> runs{0};
            IntervalTimer timer;
            timer.Start(kNeverMs, [&] { ++runs; });
            if (i % 2 == 0) {
                timer.Stop();  // else the destructor
            }
            QCOMPARE(runs.load(), 0);
        }
    }

    void AStopWaitsForTheRunInProgress()
    {
        Gate started;
        Gate stopping;
        std::atomic<bool> finished{false};
        IntervalTimer timer;
        timer.Start(kAtOnceMs, [&] {
            started.Open();
            stopping.Wait();
            QTest::qSleep(3);
            finished = true;
        });
        started.Wait();
        stopping.Open();
        timer.Stop();
        QVERIFY(finished);
    }

    void ARunningTimerDropsTheSecondTaskAndAStoppedOneTakesIt()
    {
        IntervalTimer timer;
        timer.Stop();  // harmless on one that never ran
        const auto kept = std::make_shared<Gate>();
        const auto dropped = std::make_shared<Gate>();
        timer.Start(kAtOnceMs, [kept] { kept->Open(); });
        timer.Start(kAtOnceMs, [dropped] { dropped->Open(); });
        QCOMPARE(dropped.use_count(), 1L);
        kept->Wait();
        timer.Stop();
        QCOMPARE(kept.use_count(), 1L);  // what a task holds is free after the stop
        timer.Start(kAtOnceMs, [dropped] { dropped->Open(); });
        dropped->Wait();
    }

    void TasksMayEndTheirOwnTimer_data()
    {
        QTest::addColumn<SelfAct>("act");
        QTest::newRow("stop") << SelfAct::Stop;
        QTest::newRow("stop and start anew") << SelfAct::StopAndStart;
        QTest::newRow("destroy") << SelfAct::Destroy;
    }

    void TasksMayEndTheirOwnTimer()
    {
        QFETCH(const SelfAct, act);
        for (int i = 0; i < 50; ++i) {
            std::atomic<int> runs{0};
            Gate returned;
            Gate second;
            auto timer = std::make_unique<IntervalTimer>();
            timer->Start(kAtOnceMs, [&] {
                ++runs;
                if (act == SelfAct::Destroy) {
                    timer.reset();
                } else {
                    timer->Stop();
                    timer->Stop();
                }
                if (act == SelfAct::StopAndStart) {
                    timer->Start(kAtOnceMs, [&] { second.Open(); });
                }
                returned.Open();
            });
            returned.Wait();
            if (act == SelfAct::Stop) {
                timer->Start(kAtOnceMs, [&] { second.Open(); });
            }
            if (timer) {
                second.Wait();
                timer->Stop();
            }
            QCOMPARE(runs.load(), 1);
        }
    }

    void TaskAndOwnerStopAtTheSameTime()
    {
        for (int i = 0; i < 200; ++i) {
            Gate started;
            IntervalTimer timer;
            timer.Start(kAtOnceMs, [&] {
                started.Open();
                timer.Stop();
            });
            if (i % 2 == 0) {
                started.Wait();
            }
            timer.Stop();
        }
    }
};

PANELRY_TEST(IntervalTimerTest)

#include "interval_timer_test.moc"
