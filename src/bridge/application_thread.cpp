#include "bridge/application_thread.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFont>
#include <QFontDatabase>
#include <QOperatingSystemVersion>
#include <QTimer>
#include <QTranslator>

#include "bridge/application_thread_mark.h"
#include "bridge/config_store.h"
#include "bridge/exit_guard.h"
#include "bridge/host_values.h"
#include "bridge/message_road.h"
#include "hosting/container_manager.h"
#include "hosting/plugin_manager.h"
#include "logger/deployment.h"
#include "refresh/auto_refresh.h"
#include "resources/embedded.h"

namespace panelry::bridge
{

namespace
{

constexpr char kDefaultLanguage[] = "zh_CN";
constexpr char kDefaultFamily[] = "Microsoft Yahei";
constexpr int kFontPoints = 9;
constexpr int kFontWeight = 50;
constexpr int kKeepAliveMs = 1000;

// All before the application object exists.
void SetScaling()
{
    QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps, true);
    const QOperatingSystemVersion system = QOperatingSystemVersion::current();
    if (system.type() == QOperatingSystemVersion::Windows && system.majorVersion() == 6 &&
        system.minorVersion() == 1) {
        QCoreApplication::setAttribute(Qt::AA_DisableHighDpiScaling);
    } else {
        QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
        QGuiApplication::setHighDpiScaleFactorRoundingPolicy(Qt::HighDpiScaleFactorRoundingPolicy::Round);
    }
}

void InstallTranslator(const QString& file)
{
    auto* const translator = new QTranslator(QCoreApplication::instance());
    if (translator->load(file)) {
        QCoreApplication::installTranslator(translator);
    }
}

// The toolkit's own texts first (no such catalogue is shipped; an installation may add one), the panels'
// second: the last one installed is asked first.
void InstallTranslators(const ConfigStore& settings)
{
    std::string language = settings.Read("language", "general");
    if (language.empty()) {
        language = kDefaultLanguage;
    }
    const QString name = QString::fromStdString(language);
    InstallTranslator(QStringLiteral(":/language/qt_%1.qm").arg(name));
    InstallTranslator(QStringLiteral(":/language/DealdeskLanguage_%1.qm").arg(name));
}

// The first family of a font file; empty without one. A missing file is not put to the toolkit, which would read
// in all fonts of the machine before it found out.
QString FamilyOf(const QString& file)
{
    if (!QFile::exists(file)) {
        return {};
    }
    const QStringList families =
        QFontDatabase::applicationFontFamilies(QFontDatabase::addApplicationFont(file));
    return families.value(0);
}

void LoadFonts()
{
    const QString regular = FamilyOf(QStringLiteral("sysconfig/Alibaba-PuHuiTi-Regular.ttf"));
    FamilyOf(QStringLiteral("sysconfig/Alibaba-PuHuiTi-Medium.ttf"));
    QFont font(regular.isEmpty() ? QString::fromLatin1(kDefaultFamily) : regular, kFontPoints, kFontWeight,
               false);
    font.setStyleStrategy(QFont::PreferAntialias);
    QApplication::setFont(font);
}

// The log of one life, for deployments that name a configuration file: from before the modules load until all
// panels and services are gone.
class LogSession
{
public:
    explicit LogSession(const ConfigStore& settings)
    {
        panelry::logger::BeginLogging(settings.Read("log_config", "system"),
                                      settings.Read("log_crash_guard", "system") == "1");
    }
    ~LogSession() { panelry::logger::EndLogging(); }
    LogSession(const LogSession&) = delete;
    LogSession& operator=(const LogSession&) = delete;
};

void StartAutoRefresh(ConfigStore& settings)
{
    AutoRefresh& service = *AutoRefresh::Instance(true);
    service.SetProviders(QuoteProvider, TradeProvider);
    service.SetConfigTables(settings.SystemTable(), settings.UserTable());
    service.Start();
}

void OnAboutToQuit(QTimer* keepAlive)
{
    delete keepAlive;  // stops it
    if (ContainerManager* const manager = ContainerManager::Instance(false)) {
        manager->FinishQuit();
    }
    ContainerManager::Destroy();
    AutoRefresh::Destroy();
    PluginManager::Destroy();
}

}  // namespace

void ApplicationThreadMain(std::int32_t /*type*/, std::int32_t /*id*/,
                           std::shared_ptr<const std::string> /*text*/)
{
    const ApplicationThreadMark mark;
    panelry::InitResources();
    SetScaling();
    int argc = 1;  // the application object keeps references to both
    char noName[] = "";
    char* argv[] = {noName, nullptr};
    QApplication application(argc, argv);
    QGuiApplication::setQuitOnLastWindowClosed(false);
    // From here on every relative path of the process starts at the host's directory.
    QDir::setCurrent(QCoreApplication::applicationDirPath());

    ConfigStore& settings = *ConfigStore::Instance(true);
    InstallTranslators(settings);
    if (settings.Read("load_font", "system") != "0") {
        LoadFonts();
    }

    const LogSession log(settings);
    if (settings.Read("support_autorefresh", "system") != "0") {
        StartAutoRefresh(settings);
    }

    auto* const keepAlive = new QTimer;
    QObject::connect(keepAlive, &QTimer::timeout, [] { QCoreApplication::processEvents(); });
    keepAlive->start(kKeepAliveMs);
    QObject::connect(&application, &QCoreApplication::aboutToQuit, [keepAlive] { OnAboutToQuit(keepAlive); });

    ContainerManager::Instance(true);
    GuardExit();  // again: the toolkit has made most of its statics by now
    QTimer::singleShot(0, [] {
        HaltIfExiting();
        BecomeRunning();
    });
    QApplication::exec();
}

}  // namespace panelry::bridge
