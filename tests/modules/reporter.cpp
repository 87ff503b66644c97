// A module library that reports all that happens to its modules, line by line, to the host program of the
// contract tests (tests/contract/contract_host.cpp), and does what message 900 tells it.
//
// The last two digits of a module's id choose its kind. A module reports as "<id>#<number of the object>".

#include <dlfcn.h>
#include <uiohook.h>

#include <QApplication>
#include <QDir>
#include <QEventLoop>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QThread>
#include <QTimer>
#include <QVariant>
#include <QWidget>
#include <charconv>
#include <cstdlib>
#include <functional>
#include <map>
#include <sstream>

#include "hosting/message_ids.h"
#include "hosting/module_library.h"
#include "hosting/module_manager_spi.h"
#include "hosting/widget_properties.h"
#include "services/records.h"
#include "services/resource_manager.h"
#include "watchlist/watchlist_request.h"

namespace
{

enum Kind : std::uint32_t {
    kWidget = 1,
    kObject = 2,   // no widget, but a QObject
    kNothing = 3,  // neither
    kCounter = 8,  // a QObject that counts numbered messages instead of reporting them
    kMarker = 9,   // a QObject that only repeats the push data "marker ...": whoever sees it knows that all
                   // before it is done
};

constexpr int kCommand = 900;
constexpr int kNumbered = 7;
constexpr std::uint32_t kSharedId = 3001;
constexpr std::size_t kLongest = 4096;

int modulesAlive = 0;
int widgetsAlive = 0;

template <class Function>
Function* OfHost(const char* name)
{
    return reinterpret_cast<Function*>(dlsym(RTLD_DEFAULT, name));
}

void Report(const std::string& line)
{
    static const auto report = OfHost<void(const char*)>("ReportToHost");
    const bool stray = qApp && QThread::currentThread() != qApp->thread();
    report((stray ? line + " ON A STRANGE THREAD" : line).c_str());
}

std::string Shortened(const char* text)
{
    const std::string whole = text ? text : "(null)";
    return whole.size() > kLongest ? std::to_string(whole.size()) + " bytes" : whole;
}

std::string TextOf(const StringMap& map)
{
    std::string text;
    for (const auto& [key, value] : map) {
        text += (text.empty() ? "" : " ") + key + "=" + value;
    }
    return text;
}

// The thread is the hook's own: a report says that it is a strange one.
std::string TextOf(const uiohook_event& event)
{
    std::string text = "type=" + std::to_string(event.type);
    if (event.type <= EVENT_KEY_RELEASED) {
        text += " code=" + std::to_string(event.data.keyboard.keycode);
    }
    return text;
}

/// Reports when it appears, vanishes and dies.
class Panel : public QWidget
{
public:
    explicit Panel(std::string name) : m_name(std::move(name))
    {
        ++widgetsAlive;
        setProperty(panelry::kFrameWidth, 300);
        setProperty(panelry::kFrameHeight, 200);
        setProperty(panelry::kSupportClone, true);
    }
    ~Panel() override
    {
        --widgetsAlive;
        Report(m_name + " ~widget");
    }

    bool closesAsShown = false;

protected:
    void showEvent(QShowEvent* /*event*/) override
    {
        Report(m_name + " shown");
        if (closesAsShown) {
            window()->close();
        }
    }
    void hideEvent(QHideEvent* /*event*/) override { Report(m_name + " hidden"); }

private:
    const std::string m_name;
};

/// Checks that the numbers of each thread come one after the other. The sender gives every third number the
/// type that is dropped, the others operate messages and push data in turn.
class Counter
{
public:
    void Take(const char* text, bool push)
    {
        unsigned thread = 0;
        unsigned number = 0;
        const char* const end = text + std::char_traits<char>::length(text);
        const auto first = std::from_chars(text, end, thread);
        const auto second = std::from_chars(first.ptr + 1, end, number);
        unsigned& expected = m_expected[thread];
        m_faults += second.ptr != end || number != expected || push != (number % 3 == 1);
        expected = number + (push ? 2 : 1);
        ++m_count;
    }

