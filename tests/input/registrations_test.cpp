// Who hears what. The service is driven as libuiohook drives it, through its dispatch function.

#include <atomic>
#include <latch>
#include <thread>

#include "input/fake_hook.h"
#include "input/hook_manager.h"
#include "input/listener.h"
#include "support/test.h"

using panelry::test::CapturedOutput;
using panelry::test::KeyEvent;
using panelry::test::Listener;
using panelry::test::MouseEvent;

namespace
{

constexpr std::uint16_t kCtrlShift = 0x03;

// Quiet: its watchdog never looks.
constexpr panelry::HookTiming kNoWatch{std::chrono::hours(1), std::chrono::hours(1)};

std::string Registration(int type, const char* keys = nullptr)
{
    std::string text = "{\"hook_type\":\"" + std::to_string(type) + "\"";
    if (keys) {
        text += std::string(R"(,"keyboard_value":[)") + keys + "]";
    }
    return text + "}";
}

void Send(uiohook_event event)
{
    HookManager::OnHookEvent(&event);
}

}  // namespace

class RegistrationsTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    // Steps: "+a TEXT" registers a, "-a TEXT" unregisters it. Then events: ctrl+shift+a pressed (P) and released (R),
    // x pressed (x), something typed (t), the wheel turned (w), and one of a type that nobody serves (?). The log
    // has each event's letter followed by who heard it.
    void WhoHearsWhat_data()
    {
        QTest::addColumn<QStringList>("steps");
        QTest::addColumn<QString>("log");
        const QString plus = QStringLiteral("+a ");
        const auto row = [](const char* name, const QStringList& steps, const char* log) {
            QTest::newRow(name) << steps << QString::fromLatin1(log);
        };
        const auto on = [](const char* who, int type, const char* keys = nullptr) {
            return QString::fromLatin1(who) + QLatin1Char(' ') +
                   QString::fromStdString(Registration(type, keys));
        };
        const char* const combination = R"("ctrl+shift+a")";
        row("no list hears every key of the type", {on("+a", 4)}, "Pa R xa t w ?");
        row("a list hears what is on it", {on("+a", 4, combination)}, "Pa R x t w ?");
        row("any of it", {on("+a", 4, R"("f1","x","ctrl+shift+a")")}, "Pa R xa t w ?");
        row("blanks and capitals don't count", {on("+a", 4, R"(" Ctrl + Shift + A\t")")}, "Pa R x t w ?");
        row("another order never matches", {on("+a", 4, R"("shift+ctrl+a")")}, "P R x t w ?");
        row("part of a combination is none", {on("+a", 4, R"("shift+a","a","ctrl+shift+")")}, "P R x t w ?");
        row("an empty list hears every key", {on("+a", 4, "")}, "Pa R xa t w ?");
        row("twice for one type: once", {on("+a", 4), on("+b", 4), on("+a", 4)}, "Pab R xab t w ?");
        row("in the order of registration", {on("+b", 4), on("+a", 4)}, "Pba R xba t w ?");
        row("two lists", {on("+a", 4, combination), on("+b", 4, R"("x")")}, "Pa R xb t w ?");
        row("a second list replaces the first", {on("+a", 4, combination), on("+a", 4, R"("x")")},
            "P R xa t w ?");
        row("no list in the second: the first stays", {on("+a", 4, combination), on("+a", 4)},
            "Pa R x t w ?");
        row("what is no array: the first stays",
            {on("+a", 4, combination), plus + QStringLiteral(R"({"hook_type":"4","keyboard_value":"x"})")},
            "Pa R x t w ?");
        row("one list for presses and releases", {on("+a", 4, combination), on("+a", 5, R"("x")")},
            "P R xa t w ?");
        row("a list doesn't hold for what has no combination", {on("+a", 3, R"("x")"), on("+a", 11)},
            "P R x ta wa ?");
        row("a type that nobody serves", {on("+a", 1), on("+a", 12), on("+a", -1)}, "P R x t w ?");
        row("as a number at the head of the text", {plus + QStringLiteral(R"({"hook_type":" +4 keys"})")},
            "Pa R xa t w ?");
        row("off again", {on("+a", 4), on("+b", 4), on("-a", 4)}, "Pb R xb t w ?");
        row("off for one type, on for the other", {on("+a", 4), on("+a", 5), on("-a", 4)}, "P Ra x t w ?");
        row("off for presses: no list for releases any more",
            {on("+a", 4, R"("x")"), on("+a", 5), on("-a", 4)}, "P Ra x t w ?");
        row("off for typing: no list any more", {on("+a", 4, R"("x")"), on("-a", 3)}, "Pa R xa t w ?");
        row("off for the wheel: the list stays", {on("+a", 4, R"("x")"), on("+a", 11), on("-a", 11)},
            "P R xa t w ?");
        row("empty text: off for all",
            {on("+a", 4), on("+a", 3), on("+a", 11), on("+b", 4), QStringLiteral("-a ")}, "Pb R xb t w ?");
        row("empty text: the list waits for the next time",
            {on("+a", 4, R"("x")"), QStringLiteral("-a "), on("+a", 5), on("+a", 4)}, "P R xa t w ?");
        row("off without having been on", {on("-a", 4), on("+b", 4, R"("x")"), on("-a", 4)}, "P R xb t w ?");
        row("a bad list: on, without the list it had",
            {on("+a", 4, combination),
             plus + QStringLiteral(R"({"hook_type":"4","keyboard_value":["x",7]})")},
            "Pa R xa t w ?");
        row("a bad type: nothing done",
            {on("+a", 4, combination), plus + QStringLiteral(R"({"hook_type":5,"keyboard_value":[]})"),
             QStringLiteral(R"(-a {"hook_type":4})"), QStringLiteral("-a {")},
            "Pa R x t w ?");
    }
    void WhoHearsWhat()
    {
        QFETCH(QStringList, steps);
        HookManager manager(kNoWatch);
        QString log;
        Listener a(QStringLiteral("a"), log);
        Listener b(QStringLiteral("b"), log);
        {
            CapturedOutput output;
            for (const QString& step : steps) {
                Listener& module = step[1] == QLatin1Char('a') ? a : b;
                const std::string text = step.mid(3).toStdString();
                if (step[0] == QLatin1Char('+')) {
                    manager.RegisterModule(&module, text.c_str());
                } else {
                    manager.UnregisterModule(&module, text.c_str());
                }
            }
        }
        const std::pair<const char*, uiohook_event> events[] = {
            {"P", KeyEvent(EVENT_KEY_PRESSED, kCtrlShift, VC_A)},
            {" R", KeyEvent(EVENT_KEY_RELEASED, kCtrlShift, VC_A)},
            {" x", KeyEvent(EVENT_KEY_PRESSED, 0, VC_X)},
            {" t", KeyEvent(EVENT_KEY_TYPED, 0, VC_UNDEFINED)},
            {" w", MouseEvent(EVENT_MOUSE_WHEEL)},
            {" ?", MouseEvent(static_cast<event_type>(12))}};
        for (const auto& [letter, event] : events) {
            log += QString::fromLatin1(letter);
            Send(event);
        }
        QTEST(log, "log");
    }

    void ABadTextIsReportedInOneLine_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QByteArray>("reason");
        QTest::newRow("no JSON") << QByteArray("hook_type") << QByteArray("parse_error.101");
        QTest::newRow("empty") << QByteArray("") << QByteArray("parse_error.101");
        QTest::newRow("not UTF-8") << QByteArray("{\"hook_type\":\"\xC4\xE3\"}")
                                   << QByteArray("parse_error.101");
        QTest::newRow("no object") << QByteArray("[4]") << QByteArray("type_error.305");
        QTest::newRow("no type") << QByteArray("{}") << QByteArray("type_error.302");
        QTest::newRow("a number") << QByteArray(R"({"hook_type":4})") << QByteArray("type_error.302");
        QTest::newRow("a combination that is none")
            << QByteArray(R"({"hook_type":"4","keyboard_value":[{}]})") << QByteArray("type_error.302");
        QTest::newRow("beyond all numbers") << QByteArray(R"({"hook_type":"99999999999"})") << QByteArray("");
        QTest::newRow("very deep") << QByteArray(200'000, '[') << QByteArray("parse_error.101");
    }
    void ABadTextIsReportedInOneLine()
    {
        QFETCH(QByteArray, text);
        QFETCH(QByteArray, reason);
        HookManager manager(kNoWatch);
        QString log;
        Listener module(QStringLiteral("a"), log);
        CapturedOutput output;
        manager.RegisterModule(&module, text.constData());
        manager.RegisterModule(nullptr, text.constData());
        if (!text.isEmpty() && !text.contains("keyboard_value")) {
            manager.UnregisterModule(&module, text.constData());
        }
        manager.UnregisterModule(nullptr, text.constData());
        const QList<QByteArray> lines = output.Text().split('\n');
        QVERIFY2(lines[0].startsWith("RegisterModule parse error:"), lines[0].constData());
        QVERIFY2(lines[0].size() > 28 && lines[0].contains(reason), lines[0].constData());
        if (lines.size() > 2) {
            QVERIFY2(lines[1].startsWith("UnregisterModule parse error:"), lines[1].constData());
            QVERIFY2(lines[1].contains(reason), lines[1].constData());
        }
        QCOMPARE(lines.last(), QByteArray());
    }

    void TheProbeReachesNobody()
    {
        HookManager manager(kNoWatch);
        QString log;
        Listener module(QStringLiteral("a"), log);
        manager.RegisterModule(&module, Registration(4).c_str());
        manager.RegisterModule(&module, Registration(5).c_str());
        for (const event_type type : {EVENT_KEY_PRESSED, EVENT_KEY_RELEASED}) {
            uiohook_event probe = KeyEvent(type, 0, 107);
            HookManager::OnHookEvent(&probe);
            QCOMPARE(probe.reserved, std::uint16_t{1});
            uiohook_event other = KeyEvent(type, 0, 106);
            HookManager::OnHookEvent(&other);
            QCOMPARE(other.reserved, std::uint16_t{0});
        }
        QCOMPARE(log, QStringLiteral("aa"));
    }

    // The module may die as soon as it is out, so nobody may be in it then.
    void WhoTakesAModuleOutWaitsForItsDelivery_data()
    {
        QTest::addColumn<int>("way");
        QTest::newRow("by its type") << 0;
        QTest::newRow("from all types") << 1;
        QTest::newRow("forgotten") << 2;
        QTest::newRow("with all others") << 3;
        QTest::newRow("with the service") << 4;
    }
    void WhoTakesAModuleOutWaitsForItsDelivery()
    {
        QFETCH(int, way);
        auto manager = std::make_unique<HookManager>(kNoWatch);
        QString log;
        Listener module(QStringLiteral("a"), log);
        manager->RegisterModule(&module, Registration(4).c_str());
        std::latch inModule(1);
        std::latch takingOut(1);
        std::atomic<bool> out{false};
        bool outDuringDelivery = false;
        module.heard = [&](const uiohook_event&) {
            inModule.count_down();
            takingOut.wait();
            std::this_thread::sleep_for(std::chrono::milliseconds(30));  // long enough for who doesn't wait
            outDuringDelivery = out;
        };
        std::thread hook([] { Send(KeyEvent(EVENT_KEY_PRESSED, 0, VC_A)); });
        inModule.wait();
        takingOut.count_down();
        switch (way) {
            case 0:
                manager->UnregisterModule(&module, Registration(4).c_str());
                break;
            case 1:
                manager->UnregisterModule(&module, "");
                break;
            case 2:
                manager->ForgetModule(&module);
                break;
            case 3:
                manager->ClearRegistrations();
                break;
            default:
                manager.reset();
        }
        out = true;
        hook.join();
        QVERIFY(!outDuringDelivery);
        Send(KeyEvent(EVENT_KEY_PRESSED, 0, VC_A));
        QCOMPARE(log, QStringLiteral("a"));
    }

    // On the hook thread waiting for the own return would never end; and who comes later isn't called any more.
    void AModuleMayTakeOutItselfAndOthersWhileItHears()
    {
        HookManager manager(kNoWatch);
        QString log;
        Listener a(QStringLiteral("a"), log);
        Listener b(QStringLiteral("b"), log);
        Listener c(QStringLiteral("c"), log);
        for (Listener* const module : {&a, &b, &c}) {
            manager.RegisterModule(module, Registration(4).c_str());
        }
        a.heard = [&](const uiohook_event&) {
            manager.UnregisterModule(&a, Registration(4).c_str());
            manager.ForgetModule(&b);
        };
        Send(KeyEvent(EVENT_KEY_PRESSED, 0, VC_A));
        QCOMPARE(log, QStringLiteral("ac"));
        Send(KeyEvent(EVENT_KEY_PRESSED, 0, VC_A));
        QCOMPARE(log, QStringLiteral("acc"));
    }

    // Modules come and go while the hook never rests; a call into a dead one is what this looks for.
    void ModulesDieWhileEventsCome()
    {
        struct Mortal : ModuleBase {
            explicit Mortal(std::atomic<bool>& flag) : calledDead(flag) {}
            void Initialize(int, const char*, const char*, const char*) override {}
            void OnMessage(int, void*) override
            {
                if (!alive) {
                    calledDead = true;
                }
            }
            std::atomic<bool>& calledDead;
            std::atomic<bool> alive{true};
        };
        const int rounds = qEnvironmentVariableIsEmpty("PANELRY_SOAK") ? 500 : 50'000;
        HookManager manager(kNoWatch);
        std::atomic<bool> calledDead{false};
        std::atomic<bool> done{false};
        std::thread hook([&] {
            while (!done) {
                Send(KeyEvent(EVENT_KEY_PRESSED, 0, VC_A));
                Send(MouseEvent(EVENT_MOUSE_MOVED));
            }
        });
        for (int round = 0; round < rounds; ++round) {
            auto filtered = std::make_unique<Mortal>(calledDead);
            auto other = std::make_unique<Mortal>(calledDead);
            manager.RegisterModule(filtered.get(), Registration(4, R"("a")").c_str());
            manager.RegisterModule(other.get(), Registration(9).c_str());
            manager.RegisterModule(other.get(), Registration(4).c_str());
            manager.ForgetModule(other.get());
            other->alive = false;
            manager.UnregisterModule(filtered.get(), round % 2 == 0 ? "" : Registration(4).c_str());
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
