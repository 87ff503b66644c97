#include "hosting/container_widget.h"

#include <QGuiApplication>
#include <QLabel>
#include <QMouseEvent>
#include <QPointer>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>

#include "hosting/c_title_bar_base.h"
#include "hosting/frame_owner.h"
#include "hosting/frame_width_event.h"
#include "hosting/stage.h"
#include "resources/embedded.h"
#include "support/rows.h"
#include "support/test.h"

using namespace panelry::test;

namespace
{

// A module with a widget of 200 by 150, and the frame that it stands in; the layer above says what it is
// asked.
class Scene : public panelry::FrameOwner
{
public:
    explicit Scene(const QVariantMap& properties = {})
    {
        module.m_instance.module_id = 41001;
        module.m_instance.module_title = "<b>报价</b>";
        module.MakeWidget();
        for (auto property = properties.begin(); property != properties.end(); ++property) {
            module.widget->setProperty(qPrintable(property.key()), property.value());
        }
        frame = new ContainerWidget;
        frame->SetOwner(this);
        frame->SetModule(&module);
    }
    ~Scene()
    {
        if (frame) {
            frame->ReleaseModuleWidget();
            delete frame;
        }
    }

    void CreateContainer(int, ContainerWidget*, const std::string&) override { asked << "clone"; }
    void RemoveContainer(QObject* object) override
    {
        QCOMPARE(object, frame.data());
        asked << (module.widget->parent() ? "remove too early" : "remove");
        frame->TakeModule();
        frame->close();  // comes back in at the worst moment
    }
    void Deliver(ModuleBase*, int, const std::string&) override { asked << "deliver"; }

    template <class T>
    T& Child(const char* name) const
    {
        return *frame->findChild<T*>(name);
    }
    QPushButton& Close() const { return Child<QPushButton>("closebtn_titlebar"); }
    QPushButton& Clone() const { return Child<QPushButton>("clonebtn_titlebar"); }
    QLabel& Title() const { return Child<QLabel>("titletextlable_titlebar"); }

    FakeModule module;
    QPointer<ContainerWidget> frame;
    QStringList asked;
};

QRect InFrame(const ContainerWidget& frame, const QWidget& part)
{
    return {part.mapTo(&frame, QPoint(0, 0)), part.size()};
}

// A window of 300 by 200 at (100, 100) with a title bar, and a mouse of its own, which is led by a script:
// P350,110 presses the left button, M360,110 moves, R lets go (p and r: the right button); G0,50,280 sets the
// window's position and width; D0 and D1 forbid and allow drags; T takes the target away.
struct Drag {
    Drag() { window.setGeometry(100, 100, 300, 200); }

