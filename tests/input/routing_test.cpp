// Messages 120 and 121 on their way to the service, and what the plug-in manager tells it of modules that go.

#include "hosting/stage.h"
#include "input/fake_hook.h"
#include "input/hook_subscription.h"
#include "support/test.h"

using panelry::test::FakeHook;
using panelry::test::KeyEvent;
using panelry::test::kPresses;
using panelry::test::Press;
using panelry::test::Stage;

namespace
{

// What the modules hear of one press.
QString Heard(Stage& stage)
{
    stage.log.clear();
    panelry::test::Send(Press(VC_A));
    return stage.log;
}

void Send(Stage& stage, int msgId, char sender, const char* text, int target = -1)
{
    QByteArray payload(text);
    stage.manager.SendModuleMessage(msgId, text ? payload.data() : nullptr, &stage[sender], target);
}

}  // namespace

class HotKeyRoutingTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        Test::init();
        panelry::test::EnterModuleFolder();
    }

    void RequestsReachTheServiceInTheNameOfTheirSender()
    {
        Stage stage;
        stage.Play(QStringLiteral("a7 b7 c0"));
        Send(stage, 120, 'a', kPresses);  // too early: the service isn't there
        HookManager::Instance(true);
        Send(stage, 120, 'a', nullptr);
        Send(stage, 120, 'b', kPresses);
        Send(stage, 120, 'c', kPresses, 1);  // a target doesn't matter
        QCOMPARE(Heard(stage), QStringLiteral("b:119 c:119"));
        Send(stage, 121, 'b', kPresses);
        Send(stage, 121, 'c', nullptr);
        QCOMPARE(Heard(stage), QStringLiteral("c:119"));
        Send(stage, 121, 'c', "");
        QCOMPARE(Heard(stage), QString());
    }

    void AModuleThatGoesHearsNothingMore()
    {
        // Removed, with its sub-module; the same while somebody shares it; all of them, and one is shared.
        const std::pair<const char*, const char*> ends[] = {
            {"-a", "c:119"}, {"^a -a", "c:119"}, {"^c x", ""}};
        for (const auto& [end, heard] : ends) {
            Stage stage;
            HookManager::Instance(true);
            stage.Play(QStringLiteral("a7 ba c7"));
            for (const char module : {'a', 'b', 'c'}) {
                Send(stage, 120, module, kPresses);
            }
            QCOMPARE(Heard(stage), QStringLiteral("a:119 b:119 c:119"));
            stage.Play(QString::fromLatin1(end));
            QCOMPARE(Heard(stage), QString::fromLatin1(heard));
        }
    }

    void TheServiceEndsWithThePlugInManager()
    {
        {
            Stage stage;
            HookManager::Instance(true)->Start();
            QVERIFY(FakeHook::Instance().WaitUntilUp(1));
        }
        QVERIFY(!HookManager::Instance(false));
        QVERIFY(FakeHook::Instance().WaitUntilUp(0));
    }

    // What panels use: the event comes from the hook thread, and is handled on their own, in order.
    void ASubscriptionHandsEventsOver()
    {
        Stage stage;
        HookManager::Instance(true);
        stage.Play(QStringLiteral("a7"));
        std::vector<int> codes;
        auto subscription = std::make_unique<panelry::HookSubscription>(
            stage['a'], [&](const uiohook_event& event) { codes.push_back(event.data.keyboard.keycode); });
        stage['a'].heard = [&](int, void* payload) { subscription->Take(payload); };
        subscription->Listen(EVENT_KEY_PRESSED, {"Alt + \"\\", "b", "ctrl+c"});
        subscription->Listen(EVENT_KEY_RELEASED);
        const auto fromHookThread = [] {
            for (uiohook_event event :
                 {Press(VC_A), Press(VC_B), KeyEvent(EVENT_KEY_RELEASED, MASK_CTRL_R, VC_C)}) {
                HookManager::OnHookEvent(&event);
                event.data.keyboard.keycode = 0;  // the record is good during the call only
            }
        };
        std::thread(fromHookThread).join();
        QVERIFY(codes.empty());
        QCoreApplication::processEvents();
        QCOMPARE(codes, (std::vector<int>{VC_B, VC_C}));

        subscription->Unlisten(EVENT_KEY_RELEASED);  // and with it the list
        std::thread(fromHookThread).join();
        QCoreApplication::processEvents();
        QCOMPARE(codes, (std::vector<int>{VC_B, VC_C, VC_A, VC_B}));

        std::thread(fromHookThread).join();
        subscription.reset();  // with two events on their way
        stage.log.clear();
        std::thread(fromHookThread).join();
        QCoreApplication::processEvents();
        QCOMPARE(codes.size(), std::size_t{4});
        QCOMPARE(stage.log, QString());  // it has unregistered the module
    }

    // As a hot key that opens a dialog, and one that closes its own panel.
    void AHandlerMayRunAnEventLoopAndEndItsSubscription()
    {
        Stage stage;
        stage.Play(QStringLiteral("a7"));
        std::vector<int> codes;
        std::unique_ptr<panelry::HookSubscription> subscription;
        subscription =
            std::make_unique<panelry::HookSubscription>(stage['a'], [&](const uiohook_event& event) {
                codes.push_back(event.data.keyboard.keycode);
                if (codes.size() == 1) {
                    QCoreApplication::processEvents();
                } else if (codes.size() == 3) {
                    subscription.reset();
                }
            });
        for (const int code : {VC_A, VC_B, VC_C, VC_D}) {
            const uiohook_event event = Press(code);
            subscription->Take(&event);
        }
        // The loop inside the first one hears the next two; the last dies with the subscription.
        QCoreApplication::processEvents();
        QCOMPARE(codes, (std::vector<int>{VC_A, VC_B, VC_C}));
    }
};

PANELRY_TEST(HotKeyRoutingTest)
#include "routing_test.moc"
