// Modules of the real library hear real keys and mouse actions, while a window of another program has the focus.

#include <QLineEdit>

#include "desktop/screen.h"
#include "support/host_process.h"
#include "support/test.h"

using panelry::test::HostProcess;
namespace screen = panelry::test::screen;

namespace
{

QString Escaped(QString text)
{
    return text.replace(QLatin1Char('"'), QStringLiteral("\\\""));
}

// The module `id` sends a message, "120 {...}".
QString Send(int id, const QString& message)
{
    const QString number = message.section(QLatin1Char(' '), 0, 0);
    return QStringLiteral(R"(notify 0 %1 {"operate":"notify","cmd":"900","bussiness":"send %2 -1 %3"})")
        .arg(id)
        .arg(number, Escaped(message.section(QLatin1Char(' '), 1)));
}

QString Registration(int type, const QString& keys = QString())
{
    const QString list = keys.isNull() ? QString() : QStringLiteral(R"(,"keyboard_value":["%1"])").arg(keys);
    return QStringLiteral(R"({"hook_type":"%1"%2})").arg(type).arg(list);
}

// "1002 OnMessage 119 ..." as "1002:4:30", the type and the code of a key, or "1002:7", the type alone.
QString Short(const QString& line)
{
    static const QRegularExpression form(
        QStringLiteral("(\\d+)#\\d+ OnMessage 119 type=(\\d+)(?: code=(\\d+))? ON A STRANGE THREAD"));
    const QRegularExpressionMatch match = form.match(line);
    if (!match.hasMatch()) {
        return {};
    }
    const QString code = match.captured(3);
    return match.captured(1) + QLatin1Char(':') + match.captured(2) +
           (code.isEmpty() ? QString() : QLatin1Char(':') + code);
}

}  // namespace

class HotKeysDesktopTest : public panelry::test::Test
{
    Q_OBJECT

private:
    static constexpr int kDeadlineMs = 60'000;
    static constexpr int kF9 = 67;
    static constexpr int kWatcher = 3001;  // hears F9 alone, which ends a series of actions

    HostProcess m_host;
    QLineEdit m_other;

    void FocusOther()
    {
        screen::Do(QStringLiteral("windowactivate --sync %1 windowfocus --sync %1").arg(m_other.winId()));
        QTRY_VERIFY_WITH_TIMEOUT(m_other.isActiveWindow(), kDeadlineMs);
    }

    QStringList HeardUntilF9()
    {
        QStringList heard;
        const QString last = QStringLiteral("%1:4:%2").arg(kWatcher).arg(kF9);
        bool ended = false;
        for (int looks = 0; looks < 200 && !ended; ++looks) {
            for (const QString& line : m_host.Settle()) {
                const QString event = Short(line);
                ended = ended || event == last;
                if (!event.isEmpty() && !event.endsWith(QStringLiteral(":%1").arg(kF9))) {
                    heard.append(event);
                }
            }
        }
        return ended ? heard : QStringList(QStringLiteral("no end"));
    }

    QStringList Heard(const QString& actions)
    {
        for (const QString& action : actions.split(QLatin1Char(';'))) {
            screen::Do(action);
        }
        screen::Do(QStringLiteral("key F9"));
        return HeardUntilF9();
    }

private Q_SLOTS:
    void initTestCase()
    {
        m_host.AddModules(QStringLiteral("other"));
        QVERIFY(m_host.StartAndInit());
        for (const int id : {1002, 2002, kWatcher}) {
            m_host.Do(QStringLiteral("notify 1 %1 open").arg(id));
        }
        m_host.Do(Send(kWatcher, QStringLiteral("120 ") + Registration(4, QStringLiteral("f9"))));
        m_host.Settle();
        m_other.setWindowTitle(QStringLiteral("another window"));
        m_other.show();
        QVERIFY(QTest::qWaitForWindowExposed(&m_other));
        FocusOther();
        // The hook takes a moment to come up.
        const QString heardF9 = QStringLiteral("type=4 code=%1").arg(kF9);
        bool heard = false;  // once is enough: the macro looks again
        const auto pressAndLook = [&] {
            screen::Do(QStringLiteral("key F9"));
            heard = heard || !m_host.Settle().filter(heardF9).isEmpty();
            return heard;
        };
        QTRY_VERIFY_WITH_TIMEOUT(pressAndLook(), kDeadlineMs);
    }

    void cleanupTestCase() { QVERIFY(m_host.End({QStringLiteral("uninit")})); }

