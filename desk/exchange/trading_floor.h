#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <optional>
#include <vector>

#include "desk/exchange/book.h"
#include "desk/exchange/exchange.h"

namespace panelry::desk
{

bool IsAuction(Phase phase);
bool HasBook(const Security& security);

/// The books and quotes of all securities, and the users' open orders. Deals what meets, counts it into the
/// quotes and tells the listener; knows neither the clock nor the crowd's reasons.
///
/// Ownership: shares the listing. Threading: as its owner.
/// Failures: none; indices of securities must be the listing's, and orders lawful.
class TradingFloor
{
public:
    explicit TradingFloor(std::shared_ptr<const Listing> listing);

    void SetListener(ExchangeListener* listener) { m_listener = listener; }
    [[nodiscard]] const Listing& Securities() const { return *m_listing; }
    [[nodiscard]] std::size_t Count() const { return m_instruments.size(); }
    [[nodiscard]] const Security& SecurityOf(std::size_t security) const;
    [[nodiscard]] const Quote& QuoteOf(std::size_t security) const;
    [[nodiscard]] const Book& BookOf(std::size_t security) const;
    [[nodiscard]] Phase CurrentPhase() const { return m_phase; }

    /// A new day: yesterday's last prices are the closes, limits follow from them, books are empty.
    void OpenDay();
    /// Tells the phase that begins. What an auction has collected is dealt before.
    void EnterPhase(Phase next);
    /// Deals what meets, at one price.
    void UncrossAll();
    /// Lets the users' orders in that waited for trade to begin.
    void AdmitWaiting();
    /// All users' orders are gone, and what stood in the books of suspended securities.
    void EndDay();

    /// A user's order. It waits where the phase or the security has no book yet.
    OrderId Submit(const NewOrder& order);
    [[nodiscard]] OrderId NextOrderId() const { return m_nextOrder; }
    /// False for one that is gone.
    bool Cancel(OrderId id);
    /// See Exchange::Fill().
    bool Fill(OrderId id, Quantity quantity, int parts);

    /// An order reaches the book: deals what it can where trade is on.
    void Enter(std::size_t security, Side side, const BookOrder& order);
    /// The crowd takes back up to so much of what it has at that price.
    void TakeBack(std::size_t security, Side side, Price price, Quantity quantity);
    /// Keeps the crowd's side of a book small.
    void Trim(std::size_t security, Side side, std::size_t mostOrders, Quantity mostAtOnce);
    /// Deals what meets in one security, unless it is suspended.
    void Uncross(std::size_t security);
    void SetSuspended(std::size_t security, bool suspended);
    /// A price without a deal: an index.
    void Tick(std::size_t security, Price price);

    /// Puts the book into the quote, and tells if anything is new.
    void Show(std::size_t security);
    void ShowAll();

private:
    struct Instrument {
        const Security* security = nullptr;
        Quote quote;
        bool hasNews = false;  // in the quote, beside the book
        Book book;
    };
    // An open order of a user.
    struct UserOrder {
        std::size_t security = 0;
        Side side = Side::Buy;
        Price price = 0;
        Quantity rest = 0;
        bool isInBook = false;
    };

    static void SetLimits(Instrument& instrument);
    static void Record(Instrument& instrument, Price price, Quantity quantity);
    static std::optional<Level> AuctionOf(const Instrument& instrument);
    void Settle(std::size_t security);
    void Settle(OrderId id, const Trade& trade);
    void End(OrderId id);

    const std::shared_ptr<const Listing> m_listing;
    std::vector<Instrument> m_instruments;
    ExchangeListener* m_listener = nullptr;
    Phase m_phase = Phase::Closed;
    OrderId m_nextOrder = 1;
    std::map<OrderId, UserOrder> m_orders;  // those that are open
    std::vector<OrderId> m_waiting;         // for trade to begin
    std::vector<Trade> m_trades;            // of the operation that runs
};

}  // namespace panelry::desk
