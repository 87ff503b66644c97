#include "hosting/container_widget.h"

#include <QGuiApplication>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>

#include "hosting/frame_owner.h"
#include "hosting/frame_width_event.h"
#include "hosting/stage.h"
#include "resources/embedded.h"
#include "support/test.h"

using panelry::test::FakeModule;
using panelry::test::kOffscreenWarning;

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
        module.widget = new QWidget;
        module.widget->setProperty("nwidth", 200);
        module.widget->setProperty("nheight", 150);
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

    void CreateContainer(int, ContainerWidget*, const std::string&) override
    {
        asked << QStringLiteral("clone");
    }
    void RemoveContainer(QObject* object) override
    {
        QCOMPARE(object, frame.data());
        asked << (module.widget->parent() ? QStringLiteral("remove too early") : QStringLiteral("remove"));
        frame->TakeModule();
        frame->close();  // comes back in at the worst moment
    }
    void Deliver(ModuleBase*, int, const std::string&) override { asked << QStringLiteral("deliver"); }

    template <class T>
    T& Child(const char* name) const
    {
        return *frame->findChild<T*>(QLatin1String(name));
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

}  // namespace

class ContainerWidgetTest : public panelry::test::Test
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
        ExpectWarning(QLatin1String(kOffscreenWarning));
        Scene scene({{QStringLiteral("property_support_clone"), true}});
        const ContainerWidget& frame = *scene.frame;
        QCOMPARE(frame.objectName(), QStringLiteral("containerwidget"));
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
        QCOMPARE(scene.Clone().toolTip(), QStringLiteral("复制窗口"));
        QCOMPARE(scene.Close().toolTip(), QStringLiteral("关闭窗口"));
        scene.module.widget->setMinimumSize(400, 400);  // cut off, never with scroll bars
        QTRY_COMPARE(scene.module.widget->size(), QSize(400, 400));
        QCOMPARE(InFrame(frame, area), QRect(1, 29, 198, 120));
        QCOMPARE(area.viewport()->size(), area.size());
    }

    void Properties()
    {
        const auto looks = [](const char* key, const QVariant& value) {
            const Scene scene({{QLatin1String(key), value}});
            const ContainerWidget& frame = *scene.frame;
            const bool isFixed = frame.minimumSize() == frame.size() && frame.maximumSize() == frame.size();
            const bool clones = scene.Clone().isVisibleTo(&frame);
            scene.frame->SetCloneEnabled(false);
            scene.frame->SetCloneEnabled(true);
            const bool isSteady = clones == scene.Clone().isVisibleTo(&frame) && !frame.isVisible() &&
                                  (frame.windowFlags() & Qt::FramelessWindowHint);
            return QStringLiteral("%1x%2").arg(frame.width()).arg(frame.height()) +
                   QLatin1String(isFixed ? " fixed" : "") + QLatin1String(clones ? " clones" : "") +
                   QLatin1String((int(frame.windowFlags()) & 0x400ff) == 0x40013 ? " on top" : "") +
                   QLatin1String(isSteady ? "" : " unsteady");
        };
        QCOMPARE(looks("nwidth", QStringLiteral("321")), QStringLiteral("321x150"));
        QCOMPARE(looks("nwidth", QStringLiteral("wide")), QStringLiteral("0x150"));
        QCOMPARE(looks("nheight", QVariant()), QStringLiteral("200x0"));
        QCOMPARE(looks("property_fixed_size", true), QStringLiteral("200x150 fixed"));
        QCOMPARE(looks("property_support_clone", true), QStringLiteral("200x150 clones"));
        QCOMPARE(looks("property_staysontop", true), QStringLiteral("200x150 on top"));
    }

    void Titles()
    {
        Scene scene;
        QCOMPARE(scene.frame->windowTitle(), QStringLiteral("<b>报价</b>"));
        scene.Title().ensurePolished();
        const int asTyped = scene.Title().fontMetrics().horizontalAdvance(scene.Title().text());
        QVERIFY(scene.Title().sizeHint().width() >= asTyped);  // a name is no markup
        for (const QString& title : {QStringLiteral("Host"), QString()}) {
            scene.frame->SetTitle(title);
            QCOMPARE(scene.Title().text(), QStringLiteral("Host"));
            QCOMPARE(scene.module.widget->property("property_modulename"), QVariant(title));
        }
    }

    void WidthComesAsAnEvent()
    {
        Scene scene;
        panelry::FrameWidthEvent wide(450);
        QVERIFY(QCoreApplication::sendEvent(scene.frame, &wide));
        QCOMPARE(scene.frame->size(), QSize(450, 150));
    }

    void CloseLeavesTheLayerAboveOnce()
    {
        ExpectWarning(QLatin1String(kOffscreenWarning));
        Scene scene;
        scene.frame->show();
        QVERIFY(QTest::qWaitForWindowExposed(scene.frame));
        QPushButton& close = scene.Close();
        QPushButton& clone = scene.Clone();
        close.click();
        close.click(), clone.click(), scene.frame->close();  // of an impatient user
        QVERIFY(!scene.frame || !scene.frame->isVisible());
        QTRY_VERIFY(!scene.frame);
        QCOMPARE(scene.asked, QStringList(QStringLiteral("remove")));
        QVERIFY(scene.module.widget);  // goes with its module, not with the frame
    }

    void ShownOffTheScreen()
    {
        ExpectWarning(QLatin1String(kOffscreenWarning));
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
        QVERIFY(white.contains(QLatin1String("containerwidget_titlebar")));
        frame.setStyleSheet(QString());
        frame.LoadTheme(QStringLiteral("NoSuch"));  // the white one doesn't stand in for it
        QCOMPARE(frame.styleSheet(), QString());
        frame.LoadTheme(QStringLiteral("White"));
        frame.LoadTheme(QStringLiteral("NoSuch"));
        QCOMPARE(frame.styleSheet(), white);
    }
};

PANELRY_TEST(ContainerWidgetTest)
#include "container_widget_test.moc"
