#include <QMouseEvent>

#include "hosting/c_title_bar_base.h"
#include "support/rows.h"
#include "support/test.h"

namespace
{

// A window of 300 by 200 at (100, 100) with a title bar, and a mouse of its own, which is led by a script:
// P350,110 presses the left button, M360,110 moves, R lets go (p and r: the right button); G0,50,280 sets the
// window's position and width; D0 and D1 forbid and allow drags; T takes the target away.
struct Drag {
    Drag() { window.setGeometry(100, 100, 300, 200); }

    void Play(const QString& script)
    {
        for (const QString& step : script.split(QLatin1Char(' '))) {
            const QStringList numbers = step.mid(1).split(QLatin1Char(','));
            const QPoint at(numbers[0].toInt(), numbers.value(1).toInt());
            const char what = step[0].toLatin1();
            const Qt::MouseButton button = what == 'p' || what == 'r' ? Qt::RightButton : Qt::LeftButton;
            if (what == 'P' || what == 'p') {
                Mouse(QEvent::MouseButtonPress, at, button, button);
            } else if (what == 'M') {  // without a button it never reaches a widget
                Mouse(QEvent::MouseMove, at, Qt::NoButton, Qt::LeftButton);
            } else if (what == 'R' || what == 'r') {
                Mouse(QEvent::MouseButtonRelease, at, button, button);
            } else if (what == 'G') {
                window.setGeometry({at, QSize(numbers[2].toInt(), 50)});
            } else if (what == 'D') {
                bar.SetDraggable(at.x() == 1);
            } else {
                bar.SetTarget(nullptr);
            }
        }
    }

    void Mouse(QEvent::Type type, QPoint at, Qt::MouseButton button, Qt::MouseButton down)
    {
        QMouseEvent event(type, bar.mapFromGlobal(at), at, at, button, down, Qt::NoModifier);
        QCoreApplication::sendEvent(&bar, &event);
        ignored = ignored && !event.isAccepted();
    }

    QWidget window;
    commui::CTitleBarBase bar{&window};
    bool ignored = true;
};

}  // namespace

class TitleBarTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void WindowFollows_data()
    {
        const panelry::test::Rows<const char*, QPoint> row("script position");
        row("one drag", "P350,110 M351,111 M390,105", {140, 95});
        row("two drags", "P350,110 M360,110 R P500,110 M501,112", {111, 102});
        row("after the release", "P350,110 R M360,110", {100, 100});
        row("right button", "p350,110 M360,110", {100, 100});
        row("right button let go meanwhile", "P350,110 r M360,110", {110, 100});
        row("not draggable", "D0 P350,110 M360,110", {100, 100});
        row("draggable from mid-drag on", "D0 P350,110 M355,110 D1 M360,110", {110, 100});
        row("no target", "T P350,110 M360,110 R", {100, 100});
        // The width changes under the drag.
        row("the cursor is still on the bar", "P350,110 G100,100,280 M360,120", {110, 110});
        row("on its first pixel", "P350,110 G360,100,280 M360,120", {370, 110});
        row("on its last pixel", "P350,110 G100,100,261 M360,120", {110, 110});
        row("one pixel beyond it", "P350,110 G100,100,260 M360,120", {359, 120});
        row("one pixel before it", "P350,110 G361,100,280 M360,120", {361, 120});
        row("the drag goes on from there", "P350,110 G100,100,200 M360,120 M370,125", {309, 125});
        row("the height alone changes", "P350,110 G0,0,300 M360,120", {110, 110});
    }

    void WindowFollows()
    {
        QFETCH(const QString, script);
        Drag drag;
        drag.Play(script);
        QTEST(drag.window.pos(), "position");
        QVERIFY(drag.ignored);  // the window system goes on seeing the events
    }

    void EndOfADragIsTold()
    {
        Drag drag;
        QSignalSpy ends(&drag.bar, &commui::CTitleBarBase::SignalPosChanged);
        drag.Play(QStringLiteral("P350,110 M360,120 r"));
        QCOMPARE(ends.count(), 0);
        drag.Play(QStringLiteral("R T P350,110 R"));  // the second one without a target
        QCOMPARE(ends.count(), 1);
        QCOMPARE(ends[0][0].toPoint(), QPoint(110, 110));
    }
};

PANELRY_TEST(TitleBarTest)
#include "title_bar_test.moc"
