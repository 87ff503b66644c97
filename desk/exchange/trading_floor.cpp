#include "desk/exchange/trading_floor.h"

#include <algorithm>
#include <utility>

#include "desk/exchange/rules.h"

namespace panelry::desk
{

bool IsAuction(Phase phase)
{
    return phase == Phase::OpeningAuction || phase == Phase::ClosingAuction;
}

bool HasBook(const Security& security)
{
    return security.kind != SecurityKind::Index && security.kind != SecurityKind::Subscription;
}

TradingFloor::TradingFloor(std::shared_ptr<const Listing> listing)
    : m_listing(std::move(listing)), m_instruments(m_listing->securities.size())
{
    for (std::size_t i = 0; i < m_instruments.size(); ++i) {
        const Security& security = m_listing->securities[i];
        m_instruments[i].security = &security;
        m_instruments[i].quote.previousClose = security.close;
        m_instruments[i].quote.suspended = security.suspended;
        SetLimits(m_instruments[i]);
    }
}

const Security& TradingFloor::SecurityOf(std::size_t security) const
{
    return *m_instruments[security].security;
}

const Quote& TradingFloor::QuoteOf(std::size_t security) const
{
    return m_instruments[security].quote;
}

const Book& TradingFloor::BookOf(std::size_t security) const
{
    return m_instruments[security].book;
}

void TradingFloor::OpenDay()
{
    for (Instrument& instrument : m_instruments) {
        Quote& quote = instrument.quote;
        quote.previousClose = quote.last > 0 ? quote.last : quote.previousClose;
        quote.open = quote.high = quote.low = quote.last = 0;
        quote.volume = 0;
        quote.turnover = 0;
        instrument.book.Clear();
        SetLimits(instrument);
    }
    ShowAll();
}

void TradingFloor::SetLimits(Instrument& instrument)
{
    Quote& quote = instrument.quote;
    const auto range = DayRange(*instrument.security, quote.previousClose);
    quote.lowerLimit = range ? range->lowest : 0;
    quote.upperLimit = range ? range->highest : 0;
    instrument.hasNews = true;
}

void TradingFloor::EnterPhase(Phase next)
{
    if (IsAuction(m_phase)) {
        UncrossAll();
    }
    m_phase = next;
    if (m_listener != nullptr) {
        m_listener->OnPhase(next);
    }
}

void TradingFloor::UncrossAll()
{
    for (std::size_t i = 0; i < m_instruments.size(); ++i) {
        Uncross(i);
    }
}

void TradingFloor::AdmitWaiting()
{
    for (const OrderId id : std::exchange(m_waiting, {})) {
        UserOrder& order = m_orders.at(id);
        order.isInBook = true;
        Enter(order.security, order.side, {order.price, order.rest, id});
    }
}

void TradingFloor::EndDay()
{
    m_waiting.clear();
    while (!m_orders.empty()) {
        End(m_orders.begin()->first);
    }
    for (Instrument& instrument : m_instruments) {
        if (instrument.quote.suspended) {
            instrument.book.Clear();
        }
    }
}

OrderId TradingFloor::Submit(const NewOrder& order)
{
    const OrderId id = m_nextOrder++;
    const bool hasBook = HasBook(SecurityOf(order.security));
    const bool waits = m_phase == Phase::BeforeOpen || m_phase == Phase::Break;
    m_orders[id] = {order.security, order.side, order.price, order.quantity, hasBook && !waits};
    if (hasBook && waits) {
        m_waiting.push_back(id);
    } else if (hasBook) {
        Enter(order.security, order.side, {order.price, order.quantity, id});
        Show(order.security);
    }
    return id;
}

bool TradingFloor::Cancel(OrderId id)
{
    const auto found = m_orders.find(id);
    if (found == m_orders.end()) {
        return false;
    }
    const std::size_t security = found->second.security;
    std::erase(m_waiting, id);
    End(id);
    Show(security);
    return true;
}

void TradingFloor::End(OrderId id)
{
    const auto found = m_orders.find(id);
    const UserOrder order = found->second;
    if (order.isInBook) {
        m_instruments[order.security].book.Take(order.side, order.price, id, order.rest);
    }
    m_orders.erase(found);
    if (m_listener != nullptr) {
        m_listener->OnGone(id);
    }
}

bool TradingFloor::Fill(OrderId id, Quantity quantity, int parts)
{
    const auto found = m_orders.find(id);
    if (found == m_orders.end() || !found->second.isInBook || quantity <= 0 || parts <= 0) {
        return false;
    }
    const UserOrder order = found->second;
    Instrument& instrument = m_instruments[order.security];
    // In whole lots, where there are enough of them to go round.
    const Quantity total = std::min(quantity, order.rest);
    const Quantity lot = instrument.security->lot;
    const Quantity unit = total % lot == 0 && total / lot >= parts ? lot : 1;
    const Quantity units = total / unit;
    for (Quantity part = 0; part < parts; ++part) {
        const Quantity share = (units / parts + (part < units % parts ? 1 : 0)) * unit;
        if (share == 0) {
            break;
        }
        instrument.book.Take(order.side, order.price, id, share);
        m_trades.push_back(order.side == Side::Buy ? Trade{order.price, share, id, kCrowd}
                                                   : Trade{order.price, share, kCrowd, id});
        Settle(order.security);
        Show(order.security);
    }
    return true;
}

void TradingFloor::Enter(std::size_t security, Side side, const BookOrder& order)
{
    Instrument& instrument = m_instruments[security];
    BookOrder rest = order;
    if (m_phase == Phase::Continuous && !instrument.quote.suspended) {
        rest.rest = instrument.book.Match(side, order, m_trades);
        Settle(security);
    }
    if (rest.rest > 0) {
        instrument.book.Put(side, rest);
    }
}

void TradingFloor::TakeBack(std::size_t security, Side side, Price price, Quantity quantity)
{
    m_instruments[security].book.Take(side, price, kCrowd, quantity);
}

void TradingFloor::Trim(std::size_t security, Side side, std::size_t mostOrders, Quantity mostAtOnce)
{
    m_instruments[security].book.TrimCrowd(side, mostOrders, mostAtOnce);
}

void TradingFloor::Uncross(std::size_t security)
{
    Instrument& instrument = m_instruments[security];
    if (instrument.quote.suspended) {
        return;
    }
    if (const auto auction = AuctionOf(instrument)) {
        instrument.book.Uncross(*auction, m_trades);
        Settle(security);
    }
}

// What the orders that meet would be dealt at; nothing where none meet.
std::optional<Level> TradingFloor::AuctionOf(const Instrument& instrument)
{
    const Quote& quote = instrument.quote;
    return instrument.book.AuctionPrice(quote.last > 0 ? quote.last : quote.previousClose);
}

// Tells the deals that have been made in this security.
void TradingFloor::Settle(std::size_t security)
{
    for (const Trade& trade : m_trades) {
        Record(m_instruments[security], trade.price, trade.quantity);
        Settle(trade.buyer, trade);
        Settle(trade.seller, trade);
    }
    m_trades.clear();
}

void TradingFloor::Settle(OrderId id, const Trade& trade)
{
    if (id == kCrowd) {
        return;
    }
    UserOrder& order = m_orders.at(id);
    order.rest -= trade.quantity;
    if (order.rest == 0) {
        m_orders.erase(id);
    }
    if (m_listener != nullptr) {
        m_listener->OnDeal(id, trade.price, trade.quantity);
    }
}

void TradingFloor::Record(Instrument& instrument, Price price, Quantity quantity)
{
    Quote& quote = instrument.quote;
    const bool isFirst = quote.open == 0;
    quote.open = isFirst ? price : quote.open;
    quote.high = isFirst ? price : std::max(quote.high, price);
    quote.low = isFirst ? price : std::min(quote.low, price);
    quote.last = price;
    quote.volume += quantity;
    quote.turnover += Worth(price, quantity);
    instrument.hasNews = true;
}

void TradingFloor::Tick(std::size_t security, Price price)
{
    Record(m_instruments[security], price, 0);
    Show(security);
}

void TradingFloor::SetSuspended(std::size_t security, bool suspended)
{
    m_instruments[security].quote.suspended = suspended;
    m_instruments[security].hasNews = true;
}

void TradingFloor::Show(std::size_t security)
{
    Instrument& instrument = m_instruments[security];
    Quote& quote = instrument.quote;
    std::array<Level, 5> bids;
    std::array<Level, 5> asks;
    if (!quote.suspended) {
        const auto auction = AuctionOf(instrument);
        if (auction || IsAuction(m_phase)) {
            bids[0] = asks[0] = auction.value_or(Level{});
        } else {
            bids = instrument.book.Levels(Side::Buy);
            asks = instrument.book.Levels(Side::Sell);
        }
    }
    if (!instrument.hasNews && bids == quote.bids && asks == quote.asks) {
        return;
    }
    instrument.hasNews = false;
    quote.bids = bids;
    quote.asks = asks;
    ++quote.changes;
    if (m_listener != nullptr) {
        m_listener->OnQuote(security);
    }
}

void TradingFloor::ShowAll()
{
    for (std::size_t i = 0; i < m_instruments.size(); ++i) {
        Show(i);
    }
}

}  // namespace panelry::desk
