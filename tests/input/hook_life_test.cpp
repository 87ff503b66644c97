// The life of the hook: its thread, its end at every moment, and the watchdog. The hook is a stand-in.

#include <QStringList>

#include "input/fake_hook.h"
#include "input/hook_manager.h"
#include "input/hook_runner.h"
#include "input/listener.h"
#include "support/test.h"

using namespace std::chrono_literals;
using panelry::HookTiming;
using panelry::test::CapturedOutput;
using panelry::test::FakeHook;
using panelry::test::KeyEvent;
using panelry::test::Listener;

namespace
{

constexpr HookTiming kNoWatch{1h, 1h};
constexpr HookTiming kNoWatchNoPatience{1h, 1h, 20ms};
constexpr HookTiming kAttentive{5ms, 100ms};
constexpr char kAnyKey[] = R"({"hook_type":"4"})";

}  // namespace

class HookLifeTest : public panelry::test::Test
{
    Q_OBJECT

private:
    FakeHook& m_hook = FakeHook::Instance();

private Q_SLOTS:
    void init()
    {
        Test::init();
        m_hook.Reset();
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
        QString log;
        Listener module(QStringLiteral("a"), log);
        manager.RegisterModule(&module, kAnyKey);
        QVERIFY(m_hook.Dispatch(KeyEvent(EVENT_KEY_PRESSED, 0, VC_A)));
        QCOMPARE(log, QStringLiteral("a"));
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

    void AStopBeforeTheHookIsUpWaitsUntilItIs()
    {
        m_hook.SetAnswers(false);
        HookManager manager(kNoWatch);
        manager.Start();
        QVERIFY(m_hook.WaitForRuns(1));
        std::thread display([this] { m_hook.SetAnswers(true); });
        manager.Stop();
        display.join();
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
        QString log;
        Listener module(QStringLiteral("a"), log);
        next.RegisterModule(&module, kAnyKey);
        next.Start();
        QCOMPARE(m_hook.Runs(), 1);
        m_hook.SetAnswers(true);
        QVERIFY(m_hook.WaitForRuns(2));
        QVERIFY(m_hook.WaitUntilUp(1));
        QVERIFY(m_hook.Dispatch(KeyEvent(EVENT_KEY_PRESSED, 0, VC_A)));
        QCOMPARE(log, QStringLiteral("a"));
    }

    void AHookThatDoesntEndIsNeverJoinedByASecondOne()
    {
        m_hook.SetObeys(false);
        QString log;
        Listener module(QStringLiteral("a"), log);
        {
            HookManager manager(kNoWatchNoPatience);
            manager.RegisterModule(&module, kAnyKey);
            manager.Start();
            QVERIFY(m_hook.WaitUntilUp(1));
        }
        QVERIFY(m_hook.Dispatch(KeyEvent(EVENT_KEY_PRESSED, 0, VC_A)));  // alive, and nobody listens
        QCOMPARE(log, QString());
        HookManager next(kNoWatchNoPatience);
        next.Start();
        next.Stop();  // it hasn't had its turn
        next.Start();
        QCOMPARE(m_hook.Runs(), 1);
        m_hook.SetObeys(true);
        QVERIFY(m_hook.WaitForRuns(2));
        QVERIFY(m_hook.WaitUntilUp(1));
    }

    void TheProbeIsAPressAndARelease()
    {
        HookManager manager(kAttentive);
        QVERIFY(m_hook.WaitForPosts(4));
        const std::deque<uiohook_event> posted = m_hook.Posted();
        for (std::size_t i = 0; i < 4; ++i) {
            QCOMPARE(posted[i].type, i % 2 == 0 ? EVENT_KEY_PRESSED : EVENT_KEY_RELEASED);
            QCOMPARE(posted[i].mask, std::uint16_t{0});
            QCOMPARE(posted[i].data.keyboard.keycode, std::uint16_t{107});
            QCOMPARE(posted[i].data.keyboard.keychar, std::uint16_t{0xFFFF});
        }
    }

    void AHookThatHearsTheProbeIsLeftAlone()
    {
        HookManager manager({1ms, 10s});
        QString log;
        Listener module(QStringLiteral("a"), log);
        manager.RegisterModule(&module, kAnyKey);
        manager.RegisterModule(&module, R"({"hook_type":"5"})");
        manager.Start();
        QVERIFY(m_hook.WaitForPosts(40));
        QCOMPARE(m_hook.Runs(), 1);
        QCOMPARE(log, QString());
    }

    void AHookThatHasFallenSilentIsStartedAnewWithItsRegistrations()
    {
        HookManager manager(kAttentive);
        QString log;
        Listener module(QStringLiteral("a"), log);
        manager.RegisterModule(&module, kAnyKey);
        m_hook.SetEchoes(false);
        manager.Start();
        QVERIFY(m_hook.WaitForRuns(3));
        m_hook.SetEchoes(true);
        QVERIFY(m_hook.WaitUntilUp(1));
        QTRY_VERIFY(m_hook.Dispatch(KeyEvent(EVENT_KEY_PRESSED, 0, VC_A)));
        QVERIFY(log.contains(QLatin1Char('a')));
    }

    // Any key is a sign of life; the mouse is none.
    void SignsOfLife_data()
    {
        QTest::addColumn<int>("type");
        QTest::addColumn<bool>("lives");
        QTest::newRow("a key is pressed") << int(EVENT_KEY_PRESSED) << true;
        QTest::newRow("a key is released") << int(EVENT_KEY_RELEASED) << true;
        QTest::newRow("the mouse moves") << int(EVENT_MOUSE_MOVED) << false;
    }
    void SignsOfLife()
    {
        QFETCH(int, type);
        QFETCH(bool, lives);
        m_hook.SetEchoes(false);
        constexpr std::chrono::milliseconds patience = 400ms;
        HookManager manager({2ms, patience});
        manager.Start();
        QVERIFY(m_hook.WaitUntilUp(1));
        using Clock = std::chrono::steady_clock;
        const Clock::time_point start = Clock::now();
        Clock::time_point last = start;
        Clock::duration longestGap{};
        while (last < start + 2 * patience && m_hook.Runs() == 1) {
            m_hook.Dispatch(KeyEvent(static_cast<event_type>(type), 0, VC_A));
            std::this_thread::sleep_for(1ms);
            longestGap = std::max(longestGap, Clock::now() - last);
            last = Clock::now();
        }
        if (longestGap > patience / 2) {
            QSKIP("the machine stood still for too long to tell");
        }
        QCOMPARE(m_hook.Runs() == 1, lives);
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
        auto* const manager = new HookManager(kNoWatch);  // as at exit: nobody destroys it
        QString log;
        Listener module(QStringLiteral("a"), log);
        manager->RegisterModule(&module, kAnyKey);
        manager->Start();
        QVERIFY(hook.WaitUntilUp(1));
        HookManager::EndForExit();
        QVERIFY(hook.WaitUntilUp(0));
        uiohook_event event = KeyEvent(EVENT_KEY_PRESSED, 0, VC_A);
        HookManager::OnHookEvent(&event);
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