    std::string Result() const
    {
        return std::to_string(m_expected.size()) + " threads " + std::to_string(m_count) + " messages " +
               std::to_string(m_faults) + " faults";
    }
    bool Fresh() const { return m_count == 0; }

private:
    std::map<unsigned, unsigned> m_expected;
    unsigned m_count = 0;
    unsigned m_faults = 0;
};

class Reporter : public ModuleBase
{
public:
    explicit Reporter(const InstanceInfo& info)
    {
        static int made = 0;
        m_instance = info;
        m_kind = static_cast<Kind>(info.module_id % 100);
        m_name = std::to_string(info.module_id) + "#" + std::to_string(++made);
        ++modulesAlive;
        Say("made in " PANELRY_TEST_LIBRARY " kind=" + std::to_string(info.module_kind) +
            " key=" + info.module_key + " title=" + info.module_title + " extra=" + info.module_extra +
            " group=" + std::to_string(info.group_id) + " text=" + info.instance_text);
        if (m_kind == kWidget) {
            m_widget = new Panel(m_name);
        }
    }

    ~Reporter() override
    {
        Say("~module");
        delete m_widget;
        --modulesAlive;
        if (!m_lastWords.empty()) {
            m_manager->SendModuleMessage(panelry::kToHost205, m_lastWords.data(), this, -1);
        }
    }

    void SetProviders(void* quote, void* trade) override
    {
        static const auto number = OfHost<std::uintptr_t(void*)>("NumberOfProvider");
        Say("SetProviders " + std::to_string(number(quote)) + " " + std::to_string(number(trade)));
    }

    void SetColorTable(void* table) override
    {
        Say("SetColorTable");
        ModuleBase::SetColorTable(table);
    }

    void SetConfigTables(void* systemTable, void* userTable) override
    {
        Say("SetConfigTables");
        ModuleBase::SetConfigTables(systemTable, userTable);
    }

    void Initialize(int moduleId, const char* a, const char* b, const char* initParam) override
    {
        Say("Initialize " + std::to_string(moduleId) + " [" + a + "] [" + b + "] " + Shortened(initParam));
        if (std::string(initParam).find("stay on top") != std::string::npos) {
            m_widget->setProperty(panelry::kStaysOnTop, true);
        }
        if (std::string(initParam).find("close as shown") != std::string::npos) {
            m_widget->closesAsShown = true;
        }
        // A module that speaks to the host before it stands anywhere.
        if (std::string(initParam).find("speak early") != std::string::npos) {
            char text[] = "early";
            m_manager->SendModuleMessage(panelry::kToHost205, text, this, -1);
        }
    }

    std::shared_ptr<InstanceInfo> GetInstanceInfo() override
    {
        SayFirst("GetInstanceInfo", m_infoAsked);
        return ModuleBase::GetInstanceInfo();
    }

    QWidget* GetWidget() override
    {
        SayFirst("GetWidget", m_widgetAsked);
        return m_widget;
    }

    void OnMessage(int msgId, void* payload) override
    {
        const char* const text = static_cast<const char*>(payload);
        if (msgId == panelry::kStockSelected) {
            Say("OnMessage 102 " + TextOf(*static_cast<const StringMap*>(payload)));
        } else if (msgId == panelry::kHookEvent) {
            Say("OnMessage 119 " + TextOf(*static_cast<const uiohook_event*>(payload)));
        } else if (msgId == kCommand) {
            Obey(text);
        } else if (m_kind == kCounter && (msgId == kNumbered || msgId == panelry::kPushData)) {
            if (m_counter.Fresh()) {
                Say("counting");
            }
            m_counter.Take(text, msgId == panelry::kPushData);
        } else if (m_kind == kMarker) {
            RepeatMarker(msgId, text);
        } else {
            Say("OnMessage " + std::to_string(msgId) + " " + Shortened(text));
        }
    }

protected:
    virtual const void* WholeObject() const { return this; }

private:
    void Say(const std::string& what) const
    {
        if (m_kind != kMarker && (m_kind != kCounter || what.find("OnMessage") != 0)) {
            Report(m_name + " " + what);
        }
    }

