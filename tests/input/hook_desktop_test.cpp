// The service with the real hook, in the process of the test. Real keys, by xdotool.

#include <QKeyEvent>
#include <QWidget>
#include <algorithm>
#include <filesystem>

#include "desktop/screen.h"
#include "input/hook_manager.h"
#include "input/listener.h"
#include "support/sanitized.h"
#include "support/test.h"

using namespace std::chrono_literals;
using panelry::test::Listener;
namespace screen = panelry::test::screen;

namespace
{

constexpr int kProbeOnX11 = 202;  // the display's code of F24
constexpr char kAnyKey[] = R"({"hook_type":"4"})";

// Threads, and connections to the display.
std::pair<std::ptrdiff_t, std::ptrdiff_t> Usage()
{
    namespace fs = std::filesystem;
    const fs::directory_iterator files("/proc/self/fd");
    return {std::distance(fs::directory_iterator("/proc/self/task"), {}),
            std::count_if(begin(files), end(files), [](const fs::directory_entry& entry) {
                std::error_code gone;  // the directory's own
                return fs::read_symlink(entry, gone).string().starts_with("socket:");
            })};
}

/// Counts the keys that come to it.
class Window : public QWidget
{
public:
    int presses = 0;
    int releases = 0;
    int repeats = 0;

protected:
    void keyPressEvent(QKeyEvent* event) override { Count(*event, presses); }
    void keyReleaseEvent(QKeyEvent* event) override { Count(*event, releases); }

private:
    void Count(const QKeyEvent& event, int& count)
    {
        const bool probe = event.nativeScanCode() == kProbeOnX11;
        count += probe;
        repeats += probe && event.isAutoRepeat();
    }
};

}  // namespace

class HookDesktopTest : public panelry::test::Test
{
    Q_OBJECT

private:
    // Presses "x" until the module has heard it; the hook takes a moment to come up.
    static void PressUntilHeard(const std::atomic<int>& heard)
    {
        const int before = heard;
        QTRY_VERIFY_WITH_TIMEOUT((screen::Do(QStringLiteral("key x")), heard > before), 30'000);
        // What was pressed in vain may still come; so ends the series.
        int last = 0;
        do {
            last = heard;
            screen::Do(QStringLiteral("key x"));
            QTRY_VERIFY(heard > last);
        } while (heard > last + 1);
    }

private Q_SLOTS:
    void StartAndStopLeaveNoThreadAndNoConnection()
    {
        const bool soak = !qEnvironmentVariableIsEmpty("PANELRY_SOAK");
        const int lives = soak ? 400 : panelry::test::kSanitized ? 50 : 200;
        {
            HookManager first;
        }  // what stays for good comes with the first one
        const auto live = [](int number) {
            HookManager manager;
            manager.Start();
            std::this_thread::sleep_for(
                std::chrono::milliseconds(number % 5 * 8));  // up in some, not in others
            manager.Stop();
            manager.Start();
        };
        live(4);
        const auto before = Usage();
        for (int number = 0; number < lives; ++number) {
            live(number);
        }
        // A thread that was joined may be listed for a moment longer, then as now.
        QTRY_VERIFY(Usage().first <= before.first);
        QCOMPARE(Usage().second, before.second);
    }

    void AHookThatEndsComesBackOnceWithItsRegistrations()
    {
        HookManager manager({50ms, 500ms});
        QString log;
        Listener module(QStringLiteral("a"), log);
        std::atomic<int> heard{0};
        module.heard = [&](const uiohook_event& event) { heard += event.data.keyboard.keycode == VC_X; };
        manager.RegisterModule(&module, kAnyKey);
        manager.Start();
        PressUntilHeard(heard);
        QCOMPARE(hook_stop(), 0);
        PressUntilHeard(heard);
        for (int press = 0; press < 3; ++press) {
            const int before = heard;
            screen::Do(QStringLiteral("key x key y"));
            QTRY_VERIFY(heard > before);
            screen::Do(QStringLiteral("key y"));
            QCOMPARE(heard.load(), before + 1);  // a second hook would report it again
        }
    }

    void TheProbeLeavesNoKeyHeldAndNoModuleHearsIt()
    {
        Window window;
        window.setWindowTitle(QStringLiteral("probe watcher"));
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        screen::Do(QStringLiteral("windowactivate --sync %1 windowfocus --sync %1").arg(window.winId()));
        QTRY_VERIFY_WITH_TIMEOUT(window.isActiveWindow(), 60'000);
        QString log;
        Listener module(QStringLiteral("a"), log);
        {
            HookManager manager({20ms, 10s});
            manager.RegisterModule(&module, kAnyKey);
            manager.RegisterModule(&module, R"({"hook_type":"5"})");
            manager.RegisterModule(&module, R"({"hook_type":"3"})");
            manager.Start();
            // The focused window can't be spared.
            QTRY_VERIFY(window.presses >= 10);
        }
        QTRY_COMPARE(window.releases, window.presses);
        QCOMPARE(window.repeats, 0);
        QCOMPARE(log, QString());
    }
};

PANELRY_TEST(HookDesktopTest)
#include "hook_desktop_test.moc"
