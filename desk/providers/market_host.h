#pragma once

#include <cstdint>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>

#include "desk/providers/faults.h"
#include "desk/providers/simulation.h"

class QuoteProvider;
class TradeProvider;

namespace panelry::desk
{

class QuoteDesk;
class TradeDesk;

/// Hears what a market's host does, for whoever writes it down.
///
/// Threading: on any of the host's threads, several at a time, also while the market is locked. It only
///   queues or writes; a call back into the host may hang.
class MarketListener
{
public:
    virtual ~MarketListener() = default;

    /// Events and their fields, texts in UTF-8, prices and money as decimal text, quantities as numbers:
    ///   "order"   what ("accepted", "refused", "dealt", "cancelled", "expired"), contract, account
    ///             ("normal", "margin", "connect"), code, market, name, side ("buy", "sell"), price,
    ///             quantity, dealt, state, and reason for a refused one
    ///   "deal"    number, contract, account, code, market, name, side, price, quantity, worth, fees
    ///   "phase"   day, time, phase
    ///   "day"     day, date
    ///   "login"   state (0, 1: told to clients; 2: lost)
    ///   "request" type, cmd, dataid, table, code, taken (false: it was turned down at once)
    ///   "setting" module, value: a client's notice of a changed setting
    ///   "trouble" problem
    virtual void OnMarketEvent(const std::string& event, const nlohmann::ordered_json& fields) = 0;
};

/// The two service objects of a host with a simulated market and accounts, and the threads on which they
/// deliver.
///
/// Ownership: owns all of it; must outlive Uninit. Threading: construction, SetListener(), Start(), Stop()
///   and the end belong to one thread, the rest is for any.
/// Failures: the constructor throws std::runtime_error for files that are no market, no accounts or not ours.
class MarketHost
{
public:
    struct Settings : Simulation::Settings {
        std::uint64_t faultSeed = 1;
    };

    explicit MarketHost(const Settings& settings);
    ~MarketHost();
    MarketHost(const MarketHost&) = delete;
    MarketHost& operator=(const MarketHost&) = delete;

    /// Before Start(); the listener must live until Stop() has returned.
    void SetListener(MarketListener* listener);
    /// The clock begins to run. Providers may be used, and attached to, before.
    void Start();
    /// Ends clock, deliveries and whatever is blocked, then lets go of all subscribers; calls fail from here
    /// on. Call it behind Uninit, or ahead of it where a provider is blocked, which would hold Uninit up.
    /// Harmless the second time.
    void Stop();

    /// As Init wants them.
    QuoteProvider* Quotes();
    TradeProvider* Trades();

    Simulation& Market() { return m_market; }
    Faults& faults() { return m_faults; }

    /// The trade side is cut off: clients are told state 2, their subscriptions are forgotten, and until
    /// LogIn() requests and subscriptions fail and nothing is pushed. Quotes go on.
    void LoseLogin();
    /// It is back: clients are told 0 and 1, on which the refresh service subscribes anew.
    void LogIn();

private:
    class Ear;

    Faults m_faults;
    Simulation m_market;
    std::unique_ptr<QuoteDesk> m_quotes;
    std::unique_ptr<TradeDesk> m_trades;
    std::unique_ptr<Ear> m_ear;
};

}  // namespace panelry::desk
