// A panel as its user meets it: a real window, real mouse and keys, a real window manager. The panel is a
// module of tests/modules/reporter.cpp, which tells what happens to it.

#include "desktop/screen.h"

#include "support/host_process.h"
#include "support/test.h"

using namespace panelry::test;
namespace screen = panelry::test::screen;

namespace
{

constexpr int kBar = 28;
const QString kTitle = "Panel 1001";
const QColor kBarColor(0xCB, 0xE7, 0xF8);

const QString kOpen = Operate(1001, "clicked", R"("need_wrapper":"1")");

// Where a hand would press: the middle of the bar, and of the button at its right end.
QPoint OnBar(const QRect& frame)
{
    return frame.topLeft() + QPoint(frame.width() / 2, 1 + kBar / 2);
}
QPoint OnCloseButton(const QRect& frame)
{
    return frame.topLeft() + QPoint(frame.width() - 1 - kBar / 2, 1 + kBar / 2);
}

}  // namespace

class DesktopTest : public Test
{
    Q_OBJECT

private:
    std::unique_ptr<HostProcess> m_host;
    QString m_window;

    // One framed panel on the screen; its window in m_window.
    void Open(const QString& open = kOpen)
    {
        m_host = std::make_unique<HostProcess>();
        m_host->AddModules("other");
        QVERIFY(m_host->StartAndInit());
        OpenAgain(open);
        // Painted, not only mapped.
        QTRY_VERIFY(screen::ShareOf(kBarColor, QRect(OnBar(Frame()), QSize(40, 8))) > 0.5);
    }
    void OpenAgain(const QString& open = kOpen)
    {
        m_host->Do(open);
        QTRY_COMPARE(screen::Windows(kTitle).size(), 1);
        m_window = screen::Windows(kTitle).first();
    }

    QRect Frame() const { return screen::Geometry(m_window); }

private Q_SLOTS:
    void cleanup()
    {
        if (const std::unique_ptr<HostProcess> host = std::move(m_host)) {
            QVERIFY(host->End({"uninit"}));
        }
        Test::cleanup();
    }

    void TheBarDragsTheWindowWithTheLeftButtonAlone()
    {
        Open();
        screen::Do("windowmove --sync " + m_window + " 200 150");
        for (const auto& [button, way] : {std::pair{1, QPoint(120, 70)}, {3, QPoint(0, 0)}}) {
            const QRect before = Frame();
            screen::Drag(OnBar(before), OnBar(before) + QPoint(120, 70), button);
            m_host->Settle();
            QTRY_COMPARE(Frame(), before.translated(way));
        }
    }

    void AFrameThatIsClosedLeavesNothingBehind()
    {
        Open();
        screen::Click(OnCloseButton(Frame()));
        QVERIFY(m_host->Do({"wait ~module", "wait ~widget"}));
        QTRY_VERIFY(screen::Windows(kTitle).isEmpty());
        // The entry is gone too: the same message makes a new panel instead of toggling a dead one.
        OpenAgain();

        // Now by the window manager.
        screen::Do("windowactivate --sync " + m_window);
        // On a busy machine the window is active before it has the keyboard: what is pressed then is lost.
        const auto closed = [] {
            screen::Do("key --clearmodifiers alt+F4");
            return screen::Windows(kTitle).isEmpty();
        };
        QTRY_VERIFY_WITH_TIMEOUT(closed(), 30000);
        QVERIFY(m_host->Do("wait ~module"));
        // A dangling entry would be met here.
        m_host->Do({Operate(-1, "hide"), "notify 1 -1 x"});
        OpenAgain();
    }

    void AMinimisedFrameIsPaintedWhenItComesBack()
    {
        Open();
        screen::Do("windowmove --sync " + m_window + " 200 150");
        const QRect bar(Frame().topLeft() + QPoint(150, 6), QSize(60, 16));
        screen::Do("windowminimize --sync " + m_window);
        QTRY_VERIFY(screen::ShareOf(kBarColor, bar) < 0.01);
        screen::Do("windowactivate --sync " + m_window);
        QTRY_VERIFY(screen::ShareOf(kBarColor, bar) > 0.9);
    }

    void AFrameThatStaysOnTopStaysThere()
    {
        Open(Operate(1001, "clicked", R"("need_wrapper":"1","init_param":"stay on top")"));
        m_host->Do(Operate(2001, "clicked", R"("need_wrapper":"1")"));
        QTRY_COMPARE(screen::Windows("Panel 2001").size(), 1);
        const QString other = screen::Windows("Panel 2001").first();
        screen::Do(QStringLiteral("windowactivate --sync %1 windowraise %1").arg(other));
        QVERIFY(screen::Property(m_window, "_NET_WM_STATE").contains("ABOVE"));
        QCOMPARE(screen::Topmost(), m_window);
    }

    void LivesOnTheScreenLeaveOneThreadAtMost()
    {
        HostProcess host;
        QVERIFY(host.Start());
        const auto threads = [&host] {
            host.Do("usage");
            return host.Wait("usage").section(' ', 1, 1).toInt();
        };
        const int before = threads();
        QVERIFY(before > 0);
        for (int life = 0; life < 3; ++life) {
            host.Do({"init 16 32 1", kOpen});
            host.Settle();
            QVERIFY(host.Do({"uninit", "wait uninit returned"}));
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
        QVERIFY(m_host->Settle().filter("callback 0").isEmpty());
        // The clock that counts is the panel's own, so it has to run.
        QElapsedTimer sinceOpen;
        sinceOpen.start();
        QTRY_VERIFY_WITH_TIMEOUT(sinceOpen.elapsed() > 31'000, 60'000);
        screen::Click(inPanel);
        QVERIFY(!m_host->Wait("callback 0").isNull());
        screen::Click(inPanel);
        QVERIFY(m_host->Settle().filter("callback 0").isEmpty());
    }
};

PANELRY_TEST(DesktopTest)

#include "desktop_test.moc"