    static void RepeatMarker(int msgId, const char* text)
    {
        const std::string marker = text ? text : "";
        if (msgId == panelry::kPushData && marker.find("marker") == 0) {
            Report(marker);
        }
    }

    void SayFirst(const char* what, bool& said)
    {
        if (!std::exchange(said, true)) {
            Say(what);
        }
    }

    // "<verb> <arguments>"
    void Obey(const std::string& command)
    {
        std::istringstream words(command);
        std::string verb;
        words >> verb;
        if (verb == "ask") {
            std::string question;
            words >> question;
            Say("answer " + Answer(question, words));
        } else if (verb == "send") {
            int msgId = 0;
            int target = 0;
            std::string text;
            std::getline(words >> msgId >> target >> std::ws, text);
            m_manager->SendModuleMessage(msgId, text.data(), this, target);
            Say("sent " + std::to_string(msgId));
        } else if (verb == "soon") {  // in an event of its own, no call of the library's
            std::string later;
            std::getline(words >> std::ws, later);
            QTimer::singleShot(0, m_widget, [this, later] {
                Obey(later);
                Say("over");
            });
        } else if (verb == "log") {
            int level = 0;
            std::string text;
            std::getline(words >> level >> std::ws, text);
            m_manager->WriteModuleLog(level, text.c_str());
        } else if (verb == "pick" || verb == "watch") {
            std::string code;
            words >> code;
            SendStock(code, verb == "watch");
        } else if (verb == "crash") {
            std::abort();
        } else if (verb == "sub") {
            int id = 0;
            words >> id;
            Say(m_manager->CreateSubModule(id, this) ? "sub-module" : "no sub-module");
        } else if (m_widget && (verb == "press" || verb == "presslater")) {
            std::string button;
            words >> button;
            Press(QString::fromStdString(button), verb == "presslater");
        } else if (verb == "close") {
            m_widget->window()->close();
        } else if (verb == "data") {
            m_widget->setProperty(
                panelry::kModuleData,
                QVariantMap{{QStringLiteral("on"), true}, {QStringLiteral("名"), QStringLiteral("值")}});
        } else if (verb == "move") {
            int x = 0;
            int y = 0;
            words >> x >> y;
            m_widget->window()->move(x, y);
        } else if (verb == "lastwords") {
            std::getline(words >> std::ws, m_lastWords);
        } else if (verb == "nest") {
            Nest();
        } else if (verb == "quit") {
            QCoreApplication::quit();
        }
    }

    std::string Answer(const std::string& question, std::istream& words) const
    {
        std::string first;
        std::string second;
        words >> first >> second;
        const ResourceManager& resources = *ResourceManager::Instance(true);
        const std::map<std::string, std::function<QString()>> answers{
            {"directory", [] { return QDir::currentPath(); }},
            {"font", [] { return QApplication::font().toString(); }},
            {"look", [] { return Look(); }},
            {"translation", [&] { return QCoreApplication::translate("QObject", first.c_str()); }},
            {"config", [&] { return QString::fromStdString(resources.ReadConfig(first, second)); }},
            {"color", [&] { return QString::fromStdString(resources.ColorTable()->at(first).at(second)); }},
            {"resources", [&] { return QString::number(reinterpret_cast<std::uintptr_t>(&resources)); }},
            {"alive",
             [] { return QStringLiteral("%1 modules %2 widgets").arg(modulesAlive).arg(widgetsAlive); }},
            {"windows", [] { return QString::number(QApplication::topLevelWidgets().size()); }},
            {"frame", [this] { return FrameFacts(); }},
            {"count", [this] { return QString::fromStdString(m_counter.Result()); }},
        };
        return answers.at(question)().toStdString();
    }

