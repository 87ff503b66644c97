// What NotifyMsg costs its caller and how many messages a second it carries, against a bare queued signal.
//
// Ours: NotifyMsg of the real shared library, loaded with dlopen, sends push data to all panels; one module,
// from a real module library, counts what reaches its OnMessage. Yardstick: a signal with the same arguments,
// for which a std::string is made from the same `const char*` at every call, emitted on a QObject that lives
// in a thread of its own with an event loop and counts in its slot. Both in one process, each with one sender
// and one receiver.

#include <dlfcn.h>
#include <sched.h>

#include <QCoreApplication>
#include <QMetaType>
#include <QObject>
#include <QThread>
#include <atomic>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <thread>

#include "modules/bench_messages.h"
#include "support/rounds.h"
#include "support/stage.h"

Q_DECLARE_METATYPE(std::string)

using panelry::bench::Check;
using panelry::bench::Clock;
using panelry::bench::Figure;
using panelry::bench::Quantile;
using panelry::bench::Seconds;

namespace
{

constexpr char kText[] =
    R"({"stockcode":"600519","market":"SH","latest":"1688.00","change":"12.50","volume":"1873200","time":"10:31:07"})";
constexpr std::int32_t kOperate = 0;
constexpr std::int32_t kPush = 1;
constexpr std::int32_t kAll = -1;
constexpr std::int32_t kCounterId = 1;

// Keeps the calling thread on one processor: the senders on one, all receivers on another. Waking a thread costs
// three times as much from one placement to the next, and the scheduler stays with the one it has found.
enum class Processor : unsigned { Sender, Receivers };
void KeepOn(Processor processor)
{
    static const cpu_set_t allowed = [] {
        cpu_set_t set;
        sched_getaffinity(0, sizeof set, &set);
        return set;
    }();
    auto rest = static_cast<unsigned>(processor) % static_cast<unsigned>(CPU_COUNT(&allowed));
    std::size_t number = 0;
    while (!CPU_ISSET(number, &allowed) || rest-- > 0) {
        ++number;
    }
    cpu_set_t one;
    CPU_ZERO(&one);
    CPU_SET(number, &one);
    sched_setaffinity(0, sizeof one, &one);
}

// How the receiving end says that all is there, and when.
struct Arrival {
    std::atomic<bool> there{false};
    Clock::time_point when;
    std::uint64_t count = 0;

    void Tell(std::uint64_t total)
    {
        when = Clock::now();
        count = total;
        there = true;
        there.notify_one();
    }
    void Await()
    {
        there.wait(false);
        there = false;
    }
};

class BareReceiver : public QObject
{
    Q_OBJECT

public:
    static constexpr int kReport = -2;

    explicit BareReceiver(Arrival& arrival) : m_arrival(arrival)
    {
        connect(this, &BareReceiver::SignalMessage, this, &BareReceiver::OnMessage);
    }

Q_SIGNALS:
    void SignalMessage(int id, const std::string& text);

private:
    void OnMessage(int id, const std::string& /*text*/)
    {
        if (id == kReport) {
            m_arrival.Tell(m_count);
        } else {
            ++m_count;
        }
    }

    Arrival& m_arrival;
    std::uint64_t m_count = 0;
};

// A thread that does nothing but run its event loop.
class BareThread : public QThread
{
public:
    BareThread() { start(); }
    ~BareThread() override
    {
        quit();
        wait();
    }

private:
    void run() override
    {
        KeepOn(Processor::Receivers);
        exec();
    }
};

class Bare
{
public:
    explicit Bare(QThread* thread) : m_receiver(m_arrival) { m_receiver.moveToThread(thread); }

    void Send(const char* text) { Q_EMIT m_receiver.SignalMessage(kAll, std::string(text)); }
    const Arrival& Finish()
    {
        Q_EMIT m_receiver.SignalMessage(BareReceiver::kReport, std::string());
        m_arrival.Await();
        return m_arrival;
    }

private:
    Arrival m_arrival;
    BareReceiver m_receiver;
};

class Host
{
public:
    explicit Host(const char* library)
    {
        void* const handle = dlopen(library, RTLD_NOW);
        Check(handle != nullptr, "the library doesn't load");
        m_notify = reinterpret_cast<decltype(m_notify)>(dlsym(handle, "NotifyMsg"));
        m_uninit = reinterpret_cast<decltype(m_uninit)>(dlsym(handle, "Uninit"));
        const auto init =
            reinterpret_cast<void (*)(void*, void*, void (*)(std::int32_t, void*))>(dlsym(handle, "Init"));
        Check(m_notify && m_uninit && init, "the library lacks an export");
        init(nullptr, nullptr, &Host::OnCallback);
        Finish();  // opens the counter; answered by a running system only
    }
    ~Host() { m_uninit(); }

