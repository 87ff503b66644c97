#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "desk/accounts/account.h"
#include "desk/accounts/opening.h"

namespace panelry::desk
{

/// The desk's broker: three accounts, their orders, deals and holdings, in one SQLite file. Every operation
/// that changes something is one transaction: after a kill at any moment the file holds the state before or
/// behind it. What is asked is answered from memory.
///
/// The life of an order: Place() freezes cash or shares; the exchange is asked; then Accept() or Refuse().
/// Deals come through OnDeal(), the end of the rest through OnGone(). All of them identify an order by its
/// contract number. Orders that were open when the desk ended are open again: whoever starts it gives them to
/// the exchange once more and calls Accept(), or OnGone().
///
/// Ownership: owns the file; one broker a file (a second one fails). Threading: one at a time; the owner
/// guards it.
/// Failures: the constructor and every change throw std::runtime_error where the file can't be written or is
///   none of ours, std::logic_error where the caller breaks the order of events: a contract that isn't open
///   today, a deal of more than its rest or at a worse price than its own. The state in memory is then as before.
class Brokerage
{
public:
    struct Settings {
        std::filesystem::path file;  ///< empty: in memory, nothing is kept
        bool afresh = false;         ///< forget what the file holds and begin with the opening
    };
    using PriceOf = std::function<Price(std::size_t security)>;

    /// A file that was begun goes on with its own opening, rates included; this one is for a new or afresh
    /// one.
    Brokerage(std::shared_ptr<const Listing> listing, const Opening& opening, const Settings& settings);
    ~Brokerage();
    Brokerage(const Brokerage&) = delete;
    Brokerage& operator=(const Brokerage&) = delete;

    /// The market day of the accounts; 1 when they are new.
    [[nodiscard]] int Day() const;
    /// Begins day `day`, which is later than Day(): open orders end, what was bought can be sold, what was
    /// sold for can be withdrawn. Orders and deals of earlier days stay in the history.
    void OpenDay(int day);

    /// Freezes what the order needs and gives its contract number, or the broker's reason (UTF-8, for
    /// traders) and keeps the refused order, too, under a contract number of its own ("废单"). Of `time` the
    /// time of day counts, here and in OnDeal(): the day is Day().
    struct Placed {
        std::string contract;
        std::string refusal;  ///< empty: placed
    };
    Placed Place(const OrderWish& wish, MarketTime time);
    /// The exchange has taken the order under this id. Call it before the first OnDeal() (the exchange's
    /// NextOrderId() tells the id ahead).
    void Accept(const std::string& contract, OrderId exchangeOrder);
    /// The exchange has turned it down: what was frozen is free again.
    void Refuse(const std::string& contract, const std::string& reason);
    /// The deal as it is booked.
    Deal OnDeal(const std::string& contract, Price price, Quantity quantity, MarketTime time);
    /// Nothing more will be dealt of it; what is still frozen is free again.
    void OnGone(const std::string& contract);

    /// By the id on the exchange, for those of today; null for none. Good until the next change.
    [[nodiscard]] const Order* FindByExchangeOrder(OrderId order) const;
    /// One of today's, too.
    [[nodiscard]] const Order* Find(const std::string& contract) const;

    /// Today's orders in the order in which they came; `onlyOpen`: those that can be cancelled.
    [[nodiscard]] std::vector<Order> Orders(AccountKind account, bool onlyOpen = false) const;
    /// Today's deals, or with a range those of these days, both included.
    [[nodiscard]] std::vector<Deal> Deals(AccountKind account) const;
    [[nodiscard]] std::vector<Deal> DealsBetween(AccountKind account, int firstDay, int lastDay) const;
    [[nodiscard]] std::vector<Holding> Holdings(AccountKind account) const;
    [[nodiscard]] Holding HoldingOf(AccountKind account, std::size_t security) const;
    [[nodiscard]] Funds FundsOf(AccountKind account, const PriceOf& priceOf) const;
    /// How many can be bought at `price` with what is available, fees included, in whole lots.
    [[nodiscard]] Quantity Buyable(AccountKind account, std::size_t security, Price price,
                                   Funding funding) const;

    /// With what the file began.
    [[nodiscard]] const Opening& Started() const;

    /// Adds every cent and every share up again from opening, deals and open orders, and compares with what
    /// stands in memory and in the file. Empty: all agrees; else what doesn't, in words.
    [[nodiscard]] std::string Audit() const;

private:
    class Implementation;
    std::unique_ptr<Implementation> m_;
};

}  // namespace panelry::desk
