#include "services/interval_timer.h"

#include <atomic>
#include <stdexcept>
#include <thread>

#include "support/test.h"

namespace
{

constexpr int kAtOnceMs = 0;
constexpr int kNeverMs = 24 * 60 * 60 * 1000;

// Opened by tasks as often as they like.
struct Gate {
    void Open()
    {
        open = true;
        open.notify_all();
    }
    void Wait() const { open.wait(false); }

    std::atomic<bool> open{false};
};

}  // namespace

// What doesn't return here fails by the time limit of the executable.
class IntervalTimerTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void RunsGoOnAndNeverOverlap()
    {
        std::atomic<int> inside{0};
        std::atomic<bool> overlapped{false};
        std::atomic<int> runs{0};
        Gate enough;
        IntervalTimer timer;
        timer.Start(kAtOnceMs, [&] {
            overlapped = overlapped || ++inside > 1;
            std::this_thread::yield();
            --inside;
            if (++runs == 20) {
                enough.Open();
            }
            throw std::runtime_error("the ticking goes on all the same");
        });
        enough.Wait();
        timer.Stop();
        QVERIFY(!overlapped);
    }

    void ALongWaitEndsAtOnceWithoutARun()
    {
        std::atomic<int> runs{0};
        for (int i = 0; i < 300; ++i) {
            IntervalTimer timer;
            timer.Start(kNeverMs, [&] { ++runs; });
            if (i % 2 == 0) {
                timer.Stop();  // else the destructor
            }
        }
        QCOMPARE(runs.load(), 0);
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

    // The second task is started by the first one or by the owner; a third of the timers is destroyed.
    void TasksMayEndTheirOwnTimer()
    {
        for (int i = 0; i < 150; ++i) {
            std::atomic<int> runs{0};
            Gate returned;
            Gate second;
            auto timer = std::make_unique<IntervalTimer>();
            const auto startSecond = [&] { timer->Start(kAtOnceMs, [&] { second.Open(); }); };
            timer->Start(kAtOnceMs, [&] {
                ++runs;
                if (i % 3 == 0) {
                    timer.reset();
                } else {
                    timer->Stop();
                    timer->Stop();
                }
                if (i % 3 == 1) {
                    startSecond();
                }
                returned.Open();
            });
            returned.Wait();
            if (i % 3 == 2) {
                startSecond();
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
