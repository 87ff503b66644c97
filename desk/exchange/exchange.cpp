#include "desk/exchange/exchange.h"

#include <algorithm>
#include <map>
#include <utility>

#include "desk/exchange/book.h"
#include "desk/exchange/crowd.h"
#include "desk/exchange/rules.h"

namespace panelry::desk
{

namespace
{

using std::chrono::milliseconds;
using std::chrono::nanoseconds;

constexpr double kAuctionPace = 0.1;  // of the moves in the continuous phase
constexpr int kTries = 4;             // to find a move that shows
constexpr int kFirstOrders = 16;      // of the crowd, when an auction opens

bool IsAuction(Phase phase)
{
    return phase == Phase::OpeningAuction || phase == Phase::ClosingAuction;
}

bool HasBook(const Security& security)
{
    return security.kind != SecurityKind::Index && security.kind != SecurityKind::Subscription;
}

struct Instrument {
    const Security* security = nullptr;
    Quote quote;
    bool hasNews = false;  ///< in the quote, beside the book
    Book book;
    Belief belief;
};

/// What the orders that meet would be dealt at; nothing where none meet.
std::optional<Level> AuctionOf(const Instrument& instrument)
{
    const Quote& quote = instrument.quote;
    return instrument.book.AuctionPrice(quote.last > 0 ? quote.last : quote.previousClose);
}

/// An open order of a user.
struct UserOrder {
    std::size_t security = 0;
    Side side = Side::Buy;
    Price price = 0;
    Quantity rest = 0;
    bool isInBook = false;
};

}  // namespace

class Exchange::Implementation
{
public:
    Implementation(std::shared_ptr<const Listing> securities, Settings settings);

    void AdvanceTo(MarketTime time);
    std::variant<OrderId, Refusal> Submit(const NewOrder& order);
    bool Cancel(OrderId id);
    void RunToLimit(std::size_t security, Side side);
    void SetSuspended(std::size_t security, bool suspended);
    void SetRate(double changesPerSecond);
    bool Fill(OrderId id, Quantity quantity, int parts);

    const std::shared_ptr<const Listing> listing;
    std::vector<Instrument> instruments;
    ExchangeListener* listener = nullptr;
    MarketTime now;
    Phase phase = Phase::Closed;
    OrderId nextOrder = 1;
    double rate;

private:
    void OpenDay();
    void ForgetDay(Instrument& instrument) const;
    void EnterPhase(Phase next);
    void BeginAuction();
    void BeginTrade();
    void EndDay();

    void ListActive();
    void PlayCrowd(nanoseconds until);
    void PlayMove(std::size_t security);
    void Apply(std::size_t security, const Move& move);
    void ScheduleMove(nanoseconds from);
    void Press(std::size_t security);

    void Enter(std::size_t security, Side side, const BookOrder& order);
    void Uncross(std::size_t security);
    void Settle(std::size_t security);
    void Settle(OrderId id, const Trade& trade);
    static void Record(Instrument& instrument, Price price, Quantity quantity);
    void Show(std::size_t security);
    void ShowAll();
    void EndOrder(OrderId id);

