#include "hosting/container_manager.h"

#include <QGuiApplication>
#include <QPushButton>
#include <QScreen>

#include "hosting/container_widget.h"
#include "hosting/stage.h"
#include "resources/embedded.h"
#include "support/test.h"

using namespace panelry::test;

namespace
{

constexpr int kScreenWidth = 800;

// A container manager over modules that are named a, b, c... in the order of their making. Those of id 3 are
// bare QObjects, all others have a widget of 200 by 150.
class Office
{
public:
    Office()
    {
        EnterModuleFolder();
        channel.make = [this](const InstanceInfo& info) { return Make(info); };
        manager = ContainerManager::Instance(true);
    }
    ~Office()
    {
        host.answer = nullptr;
        manager->FinishQuit();
        ContainerManager::Destroy();
        PluginManager::Destroy();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    void Say(int id, const char* text) { manager->OnOperateFromDealDesk(id, text); }

    ContainerWidget* Frame(char name) const
    {
        return qobject_cast<ContainerWidget*>(modules.at(name)->widget->window());
    }
    QPushButton* Button(char name, const char* button) const
    {
        return Frame(name)->findChild<QPushButton*>(button);
    }
    bool CloneEnabled(char name) const { return Button(name, "clonebtn_titlebar")->isEnabled(); }

    /// All modules there are, "+" behind the shown and "-" behind the hidden ones.
    QString State() const
    {
        QString state;
        for (const auto& [name, module] : modules) {
            state += QLatin1Char(name);
            if (module->widget) {
                state += QLatin1Char(module->widget->window()->isHidden() ? '-' : '+');
            }
        }
        return state;
    }

    FakeHost host;
    Channel channel;
    ContainerManager* manager = nullptr;
    std::map<char, FakeModule*> modules;
    QString log;

private:
    ModuleBase* Make(const InstanceInfo& info)
    {
        FakeModule* const module = info.module_id == 3 ? new ObjectModule : new FakeModule;
        module->m_instance = info;
        module->name = QLatin1Char(m_name);
        module->log = &log;
        if (info.module_id != 3) {
            module->MakeWidget();
            module->widget->setProperty("property_support_clone", true);
        }
        modules[m_name] = module;
        module->dying = [this, name = m_name] { modules.erase(name); };
        ++m_name;
        return module;
    }

    char m_name = 'a';
};

constexpr char kFramed[] = R"({"operate": "clicked", "need_wrapper": "1"})";
constexpr char kHiddenFrame[] = R"({"need_wrapper": "1"})";

}  // namespace

class ContainerManagerTest : public Test
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        panelry::InitResources();
        QCOMPARE(QGuiApplication::screens().size(), 1);
        QCOMPARE(QGuiApplication::primaryScreen()->geometry().width(), kScreenWidth);
    }
    void cleanupTestCase() { QVERIFY(QApplication::topLevelWidgets().isEmpty()); }

    void CloneStandsBesideItsSource()
    {
        // `beyond` the last place that leaves room at the right; `windows` in the way, each a step further.
        const auto offset = [](int beyond, int windows) {
            Office office;
            office.manager->CreateContainer(1, nullptr, kHiddenFrame);
            ContainerWidget* const source = office.Frame('a');
            const QPoint at(kScreenWidth - 2 * (200 + 5) + beyond, 50);
            source->move(at);
            for (int i = 0; i <= windows; ++i) {    // frames and bare widgets in turn
                const bool isOther = i == windows;  // another component is not in the way
                office.manager->CreateContainer(isOther ? 2 : 1, nullptr, i % 2 == 0 ? kHiddenFrame : "");
                QWidget& made = *office.modules.at(static_cast<char>('b' + i))->widget;
                made.window()->move(at + QPoint(beyond > 0 ? -210 - 10 * i : 210 + 10 * i, 10 * i));
            }
            office.manager->CreateContainer(1, source, kHiddenFrame);
            return office.Frame(static_cast<char>('c' + windows))->pos() - at;
        };
        QCOMPARE(offset(0, 0), QPoint(210, 0));
        QCOMPARE(offset(1, 0), QPoint(-210, 0));
        QCOMPARE(offset(0, 2), QPoint(230, 20));
        QCOMPARE(offset(1, 2), QPoint(-230, 20));
    }

    void HostHearsOfFramedClones()
    {
        ExpectWarning(kOffscreenWarning);
        Office office;
        QStringList told;
        office.host.answer = [&](int code, void* data) {
            if (code == 1) {
                told << QString::fromLatin1(static_cast<const char*>(data)) + office.State();
            }
        };
        office.manager->CreateContainer(1, nullptr, kHiddenFrame);
        office.manager->CreateContainer(1, office.Frame('a'), kHiddenFrame);
        office.manager->CreateContainer(1, office.Frame('a'), "");
        office.log.clear();
        office.Say(1, R"({"operate": "clicked", "cmd": "5"})");
        // Once, before the clone is shown; not for the first window and not for a bare one.
        QCOMPARE(told, QStringList(QString::number(office.Frame('b')->winId()) + "a+b-c-"));
        QCOMPARE(office.host.codes, QVector<int>({2, 2, 2, 1}));
        QCOMPARE(office.log, "a:5 b:5 c:5");
    }

    void RemovalByKind()
    {
        Office office;
        ContainerManager& manager = *office.manager;
        manager.CreateContainer(1, nullptr, kHiddenFrame);
        manager.CreateContainer(1, nullptr, "");
        manager.CreateContainer(3, nullptr, "");
        QObject stranger;
        manager.RemoveContainer(&stranger);
        manager.RemoveContainer(nullptr);
        manager.RemoveContainer(dynamic_cast<ObjectModule*>(office.modules.at('c')));  // has nothing to close
        QCOMPARE(office.State(), "a-b-c");
        manager.RemoveContainer(office.modules.at('b')->widget);
        QCOMPARE(office.State(), "a-c");
        const QPointer<ContainerWidget> frame = office.Frame('a');
        frame->ReleaseModuleWidget();
        manager.RemoveContainer(frame);
        QCOMPARE(office.State(), "c");
        QVERIFY(frame && !frame->GetModule());  // closes itself
        delete frame;
        office.Say(1, R"({"operate": "notify", "need_create_new": "0", "cmd": "1"})");
        office.Say(1, R"({"operate": "notify"})");  // the list is empty: one is made anew
        QCOMPARE(office.State(), "cd-");
    }

    void TenWindowsAtMostByTheCloneButton()
    {
        ExpectWarning(kOffscreenWarning);
        Office office;
        office.Say(1, kFramed);
        office.manager->CreateContainer(1, office.Frame('a'), kHiddenFrame);
        const auto press = [&office] { office.Button('a', "clonebtn_titlebar")->click(); };
        while (office.modules.size() < 10) {
            QVERIFY(office.CloneEnabled('a') && office.CloneEnabled('b'));
            press();
        }
        QVERIFY(!office.CloneEnabled('a') && !office.CloneEnabled('b'));
        office.manager->RemoveContainer(office.modules.at('j')->widget);  // bare: no look at the buttons
        press();
        QCOMPARE(office.modules.size(), std::size_t{9});
        office.manager->RefreshCloneButtons(1);
        press();
        QVERIFY(!office.CloneEnabled('a'));
        office.Button('b', "closebtn_titlebar")->click();
        QVERIFY(office.CloneEnabled('a'));
        QTRY_COMPARE(office.modules.size(), std::size_t{9});
        office.manager->CreateContainer(1, nullptr, "");
        office.manager->CreateContainer(1, nullptr, "");  // the limit is in the button alone
        QCOMPARE(office.modules.size(), std::size_t{11});
    }

    void PanelClosesItselfInAMessage()
    {
        ExpectWarning(kOffscreenWarning);
        const std::vector<std::pair<int, const char*>> messages{
            {1, "clicked"}, {1, "show"}, {-1, "show"}, {1, "notify"}, {-1, "notify"}, {1, ""}, {-1, ""}};
        for (const auto& [id, verb] : messages) {
            Office office;
            office.Say(1, kFramed);
            const QPointer<ContainerWidget> frame = office.Frame('a');
            office.modules.at('a')->heard = [&](int, void*) {
                office.Button('a', "closebtn_titlebar")->click();
            };
            if (!*verb) {  // data
                office.manager->OnDealPushData(id, "{}");
            } else {
                const QString text = R"({"operate":"%1","cmd":"5","always_display":"1"})";
                office.Say(id, qPrintable(text.arg(verb)));
            }
            QCOMPARE(office.State(), QString());
            QVERIFY(!frame || !frame->isVisible());  // stays closed until it is deleted
            QTRY_VERIFY(!frame);
            office.Say(1, kFramed);
            QCOMPARE(office.State(), "b+");
        }
    }
};

PANELRY_TEST(ContainerManagerTest)
#include "container_manager_test.moc"
