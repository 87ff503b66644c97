// A panel as its user meets it: a real window, real mouse and keys, a real window manager. The panel is a
// module of tests/modules/reporter.cpp, which tells what happens to it.

#include "desktop/screen.h"

#include <QScreen>
#include "support/host_process.h"
#include "support/test.h"

using panelry::test::HostProcess;
namespace screen = panelry::test::screen;

namespace
{

constexpr int kBar = 28;
const QString kTitle = QStringLiteral("Panel 1001");
const QColor kBarColor(0xCB, 0xE7, 0xF8);

QString Operate(int id, const QString& operate, const QString& more = QString())
{
    return QStringLiteral(R"(notify 0 %1 {"operate":"%2"%3})").arg(id).arg(operate, more);
}

QString OpenFramed(const QString& more = QString())
{
    return Operate(1001, QStringLiteral("clicked"), QStringLiteral(R"(,"need_wrapper":"1")") + more);
}

// Where a hand would press: the middle of the bar, and of the buttons at its right end.
QPoint OnBar(const QRect& frame)
{
    return frame.topLeft() + QPoint(frame.width() / 2, 1 + kBar / 2);
}
QPoint OnButton(const QRect& frame, int fromRight)
{
    return frame.topLeft() + QPoint(frame.width() - 1 - fromRight * kBar - kBar / 2, 1 + kBar / 2);
}

}  // namespace

class DesktopTest : public panelry::test::Test
{
    Q_OBJECT

private:
    HostProcess* m_host = nullptr;
    std::unique_ptr<HostProcess> m_ownedHost;
    QString m_window;

    // One framed panel on the screen; its window in m_window.
    void Open(const QString& more = QString())
    {
        m_ownedHost = std::make_unique<HostProcess>();
        m_host = m_ownedHost.get();
        m_host->AddModules(QStringLiteral("other"));
        QVERIFY(m_host->StartAndInit());
        m_host->Do(OpenFramed(more));
        QTRY_COMPARE(screen::Windows(kTitle).size(), 1);
        m_window = screen::Windows(kTitle).first();
        // Painted, not only mapped.
        QTRY_VERIFY(screen::ShareOf(kBarColor, QRect(OnBar(Frame()), QSize(40, 8))) > 0.5);
    }

    QRect Frame() const { return screen::Geometry(m_window); }

private Q_SLOTS:
    void cleanup()
    {
        if (m_host) {
            QVERIFY(m_host->End({QStringLiteral("uninit"), QStringLiteral("exit 0")}));
            QCOMPARE(m_host->Status(), 0);
            m_host = nullptr;
        }
        m_ownedHost.reset();
        Test::cleanup();
    }

    void TheBarDragsTheWindowWithTheLeftButton_data()
    {
        QTest::addColumn<int>("button");
        QTest::addColumn<QPoint>("expected");
        QTest::newRow("left") << 1 << QPoint(120, 70);
        QTest::newRow("right: the window stays") << 3 << QPoint(0, 0);
    }
    void TheBarDragsTheWindowWithTheLeftButton()
    {
        QFETCH(int, button);
        QFETCH(QPoint, expected);
        Open();
        screen::Do(QStringLiteral("windowmove --sync %1 200 150").arg(m_window));
        const QRect before = Frame();
        screen::Drag(OnBar(before), OnBar(before) + QPoint(120, 70), button);
        m_host->Settle();
        QTRY_COMPARE(Frame(), before.translated(expected));
    }

    void TheCloseButtonEndsThePanelAndItOpensAgain()
    {
        Open();
        screen::Click(OnButton(Frame(), 0));
        QVERIFY(!m_host->Wait(QStringLiteral("~module")).isNull());
        QVERIFY(!m_host->Wait(QStringLiteral("~widget")).isNull());
        QTRY_VERIFY(screen::Windows(kTitle).isEmpty());
        // The entry is gone too: the same message makes a new panel instead of toggling a dead one.
        m_host->Do(OpenFramed());
        QTRY_COMPARE(screen::Windows(kTitle).size(), 1);
    }

    void TheCloneButtonMakesAHiddenPanelThatShowBringsUp()
    {
        Open();
        screen::Click(OnButton(Frame(), 1));
        const QString made = m_host->Wait(QStringLiteral(R"("init_data")"));
        const QString shown = made.section(QLatin1Char(' '), 0, 0) + QStringLiteral(" shown");
        const QStringList after = m_host->Settle();
        QVERIFY2(after.filter(shown).isEmpty(), qPrintable(after.join(QLatin1Char('\n'))));
        m_host->Do(Operate(1001, QStringLiteral("show")));
        QVERIFY(!m_host->Wait(shown).isNull());
    }