    Crowd m_crowd;
    std::vector<std::size_t> m_active;      // what the crowd plays with, in the listing's order
    nanoseconds m_nextMove{-1};             // in the day; negative: none
    std::map<OrderId, UserOrder> m_orders;  // those that are open
    std::vector<OrderId> m_waiting;         // for trade to begin
    std::vector<Trade> m_trades;            // of the operation that runs
};

Exchange::Implementation::Implementation(std::shared_ptr<const Listing> securities, Settings settings)
    : listing(std::move(securities)),
      instruments(listing->securities.size()),
      now{settings.firstDay, milliseconds(0)},
      rate(settings.changesPerSecond),
      m_crowd(settings.seed)
{
    for (std::size_t i = 0; i < instruments.size(); ++i) {
        const Security& security = listing->securities[i];
        instruments[i].security = &security;
        instruments[i].quote.previousClose = security.close;
        instruments[i].quote.suspended = security.suspended;
        ForgetDay(instruments[i]);
    }
    ListActive();
}

void Exchange::Implementation::AdvanceTo(MarketTime time)
{
    while (now < time) {
        const milliseconds boundary = NextPhaseAt(now.ofDay);
        if (time < MarketTime{now.day, boundary}) {
            PlayCrowd(time.ofDay + nanoseconds(1));
            now = time;
            return;
        }
        PlayCrowd(boundary);
        now.ofDay = boundary;
        if (boundary >= std::chrono::hours(24)) {
            now = {now.day + 1, milliseconds(0)};
            OpenDay();
        } else {
            EnterPhase(PhaseAt(boundary));
        }
    }
}

void Exchange::Implementation::OpenDay()
{
    for (Instrument& instrument : instruments) {
        Quote& quote = instrument.quote;
        quote.previousClose = quote.last > 0 ? quote.last : quote.previousClose;
        quote.open = quote.high = quote.low = quote.last = 0;
        quote.volume = 0;
        quote.turnover = 0;
        instrument.book.Clear();
        ForgetDay(instrument);
    }
    ShowAll();
}

// What a day begins with, from the close before it.
void Exchange::Implementation::ForgetDay(Instrument& instrument) const
{
    Quote& quote = instrument.quote;
    const auto range = DayRange(*instrument.security, quote.previousClose);
    quote.lowerLimit = range ? range->lowest : 0;
    quote.upperLimit = range ? range->highest : 0;
    instrument.hasNews = true;
    instrument.belief = {};
}

void Exchange::Implementation::EnterPhase(Phase next)
{
    if (IsAuction(phase)) {
        for (std::size_t i = 0; i < instruments.size(); ++i) {
            Uncross(i);
        }
    }
    phase = next;
    if (listener != nullptr) {
        listener->OnPhase(next);
    }
    m_nextMove = nanoseconds(-1);
    if (IsAuction(next)) {
        BeginAuction();
    } else if (next == Phase::Continuous) {
        BeginTrade();
    } else if (next == Phase::Closed) {
        EndDay();
    }
    ShowAll();
    ScheduleMove(now.ofDay);
}

void Exchange::Implementation::BeginAuction()
{
    for (std::size_t i = 0; i < instruments.size(); ++i) {
        Instrument& instrument = instruments[i];
        if (phase == Phase::OpeningAuction) {
            const std::optional<Side> run = instrument.belief.run;
            const Price runPrice = instrument.belief.runPrice;
            instrument.belief = m_crowd.Begin(*instrument.security, instrument.quote.previousClose);
            instrument.belief.run = run;
            instrument.belief.runPrice = runPrice;
        }
        if (instrument.belief.run) {
            Press(i);
        } else if (rate > 0 && phase == Phase::OpeningAuction && HasBook(*instrument.security)) {
            for (int order = 0; order < kFirstOrders; ++order) {
                Apply(i, m_crowd.InAuction(*instrument.security, instrument.quote, instrument.belief));
            }
        }
    }
}

void Exchange::Implementation::BeginTrade()
{
    // Orders meet here that weren't dealt in an auction, as the security was suspended then.
    for (std::size_t i = 0; i < instruments.size(); ++i) {
        Uncross(i);
    }
    for (const OrderId id : std::exchange(m_waiting, {})) {
        UserOrder& order = m_orders.at(id);
        order.isInBook = true;
        Enter(order.security, order.side, {order.price, order.rest, id});
    }
    for (std::size_t i = 0; i < instruments.size(); ++i) {
        if (instruments[i].belief.run) {
            Press(i);
        }
    }
}

void Exchange::Implementation::EndDay()
{
    m_waiting.clear();
    while (!m_orders.empty()) {
        EndOrder(m_orders.begin()->first);
    }
    for (Instrument& instrument : instruments) {
        if (instrument.quote.suspended) {
            instrument.book.Clear();
        }
    }
}

void Exchange::Implementation::ListActive()
{
    m_active.clear();
    for (std::size_t i = 0; i < instruments.size(); ++i) {
        if (instruments[i].security->kind != SecurityKind::Subscription && !instruments[i].quote.suspended) {
            m_active.push_back(i);
        }
    }
}

void Exchange::Implementation::ScheduleMove(nanoseconds from)
{
    m_nextMove = nanoseconds(-1);
    if (rate > 0 && (IsAuction(phase) || phase == Phase::Continuous)) {
        m_nextMove = from + nanoseconds(m_crowd.Pause(IsAuction(phase) ? rate * kAuctionPace : rate));
    }
}

// Up to but without `until`.
void Exchange::Implementation::PlayCrowd(nanoseconds until)
{
    while (m_nextMove >= nanoseconds(0) && m_nextMove < until) {
        now.ofDay = std::chrono::duration_cast<milliseconds>(m_nextMove);
        if (!m_active.empty()) {
            PlayMove(m_active[m_crowd.Choose(m_active.size())]);
        }
        ScheduleMove(m_nextMove);
    }
}

void Exchange::Implementation::PlayMove(std::size_t security)
{
    Instrument& instrument = instruments[security];
    if (instrument.security->kind == SecurityKind::Index) {
        if (phase == Phase::Continuous) {
            Record(instrument, m_crowd.NextIndex(*instrument.security, instrument.quote, instrument.belief),
                   0);
            Show(security);
        }
        return;
    }
    if (IsAuction(phase)) {
        Apply(security, m_crowd.InAuction(*instrument.security, instrument.quote, instrument.belief));
        Show(security);
        return;
    }
    const std::int64_t before = instrument.quote.changes;
    for (int i = 0; i < kTries && instrument.quote.changes == before; ++i) {
        Apply(security,
              m_crowd.InTrade(*instrument.security, instrument.quote, instrument.book, instrument.belief));
        Show(security);
    }
}

void Exchange::Implementation::Apply(std::size_t security, const Move& move)
{
    Instrument& instrument = instruments[security];
    if (move.quantity == 0) {
        return;
    }
    if (move.takesBack) {
        instrument.book.Take(move.side, move.price, kCrowd, move.quantity);
        return;
    }
    Enter(security, move.side, {move.price, move.quantity});
    if (!instrument.belief.run) {
        instrument.book.TrimCrowd(move.side, Crowd::kMostOrders, Crowd::MostAtOnce(*instrument.security));
    }
}

// The crowd's great order at the limit, where trade or an auction lets it in.
void Exchange::Implementation::Press(std::size_t security)
{
    Instrument& instrument = instruments[security];
    const bool isOpen = IsAuction(phase) || phase == Phase::Continuous;
    if (!isOpen || instrument.quote.suspended) {
        return;
    }
    const Side side = *instrument.belief.run;
    Quantity wanted = Crowd::RunQuantity(*instrument.security);
    for (const BookOrder& order : instrument.book.Of(Opposite(side))) {
        wanted += order.rest;
    }
    Enter(security, side, {instrument.belief.runPrice, wanted});
}

std::variant<OrderId, Refusal> Exchange::Implementation::Submit(const NewOrder& order)
{
    if (order.security >= instruments.size()) {
        return Refusal{"证券代码不存在"};
    }
    const Instrument& instrument = instruments[order.security];
    std::string objection = Objection(*instrument.security, instrument.quote, phase, order);
    if (!objection.empty()) {
        return Refusal{std::move(objection)};
    }
    const OrderId id = nextOrder++;
    const bool hasBook = HasBook(*instrument.security);
    const bool waits = phase == Phase::BeforeOpen || phase == Phase::Break;
    m_orders[id] = {order.security, order.side, order.price, order.quantity, hasBook && !waits};
    if (hasBook && waits) {
        m_waiting.push_back(id);
    } else if (hasBook) {
        Enter(order.security, order.side, {order.price, order.quantity, id});
        Show(order.security);
    }
    return id;
}

bool Exchange::Implementation::Cancel(OrderId id)
{
    const auto found = m_orders.find(id);
    if (found == m_orders.end() || !CancelsAreOpen(now.ofDay)) {
        return false;
    }
    const std::size_t security = found->second.security;
    std::erase(m_waiting, id);
    EndOrder(id);
    Show(security);
    return true;
}

void Exchange::Implementation::RunToLimit(std::size_t security, Side side)
{
    Instrument& instrument = instruments[security];
    const Quote& quote = instrument.quote;
    const bool isOver = phase == Phase::Closed && now.ofDay >= std::chrono::hours(12);
    if (!HasBook(*instrument.security) || isOver) {
        return;
    }
    const Price limit = side == Side::Buy ? quote.upperLimit : quote.lowerLimit;
    const int percent = side == Side::Buy ? 110 : 90;
    instrument.belief.run = side;
    instrument.belief.runPrice =
        limit > 0 ? limit
                  : std::max(instrument.security->step,
                             OnStep(*instrument.security, quote.previousClose * percent / 100));
    Press(security);
    Show(security);
}

void Exchange::Implementation::SetSuspended(std::size_t security, bool suspended)
{
    Instrument& instrument = instruments[security];
    if (instrument.quote.suspended == suspended) {
        return;
    }
    instrument.quote.suspended = suspended;
    instrument.hasNews = true;
    ListActive();
    if (phase == Phase::Continuous) {
        Uncross(security);
    }
    if (!suspended && instrument.belief.run) {
        Press(security);
    }
    Show(security);
}

void Exchange::Implementation::SetRate(double changesPerSecond)
{
    rate = std::max(0.0, changesPerSecond);
    ScheduleMove(now.ofDay);
}

bool Exchange::Implementation::Fill(OrderId id, Quantity quantity, int parts)
{
    const auto found = m_orders.find(id);
    if (found == m_orders.end() || !found->second.isInBook || quantity <= 0 || parts <= 0) {
        return false;
    }
    const UserOrder order = found->second;
    Instrument& instrument = instruments[order.security];
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

// An order reaches the book: deals what it can where trade is on.
void Exchange::Implementation::Enter(std::size_t security, Side side, const BookOrder& order)
{
    Instrument& instrument = instruments[security];
    BookOrder rest = order;
    if (phase == Phase::Continuous && !instrument.quote.suspended) {
        rest.rest = instrument.book.Match(side, order, m_trades);
        Settle(security);
    }
    if (rest.rest > 0) {
        instrument.book.Put(side, rest);
    }
}

void Exchange::Implementation::Uncross(std::size_t security)
{
    Instrument& instrument = instruments[security];
    if (instrument.quote.suspended) {
        return;
    }
    if (const auto auction = AuctionOf(instrument)) {
        instrument.book.Uncross(*auction, m_trades);
        Settle(security);
    }
}

// Tells the deals that have been made in this security.
void Exchange::Implementation::Settle(std::size_t security)
{
    for (const Trade& trade : m_trades) {
        Record(instruments[security], trade.price, trade.quantity);
        Settle(trade.buyer, trade);
        Settle(trade.seller, trade);
    }
    m_trades.clear();
}

void Exchange::Implementation::Settle(OrderId id, const Trade& trade)
{
    if (id == kCrowd) {
        return;
    }
    UserOrder& order = m_orders.at(id);
    order.rest -= trade.quantity;
    if (order.rest == 0) {
        m_orders.erase(id);
    }
    if (listener != nullptr) {
        listener->OnDeal(id, trade.price, trade.quantity);
    }
}

void Exchange::Implementation::Record(Instrument& instrument, Price price, Quantity quantity)
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

// Puts the book into the quote, and tells if anything is new.
void Exchange::Implementation::Show(std::size_t security)
{
    Instrument& instrument = instruments[security];
    Quote& quote = instrument.quote;
    std::array<Level, 5> bids;
    std::array<Level, 5> asks;
    if (!quote.suspended) {
        const auto auction = AuctionOf(instrument);
        if (auction || IsAuction(phase)) {
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
    if (listener != nullptr) {
        listener->OnQuote(security);
    }
}

void Exchange::Implementation::ShowAll()
{
    for (std::size_t i = 0; i < instruments.size(); ++i) {
        Show(i);
    }
}

void Exchange::Implementation::EndOrder(OrderId id)
{
    const auto found = m_orders.find(id);
    const UserOrder order = found->second;
    if (order.isInBook) {
        instruments[order.security].book.Take(order.side, order.price, id, order.rest);
    }
    m_orders.erase(found);
    if (listener != nullptr) {
        listener->OnGone(id);
    }
}

Exchange::Exchange(std::shared_ptr<const Listing> listing, Settings settings)
    : m_(std::make_unique<Implementation>(std::move(listing), settings))
{
}

Exchange::~Exchange() = default;

void Exchange::SetListener(ExchangeListener* listener)
{
    m_->listener = listener;
}

MarketTime Exchange::Now() const
{
    return m_->now;
}

Phase Exchange::CurrentPhase() const
{
    return m_->phase;
}

void Exchange::AdvanceTo(MarketTime time)
{
    m_->AdvanceTo(time);
}

std::variant<OrderId, Refusal> Exchange::Submit(const NewOrder& order)
{
    return m_->Submit(order);
}

OrderId Exchange::NextOrderId() const
{
    return m_->nextOrder;
}

bool Exchange::Cancel(OrderId order)
{
    return m_->Cancel(order);
}

const Quote& Exchange::QuoteOf(std::size_t security) const
{
    return m_->instruments[security].quote;
}

const Listing& Exchange::Securities() const
{
    return *m_->listing;
}

void Exchange::RunToLimit(std::size_t security, Side side)
{
    m_->RunToLimit(security, side);
}

void Exchange::SetSuspended(std::size_t security, bool suspended)
{
    m_->SetSuspended(security, suspended);
}

void Exchange::SetRate(double changesPerSecond)
{
    m_->SetRate(changesPerSecond);
}

double Exchange::Rate() const
{
    return m_->rate;
}

bool Exchange::Fill(OrderId order, Quantity quantity, int parts)
{
    return m_->Fill(order, quantity, parts);
}

}  // namespace panelry::desk