    void EventsReachTheModulesThatAskedForThem_data()
    {
        QTest::addColumn<QStringList>("requests");  // "1002 120 {...}"
        QTest::addColumn<QString>("actions");
        QTest::addColumn<QString>("heard");
        const auto on = [](int id, int type, const char* keys = nullptr) {
            return QStringLiteral("%1 120 ").arg(id) +
                   Registration(type, keys ? QString::fromLatin1(keys) : QString());
        };
        const auto off = [](int id, int type) {
            return QStringLiteral("%1 121 ").arg(id) + Registration(type);
        };
        const auto row = [](const char* name, const QStringList& requests, const char* actions,
                            const char* heard) {
            QTest::newRow(name) << requests << QString::fromLatin1(actions) << QString::fromLatin1(heard);
        };
        const char* const keys = "key ctrl+shift+a;key a;key ctrl+a";
        row("pressed, with its modifiers", {on(1002, 4, "ctrl+shift+a")}, keys, "1002:4:30");
        row("modifiers in another order", {on(1002, 4, "shift+ctrl+a")}, keys, "");
        row("right modifiers", {on(1002, 4, "ctrl+alt+enter")}, "key Control_R+Alt_L+Return;key alt+Return",
            "1002:4:28");
        row("released", {on(1002, 5, "ctrl+shift+a")},
            "keydown ctrl keydown shift;key a;keyup shift keyup ctrl;key a", "1002:5:30");
        row("pressed and released, no list", {on(1002, 4), on(1002, 5)}, "key Left;key Delete",
            "1002:4:57419 1002:5:57419 1002:4:3667 1002:5:3667");
        row("keys without a name are one", {on(1002, 4, "unknown")}, "key comma;key KP_Add;key b",
            "1002:4:51 1002:4:78");
        row("typed", {on(1002, 3)}, "key q;key F2", "1002:3:0");
        row("two modules, two lists", {on(1002, 4, "x"), on(2002, 4, "y")}, "key y;key x;key z",
            "2002:4:21 1002:4:45");
        row("off again, one of two", {on(1002, 4, "x"), on(2002, 4, "x"), off(1002, 4)}, "key x",
            "2002:4:45");
        row("off for all", {on(1002, 4, "x"), on(1002, 7), QStringLiteral("1002 121 ")},
            "key x;mousemove 900 500 click 1", "");
        row("a click", {on(1002, 6), on(1002, 7), on(1002, 8)}, "mousemove 900 500 click 1",
            "1002:7 1002:8 1002:6");
        row("the wheel", {on(1002, 11), on(1002, 7)}, "mousemove 900 500 click 4;click 5", "1002:11 1002:11");
        row("moved", {on(1002, 9)}, "mousemove 300 300;mousemove 310 300", "1002:9 1002:9");
        row("dragged", {on(1002, 10)}, "mousemove 900 500;mousedown 1;mousemove 910 510;mouseup 1",
            "1002:10");
    }
    void EventsReachTheModulesThatAskedForThem()
    {
        QFETCH(QStringList, requests);
        QFETCH(QString, actions);
        m_host.Do(QStringLiteral("notify 0 -1 destroyui"));
        for (const int id : {1002, 2002, kWatcher}) {
            m_host.Do(QStringLiteral("notify 1 %1 open").arg(id));
        }
        m_host.Do(Send(kWatcher, QStringLiteral("120 ") + Registration(4, QStringLiteral("f9"))));
        screen::Do(QStringLiteral("mousemove 800 500"));
        for (const QString& request : requests) {
            m_host.Do(Send(request.left(4).toInt(), request.mid(5)));
        }
        m_host.Settle();
        FocusOther();
        QTEST(Heard(actions).join(QLatin1Char(' ')), "heard");
    }

    void TheFocusedWindowGetsTheKeysAllTheSame()
    {
        m_host.Do(Send(1002, QStringLiteral("120 ") + Registration(4, QStringLiteral("k"))));
        m_host.Settle();
        FocusOther();
        screen::Do(QStringLiteral("key k"));
        QTRY_VERIFY(m_other.text().endsWith(QLatin1Char('k')));
        QVERIFY(!m_host.Wait(QStringLiteral("OnMessage 119 type=4 code=37")).isNull());
    }

    void DestroyUiClearsTheRegistrations()
    {
        m_host.Do(Send(1002, QStringLiteral("120 ") + Registration(4)));
        m_host.Do({QStringLiteral("notify 0 -1 destroyui"), QStringLiteral("notify 1 1002 again"),
                   QStringLiteral("notify 1 %1 again").arg(kWatcher)});
        m_host.Do(Send(kWatcher, QStringLiteral("120 ") + Registration(4, QStringLiteral("f9"))));
        m_host.Settle();
        QCOMPARE(Heard(QStringLiteral("key x")), QStringList());
    }

    void AHostMayLeaveWhileKeysComeAndTheHookLives()
    {
        const int hosts = qEnvironmentVariableIsEmpty("PANELRY_SOAK") ? 5 : 100;
        for (int number = 0; number < hosts; ++number) {
            HostProcess host;
            host.Set(QStringLiteral("TSAN_OPTIONS"),
                     qEnvironmentVariable("TSAN_OPTIONS") + QStringLiteral(":report_thread_leaks=0"));
            QVERIFY(host.StartAndInit());
            host.Do(QStringLiteral("notify 1 1002 open"));
            host.Do(Send(1002, QStringLiteral("120 ") + Registration(9)));
            host.Settle();
            bool heard = false;
            const auto moveAndLook = [&] {
                screen::Do(QStringLiteral("mousemove 50 50 mousemove 60 60"));
                heard = heard || !host.Settle().filter(QStringLiteral("OnMessage 119 type=9")).isEmpty();
                return heard;
            };
            QTRY_VERIFY_WITH_TIMEOUT(moveAndLook(), kDeadlineMs);
            screen::Do(QStringLiteral("mousemove 100 100 mousemove 200 200 mousemove 300 300"));
            QVERIFY(host.End({}, 7));
        }
    }

    void WithoutADisplayAllElseWorks()
    {
        HostProcess host;
        host.Set(QStringLiteral("DISPLAY"), QString());
        host.Set(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
        QVERIFY(host.StartAndInit());
        QVERIFY(host.SaysThatThereIsNoHook());
        host.Do(QStringLiteral("notify 1 1002 open"));
        host.Do(Send(1002, QStringLiteral("120 ") + Registration(4)));
        QVERIFY(!host.Wait(QStringLiteral("sent 120")).isNull());
        QCOMPARE(host.Ask(1002, QStringLiteral("alive")), QStringLiteral("2 modules 0 widgets"));
        QVERIFY(
            host.End({QStringLiteral("uninit"), QStringLiteral("init 16 32 1"), QStringLiteral("uninit")}));
    }
};

PANELRY_TEST(HotKeysDesktopTest)
#include "hot_keys_desktop_test.moc"
