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
    kMarker = 9,   // a QObject that only repeats the push data "marker ...": whoever sees it knows that all
                   // before it is done
};

constexpr int kCommand = 900;
constexpr std::uint32_t kSharedId = 3001;
constexpr std::size_t kLongest = 4096;

int modulesAlive = 0;
int widgetsAlive = 0;

template <class T>
T Next(std::istream& words)
{
    T next{};
    words >> next;
    return next;
}

std::string Rest(std::istream& words)
{
    std::string rest;
    std::getline(words >> std::ws, rest);
    return rest;
}

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
        } else if (m_kind != kMarker) {
            Say("OnMessage " + std::to_string(msgId) + " " + Shortened(text));
        } else if (msgId == panelry::kPushData && Shortened(text).find("marker") == 0) {
            Report(text);
        }
    }

private:
    void Say(const std::string& what) const
    {
        if (m_kind != kMarker) {
            Report(m_name + " " + what);
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
        const auto verb = Next<std::string>(words);
        if (verb == "ask") {
            const auto question = Next<std::string>(words);
            Say("answer " + Answer(question, words));
        } else if (verb == "send") {
            const int msgId = Next<int>(words);
            const int target = Next<int>(words);
            m_manager->SendModuleMessage(msgId, Rest(words).data(), this, target);
            Say("sent " + std::to_string(msgId));
        } else if (verb == "soon") {  // in an event of its own, no call of the library's
            QTimer::singleShot(0, m_widget, [this, later = Rest(words)] {
                Obey(later);
                Say("over");
            });
        } else if (verb == "log") {
            const int level = Next<int>(words);
            m_manager->WriteModuleLog(level, Rest(words).c_str());
        } else if (verb == "pick" || verb == "watch") {
            SendStock(Next<std::string>(words), verb == "watch");
        } else if (verb == "crash") {
            std::abort();
        } else if (verb == "sub") {
            Say(m_manager->CreateSubModule(Next<int>(words), this) ? "sub-module" : "no sub-module");
        } else if (verb == "press" && m_widget) {
            const QString name = QString::fromStdString(Next<std::string>(words));
            if (auto* const button = m_widget->window()->findChild<QPushButton*>(name)) {
                button->click();
            }
        } else if (verb == "close") {
            m_widget->window()->close();
        } else if (verb == "data") {
            m_widget->setProperty(panelry::kModuleData, QVariantMap{{"on", true}, {"名", "值"}});
        } else if (verb == "lastwords") {
            m_lastWords = Rest(words);
        } else if (verb == "nest") {
            Nest();
        } else if (verb == "quit") {
            QCoreApplication::quit();
        }
    }

    std::string Answer(const std::string& question, std::istream& words) const
    {
        const auto first = Next<std::string>(words);
        const auto second = Next<std::string>(words);
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
            {"titles", [this] { return Titles(); }},
        };
        return answers.at(question)().toStdString();
    }

    static QString Look()
    {
        const bool isScaled = QCoreApplication::testAttribute(Qt::AA_EnableHighDpiScaling) &&
                              QGuiApplication::highDpiScaleFactorRoundingPolicy() ==
                                  Qt::HighDpiScaleFactorRoundingPolicy::Round;
        const bool isSharp = QCoreApplication::testAttribute(Qt::AA_UseHighDpiPixmaps);
        const bool isAntialiased = QApplication::font().styleStrategy() & QFont::PreferAntialias;
        return QString(isAntialiased ? "antialiased " : "") + (isSharp ? "sharp " : "") +
               (isScaled ? "scaled" : "");
    }

    QString Titles() const
    {
        const QWidget* const window = m_widget->window();
        return QStringLiteral("title=%1 label=%2 name=%3")
            .arg(window->windowTitle(), window->findChild<QLabel*>("titletextlable_titlebar")->text(),
                 m_widget->property(panelry::kModuleName).toString());
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
    bool m_infoAsked = false;
    bool m_widgetAsked = false;
};

/// QObject first: the ModuleBase in it has another address than the object.
class ObjectReporter : public QObject, public Reporter
{
public:
    using Reporter::Reporter;
};

}  // namespace

std::vector<ModuleInfo>* GetModuleInfo()
{
    static std::vector<ModuleInfo>& offered = *new std::vector<ModuleInfo>;
    if (offered.empty()) {
        for (const std::uint32_t id :
             {PANELRY_TEST_FIRST_ID + kWidget, PANELRY_TEST_FIRST_ID + kObject,
              PANELRY_TEST_FIRST_ID + kNothing, PANELRY_TEST_FIRST_ID + kMarker, kSharedId}) {
            offered.push_back({3, id, "key", "Panel " + std::to_string(id), "extra"});
        }
    }
    Report("loading " PANELRY_TEST_LIBRARY);
    return &offered;
}

ModuleBase* CreateModule(InstanceInfo* info)
{
    const std::uint32_t kind = info->module_id % 100;
    return kind == kWidget || kind == kNothing ? new Reporter(*info) : new ObjectReporter(*info);
}