    void Play(const QString& script)
    {
        for (const QString& step : script.split(' ')) {
            const QStringList numbers = step.mid(1).split(',');
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

class ContainerWidgetTest : public Test
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        panelry::InitResources();
        QCOMPARE(QGuiApplication::primaryScreen()->availableGeometry(), QRect(0, 0, 800, 600));
    }
    void cleanupTestCase() { QVERIFY(QApplication::topLevelWidgets().isEmpty()); }

    void Looks()
    {
        ExpectWarning(kOffscreenWarning);
        Scene scene({{"property_support_clone", true}});
        const ContainerWidget& frame = *scene.frame;
        QCOMPARE(frame.objectName(), "containerwidget");
        QVERIFY(frame.testAttribute(Qt::WA_DeleteOnClose));
        QCOMPARE(int(frame.windowFlags() & 0xe8ff), 0x801);  // a window without any frame or menu
        QCOMPARE(frame.GetComponentId(), 41001);
        QCOMPARE(frame.GetModule(), &scene.module);
        QCOMPARE(frame.size(), QSize(200, 150));
        scene.frame->show();
        QVERIFY(QTest::qWaitForWindowExposed(scene.frame));
        const auto& bar = scene.Child<QWidget>("containerwidget_titlebar");
        const auto& area = scene.Child<QScrollArea>("containerwidget_scrollarea");
        QCOMPARE(InFrame(frame, bar), QRect(1, 1, 198, 28));
        QCOMPARE(InFrame(frame, area), QRect(1, 29, 198, 120));
        QCOMPARE(InFrame(frame, *scene.module.widget), QRect(1, 29, 198, 120));
        QCOMPARE(InFrame(frame, scene.Clone()), QRect(143, 1, 28, 28));
        QCOMPARE(InFrame(frame, scene.Close()), QRect(171, 1, 28, 28));
        QCOMPARE(InFrame(frame, scene.Title()).left(), 11);
        QCOMPARE(scene.Clone().toolTip(), "复制窗口");
        QCOMPARE(scene.Close().toolTip(), "关闭窗口");
        scene.module.widget->setMinimumSize(400, 400);  // cut off, never with scroll bars
        QTRY_COMPARE(scene.module.widget->size(), QSize(400, 400));
        QCOMPARE(InFrame(frame, area), QRect(1, 29, 198, 120));
        QCOMPARE(area.viewport()->size(), area.size());
        panelry::FrameWidthEvent wide(450);
        QVERIFY(QCoreApplication::sendEvent(scene.frame, &wide));
        QCOMPARE(scene.frame->size(), QSize(450, 150));
    }

    void Properties()
    {
        const auto looks = [](const QString& key, const QVariant& value) {
            const Scene scene({{key, value}});
            const ContainerWidget& frame = *scene.frame;
            const bool isFixed = frame.minimumSize() == frame.size() && frame.maximumSize() == frame.size();
            const bool clones = scene.Clone().isVisibleTo(&frame);
            scene.frame->SetCloneEnabled(false);
            scene.frame->SetCloneEnabled(true);
            const bool isSteady = clones == scene.Clone().isVisibleTo(&frame) && !frame.isVisible() &&
                                  (frame.windowFlags() & Qt::FramelessWindowHint);
            return QStringLiteral("%1x%2").arg(frame.width()).arg(frame.height()) +
                   (isFixed ? " fixed" : "") + (clones ? " clones" : "") +
                   ((int(frame.windowFlags()) & 0x400ff) == 0x40013 ? " on top" : "") +
                   (isSteady ? "" : " unsteady");
        };
        QCOMPARE(looks("nwidth", "321"), "321x150");
        QCOMPARE(looks("nwidth", "wide"), "0x150");
        QCOMPARE(looks("nheight", QVariant()), "200x0");
        QCOMPARE(looks("property_fixed_size", true), "200x150 fixed");
        QCOMPARE(looks("property_support_clone", true), "200x150 clones");
        QCOMPARE(looks("property_staysontop", true), "200x150 on top");
    }

    void Titles()
    {
        Scene scene;
        QCOMPARE(scene.frame->windowTitle(), "<b>报价</b>");
        scene.Title().ensurePolished();
        const int asTyped = scene.Title().fontMetrics().horizontalAdvance(scene.Title().text());
        QVERIFY(scene.Title().sizeHint().width() >= asTyped);  // a name is no markup
        for (const QString& title : {QString("Host"), QString()}) {
            scene.frame->SetTitle(title);
            QCOMPARE(scene.Title().text(), "Host");
            QCOMPARE(scene.module.widget->property("property_modulename"), QVariant(title));
        }
    }

    void CloseLeavesTheLayerAboveOnce()
    {
        ExpectWarning(kOffscreenWarning);
        Scene scene;
        scene.frame->show();
        QVERIFY(QTest::qWaitForWindowExposed(scene.frame));
        QPushButton& close = scene.Close();
        QPushButton& clone = scene.Clone();
        close.click();
        close.click(), clone.click(), scene.frame->close();  // of an impatient user
        QVERIFY(!scene.frame || !scene.frame->isVisible());
        QTRY_VERIFY(!scene.frame);
        QCOMPARE(scene.asked, QStringList("remove"));
        QVERIFY(scene.module.widget);  // goes with its module, not with the frame
    }

    void ShownOffTheScreen()
    {
        ExpectWarning(kOffscreenWarning);
        const auto shownAt = [](QPoint before) {
            Scene scene;
            scene.frame->move(before);
            scene.frame->show();
            return scene.frame->testAttribute(Qt::WA_Mapped) ? scene.frame->pos() : QPoint();
        };
        const QPoint centre(399 - 100, 299 - 75);
        QCOMPARE(shownAt({-199, 20}), QPoint(-199, 20));
        QCOMPARE(shownAt({-200, 20}), centre);
        QCOMPARE(shownAt({799, 20}), QPoint(799, 20));
        QCOMPARE(shownAt({800, 20}), centre);
        QCOMPARE(shownAt({10, -150}), centre);
    }

    void ThemesByName()
    {
        ContainerWidget frame;
        const QString white = frame.styleSheet();
        QVERIFY(white.contains("containerwidget_titlebar"));
        frame.setStyleSheet(QString());
        frame.LoadTheme("NoSuch");  // the white one doesn't stand in for it
        QCOMPARE(frame.styleSheet(), QString());
        frame.LoadTheme("White");
        frame.LoadTheme("NoSuch");
        QCOMPARE(frame.styleSheet(), white);
    }

    void WindowFollows_data()
    {
        const Rows<const char*, QPoint> row("script position");
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
        drag.Play("P350,110 M360,120 r");
        QCOMPARE(ends.count(), 0);
        drag.Play("R T P350,110 R");  // the second one without a target
        QCOMPARE(ends.count(), 1);
        QCOMPARE(ends[0][0].toPoint(), QPoint(110, 110));
    }
};

PANELRY_TEST(ContainerWidgetTest)
#include "container_widget_test.moc"
