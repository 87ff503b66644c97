#pragma once

#include <array>
#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace panelry::desk
{

/// What the desk's providers can do wrong on request, each by itself.
enum class Fault {
    Late,  ///< answers and news of the trade side come later; the number: milliseconds
    Lost,  ///< they don't come; the number of this and of those below down to Text: percent that it strikes
    Doubled,        ///< they come twice
    Reordered,      ///< one comes behind the next one
    Failed,         ///< requests are answered with a failure, and nothing is done
    Subscriptions,  ///< subscriptions fail, quotes and trades
    Text,           ///< names and words are cut in the middle of a character
    Columns,        ///< tables lack a column; the number: its id, 0 for any one
    Threads,        ///< answers, news and quotes come on eight threads at a time
    Blocked,        ///< calls don't return for as many milliseconds as the number, 0: for as long as it is on
};
inline constexpr std::size_t kFaults = 10;

struct FaultDescription {
    const char* name;  ///< by which options and commands call it
    const char* help;  ///< one line for people
    Fault fault;
    int number;  ///< its usual one
};

/// The faults that are switched on, and whom they strike.
///
/// Threading: any thread.
class Faults
{
public:
    explicit Faults(std::uint64_t seed = 1);

    static std::span<const FaultDescription> All();
    static const FaultDescription* Find(std::string_view name);

    /// Switches on, with its usual number or another one, or off.
    void Set(Fault fault, bool on, std::optional<int> number = std::nullopt);
    void AllOff();
    [[nodiscard]] bool IsOn(Fault fault) const;
    [[nodiscard]] int NumberOf(Fault fault) const;

    /// Is it on, and does it strike this time? Draws by lot where its number is a percentage.
    bool Strikes(Fault fault);
    /// A number below `limit`, drawn by lot.
    std::size_t Draw(std::size_t limit);

    /// Cuts the words in `text` short where the fault Text strikes; plain ASCII stays as it is.
    std::string Garbled(std::string text);

    /// Where a call into a provider begins: returns when it isn't blocked any more. False behind End(): the
    /// call comes too late.
    [[nodiscard]] bool WaitWhileBlocked();
    /// Nobody is blocked from here on.
    void End();

    /// `hear` is told of every change, without a lock; before anybody else uses the object.
    void WhenChanged(std::function<void()> hear);

private:
    struct State {
        std::atomic<bool> on{false};
        std::atomic<int> number{0};
    };
    const State& Of(Fault fault) const { return m_states[static_cast<std::size_t>(fault)]; }
    std::uint64_t Next();

    std::array<State, kFaults> m_states;
    std::vector<std::function<void()>> m_hear;

    std::atomic<bool> m_ended{false};

    std::mutex m_lock;  // guards the next
    std::uint64_t m_random;
    std::condition_variable m_changed;
};

}  // namespace panelry::desk
