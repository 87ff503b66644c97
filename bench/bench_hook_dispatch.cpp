// What an event of the hook costs on its way to the modules, against a bare loop of virtual calls with one string
// comparison each. The events come from here, in the place of libuiohook's.

#include <cstdint>
#include <string>
#include <vector>

#include "input/hook_manager.h"
#include "input/key_names.h"
#include "services/module_base.h"
#include "support/rounds.h"

using panelry::bench::Check;
using panelry::bench::Clock;
using panelry::bench::Figure;

namespace
{

constexpr int kRounds = 61;
constexpr int kDeliveries = 200'000;  // in one measurement, whatever the number of modules

class Receiver : public ModuleBase
{
public:
    void Initialize(int, const char*, const char*, const char*) override {}
    void OnMessage(int /*msgId*/, void* /*payload*/) override { ++m_count; }
    std::uint64_t m_count = 0;
};

uiohook_event Event(event_type type, std::uint16_t keyCode)
{
    uiohook_event event{};
    event.type = type;
    event.mask = MASK_CTRL_L | MASK_SHIFT_L;
    event.data.keyboard.keycode = keyCode;
    return event;
}

// The modules of one measurement, and what the loop compares.
class Scene
{
public:
    explicit Scene(std::size_t count) : m_receivers(count), m_filters(count, "ctrl+shift+a")
    {
        for (Receiver& receiver : m_receivers) {
            m_service.RegisterModule(&receiver, R"({"hook_type":"4","keyboard_value":["Ctrl+Shift+A"]})");
            m_service.RegisterModule(&receiver, R"({"hook_type":"9"})");
        }
    }

    // Nanoseconds for an event.
    double Dispatch(event_type type, std::uint16_t keyCode)
    {
        return Measure([&] {
            uiohook_event event = Event(type, keyCode);
            HookManager::OnHookEvent(&event);
        });
    }
    // Each event finds its name and is compared with each module's one combination.
    double LoopKeys(std::uint16_t keyCode)
    {
        return Measure([&] {
            uiohook_event event = Event(EVENT_KEY_PRESSED, keyCode);
            const std::string name = panelry::KeyEventName(event);
            for (std::size_t i = 0; i < m_receivers.size(); ++i) {
                if (m_filters[i] == name) {
                    static_cast<ModuleBase&>(m_receivers[i]).OnMessage(119, &event);
                }
            }
        });
    }
    // The same without the making of the name: calls and comparisons alone.
    double BareLoop()
    {
        const std::string name = "ctrl+shift+a";
        return Measure([&] {
            uiohook_event event = Event(EVENT_KEY_PRESSED, VC_A);
            for (std::size_t i = 0; i < m_receivers.size(); ++i) {
                if (m_filters[i] == name) {
                    static_cast<ModuleBase&>(m_receivers[i]).OnMessage(119, &event);
                }
            }
        });
    }

    std::uint64_t Heard() const
    {
        std::uint64_t heard = 0;
        for (const Receiver& receiver : m_receivers) {
            heard += receiver.m_count;
        }
        return heard;
    }
    std::uint64_t Events() const { return static_cast<std::uint64_t>(kDeliveries) / m_receivers.size(); }

private:
    template <class Step>
    double Measure(Step step)
    {
        const Clock::time_point start = Clock::now();
        for (std::uint64_t i = 0; i < Events(); ++i) {
            step();
        }
        return panelry::bench::Seconds(start) * 1e9 / static_cast<double>(Events());
    }

    std::vector<Receiver> m_receivers;
    std::vector<std::string> m_filters;
    HookManager m_service;
};

template <class Ours, class Yardstick>
void Compare(std::size_t modules, const std::string& name, double bound, bool heard, Ours ours,
             Yardstick yardstick)
{
    Scene scene(modules);
    Figure figure(name, "ns", bound);
    panelry::bench::Interleave(
        kRounds, [&] { return ours(scene); }, [&] { return yardstick(scene); },
        [&](double a, double b) { figure.AddRatio(a, b); });
    const std::uint64_t sides = 2 * (kRounds + 1);
    Check(scene.Heard() == (heard ? sides * scene.Events() * modules : 0), "not everybody heard every event");
    figure.Print();
}

void CompareWithBareLoop(std::size_t modules, const std::string& name, double bound)
{
    Compare(
        modules, name, bound, true, [](Scene& scene) { return scene.Dispatch(EVENT_KEY_PRESSED, VC_A); },
        [](Scene& scene) { return scene.BareLoop(); });
}

}  // namespace

int main()
{
    CompareWithBareLoop(1, "Key to 1 filtered module, against a bare call", 0);
    CompareWithBareLoop(50, "Key to 50 filtered modules, against bare calls", 3.0);
    Compare(
        50, "Key to 50 modules, its name worked out on both sides", 0, true,
        [](Scene& scene) { return scene.Dispatch(EVENT_KEY_PRESSED, VC_A); },
        [](Scene& scene) { return scene.LoopKeys(VC_A); });
    Compare(
        50, "Key that none of 50 modules wants, the same way", 0, false,
        [](Scene& scene) { return scene.Dispatch(EVENT_KEY_PRESSED, VC_B); },
        [](Scene& scene) { return scene.LoopKeys(VC_B); });
    return 0;
}
