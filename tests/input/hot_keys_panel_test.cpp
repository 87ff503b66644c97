// The hot keys panel with the real service; the keys come from the test.

#include <QCheckBox>
#include <QLineEdit>
#include <QListWidget>
#include <algorithm>
#include <thread>

#include "hosting/plugin_manager.h"
#include "hot_keys/combination.h"
#include "hot_keys/hot_keys_module.h"
#include "input/fake_hook.h"
#include "support/test.h"

using panelry::HotKeysModule;
using panelry::HotKeysWidget;
using panelry::test::KeyEvent;
using panelry::test::MouseEvent;
using panelry::test::Press;

namespace
{

// From a thread of its own, as the hook does it.
void SendAll(const std::vector<uiohook_event>& events)
{
    std::thread([&events] { std::for_each(events.begin(), events.end(), panelry::test::Send); }).join();
}

uiohook_event Released(int code, int mask = 0)
{
    return KeyEvent(EVENT_KEY_RELEASED, mask, code);
}

struct Scene {
    explicit Scene(const char* creation = "{}")
    {
        HookManager::Instance(true);
        module.m_manager = &plugins;
        module.Initialize(41004, "", "", creation);
        widget->show();
    }
    QLineEdit& Line() const { return *widget->findChild<QLineEdit*>(QStringLiteral("combination")); }
    void Check(const char* choice, bool on) const
    {
        widget->findChild<QCheckBox*>(QLatin1String(choice))->setChecked(on);
    }
    // What arrives of these, without the time.
    QString Arrived(const std::vector<uiohook_event>& events)
    {
        SendAll(events);
        QCoreApplication::processEvents();
        QStringList lines = widget->Arrivals().mid(seen);
        seen += lines.size();
        for (QString& line : lines) {
            line = line.section(QLatin1Char(' '), 1);
        }
        return lines.join(QStringLiteral(" / "));
    }

    PluginManager plugins;  // outlives the module, as in the library
    HotKeysModule module{InstanceInfo()};
    HotKeysWidget* widget = static_cast<HotKeysWidget*>(module.GetWidget());
    int seen = 0;
};

}  // namespace

class HotKeysPanelTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        Test::init();
        ExpectWarning(QStringLiteral("This plugin does not support propagateSizeHints"));
    }

    void WhatIsTypedIsReadAsTheLibraryNamesIt()
    {
        // What stands for nothing is refused.
        const std::pair<const char*, const char*> texts[] = {
            {"", ""},
            {"+a", ""},
            {"ctrl+", ""},
            {"a+b", ""},
            {"f13", ""},
            {"ctrl+中", ""},
            {" Meta + ALT +Shift+ CTRL+F12 ", "ctrl+shift+alt+meta+f12"},
            {"shift+shift+1", "shift+1"},
            {"ctrl", "ctrl+ctrl"},
            {"shift+ctrl", "ctrl+shift+ctrl"},
            {"unknown", "unknown"}};
        for (const auto& [typed, text] : texts) {
            const panelry::Combination combination = panelry::ReadCombination(QString::fromUtf8(typed));
            QCOMPARE(combination.text, QString::fromUtf8(text));
            QCOMPARE(combination.problem.isEmpty(), *text != '\0');
        }
    }

    void TheUserDecidesWhatArrives()
    {
        uiohook_event wheel = MouseEvent(EVENT_MOUSE_WHEEL);
        wheel.data.wheel.rotation = -1;
        wheel.data.wheel.direction = WHEEL_HORIZONTAL_DIRECTION;
        const std::vector<uiohook_event> all{Press(VC_A),    Press(VC_F5, MASK_CTRL_L | MASK_SHIFT_R),
                                             Press(VC_B),    Released(VC_A),
                                             Released(VC_B), wheel};
        Scene scene;
        QCOMPARE(scene.Arrived(all), QString());  // no combination yet: no key at all

        QTest::keyClicks(&scene.Line(), QStringLiteral("A\r"));
        QTest::keyClicks(&scene.Line(), QStringLiteral("shift+ctrl+F5\r"));
        QCOMPARE(scene.widget->Combinations().join(QLatin1Char(' ')), QStringLiteral("a ctrl+shift+f5"));
        QCOMPARE(scene.Arrived(all), QStringLiteral("按下 a / 按下 ctrl+shift+f5"));
        QVERIFY(scene.widget->StatusText().contains(QStringLiteral("2 个组合键，收到 2 个事件")));

        scene.Check("releases", true);
        scene.Check("mouse", true);
        QCOMPARE(scene.Arrived(all),
                 QStringLiteral("按下 a / 按下 ctrl+shift+f5 / 松开 a / 滚轮向左 (0, 0)"));

        scene.Check("releases", false);
        scene.Check("mouse", false);
        QCOMPARE(scene.Arrived(all), QStringLiteral("按下 a / 按下 ctrl+shift+f5"));
    }

    void RemovingTheLastCombinationHearsNothingInsteadOfEverything()
    {
        Scene scene(R"({"init_param":{"combinations":"a shift+b","releases":"1"}})");
        auto* const list = scene.widget->findChild<QListWidget*>();
        list->setCurrentRow(0);
        list->setFocus();
        QVERIFY(QTest::qWaitForWindowActive(scene.widget));
        QTest::keyClick(list, Qt::Key_Delete);
        QCOMPARE(scene.widget->Combinations(), QStringList(QStringLiteral("shift+b")));
        const std::vector<uiohook_event> both{Press(VC_A), Released(VC_B, MASK_SHIFT_L)};
        QCOMPARE(scene.Arrived(both), QStringLiteral("松开 shift+b"));
        QTest::keyClick(list, Qt::Key_Delete);
        QTest::keyClick(list, Qt::Key_Delete);
        QCOMPARE(scene.Arrived(both), QString());
    }

    void ACloneStartsWithWhatItsSourceHas()
    {
        Scene source;
        source.widget->Add(QStringLiteral("f9"));
        source.widget->Add(QStringLiteral("ctrl+shift+a"));
        source.Check("releases", true);
        const QJsonObject data = QJsonObject::fromVariantMap(source.widget->property("module_data").toMap());
        const QByteArray creation =
            QJsonDocument(QJsonObject{{QStringLiteral("init_data"), data}}).toJson(QJsonDocument::Compact);
        Scene clone(creation.constData());
        QCOMPARE(clone.widget->Combinations(), source.widget->Combinations());
        QCOMPARE(clone.Arrived({Released(VC_F9)}), QStringLiteral("松开 f9"));
        QCOMPARE(source.Arrived({}), QStringLiteral("松开 f9"));
    }

    void EventsForADeadWidgetAreDropped()
    {
        Scene scene(R"({"init_param":{"combinations":"a"}})");
        SendAll({Press(VC_A)});
        delete scene.widget;  // as the library does with a panel without a frame
        SendAll({Press(VC_A)});
        QCoreApplication::processEvents();
    }
};

PANELRY_TEST(HotKeysPanelTest)
#include "hot_keys_panel_test.moc"
