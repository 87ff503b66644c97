// What it costs to open and to close a framed panel whose widget has twenty children, against a bare
// top-level widget with the same children, of the same size and, like the panel, without the window manager's
// frame.
//
// Open: from the host's message (bare: the constructor) until the children have been painted. Close: from the
// press of the close button (bare: close()) until the window is destroyed.

#include <QApplication>
#include <QPointer>
#include <QPushButton>
#include <cstdio>
#include <filesystem>

#include "hosting/container_manager.h"
#include "hosting/container_widget.h"
#include "hosting/plugin_manager.h"
#include "modules/bench_messages.h"
#include "modules/ticket_widget.h"
#include "resources/embedded.h"
#include "support/rounds.h"
#include "support/stage.h"

using panelry::bench::Check;
using panelry::bench::Clock;
using panelry::bench::Figure;
using panelry::bench::TicketWidget;

namespace
{

constexpr int kRounds = 81;
constexpr int kModuleId = panelry::bench::kFirstPanel + 1;
constexpr char kOpen[] =
    R"({"operate":"clicked","need_wrapper":"1","need_display":"1","always_display":"1"})";

struct Times {
    double openMs;
    double closeMs;
};

void RunEventsFor(std::chrono::milliseconds time)
{
    for (const Clock::time_point end = Clock::now() + time; Clock::now() < end;) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 1);
    }
}

template <class Condition>
void RunEventsUntil(Condition condition)
{
    while (!condition()) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
}

void RunDeletions()
{
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

// `open` gives the widget that holds the children, `prepare` makes the function that closes the window.
template <class Open, class Prepare>
Times Measure(Open open, Prepare prepare)
{
    Clock::time_point start = Clock::now();
    QWidget* const content = open();
    RunEventsUntil([content] { return content->property(TicketWidget::kPainted).toBool(); });
    const double opened = panelry::bench::Seconds(start);

    QWidget* const window = content->window();
    Check(window->isVisible() && window->windowHandle() && content->findChildren<QWidget*>().size() == 20,
          "what opened isn't the window that was wanted");
    const auto close = prepare(window);
    RunEventsFor(std::chrono::milliseconds(15));  // what the window manager and the screen still have to say
    const QPointer<QWidget> gone(window);
    start = Clock::now();
    close();
    RunDeletions();
    const double closed = panelry::bench::Seconds(start);

    Check(!gone && QApplication::topLevelWidgets().isEmpty(), "a window was left behind");
    RunEventsFor(std::chrono::milliseconds(15));
    return {opened * 1e3, closed * 1e3};
}

Times MeasurePanel()
{
    const auto open = [] {
        ContainerManager::Instance(true)->OnOperateFromDealDesk(kModuleId, kOpen);
        const QWidgetList windows = QApplication::topLevelWidgets();
        auto* const frame = windows.isEmpty() ? nullptr : qobject_cast<ContainerWidget*>(windows.first());
        Check(frame && frame->ModuleWidget(), "no framed panel has opened");
        return frame->ModuleWidget();
    };
    const auto prepare = [](QWidget* window) {
        auto* const button = window->findChild<QPushButton*>(QStringLiteral("closebtn_titlebar"));
        return [button] { button->click(); };
    };
    return Measure(open, prepare);
}

Times MeasureBare()
{
    const auto open = [] {
        auto* const widget = new TicketWidget;
        widget->setAttribute(Qt::WA_DeleteOnClose);
        widget->setWindowFlag(Qt::FramelessWindowHint);
        widget->resize(TicketWidget::kWidth, TicketWidget::kHeight);
        widget->show();
        return widget;
    };
    const auto prepare = [](QWidget* window) { return [window] { window->close(); }; };
    return Measure(open, prepare);
}

}  // namespace

int main(int argc, char* argv[])
{
    panelry::bench::Stage stage;
    stage.AddModules(1);
    panelry::InitResources();
    // The offscreen platform complains at every window about what it can't do; printing that isn't our
    // subject.
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    QApplication application(argc, argv);
    QGuiApplication::setQuitOnLastWindowClosed(false);
    std::filesystem::current_path(stage.Directory());

    const std::string platform = QGuiApplication::platformName().toStdString();
    const double bound = platform == "xcb" ? 1.3 : 3;
    Figure open("Framed panel, open, " + platform, "ms", 0);
    Figure close("Framed panel, close, " + platform, "ms", 0);
    Figure both("Framed panel, open and close, " + platform, "ms", bound);
    panelry::bench::Interleave(kRounds, &MeasurePanel, &MeasureBare,
                               [&](const Times& ours, const Times& bare) {
                                   open.AddRatio(ours.openMs, bare.openMs);
                                   close.AddRatio(ours.closeMs, bare.closeMs);
                                   both.AddRatio(ours.openMs + ours.closeMs, bare.openMs + bare.closeMs);
                               });
    open.Print();
    close.Print();
    both.Print();
    ContainerManager::Destroy();
    PluginManager::Destroy();
    return 0;
}
