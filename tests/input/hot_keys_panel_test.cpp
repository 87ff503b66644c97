// The hot keys panel with the real service; the keys come from the test.

#include <QCheckBox>
#include <QLineEdit>
#include <QListWidget>
#include <thread>

#include "hosting/plugin_manager.h"
#include "hot_keys/combination.h"
#include "hot_keys/event_text.h"
#include "hot_keys/hot_keys_module.h"
#include "input/fake_hook.h"
#include "input/hook_manager.h"
#include "support/test.h"

using panelry::HotKeysModule;
using panelry::HotKeysWidget;
using panelry::test::KeyEvent;
using panelry::test::MouseEvent;

namespace
{

// From a thread of its own, as the hook does it.
void Send(uiohook_event event)
{
    std::thread([&event] { HookManager::OnHookEvent(&event); }).join();
}

InstanceInfo Info()
{
    InstanceInfo info;
    info.module_id = panelry::kHotKeysPanelId;
    info.module_title = "全局热键";
    return info;
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
    // What has arrived since the last look, without the time.
    QString Arrived()
    {
        QCoreApplication::processEvents();
        QStringList lines = widget->Arrivals().mid(seen);
        seen += lines.size();
        for (QString& line : lines) {
            line = line.section(QLatin1Char(' '), 1);
        }
        return lines.join(QStringLiteral(" / "));
    }

    PluginManager plugins;  // outlives the module, as in the library
    HotKeysModule module{Info()};
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

    void WhatIsTypedIsReadAsTheLibraryNamesIt_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("text");  // empty: refused
        const auto row = [](const char* typed, const char* text) {
            QTest::newRow(typed) << QString::fromUtf8(typed) << QString::fromUtf8(text);
        };
        row("ctrl+shift+a", "ctrl+shift+a");
        row(" Meta + ALT +Shift+ CTRL+F12 ", "ctrl+shift+alt+meta+f12");
        row("shift+shift+1", "shift+1");
        row("ctrl", "ctrl+ctrl");
        row("shift+ctrl", "ctrl+shift+ctrl");
        row("ctrl+ctrl", "ctrl+ctrl");
        row("unknown", "unknown");
        row("", "");
        row("+", "");
        row("ctrl+", "");
        row("+a", "");
        row("a+b", "");
        row("f13", "");
        row("ctrl+中", "");
    }
    void WhatIsTypedIsReadAsTheLibraryNamesIt()
    {
        QFETCH(QString, typed);
        QFETCH(QString, text);
        const panelry::Combination combination = panelry::ReadCombination(typed);
        QCOMPARE(combination.text, text);
        QCOMPARE(combination.problem.isEmpty(), !text.isEmpty());
    }

    void EventsAreToldInAFewWords()
    {
        QCOMPARE(panelry::EventText(KeyEvent(EVENT_KEY_RELEASED, MASK_ALT_L, VC_UP)),
                 QStringLiteral("松开 alt+up"));
        uiohook_event mouse = MouseEvent(EVENT_MOUSE_PRESSED);
        mouse.data.mouse = {MOUSE_BUTTON2, 1, -5, 70};
        QCOMPARE(panelry::EventText(mouse), QStringLiteral("右键按下 (-5, 70)"));
        uiohook_event wheel = MouseEvent(EVENT_MOUSE_WHEEL);
        wheel.data.wheel.x = 3;
        wheel.data.wheel.rotation = -1;
        QCOMPARE(panelry::EventText(wheel), QStringLiteral("滚轮向上 (3, 0)"));
    }

