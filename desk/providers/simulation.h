#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <variant>

#include "desk/accounts/brokerage.h"
#include "desk/exchange/exchange.h"
#include "desk/exchange/market_time.h"
#include "desk/exchange/tape.h"

namespace panelry::desk
{

/// What has happened to an order.
enum class OrderEvent {
    Accepted,   ///< it has come in and the exchange has taken it
    Refused,    ///< by the broker or by the exchange
    Dealt,      ///< in part or whole
    Cancelled,  ///< a client has taken the rest back
    Expired,    ///< the rest ended with its day, or was refused by the exchange behind a restart
};

/// Hears what the simulation does: on the thread that caused it, while the simulation is locked. It only
/// queues.
class SimulationListener
{
public:
    virtual ~SimulationListener() = default;

    virtual void OnQuote(std::size_t security) = 0;
    virtual void OnPhase(Phase phase, MarketTime time) = 0;
    virtual void OnDay(int day) = 0;
    virtual void OnOrder(const Order& order, OrderEvent event) = 0;
    /// Comes ahead of its order's OnOrder().
    virtual void OnDeal(const Deal& deal) = 0;
    /// The broker couldn't write what has happened. The event is tried again, and nothing gets ahead of it.
    virtual void OnTrouble(const std::string& problem) = 0;
};

/// Exchange and broker in one running market: moves the clock on a thread of its own, takes orders from the
/// broker to the exchange and deals back.
///
/// The market begins on the broker's day, at `startOfDay`; the days before are gone through without trade, so
/// prices start from the listing's closes. Open orders that the broker has kept go to the exchange again, at
/// once or, before the opening auction, when that begins; one that the exchange refuses ends. A long stretch
/// of market time that is skipped (the start, MoveTo(), a large Step()) is played with a thinner crowd, so
/// that it takes about a second.
///
/// Ownership: owns all of it. Threading: any thread; one lock guards exchange, broker and clock, and is held
///   over each operation.
/// Failures: the constructor throws std::runtime_error for files that are none. Later trouble with the
///   accounts' file is told to the listener.
class Simulation : private ExchangeListener
{
public:
    struct Settings {
        std::filesystem::path listing;
        std::filesystem::path opening;
        std::filesystem::path store;  ///< of the accounts; empty: nothing is kept
        bool afresh = false;
        std::uint64_t seed = 1;
        double changesPerSecond = 200;
        double speed = 1;  ///< of the clock; 0: it stands, and moves by Step() alone
        /// Where the first day begins: 09:29:30 shows trade at once.
        std::chrono::milliseconds startOfDay{0};
        std::filesystem::path tape;  ///< where all that the exchange does is written down; empty: nowhere
    };

    explicit Simulation(const Settings& settings);
    ~Simulation() override;
    Simulation(const Simulation&) = delete;
    Simulation& operator=(const Simulation&) = delete;

    void SetListener(SimulationListener* listener);  ///< before Start(); null again behind Stop()
    void Start();
    /// Ends the clock's thread. Harmless the second time.
    void Stop();

    /// Freezes with the broker, then asks the exchange.
    Brokerage::Placed Place(const OrderWish& wish);
    /// Empty, or why not (UTF-8, for traders).
    std::string Cancel(AccountKind account, const std::string& contract);

    /// Runs `read` with everything locked.
    template <typename Reader>
    auto Read(Reader&& read) const
    {
        const std::lock_guard guard(m_lock);
        return read(std::as_const(*m_exchange), std::as_const(*m_brokerage));
    }

    /// Neither changes, so neither is locked.
    [[nodiscard]] const Listing& Securities() const { return *m_listing; }
    [[nodiscard]] const Opening& Started() const { return m_brokerage->Started(); }
    /// What the last deal was made at, or the previous close before the first.
    [[nodiscard]] static Price PriceOf(const Exchange& exchange, std::size_t security);

    [[nodiscard]] MarketTime Now() const;
    [[nodiscard]] double Speed() const;
    void SetSpeed(double speed);
    void Step(std::chrono::milliseconds by);
    /// To this time today, or, when it has passed, tomorrow.
    void MoveTo(std::chrono::milliseconds ofDay);
    /// To 00:00 of the next day.
    void Midnight();

    void RunToLimit(std::size_t security, Side side);
    void SetSuspended(std::size_t security, bool suspended);
    void SetRate(double changesPerSecond);
    /// Deals an open order in `parts` deals. Empty, or why not.
    std::string Fill(AccountKind account, const std::string& contract, Quantity quantity, int parts);

private:
    // What the exchange did, for the broker to book. In one queue, in the order in which it happened: the
    // broker isn't called from inside the exchange, and what can't be written now is written later.
    struct Taken {
        std::string contract;
        OrderId id;
        bool again;  ///< behind a restart
    };
    struct TurnedDown {
        std::string contract, reason;
        bool again;
    };
    struct Dealt {
        std::string contract;
        Price price;
        Quantity quantity;
    };
    struct Gone {
        std::string contract;
        OrderEvent event;
    };
    struct Happening {
        MarketTime time;
        std::variant<Taken, TurnedDown, Dealt, Gone> what;
    };

    void OnQuote(std::size_t security) override;
    void OnDeal(OrderId order, Price price, Quantity quantity) override;
    void OnGone(OrderId order) override;
    void OnPhase(Phase phase) override;

    void BeginAtBrokersDay();
    void RunClock();
    void PlayToNow();
    void PlayTo(MarketTime time);
    bool OpenDay(int day);
    void AdvanceTo(MarketTime time);
    void AdvanceExchangeTo(MarketTime time);
    void PutKeptOrders();
    std::string Send(const std::string& contract, const NewOrder& order, bool again);
    [[nodiscard]] std::string WhyNotOpen(AccountKind account, const std::string& contract) const;
    void Book();
    void BookOne(const Taken& taken, MarketTime time);
    void BookOne(const TurnedDown& order, MarketTime time);
    void BookOne(const Dealt& dealt, MarketTime time);
    void BookOne(const Gone& gone, MarketTime time);
    void Tell(const std::string& contract, OrderEvent event);
    template <typename Action>
    bool Try(Action&& action);

    std::shared_ptr<const Listing> m_listing;
    const std::chrono::milliseconds m_startOfDay;

    mutable std::mutex m_lock;  // guards the rest
    std::condition_variable m_changed;
    std::unique_ptr<Brokerage> m_brokerage;
    std::unique_ptr<Exchange> m_exchange;
    std::ofstream m_tapeFile;
    std::unique_ptr<Tape> m_tape;  // null: none is wanted
    std::unique_ptr<MarketClock> m_clock;
    SimulationListener* m_listener = nullptr;
    double m_rate;
    double m_speed;
    std::deque<Happening> m_happenings;
    std::map<OrderId, std::string> m_contracts;  // of this run's orders on the exchange
    std::map<std::string, OrderId> m_ids;        // of those that aren't gone
    std::deque<std::string> m_kept;              // wait for the exchange to open
    OrderId m_cancelling = 0;                    // whose end is a client's doing
    bool m_troubled = false;
    bool m_running = false;
    std::thread m_thread;
};

}  // namespace panelry::desk