    void AFrameThatTheWindowManagerClosesLeavesNothingBehind()
    {
        Open();
        screen::Do(QStringLiteral("windowactivate --sync %1").arg(m_window));
        // On a busy machine the window is active before it has the keyboard: what is pressed then is lost.
        const auto closed = [] {
            screen::Do(QStringLiteral("key --clearmodifiers alt+F4"));
            return screen::Windows(kTitle).isEmpty();
        };
        QTRY_VERIFY_WITH_TIMEOUT(closed(), 30000);
        QVERIFY(!m_host->Wait(QStringLiteral("~module")).isNull());
        // A dangling entry would be met here.
        m_host->Do({Operate(-1, QStringLiteral("hide")), QStringLiteral("notify 1 -1 x")});
        m_host->Do(OpenFramed());
        QTRY_COMPARE(screen::Windows(kTitle).size(), 1);
    }

    void AMinimisedFrameIsPaintedWhenItComesBack()
    {
        Open();
        screen::Do(QStringLiteral("windowmove --sync %1 200 150").arg(m_window));
        const QRect bar(Frame().topLeft() + QPoint(150, 6), QSize(60, 16));
        screen::Do(QStringLiteral("windowminimize --sync %1").arg(m_window));
        QTRY_VERIFY(screen::ShareOf(kBarColor, bar) < 0.01);
        screen::Do(QStringLiteral("windowactivate --sync %1").arg(m_window));
        QTRY_VERIFY(screen::ShareOf(kBarColor, bar) > 0.9);
    }

    void AFrameOnALostMonitorComesBackToTheMiddle_data()
    {
        QTest::addColumn<QPoint>("place");
        QTest::addColumn<bool>("stays");
        QTest::newRow("far outside") << QPoint(5000, 4000) << false;
        QTest::newRow("a corner shows") << QPoint(1480, 780) << true;
    }
    void AFrameOnALostMonitorComesBackToTheMiddle()
    {
        QFETCH(QPoint, place);
        QFETCH(bool, stays);
        Open();
        const QSize size = Frame().size();
        m_host->Do(Operate(1001, QStringLiteral("hide")));
        QTRY_VERIFY(screen::Windows(kTitle).isEmpty());
        m_host->Do(Operate(
            1001, QStringLiteral("notify"),
            QStringLiteral(R"(,"cmd":"900","bussiness":"move %1 %2")").arg(place.x()).arg(place.y())));
        m_host->Do(Operate(1001, QStringLiteral("show")));
        QTRY_COMPARE(screen::Windows(kTitle).size(), 1);
        const QPoint middle = QGuiApplication::primaryScreen()->availableGeometry().center();
        QTRY_COMPARE(Frame().topLeft(), stays ? place : middle - QPoint(size.width() / 2, size.height() / 2));
    }

    void AFrameThatStaysOnTopStaysThere()
    {
        Open(QStringLiteral(R"(,"init_param":"stay on top")"));
        m_host->Do(Operate(2001, QStringLiteral("clicked"), QStringLiteral(R"(,"need_wrapper":"1")")));
        QTRY_COMPARE(screen::Windows(QStringLiteral("Panel 2001")).size(), 1);
        const QString other = screen::Windows(QStringLiteral("Panel 2001")).first();
        screen::Do(QStringLiteral("windowactivate --sync %1 windowraise %1").arg(other));
        QVERIFY(screen::Property(m_window, QStringLiteral("_NET_WM_STATE")).contains(QLatin1String("ABOVE")));
        QCOMPARE(screen::Topmost(), m_window);
    }

    void LivesOnTheScreenLeaveOneThreadAtMost()
    {
        HostProcess host;
        QVERIFY(host.Start());
        const auto threads = [&host] {
            host.Do(QStringLiteral("usage"));
            return host.Wait(QStringLiteral("usage")).section(QLatin1Char(' '), 1, 1).toInt();
        };
        const int before = threads();
        QVERIFY(before > 0);
        for (int life = 0; life < 3; ++life) {
            host.Do({QStringLiteral("init 16 32 1"), OpenFramed()});
            host.Settle();
            QVERIFY(host.Do({QStringLiteral("uninit"), QStringLiteral("wait uninit returned")}));
            // One of the toolkit's may be left, and not one for each life.
            QTRY_VERIFY(threads() <= before + 1);
        }
        QVERIFY(host.End({}));
    }

    void AMousePressIsReportedWhenThirtySecondsHavePassed()
    {
        if (qEnvironmentVariableIsEmpty("PANELRY_SOAK")) {
            QSKIP("half a minute of real time; part of the long run");
        }
        Open();
        const QPoint inPanel = Frame().center();
        screen::Click(inPanel);
        QVERIFY(m_host->Settle().filter(QStringLiteral("callback 0")).isEmpty());
        // The clock that counts is the panel's own, so it has to run.
        QElapsedTimer sinceOpen;
        sinceOpen.start();
        QTRY_VERIFY_WITH_TIMEOUT(sinceOpen.elapsed() > 31'000, 60'000);
        screen::Click(inPanel);
        QVERIFY(!m_host->Wait(QStringLiteral("callback 0")).isNull());
        screen::Click(inPanel);
        QVERIFY(m_host->Settle().filter(QStringLiteral("callback 0")).isEmpty());
    }
};

PANELRY_TEST(DesktopTest)

#include "desktop_test.moc"
