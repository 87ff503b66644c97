#include "hosting/container_widget.h"

#include <QGuiApplication>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QWindow>

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

    void CreateContainer(int nComponentId, ContainerWidget* source, const std::string& text) override
    {
        asked << QStringLiteral("clone %1%2").arg(nComponentId).arg(QString::fromStdString(text));
        QCOMPARE(source, frame.data());
    }
    void RemoveContainer(QObject* object) override
    {
        QCOMPARE(object, frame.data());
        asked << (module.widget->parent() ? QStringLiteral("remove too early") : QStringLiteral("remove"));
        frame->TakeModule();
        frame->close();  // comes back in at the worst moment
    }
    void Deliver(ModuleBase* receiver, int msgId, const std::string& text) override
    {
        QCOMPARE(receiver, &module);
        asked << QStringLiteral("%1 %2").arg(msgId).arg(QString::fromStdString(text));
    }

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

    void Properties_data()
    {
        QTest::addColumn<QVariantMap>("properties");
        QTest::addColumn<QSize>("size");
        QTest::addColumn<bool>("isFixed");
        QTest::addColumn<bool>("clones");
        QTest::addColumn<bool>("staysOnTop");
        const auto row = [](const char* name, const char* key, const QVariant& value, QSize size,
                            const char* flags) {
            QTest::newRow(name) << QVariantMap{{QLatin1String(key), value}} << size << (flags[0] == '1')
                                << (flags[1] == '1') << (flags[2] == '1');
        };
        row("none", "x", 1, {200, 150}, "000");
        row("width", "nwidth", 321, {321, 150}, "000");
        row("width as text", "nwidth", QStringLiteral("321"), {321, 150}, "000");
        row("no number", "nwidth", QStringLiteral("wide"), {0, 150}, "000");
        row("no height", "nheight", QVariant(), {200, 0}, "000");
        row("fixed", "property_fixed_size", true, {200, 150}, "100");
        row("not fixed", "property_fixed_size", false, {200, 150}, "000");
        row("clone", "property_support_clone", true, {200, 150}, "010");
        row("on top", "property_staysontop", true, {200, 150}, "001");
    }

    void Properties()
    {
        QFETCH(const QVariantMap, properties);
        const Scene scene(properties);
        QTEST(scene.frame->size(), "size");
        QTEST(scene.frame->minimumSize() == scene.frame->size() &&
                  scene.frame->maximumSize() == scene.frame->size(),
              "isFixed");
        QTEST(scene.Clone().isVisibleTo(scene.frame), "clones");
        QTEST((int(scene.frame->windowFlags()) & 0x400ff) == 0x40013, "staysOnTop");
        QVERIFY(scene.frame->windowFlags() & Qt::FramelessWindowHint);
        scene.frame->SetCloneEnabled(false);
        scene.frame->SetCloneEnabled(true);
        QTEST(scene.Clone().isVisibleTo(scene.frame), "clones");
        QVERIFY(!scene.frame->isVisible());
    }

    void Titles()
    {
        Scene scene;
        QCOMPARE(scene.Title().text(), QStringLiteral("<b>报价</b>"));
        QCOMPARE(scene.frame->windowTitle(), QStringLiteral("<b>报价</b>"));
        scene.Title().ensurePolished();
        const int asTyped = scene.Title().fontMetrics().horizontalAdvance(scene.Title().text());
        QVERIFY(scene.Title().sizeHint().width() >= asTyped);  // a name is no markup
        const auto name = [&] { return scene.module.widget->property("property_modulename"); };
        QCOMPARE(name(), QVariant());
        scene.frame->SetTitle(QStringLiteral("Host"));
        QCOMPARE(scene.Title().text(), QStringLiteral("Host"));
        QCOMPARE(name(), QVariant(QStringLiteral("Host")));
        scene.frame->SetTitle(QString());
        QCOMPARE(scene.Title().text(), QStringLiteral("Host"));
        QCOMPARE(name(), QVariant(QString()));
    }

    void WithoutAModule()
    {
        ContainerWidget frame;
        frame.SetModule(nullptr);
        frame.SetTitle(QStringLiteral("Host"));
        frame.SendMessage(1, "text");
        QVERIFY(!frame.GetModule() && !frame.ModuleWidget() && frame.GetComponentId() == -1);
        FakeModule bare;  // without a widget
        bare.m_instance.module_id = 5;
        bare.m_instance.module_title = "bare";
        frame.SetModule(&bare);
        QVERIFY(frame.GetModule() == &bare && frame.GetComponentId() == 5);
        QCOMPARE(frame.windowTitle(), QStringLiteral("bare"));
        QVERIFY(ContainerWidget().LinkKey() != ContainerWidget().LinkKey());
    }

    void MessagesToTheModule()
    {
        Scene scene;
        scene.frame->SendMessage(-1, "一");
        scene.frame->SendInitData("init");
        scene.frame->SendPushData("push");
        QCOMPARE(scene.asked, QStringList({QStringLiteral("-1 一"), QStringLiteral("113 init"),
                                           QStringLiteral("114 push")}));
    }

    void WidthComesAsAnEvent()
    {
        Scene scene;
        panelry::FrameWidthEvent wide(450);
        QVERIFY(QCoreApplication::sendEvent(scene.frame, &wide));
        QCOMPARE(scene.frame->size(), QSize(450, 150));
        QEvent other(static_cast<QEvent::Type>(QEvent::User + 2));
        QCoreApplication::sendEvent(scene.frame, &other);
        QCOMPARE(scene.frame->size(), QSize(450, 150));
    }

    void CloseLeavesTheLayerAboveOnce_data()
    {
        QTest::addColumn<int>("road");
        QTest::newRow("close button") << 0;
        QTest::newRow("widget") << 1;
        QTest::newRow("window system") << 2;
        QTest::newRow("twice") << 3;
    }

    void CloseLeavesTheLayerAboveOnce()
    {
        ExpectWarning(QLatin1String(kOffscreenWarning));
        QFETCH(const int, road);
        Scene scene;
        scene.frame->show();
        QVERIFY(QTest::qWaitForWindowExposed(scene.frame));
        QPushButton& close = scene.Close();
        QPushButton& clone = scene.Clone();
        switch (road) {
            case 0:
                close.click();
                break;
            case 1:
                scene.frame->close();
                break;
            case 2:
                scene.frame->windowHandle()->close();
                break;
            case 3:
                close.click(), close.click(), clone.click(), scene.frame->close();
                break;
        }
        QVERIFY(!scene.frame || !scene.frame->isVisible());
        QTRY_VERIFY(!scene.frame);
        QCOMPARE(scene.asked, QStringList(QStringLiteral("remove")));
        QVERIFY(scene.module.widget);  // goes with its module, not with the frame
    }

    void CloneButtonAsksForAClone()
    {
        Scene scene({{QStringLiteral("property_support_clone"), true}});
        scene.Clone().click();
        scene.frame->SetCloneEnabled(false);
        scene.Clone().click();
        QCOMPARE(scene.asked, QStringList(QStringLiteral("clone 41001")));
    }

    void ShownOffTheScreen_data()
    {
        QTest::addColumn<QPoint>("before");
        QTest::addColumn<QPoint>("after");
        const auto row = [](const char* name, QPoint before, QPoint after) {
            QTest::newRow(name) << before << after;
        };
        const QPoint centre(399 - 100, 299 - 75);
        row("inside", {10, 20}, {10, 20});
        row("left, one pixel in", {-199, 20}, {-199, 20});
        row("left, out", {-200, 20}, centre);
        row("right, one pixel in", {799, 20}, {799, 20});
        row("right, out", {800, 20}, centre);
        row("top, out", {10, -150}, centre);
        row("bottom, one pixel in", {10, 599}, {10, 599});
        row("a lost screen", {5000, 5000}, centre);
    }

    void ShownOffTheScreen()
    {
        ExpectWarning(QLatin1String(kOffscreenWarning));
        QFETCH(const QPoint, before);
        Scene scene;
        scene.frame->move(before);
        scene.frame->show();
        QTEST(scene.frame->pos(), "after");
        QVERIFY(scene.frame->testAttribute(Qt::WA_Mapped));
    }

    void ThemesByName()
    {
        ContainerWidget frame;
        const QString white = frame.styleSheet();
        QVERIFY(white.contains(QLatin1String("containerwidget_titlebar")));
        frame.LoadTheme(QStringLiteral("NoSuch"));
        QCOMPARE(frame.styleSheet(), white);
        frame.setStyleSheet(QString());
        frame.LoadTheme(QStringLiteral("NoSuch"));  // the white one doesn't stand in for it
        QCOMPARE(frame.styleSheet(), QString());
        frame.LoadTheme(QStringLiteral("White"));
        QCOMPARE(frame.styleSheet(), white);
    }
};

PANELRY_TEST(ContainerWidgetTest)
#include "container_widget_test.moc"