    void Send(const char* text) { m_notify(kPush, kAll, text); }
    const Arrival& Finish()
    {
        static const std::string ask =
            R"({"operate":"notify","cmd":")" + std::to_string(panelry::bench::kReportToHost) + R"("})";
        m_notify(kOperate, kCounterId, ask.c_str());
        s_arrival.Await();
        return s_arrival;
    }

private:
    static void OnCallback(std::int32_t nCode, void* pData)
    {
        if (nCode == 205) {
            const auto* const text = static_cast<const char*>(pData);
            std::uint64_t count = 0;
            std::from_chars(text, text + std::strlen(text), count);
            s_arrival.Tell(count);
            KeepOn(Processor::Receivers);
        }
    }

    static inline Arrival s_arrival;
    void (*m_notify)(std::int32_t, std::int32_t, const char*) = nullptr;
    void (*m_uninit)() = nullptr;
};

struct Result {
    double medianNs;
    double p99Ns;
    double perSecond;
};

struct Load {
    const char* name;
    int rounds;
    int messages;
    std::chrono::microseconds pause;  // from the start of one message to the start of the next
};

double ClockNs()
{
    std::vector<double> costs;
    for (int i = 0; i < 10000; ++i) {
        const Clock::time_point start = Clock::now();
        costs.push_back(Seconds(start) * 1e9);
    }
    return Quantile(costs, 0.5);
}

template <class Side>
Result Measure(Side& side, const Load& load)
{
    static const double clockNs = ClockNs();
    const std::uint64_t before = side.Finish().count;
    std::vector<double> costsNs(static_cast<std::size_t>(load.messages));
    const Clock::time_point begin = Clock::now();
    Clock::time_point start = begin;
    for (int i = 0; i < load.messages; ++i) {
        if (load.pause.count() > 0) {
            std::this_thread::sleep_until(begin + i * load.pause);
            start = Clock::now();
        }
        side.Send(kText);
        const Clock::time_point end = Clock::now();
        costsNs[static_cast<std::size_t>(i)] = Seconds(start, end) * 1e9 - clockNs;
        start = end;
    }
    const Arrival& arrival = side.Finish();
    Check(arrival.count - before == static_cast<std::uint64_t>(load.messages),
          "messages were lost or doubled");
    return {Quantile(costsNs, 0.5), Quantile(costsNs, 0.99), load.messages / Seconds(begin, arrival.when)};
}

void Compare(Host& host, Bare& bare, const char* where, const Load& load)
{
    const std::string name = std::string("NotifyMsg, ") + load.name + ", ";
    Figure median(name + "caller's median, " + where, "ns", 1.1);
    Figure p99(name + "caller's p99, " + where, "ns", 0);
    Figure delivery(name + "delivery, " + where, "us/message", 1.1);
    panelry::bench::Interleave(
        load.rounds, [&] { return Measure(host, load); }, [&] { return Measure(bare, load); },
        [&](const Result& ours, const Result& yardstick) {
            median.AddRatio(ours.medianNs, yardstick.medianNs);
            p99.AddRatio(ours.p99Ns, yardstick.p99Ns);
            delivery.AddRatio(1e6 / ours.perSecond, 1e6 / yardstick.perSecond);
        });
    median.Print();
    p99.Print();
    delivery.Print();
}

}  // namespace

int main(int argc, char* argv[])
{
    if (argc == 1) {
        panelry::bench::Stage stage;
        stage.AddModules(1);
        std::fputs(
            stage.RunSelf("'" + (panelry::bench::BuildOutput() / "libpanelry.so").string() + "'").c_str(),
            stdout);
        return 0;
    }
    KeepOn(Processor::Sender);
    Host host(argv[1]);
    // After the library: the first QObject of a process decides which thread Qt takes for the main one.
    BareThread thread;
    Bare apart(&thread);
    Bare beside(QCoreApplication::instance()->thread());
    for (const Load& load : {Load{"flood", 61, 20000, std::chrono::microseconds(0)},
                             Load{"every 200 us", 41, 500, std::chrono::microseconds(200)}}) {
        Compare(host, apart, "bare thread", load);
        Compare(host, beside, "same thread", load);
    }
    return 0;
}

#include "bench_notify.moc"
