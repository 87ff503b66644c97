#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "desk/exchange/listing.h"
#include "desk/exchange/market_time.h"
#include "desk/exchange/units.h"

namespace panelry::desk
{

using OrderId = std::uint64_t;

struct Level {
    Price price = 0;
    Quantity quantity = 0;

    bool operator==(const Level&) const = default;
};

/// What everybody sees of one security.
struct Quote {
    Price previousClose = 0;
    Price open = 0;  ///< 0 until the first deal of the day, as the next three
    Price high = 0;
    Price low = 0;
    Price last = 0;
    Price upperLimit = 0;  ///< 0: no limits
    Price lowerLimit = 0;
    Quantity volume = 0;
    Money turnover = 0;
    std::array<Level, 5>
        bids;  ///< best first; price 0 where there is none. Until an auction's end the indicative price
    std::array<Level, 5> asks;  ///< stands on both first levels, as the exchanges show it
    bool suspended = false;
    std::int64_t changes = 0;  ///< counts the changes of this quote
};

/// One order of a user. A limit order, good for the day.
struct NewOrder {
    std::size_t security = 0;
    Side side = Side::Buy;
    Price price = 0;
    Quantity quantity = 0;
    Quantity held = 0;  ///< what the seller holds: an odd rest may only be sold whole
};

/// Why the exchange turned an order down, in words for a trader (Chinese).
struct Refusal {
    std::string reason;
};

/// Hears what happens, from inside the exchange's operations. Neither calls it back nor throws.
class ExchangeListener
{
public:
    virtual ~ExchangeListener() = default;

    /// The quote of a security has changed.
    virtual void OnQuote(std::size_t security) = 0;
    /// A user's order was dealt, whole or in part.
    virtual void OnDeal(OrderId order, Price price, Quantity quantity) = 0;
    /// What was left of a user's order is gone: cancelled, or the day is over.
    virtual void OnGone(OrderId order) = 0;
    virtual void OnPhase(Phase phase) = 0;
};

/// A simulated exchange: price-time matching, daily limits, lots, protected limits, auctions at the open and
/// the close, and a random crowd that trades beside the user. Everything follows from seed, times and orders
/// alone: the same give the same quotes and deals, whatever steps AdvanceTo() is called in.
///
/// A day: auctions collect orders and deal them at one price; before the open and in the break orders wait
/// out of the book; protected limits hold in the continuous phase; at 15:00 every user's order that is still
/// open is gone. A suspended security shows no book and takes no orders; when it is resumed and trade is on,
/// what meets is dealt at one price.
///
/// Shares no rule and no arithmetic with the library's order ticket.
///
/// Ownership: shares the listing. Threading: one at a time; whoever owns it guards it.
/// Failures: what an order may not do is a Refusal; indices of securities must be the listing's, but for
///   Submit().
class Exchange
{
public:
    struct Settings {
        std::uint64_t seed = 1;
        double changesPerSecond = 200;  ///< of all quotes together, in the continuous phase
        int firstDay = 1;               ///< begins at 00:00 of this day, with the closes of the listing
    };

    Exchange(std::shared_ptr<const Listing> listing, Settings settings);
    ~Exchange();
    Exchange(const Exchange&) = delete;
    Exchange& operator=(const Exchange&) = delete;

    /// Null: nobody hears. The listener must outlive the exchange, or be taken away.
    void SetListener(ExchangeListener* listener);

    [[nodiscard]] MarketTime Now() const;
    [[nodiscard]] Phase CurrentPhase() const;

    /// Plays everything up to `time`: the crowd's orders, phases, and with a new day new limits and empty
    /// books. Times that have passed are ignored.
    void AdvanceTo(MarketTime time);

    /// Takes an order in, or says why not. A taken one may have been dealt before this returns; OnDeal() then
    /// came before this does, with the id that this returns, which is NextOrderId().
    std::variant<OrderId, Refusal> Submit(const NewOrder& order);
    [[nodiscard]] OrderId NextOrderId() const;
    /// Takes what is left of an order out. False for one that is gone, or while cancels are closed (09:20 to
    /// 09:25, 14:57 to 15:00).
    bool Cancel(OrderId order);

    [[nodiscard]] const Quote& QuoteOf(std::size_t security) const;
    [[nodiscard]] const Listing& Securities() const;

    /// Scenarios. Each is part of the exchange's input like an order.
    /// The crowd buys all there is and stands at the upper limit (no limits: 10 % up) until the day ends.
    void RunToLimit(std::size_t security, Side side);
    void SetSuspended(std::size_t security, bool suspended);
    /// Changes of all quotes together a second; 0 silences the crowd.
    void SetRate(double changesPerSecond);
    [[nodiscard]] double Rate() const;
    /// Deals up to `quantity` of a user's order at its own price at once, in `parts` deals, the crowd on the
    /// other side. False for an order that isn't in the book.
    bool Fill(OrderId order, Quantity quantity, int parts = 1);

private:
    class Implementation;
    std::unique_ptr<Implementation> m_;
};

}  // namespace panelry::desk
