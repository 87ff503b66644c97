// What SendModuleMessage costs on the default route, to the modules of a frame and from a sender without a
// frame to all modules, against a bare loop of virtual calls to the same modules and against a direct Qt
// signal.

#include <QObject>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "hosting/message_ids.h"
#include "hosting/plugin_manager.h"
#include "modules/bench_messages.h"
#include "services/module_base.h"
#include "support/rounds.h"
#include "support/stage.h"

using panelry::bench::Check;
using panelry::bench::Clock;
using panelry::bench::Figure;

namespace
{

constexpr int kModuleId = 1;
constexpr int kMessage = 1000;  // means nothing to the library
constexpr int kFrames = 4;
constexpr int kRounds = 61;
constexpr int kDeliveries = 200000;  // in one measurement, whatever the number of receivers

class SignalReceiver : public QObject
{
    Q_OBJECT

public:
    void OnMessage(int /*msgId*/, void* /*payload*/) { ++m_count; }
    std::uint64_t Count() const { return m_count; }

private:
    std::uint64_t m_count = 0;
};

class SignalSender : public QObject
{
    Q_OBJECT

Q_SIGNALS:
    void Message(int msgId, void* payload);
};

// The modules of one measurement and the two bare ways to reach as many receivers.
class Receivers
{
public:
    // With `frames` 0 all stand in the sender's frame; else they are spread over so many, and the sender has
    // none.
    Receivers(int count, int frames) : m_signalReceivers(static_cast<std::size_t>(count))
    {
        PluginManager* const plugins = PluginManager::Instance(true);
        plugins->UnloadAll();
        m_sender = plugins->CreateLinkedModule(kModuleId, 0, frames == 0 ? 1 : 0, {});
        Check(m_sender != nullptr, "the module library isn't there");
        for (int i = 0; i < count; ++i) {
            const int frame = frames == 0 ? 1 : 1 + i % frames;
            m_modules.push_back(
                plugins->CreateLinkedModule(kModuleId, 0, static_cast<PluginManager::LinkKey>(frame), {}));
        }
        for (const SignalReceiver& receiver : m_signalReceivers) {
            QObject::connect(&m_signal, &SignalSender::Message, &receiver, &SignalReceiver::OnMessage,
                             Qt::DirectConnection);
        }
    }

    void Route() { m_sender->m_manager->SendModuleMessage(kMessage, this, m_sender, panelry::kAlongLink); }
    void Loop()
    {
        for (ModuleBase* const module : m_modules) {
            module->OnMessage(kMessage, this);
        }
    }
    void Emit() { Q_EMIT m_signal.Message(kMessage, this); }

    std::uint64_t ModuleCount() const
    {
        std::uint64_t count = 0;
        for (ModuleBase* const module : m_modules) {
            module->OnMessage(panelry::bench::kAddCount, &count);
        }
        return count;
    }
    std::uint64_t SignalCount() const
    {
        std::uint64_t count = 0;
        for (const SignalReceiver& receiver : m_signalReceivers) {
            count += receiver.Count();
        }
        return count;
    }

private:
    ModuleBase* m_sender = nullptr;
    std::vector<ModuleBase*> m_modules;
    SignalSender m_signal;
    std::vector<SignalReceiver> m_signalReceivers;
};

// Nanoseconds for one message to all receivers; `count` is their count of messages so far.
template <class Send, class Count>
double Measure(int receivers, Send send, Count count)
{
    const int messages = kDeliveries / receivers;
    const std::uint64_t before = count();
    const Clock::time_point start = Clock::now();
    for (int i = 0; i < messages; ++i) {
        send();
    }
    const double seconds = panelry::bench::Seconds(start);
    Check(count() - before == static_cast<std::uint64_t>(messages) * static_cast<std::uint64_t>(receivers),
          "messages were lost or doubled");
    return seconds * 1e9 / messages;
}

void Compare(int count, int frames)
{
    Receivers receivers(count, frames);
    const auto moduleCount = [&] { return receivers.ModuleCount(); };
    const auto signalCount = [&] { return receivers.SignalCount(); };
    const auto route = [&] {
        return Measure(
            count, [&] { receivers.Route(); }, moduleCount);
    };
    const auto loop = [&] {
        return Measure(
            count, [&] { receivers.Loop(); }, moduleCount);
    };
    const auto signal = [&] {
        return Measure(
            count, [&] { receivers.Emit(); }, signalCount);
    };

    const std::string name = (frames == 0 ? "Route to " : "Broadcast to ") + std::to_string(count);
    Figure againstSignal(name + ", against a direct signal", "ns", count == 100 ? 0.5 : 0);
    Figure againstLoop(name + ", against virtual calls", "ns", 0);
    panelry::bench::Interleave(kRounds, route, signal, [&](double ours, double yardstick) {
        againstSignal.AddRatio(ours, yardstick);
    });
    panelry::bench::Interleave(kRounds, route, loop,
                               [&](double ours, double yardstick) { againstLoop.AddRatio(ours, yardstick); });
    againstSignal.Print();
    againstLoop.Print();
}

}  // namespace

int main()
{
    panelry::bench::Stage stage;
    stage.AddModules(1);
    std::filesystem::current_path(stage.Directory());
    PluginManager::Instance(true)->LoadModules();
    for (const int frames : {0, kFrames}) {
        for (const int count : {1, 10, 100}) {
            Compare(count, frames);
        }
    }
    PluginManager::Destroy();
    return 0;
}

#include "bench_routing.moc"
