// Who hears what. The service is driven as libuiohook drives it, through its dispatch function.

#include <atomic>
#include <latch>
#include <thread>

#include "input/fake_hook.h"
#include "input/listener.h"
#include "support/rows.h"
#include "support/test.h"

using namespace panelry::test;

namespace
{

// The text out of "4" or "4 [...]", the type and the value of the list; a text in braces is itself.
std::string Request(const std::string& words)
{
    if (words.empty() || words[0] == '{') {
        return words;
    }
    const std::size_t blank = words.find(' ');
    const std::string list =
        blank == std::string::npos ? "" : ",\"keyboard_value\":" + words.substr(blank + 1);
    return "{\"hook_type\":\"" + words.substr(0, blank) + '"' + list + '}';
}

struct Scene {
    HookManager manager{kNoWatch};
    QString log;
    Listener a{QStringLiteral("a"), log};
    Listener b{QStringLiteral("b"), log};
    Listener c{QStringLiteral("c"), log};
    Listener d{QStringLiteral("d"), log};
};

}  // namespace

class RegistrationsTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    // Steps: "+a 4 [...]" registers a for type 4 with a list, "-a 4" unregisters it. Then events: ctrl+shift+a
    // pressed (P) and released (R), x pressed (x), something typed (t), the wheel turned (w), and one of a type that
    // nobody serves (?). The log has each event's letter followed by who heard it.
    void WhoHearsWhat_data()
    {
        const Rows<const char*> row("log");
        row(R"(+a 4 ["f1","x","ctrl+shift+a"])", "Pa R xa t w ?");
        row(R"(+a 4 [" Ctrl + Shift + A\t"])", "Pa R x t w ?");
        row(R"(+a 4 ["shift+ctrl+a","shift+a","a","ctrl+shift+"])", "P R x t w ?");
        row(R"(+a 4 [])", "Pa R xa t w ?");
        row(R"(+b 4;+a 4;+b 4)", "Pba R xba t w ?");
        row(R"(-b 4;+a 4 ["ctrl+shift+a"];+b 4 ["x"])", "Pa R xb t w ?");
        // A second list replaces the first; what is none leaves it.
        row(R"(+a 4 ["ctrl+shift+a"];+a 4 ["x"])", "P R xa t w ?");
        row(R"(+a 4 ["ctrl+shift+a"];+a 4;+a 4 "x")", "Pa R x t w ?");
        // One list for presses and releases, and none for what has no combination.
        row(R"(+a 4 ["ctrl+shift+a"];+a 5 ["x"])", "P R xa t w ?");
        row(R"(+a 3 ["x"];+a 11)", "P R x ta wa ?");
        row(R"(+a 1;+a 12;+a -1)", "P R x t w ?");
        row(R"(+a {"hook_type":" +4 keys"})", "Pa R xa t w ?");
        // Off for a type of keys, and the list is gone; off for the wheel, and it stays.
        row(R"(+a 4 ["x"];+a 5;-a 4)", "P Ra x t w ?");
        row(R"(+a 4 ["x"];-a 3)", "Pa R xa t w ?");
        row(R"(+a 4 ["x"];+a 11;-a 11)", "P R xa t w ?");
        // Off for all; the list waits for the next time.
        row(R"(+a 4;+a 3;+a 11;+b 4;-a )", "Pb R xb t w ?");
        row(R"(+a 4 ["x"];-a ;+a 5;+a 4)", "P R xa t w ?");
        // A bad list: on, without the list it had. A bad type: nothing done.
        row(R"(+a 4 ["ctrl+shift+a"];+a 4 ["x",7])", "Pa R xa t w ?");
        row(R"(+a 4 ["ctrl+shift+a"];+a {"hook_type":5,"keyboard_value":[]};-a {"hook_type":4};-a {)",
            "Pa R x t w ?");
    }
    void WhoHearsWhat()
    {
        Scene scene;
        {
            CapturedOutput output;
            for (const QString& step : QString::fromLatin1(QTest::currentDataTag()).split(QLatin1Char(';'))) {
                const auto change = step[0] == QLatin1Char('+') ? &HookManager::RegisterModule
                                                                : &HookManager::UnregisterModule;
                (scene.manager.*change)(step[1] == QLatin1Char('a') ? &scene.a : &scene.b,
                                        Request(step.mid(3).toStdString()).c_str());
            }
        }
        const std::pair<const char*, uiohook_event> events[] = {
            {"P", Press(VC_A, MASK_CTRL_L | MASK_SHIFT_L)},
            {" R", KeyEvent(EVENT_KEY_RELEASED, MASK_CTRL_L | MASK_SHIFT_L, VC_A)},
            {" x", Press(VC_X)},
            {" t", KeyEvent(EVENT_KEY_TYPED, 0, VC_UNDEFINED)},
            {" w", MouseEvent(EVENT_MOUSE_WHEEL)},
            {" ?", MouseEvent(static_cast<event_type>(12))}};
        for (const auto& [letter, event] : events) {
            scene.log += QString::fromLatin1(letter);
            Send(event);
        }
        QTEST(scene.log, "log");
    }

    void ABadTextIsReportedInOneLine()
    {
        struct Bad {
            QByteArray text;
            const char* reason;
            bool unregisters = false;  // without a complaint
        };
        const Bad texts[] = {{"", "parse_error.101", true},
                             {"hook_type", "parse_error.101"},
                             {"{\"hook_type\":\"\xC4\xE3\"}", "parse_error.101"},
                             {"[4]", "type_error.305"},
                             {"{}", "type_error.302"},
                             {R"({"hook_type":4})", "type_error.302"},
                             {R"({"hook_type":"4","keyboard_value":[{}]})", "type_error.302", true},
                             {R"({"hook_type":"99999999999"})", "hook_type"},
                             {QByteArray(200'000, '['), "parse_error.101"}};
        Scene scene;
        for (const Bad& bad : texts) {
            CapturedOutput output;
            for (Listener* const sender : {&scene.a, static_cast<Listener*>(nullptr)}) {
                scene.manager.RegisterModule(sender, bad.text.constData());
                scene.manager.UnregisterModule(sender, bad.text.constData());
            }
            const QByteArray told = output.Text();
            const QList<QByteArray> lines = told.split('\n');
            QCOMPARE(lines.size(), bad.unregisters ? 2 : 3);
            QVERIFY2(lines[0].startsWith("RegisterModule parse error:"), told.constData());
            QVERIFY2(bad.unregisters || lines[1].startsWith("UnregisterModule parse error:"),
                     told.constData());
            QCOMPARE(told.count(bad.reason), lines.size() - 1);
        }
    }

    void TheProbeReachesNobody()
    {
        Scene scene;
        scene.manager.RegisterModule(&scene.a, kPresses);
        scene.manager.RegisterModule(&scene.a, Request("5").c_str());
        for (const int code : {107, 106}) {
            for (const event_type type : {EVENT_KEY_PRESSED, EVENT_KEY_RELEASED}) {
                uiohook_event event = KeyEvent(type, 0, code);
                HookManager::OnHookEvent(&event);
                QCOMPARE(event.reserved == 1, code == 107);
            }
        }
        QCOMPARE(scene.log, QStringLiteral("aa"));
    }

    // The module may die as soon as it is out, so nobody may be in it then.
    void WhoTakesAModuleOutWaitsForItsDelivery()
    {
        using Owner = std::unique_ptr<HookManager>;
        const std::function<void(Owner&, Listener&)> ways[] = {
            [](Owner& manager, Listener& module) { manager->UnregisterModule(&module, kPresses); },
            [](Owner& manager, Listener& module) { manager->UnregisterModule(&module, ""); },
            [](Owner& manager, Listener& module) { manager->ForgetModule(&module); },
            [](Owner& manager, Listener&) { manager->ClearRegistrations(); },
            [](Owner& manager, Listener&) { manager.reset(); }};
        for (const auto& takeOut : ways) {
            auto manager = std::make_unique<HookManager>(kNoWatch);
            QString log;
            Listener module(QStringLiteral("a"), log);
            manager->RegisterModule(&module, kPresses);
            std::latch inModule(1);
            std::atomic<bool> out{false};
            bool outDuringDelivery = false;
            module.heard = [&](const uiohook_event&) {
                inModule.count_down();
                std::this_thread::sleep_for(std::chrono::milliseconds(30));  // enough for who doesn't wait
                outDuringDelivery = out;
            };
            std::thread hook([] { Send(Press(VC_A)); });
            inModule.wait();
            takeOut(manager, module);
            out = true;
            hook.join();
            QVERIFY(!outDuringDelivery);
            Send(Press(VC_A));
            QCOMPARE(log, QStringLiteral("a"));
        }
    }

    // On the hook thread waiting for the own return would never end; and who comes later isn't called any more.
    void AModuleMayTakeOutItselfAndOthersWhileItHears()
    {
        Scene scene;
        for (Listener* const module : {&scene.a, &scene.b, &scene.c, &scene.d}) {
            scene.manager.RegisterModule(module, kPresses);
        }
        scene.a.heard = [&](const uiohook_event&) {
            scene.manager.UnregisterModule(&scene.a, kPresses);
            scene.manager.ForgetModule(&scene.b);
            scene.manager.RegisterModule(&scene.d, Request(R"(4 ["x"])").c_str());  // at once
        };
        Send(Press(VC_A));
        QCOMPARE(scene.log, QStringLiteral("ac"));
        Send(Press(VC_A));
        QCOMPARE(scene.log, QStringLiteral("acc"));
    }

    // Modules come and go while the hook never rests; a call into a dead one is what this looks for.
    void ModulesDieWhileEventsCome()
    {
        static std::atomic<bool> calledDead{false};
        struct Mortal : ModuleBase {
            void Initialize(int, const char*, const char*, const char*) override {}
            void OnMessage(int, void*) override { calledDead = calledDead || !alive; }
            std::atomic<bool> alive{true};
        };
        const int rounds = qEnvironmentVariableIsEmpty("PANELRY_SOAK") ? 500 : 50'000;
        HookManager manager(kNoWatch);
        std::atomic<bool> done{false};
        std::thread hook([&] {
            while (!done) {
                Send(Press(VC_A));
                Send(MouseEvent(EVENT_MOUSE_MOVED));
            }
        });
        for (int round = 0; round < rounds; ++round) {
            auto filtered = std::make_unique<Mortal>();
            auto other = std::make_unique<Mortal>();
            manager.RegisterModule(filtered.get(), Request(R"(4 ["a"])").c_str());
            manager.RegisterModule(other.get(), Request("9").c_str());
            manager.RegisterModule(other.get(), kPresses);
            manager.ForgetModule(other.get());
            other->alive = false;
            manager.UnregisterModule(filtered.get(), round % 2 == 0 ? "" : kPresses);
            filtered->alive = false;
            std::this_thread::yield();
        }
        done = true;
        hook.join();
        QVERIFY(!calledDead);
    }
};

PANELRY_TEST(RegistrationsTest)
#include "registrations_test.moc"