    void TheUserDecidesWhatArrives()
    {
        Scene scene;
        const auto pressA = KeyEvent(EVENT_KEY_PRESSED, 0, VC_A);
        Send(pressA);
        QCOMPARE(scene.Arrived(), QString());  // no combination yet: no key at all

        QTest::keyClicks(&scene.Line(), QStringLiteral("A"));
        QTest::keyClick(&scene.Line(), Qt::Key_Return);
        QTest::keyClicks(&scene.Line(), QStringLiteral("shift+ctrl+F5"));
        QTest::keyClick(&scene.Line(), Qt::Key_Return);
        QCOMPARE(scene.widget->Combinations().join(QLatin1Char(' ')), QStringLiteral("a ctrl+shift+f5"));
        Send(pressA);
        Send(KeyEvent(EVENT_KEY_PRESSED, MASK_CTRL_L | MASK_SHIFT_R, VC_F5));
        Send(KeyEvent(EVENT_KEY_PRESSED, 0, VC_B));
        Send(KeyEvent(EVENT_KEY_RELEASED, 0, VC_A));
        Send(MouseEvent(EVENT_MOUSE_WHEEL));
        QCOMPARE(scene.Arrived(), QStringLiteral("按下 a / 按下 ctrl+shift+f5"));
        QVERIFY(scene.widget->StatusText().contains(QStringLiteral("2 个组合键，收到 2 个事件")));

        scene.Check("releases", true);
        scene.Check("mouse", true);
        Send(pressA);
        Send(KeyEvent(EVENT_KEY_RELEASED, 0, VC_A));
        Send(KeyEvent(EVENT_KEY_RELEASED, 0, VC_B));
        Send(MouseEvent(EVENT_MOUSE_WHEEL));
        QCOMPARE(scene.Arrived(), QStringLiteral("按下 a / 松开 a / 滚轮向下 (0, 0)"));

        scene.Check("releases", false);
        scene.Check("mouse", false);
        Send(pressA);
        Send(KeyEvent(EVENT_KEY_PRESSED, 0, VC_B));
        Send(KeyEvent(EVENT_KEY_RELEASED, 0, VC_A));
        Send(MouseEvent(EVENT_MOUSE_WHEEL));
        QCOMPARE(scene.Arrived(), QStringLiteral("按下 a"));
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
        Send(KeyEvent(EVENT_KEY_PRESSED, 0, VC_A));
        Send(KeyEvent(EVENT_KEY_RELEASED, MASK_SHIFT_L, VC_B));
        QCOMPARE(scene.Arrived(), QStringLiteral("松开 shift+b"));
        QTest::keyClick(list, Qt::Key_Delete);
        QTest::keyClick(list, Qt::Key_Delete);
        Send(KeyEvent(EVENT_KEY_PRESSED, 0, VC_A));
        Send(KeyEvent(EVENT_KEY_RELEASED, MASK_SHIFT_L, VC_B));
        QCOMPARE(scene.Arrived(), QString());
    }

    void ABadOrKnownCombinationIsToldAndNotAdded()
    {
        Scene scene;
        scene.widget->Add(QStringLiteral("f9"));
        scene.Line().setText(QStringLiteral("hyper+x"));
        QTest::keyClick(&scene.Line(), Qt::Key_Return);
        QVERIFY2(scene.widget->StatusText().contains(QStringLiteral("hyper")),
                 qPrintable(scene.widget->StatusText()));
        QCOMPARE(scene.Line().text(), QStringLiteral("hyper+x"));  // to be mended
        scene.widget->Add(QStringLiteral("F 9"));
        QVERIFY(scene.widget->StatusText().contains(QStringLiteral("f9 已登记")));
        QCOMPARE(scene.widget->Combinations(), QStringList(QStringLiteral("f9")));
    }

    void ACloneStartsWithWhatItsSourceHas()
    {
        Scene source;
        source.widget->Add(QStringLiteral("f9"));
        source.widget->Add(QStringLiteral("ctrl+shift+a"));
        source.Check("releases", true);
        QJsonObject data;
        const QVariantMap moduleData = source.widget->property("module_data").toMap();
        for (auto entry = moduleData.begin(); entry != moduleData.end(); ++entry) {
            data[entry.key()] = entry.value().toString();
        }
        const QByteArray creation =
            QJsonDocument(QJsonObject{{QStringLiteral("init_data"), data}}).toJson(QJsonDocument::Compact);
        Scene clone(creation.constData());
        QCOMPARE(clone.widget->Combinations(), source.widget->Combinations());
        Send(KeyEvent(EVENT_KEY_RELEASED, 0, VC_F9));
        QCOMPARE(clone.Arrived(), QStringLiteral("松开 f9"));
        QCOMPARE(source.Arrived(), QStringLiteral("松开 f9"));
    }

    void EventsForADeadWidgetAreDropped()
    {
        Scene scene(R"({"init_param":{"combinations":"a"}})");
        Send(KeyEvent(EVENT_KEY_PRESSED, 0, VC_A));
        delete scene.widget;  // as the library does with a panel without a frame
        Send(KeyEvent(EVENT_KEY_PRESSED, 0, VC_A));
        QCoreApplication::processEvents();
    }
};

PANELRY_TEST(HotKeysPanelTest)
#include "hot_keys_panel_test.moc"
