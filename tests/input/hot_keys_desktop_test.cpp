// Modules of the real library hear real keys and mouse actions, while a window of another program has the focus.

#include <QLineEdit>

#include "desktop/screen.h"
#include "support/host_process.h"
#include "support/rows.h"
#include "support/test.h"

using panelry::test::HostProcess;
namespace screen = panelry::test::screen;

namespace
{

// The module `id` registers for a type, with one combination or without a list.
QString Register(int id, const QString& type, const QString& keys = QString())
{
    const QString list = keys.isEmpty() ? keys : QStringLiteral(",'keyboard_value':['%1']").arg(keys);
    QString text = QStringLiteral("{'hook_type':'%1'%2}").arg(type, list);
    text.replace(QLatin1Char('\''), QStringLiteral("\\\""));
    return QStringLiteral(R"(notify 0 %1 {"operate":"notify","cmd":"900","bussiness":"send 120 -1 %2"})")
        .arg(QString::number(id), text);
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

    // What is heard of the actions: "4:30", the type and the code of a key, or "7:", the type alone.
    QString Heard(const QString& actions)
    {
        static const QRegularExpression form(
            QStringLiteral("(\\d+)#\\d+ OnMessage 119 type=(\\d+)(?: code=(\\d+))? ON A STRANGE THREAD"));
        m_host.Settle();
        FocusOther();
        for (const QString& action : actions.split(QLatin1Char(';'))) {
            screen::Do(action);
        }
        screen::Do(QStringLiteral("key F9"));
        QStringList heard;
        for (int looks = 0; looks < 200; ++looks) {
            bool ended = false;
            for (const QString& line : m_host.Settle()) {
                const QRegularExpressionMatch event = form.match(line);
                const bool f9 = event.captured(3).toInt() == kF9;
                ended = ended || (f9 && event.captured(1).toInt() == kWatcher);
                if (event.hasMatch() && !f9) {
                    heard.append(event.captured(2) + QLatin1Char(':') + event.captured(3));
                }
            }
            if (ended) {
                return heard.join(QLatin1Char(' '));
            }
        }
        return QStringLiteral("no end");
    }

    void Open()
    {
        for (const int id : {1002, kWatcher}) {
            m_host.Do(QStringLiteral("notify 1 %1 open").arg(id));
        }
        m_host.Do(Register(kWatcher, QStringLiteral("4"), QStringLiteral("f9")));
    }

private Q_SLOTS:
    void initTestCase()
    {
        m_host.AddModules(QStringLiteral("other"));
        QVERIFY(m_host.StartAndInit());
        Open();
        m_host.Settle();
        m_other.setWindowTitle(QStringLiteral("another window"));
        m_other.show();
        QVERIFY(QTest::qWaitForWindowExposed(&m_other));
        FocusOther();
        // The hook takes a moment to come up.
        const QString heardF9 = QStringLiteral("type=4 code=%1").arg(kF9);
        bool heard = false;  // once is enough: the macro looks again
        QTRY_VERIFY_WITH_TIMEOUT((screen::Do(QStringLiteral("key F9")),
                                  heard = heard || !m_host.Settle().filter(heardF9).isEmpty()),
                                 kDeadlineMs);
    }

    void cleanupTestCase() { QVERIFY(m_host.End({QStringLiteral("uninit")})); }

    void EventsReachTheModulesThatAskedForThem_data()
    {
        const panelry::test::Rows<const char*, const char*, const char*> row("types keys heard");
        row("key ctrl+shift+a;key a;key ctrl+a", "4", "ctrl+shift+a", "4:30");
        row("key Control_R+Alt_L+Return;key alt+Return", "4", "ctrl+alt+enter", "4:28");
        row("keydown ctrl keydown shift;key a;keyup shift keyup ctrl;key a", "5", "ctrl+shift+a", "5:30");
        row("key Left;key Delete", "4 5", "", "4:57419 5:57419 4:3667 5:3667");
        row("key comma;key KP_Add;key b", "4", "unknown", "4:51 4:78");
        row("key q;key F2", "3", "", "3:0");
        row("mousemove 900 500 click 1", "6 7 8", "", "7: 8: 6:");
        row("mousemove 900 500 click 4;click 5", "11 7", "", "11: 11:");
        row("mousemove 300 300;mousemove 310 300", "9", "", "9: 9:");
        row("mousemove 900 500;mousedown 1;mousemove 910 510;mouseup 1", "10", "", "10:");
    }
    void EventsReachTheModulesThatAskedForThem()
    {
        QFETCH(QString, types);
        QFETCH(QString, keys);
        m_host.Do(QStringLiteral("notify 0 -1 destroyui"));  // and with it all registrations
        Open();
        screen::Do(QStringLiteral("mousemove 800 500"));
        for (const QString& type : types.split(QLatin1Char(' '))) {
            m_host.Do(Register(1002, type, keys));
        }
        QTEST(Heard(QString::fromLatin1(QTest::currentDataTag())), "heard");
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
            host.Do(Register(1002, QStringLiteral("9")));
            host.Settle();
            const QString moved = QStringLiteral("OnMessage 119 type=9");
            bool heard = false;
            QTRY_VERIFY_WITH_TIMEOUT((screen::Do(QStringLiteral("mousemove 50 50 mousemove 60 60")),
                                      heard = heard || !host.Settle().filter(moved).isEmpty()),
                                     kDeadlineMs);
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
        host.Do(Register(1002, QStringLiteral("4")));
        QVERIFY(!host.Wait(QStringLiteral("sent 120")).isNull());
        QCOMPARE(host.Ask(1002, QStringLiteral("alive")), QStringLiteral("2 modules 0 widgets"));
        QVERIFY(
            host.End({QStringLiteral("uninit"), QStringLiteral("init 16 32 1"), QStringLiteral("uninit")}));
    }
};

PANELRY_TEST(HotKeysDesktopTest)
#include "hot_keys_desktop_test.moc"