    static QString Look()
    {
        QStringList facts;
        if (QApplication::font().styleStrategy() & QFont::PreferAntialias) {
            facts << QStringLiteral("antialiased");
        }
        if (QCoreApplication::testAttribute(Qt::AA_UseHighDpiPixmaps)) {
            facts << QStringLiteral("sharp");
        }
        if (QCoreApplication::testAttribute(Qt::AA_EnableHighDpiScaling) &&
            QGuiApplication::highDpiScaleFactorRoundingPolicy() ==
                Qt::HighDpiScaleFactorRoundingPolicy::Round) {
            facts << QStringLiteral("scaled");
        }
        return facts.join(QLatin1Char(' '));
    }

    QString FrameFacts() const
    {
        const QWidget* const window = m_widget->window();
        if (window == m_widget) {
            return QStringLiteral("bare");
        }
        const auto* const clone = window->findChild<QPushButton*>(QStringLiteral("clonebtn_titlebar"));
        return QStringLiteral("%1 %2x%3 title=%4 label=%5 name=%6 clone=%7%8")
            .arg(window->objectName())
            .arg(window->width())
            .arg(window->height())
            .arg(window->windowTitle(),
                 window->findChild<QLabel*>(QStringLiteral("titletextlable_titlebar"))->text(),
                 m_widget->property(panelry::kModuleName).toString(),
                 clone->isVisibleTo(window) ? QStringLiteral("shown") : QStringLiteral("hidden"),
                 clone->isEnabled() ? QStringLiteral("") : QStringLiteral(",disabled"));
    }

    // Selects a stock, or has it put on the watchlist.
    void SendStock(const std::string& code, bool onList)
    {
        StringMap stock{{"market", "16"}, {"stockcode", code}};
        WatchlistRequest request;
        request.cmd = panelry::kAddStocks;
        request.items = {stock};
        if (onList) {
            m_manager->SendModuleMessage(panelry::kWatchlistRequest, &request, this, -1);
        } else {
            m_manager->SendModuleMessage(panelry::kStockSelected, &stock, this, -1);
        }
    }

    void Press(const QString& objectName, bool later)
    {
        const QPointer<QPushButton> button = m_widget->window()->findChild<QPushButton*>(objectName);
        if (!button) {
            return;
        }
        if (later) {
            QTimer::singleShot(0, qApp, [button] { button->click(); });
        } else {
            button->click();
        }
    }

    // As a module does that opens a dialog: back only when the host releases it or the application quits.
    void Nest()
    {
        static const auto released = OfHost<bool()>("HostReleased");
        QEventLoop loop;
        QTimer look;
        QObject::connect(&look, &QTimer::timeout, &loop, [&loop] {
            if (released()) {
                loop.quit();
            }
        });
        look.start(1);
        Say("nested");
        loop.exec();
        Say("left the nest");
    }

    Kind m_kind;
    std::string m_name;
    std::string m_lastWords;
    QPointer<Panel> m_widget;
    Counter m_counter;
    bool m_infoAsked = false;
    bool m_widgetAsked = false;
};

/// QObject first: the ModuleBase in it has another address than the object.
class ObjectReporter : public QObject, public Reporter
{
public:
    using Reporter::Reporter;
};

ModuleInfo Offer(std::uint32_t id)
{
    ModuleInfo info;
    info.module_kind = 3;
    info.module_id = id;
    info.module_key = "key";
    info.module_title = "Panel " + std::to_string(id);
    info.module_extra = "extra";
    return info;
}

}  // namespace

std::vector<ModuleInfo>* GetModuleInfo()
{
    static std::vector<ModuleInfo>& offered = *new std::vector<ModuleInfo>;
    if (offered.empty()) {
        for (const Kind kind : {kWidget, kObject, kNothing, kCounter, kMarker}) {
            offered.push_back(Offer(PANELRY_TEST_FIRST_ID + kind));
        }
        offered.push_back(Offer(kSharedId));
    }
    Report("loading " PANELRY_TEST_LIBRARY);
    return &offered;
}

ModuleBase* CreateModule(InstanceInfo* info)
{
    switch (info->module_id % 100) {
        case kWidget:
        case kNothing:
            return new Reporter(*info);
        default:
            return new ObjectReporter(*info);
    }
}
