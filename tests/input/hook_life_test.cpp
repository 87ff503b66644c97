// The life of the hook: its thread, its end at every moment, and the watchdog. The hook is a stand-in.

#include <QProcess>
#include <QStringList>
#include <atomic>
#include <latch>
#include <thread>

#include "input/fake_hook.h"
#include "input/hook_runner.h"
#include "input/listener.h"
#include "support/test.h"

using namespace std::chrono_literals;
using panelry::HookTiming;
using panelry::test::CapturedOutput;
using panelry::test::FakeHook;
using panelry::test::kNoWatch;
using panelry::test::kPresses;
using panelry::test::Listener;
using panelry::test::MouseEvent;

namespace
{

constexpr HookTiming kNoWatchNoPatience{1h, 1h, 20ms};

}  // namespace

class HookLifeTest : public panelry::test::Test
{
    Q_OBJECT

private:
    FakeHook& m_hook = FakeHook::Instance();
    QString m_log;
    Listener m_module{QStringLiteral("a"), m_log};

    bool Press() { return m_hook.Dispatch(panelry::test::Press(VC_A)); }

private Q_SLOTS:
    void init()
    {
        Test::init();
        m_hook.Reset();
        m_log.clear();
    }
    void cleanup()
    {
        // What a test has hindered may come to its end now; and nothing is left for the next one.
        m_hook.SetAnswers(true);
        m_hook.SetObeys(true);
        QVERIFY(m_hook.WaitUntilUp(0));
        QVERIFY(m_hook.MostAtOnce() <= 1);
        QCOMPARE(m_hook.WrongStops(), 0);
        Test::cleanup();
    }

    void StartBringsOneHookUpAndStopEndsIt()
    {
        HookManager manager(kNoWatch);
        QCOMPARE(m_hook.Runs(), 0);  // the constructor doesn't start it
        manager.Start();
        manager.Start();
        QVERIFY(m_hook.WaitUntilUp(1));
        manager.RegisterModule(&m_module, kPresses);
        QVERIFY(Press());
        QCOMPARE(m_log, QStringLiteral("a"));
        QCOMPARE(manager.Stop(), 0);
        QVERIFY(m_hook.WaitUntilUp(0));
        QCOMPARE(manager.Stop(), 0);
        manager.Start();
        QVERIFY(m_hook.WaitUntilUp(1));
        QCOMPARE(m_hook.Runs(), 2);
    }

    // Each life ends at another moment of the hook's coming up.
    void LivesInARowLeaveNoHookBehind()
    {
        for (int life = 0; life < 200; ++life) {
            const int runs = m_hook.Runs();
            HookManager manager(kNoWatch);
            manager.Start();
            if (life % 3 == 1) {
                QVERIFY(m_hook.WaitForRuns(runs + 1));
            } else if (life % 3 == 2) {
                QVERIFY(m_hook.WaitUntilUp(1));
            }
        }
        QVERIFY(m_hook.WaitUntilUp(0));
    }

    // The display answers only in the next life: that one gets its hook once the old one has been ended.
    void AHookThatDoesntComeUpIsLeftBehindAndEndedLater()
    {
        m_hook.SetAnswers(false);
        {
            HookManager manager(kNoWatchNoPatience);
            manager.Start();
            QVERIFY(m_hook.WaitForRuns(1));
        }
        HookManager next(kNoWatchNoPatience);
        next.RegisterModule(&m_module, kPresses);
        next.Start();
        QCOMPARE(m_hook.Runs(), 1);
        m_hook.SetAnswers(true);
        QVERIFY(m_hook.WaitForRuns(2));
        QVERIFY(m_hook.WaitUntilUp(1));
        QVERIFY(Press());
        QCOMPARE(m_log, QStringLiteral("a"));
    }

    void AHookThatDoesntEndIsNeverJoinedByASecondOne()
    {
        m_hook.SetObeys(false);
        {
            HookManager manager(kNoWatchNoPatience);
            manager.RegisterModule(&m_module, kPresses);
            manager.Start();
            QVERIFY(m_hook.WaitUntilUp(1));
        }
        QVERIFY(Press());  // alive, and nobody listens
        QCOMPARE(m_log, QString());
        HookManager next(kNoWatchNoPatience);
        next.Start();
        next.Stop();  // it hasn't had its turn
        next.Start();
        QCOMPARE(m_hook.Runs(), 1);
        m_hook.SetObeys(true);
        QVERIFY(m_hook.WaitForRuns(2));
        QVERIFY(m_hook.WaitUntilUp(1));
    }

