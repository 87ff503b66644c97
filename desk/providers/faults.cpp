#include "desk/providers/faults.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace panelry::desk
{

namespace
{

constexpr int kAlways = 100;  // percent
constexpr int kLateMs = 2000;
constexpr unsigned char kFirstBeyondAscii = 0x80;

constexpr FaultDescription kDescriptions[] = {
    {"late", "answers and news of the trade side come N ms later (2000)", Fault::Late, kLateMs},
    {"lost", "N % of them don't come (100)", Fault::Lost, kAlways},
    {"doubled", "N % of them come twice (100)", Fault::Doubled, kAlways},
    {"reordered", "N % of them come behind the next one (100)", Fault::Reordered, kAlways},
    {"failed", "N % of the requests are answered with a failure (100)", Fault::Failed, kAlways},
    {"subscriptions", "N % of the subscriptions fail (100)", Fault::Subscriptions, kAlways},
    {"text", "N % of the words in a foreign script are cut inside a character (100)", Fault::Text, kAlways},
    {"columns", "tables lack the column with id N, or any one (0)", Fault::Columns, 0},
    {"threads", "answers, news and quotes come on eight threads at a time", Fault::Threads, 0},
    {"blocked", "calls don't return for N ms, or until it is off (0)", Fault::Blocked, 0},
};
static_assert(std::size(kDescriptions) == kFaults);

bool IsPercentage(Fault fault)
{
    return fault >= Fault::Lost && fault <= Fault::Text;
}

}  // namespace

Faults::Faults(std::uint64_t seed) : m_random(seed)
{
    for (const FaultDescription& one : kDescriptions) {
        m_states[static_cast<std::size_t>(one.fault)].number = one.number;
    }
}

std::span<const FaultDescription> Faults::All()
{
    return kDescriptions;
}

const FaultDescription* Faults::Find(std::string_view name)
{
    const auto* const found = std::find_if(std::begin(kDescriptions), std::end(kDescriptions),
                                           [&](const FaultDescription& one) { return one.name == name; });
    return found == std::end(kDescriptions) ? nullptr : found;
}

void Faults::Set(Fault fault, bool on, std::optional<int> number)
{
    const auto place = static_cast<std::size_t>(fault);
    {
        const std::lock_guard guard(m_lock);
        m_states[place].number = std::max(0, number.value_or(kDescriptions[place].number));
        m_states[place].on = on;
    }
    m_changed.notify_all();
    for (const auto& hear : m_hear) {
        hear();
    }
}

void Faults::AllOff()
{
    for (const FaultDescription& one : kDescriptions) {
        Set(one.fault, false);
    }
}

bool Faults::IsOn(Fault fault) const
{
    return Of(fault).on;
}

int Faults::NumberOf(Fault fault) const
{
    return Of(fault).number;
}

bool Faults::Strikes(Fault fault)
{
    return IsOn(fault) && (!IsPercentage(fault) || static_cast<int>(Draw(kAlways)) < NumberOf(fault));
}

std::size_t Faults::Draw(std::size_t limit)
{
    const std::lock_guard guard(m_lock);
    return static_cast<std::size_t>(Next() % limit);
}

std::string Faults::Garbled(std::string text)
{
    const auto isForeign = [](char byte) { return static_cast<unsigned char>(byte) >= kFirstBeyondAscii; };
    if (!IsOn(Fault::Text) || std::none_of(text.begin(), text.end(), isForeign) || !Strikes(Fault::Text)) {
        return text;
    }
    while (!isForeign(text.back())) {
        text.pop_back();
    }
    text.pop_back();
    return text;
}

bool Faults::WaitWhileBlocked()
{
    if (!IsOn(Fault::Blocked)) {
        return !m_ended;
    }
    std::unique_lock lock(m_lock);
    const int ms = NumberOf(Fault::Blocked);
    const auto isFree = [this] { return m_ended || !IsOn(Fault::Blocked); };
    if (ms > 0) {
        m_changed.wait_for(lock, std::chrono::milliseconds(ms), isFree);
    } else {
        m_changed.wait(lock, isFree);
    }
    return !m_ended;
}

void Faults::End()
{
    {
        const std::lock_guard guard(m_lock);
        m_ended = true;
    }
    m_changed.notify_all();
}

void Faults::WhenChanged(std::function<void()> hear)
{
    m_hear.push_back(std::move(hear));
}

// A sequence of 64 bits a step; each depends on the seed and on how many came before.
std::uint64_t Faults::Next()
{
    m_random += 0x9E3779B97F4A7C15U;
    std::uint64_t mixed = m_random;
    mixed = (mixed ^ (mixed >> 30U)) * 0xBF58476D1CE4E5B9U;
    mixed = (mixed ^ (mixed >> 27U)) * 0x94D049BB133111EBU;
    return mixed ^ (mixed >> 31U);
}

}  // namespace panelry::desk