    void AHookThatHearsTheProbeIsLeftAlone()
    {
        HookManager manager({1ms, 10s});
        manager.Start();
        QVERIFY(m_hook.WaitForPosts(40));
        QCOMPARE(m_hook.Runs(), 1);
        const std::deque<uiohook_event> posted = m_hook.Posted();
        for (std::size_t i = 0; i < 4; ++i) {
            QCOMPARE(posted[i].type, i % 2 == 0 ? EVENT_KEY_PRESSED : EVENT_KEY_RELEASED);
            QCOMPARE(posted[i].mask, std::uint16_t{0});
            QCOMPARE(posted[i].data.keyboard.keycode, std::uint16_t{107});
            QCOMPARE(posted[i].data.keyboard.keychar, std::uint16_t{0xFFFF});
        }
    }

    // The mouse is no sign of life.
    void AHookThatHasFallenSilentIsStartedAnewWithItsRegistrations()
    {
        HookManager manager({5ms, 200ms});
        manager.RegisterModule(&m_module, kPresses);
        m_hook.SetEchoes(false);
        manager.Start();
        QTRY_VERIFY_WITH_TIMEOUT((m_hook.Dispatch(MouseEvent(EVENT_MOUSE_MOVED)), m_hook.Runs() >= 3),
                                 20'000);
        m_hook.SetEchoes(true);
        QVERIFY(m_hook.WaitUntilUp(1));
        QTRY_VERIFY(Press());
        QVERIFY(m_log.contains(QLatin1Char('a')));
    }

    void WithoutADisplayEachTryIsOneLine()
    {
        m_hook.SetDisplay(false);
        CapturedOutput output;
        {
            HookManager manager({2ms, 20ms});
            manager.Start();
            QVERIFY(m_hook.WaitForRuns(3));
        }
        const int runs = m_hook.Runs();
        QCOMPARE(output.Text(), QByteArray("Failed to start libuiohook.\n").repeated(runs));
    }

    // Many lives: in one of them a thread that tries again by itself is quicker than the end.
    void WithoutADisplayOnlyTheWatchTriesAgain()
    {
        m_hook.SetDisplay(false);
        {
            const CapturedOutput output;
            HookManager manager(kNoWatch);
            for (int life = 0; life < 100; ++life) {
                const int runs = m_hook.Runs();
                manager.Start();
                QVERIFY(m_hook.WaitForRuns(runs + 1));
                manager.Stop();
            }
        }
        QCOMPARE(m_hook.Runs(), 100);
    }

    void TheEndOfTheProcessEndsTheHookWhoeverOwnsIt()
    {
        // In a process of its own: no hook begins behind that.
        QProcess process;
        process.start(
            QCoreApplication::applicationFilePath(),
            {QStringLiteral("EndOfProcess::TheHookEndsAndNoOtherBegins"), QStringLiteral("-silent")});
        QVERIFY(process.waitForFinished(60'000));
        const QByteArray story = process.readAllStandardOutput();
        QVERIFY2(process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0, story.constData());
        QVERIFY2(story.contains("passed, 0 failed"), story.constData());
    }
};

/// Run by the test above.
class EndOfProcess : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void TheHookEndsAndNoOtherBegins()
    {
        const QStringList arguments = QCoreApplication::arguments();
        if (arguments.size() < 2 || !arguments[1].startsWith(QStringLiteral("EndOfProcess"))) {
            QSKIP("in a process of its own");
        }
        FakeHook& hook = FakeHook::Instance();
        auto* const manager = new HookManager({1ms, 1h});  // as at exit: nobody destroys it
        QString log;
        Listener module(QStringLiteral("a"), log);
        manager->RegisterModule(&module, kPresses);
        manager->Start();
        QVERIFY(hook.WaitUntilUp(1));
        // The display's connection is closed next: no probe may be on it.
        std::latch posting(2);
        std::latch ending(1);
        std::atomic<bool> posted{false};
        hook.SetPosting([&] {
            if (posting.try_wait()) {
                return;
            }
            posting.arrive_and_wait();
            ending.wait();
            std::this_thread::sleep_for(10ms);  // enough for who doesn't wait
            posted = true;
        });
        posting.arrive_and_wait();
        ending.count_down();
        HookManager::EndForExit();
        QVERIFY(posted);
        hook.SetPosting(nullptr);
        QVERIFY(hook.WaitUntilUp(0));
        panelry::test::Send(panelry::test::Press(VC_A));
        QCOMPARE(log, QString());
        manager->Stop();
        manager->Start();
        manager->Stop();
        QCOMPARE(hook.Runs(), 1);
    }
};

PANELRY_TEST(HookLifeTest)
PANELRY_TEST(EndOfProcess)
#include "hook_life_test.moc"
