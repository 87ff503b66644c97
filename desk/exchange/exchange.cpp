#include "desk/exchange/exchange.h"

#include <algorithm>
#include <utility>

#include "desk/exchange/crowd.h"
#include "desk/exchange/rules.h"
#include "desk/exchange/trading_floor.h"

namespace panelry::desk
{

namespace
{

using std::chrono::milliseconds;
using std::chrono::nanoseconds;

constexpr double kAuctionPace = 0.1;  // of the moves in the continuous phase
constexpr int kTries = 4;             // to find a move that shows
constexpr int kFirstOrders = 16;      // of the crowd, when an auction opens

}  // namespace

// The day: plays phases and crowd over the trading floor.
class Exchange::Implementation
{
public:
    Implementation(std::shared_ptr<const Listing> securities, Settings settings);

    void AdvanceTo(MarketTime time);
    std::variant<OrderId, Refusal> Submit(const NewOrder& order);
    bool Cancel(OrderId id);
    void RunToLimit(std::size_t i, Side side);
    void SetSuspended(std::size_t security, bool suspended);
    void SetRate(double changesPerSecond);

    TradingFloor floor;
    MarketTime now;
    double rate;

private:
    void OpenDay();
    void EnterPhase(Phase next);
    void BeginAuction();
    void BeginTrade();

    void ListActive();
    void ScheduleMove(nanoseconds from);
    void PlayCrowd(nanoseconds until);
    void PlayMove(std::size_t i);
    void Apply(std::size_t security, const Move& move);
    void Press(std::size_t security);

    Crowd m_crowd;
    std::vector<Belief> m_beliefs;      // of the crowd, of each security
    std::vector<std::size_t> m_active;  // what the crowd plays with, in the listing's order
    nanoseconds m_nextMove{-1};         // in the day; negative: none
};

Exchange::Implementation::Implementation(std::shared_ptr<const Listing> securities, Settings settings)
    : floor(std::move(securities)),
      now{settings.firstDay, milliseconds(0)},
      rate(settings.changesPerSecond),
      m_crowd(settings.seed),
      m_beliefs(floor.Count())
{
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
    m_beliefs.assign(floor.Count(), {});
    floor.OpenDay();
}

void Exchange::Implementation::EnterPhase(Phase next)
{
    floor.EnterPhase(next);
    m_nextMove = nanoseconds(-1);
    if (IsAuction(next)) {
        BeginAuction();
    } else if (next == Phase::Continuous) {
        BeginTrade();
    } else if (next == Phase::Closed) {
        floor.EndDay();
    }
    floor.ShowAll();
    ScheduleMove(now.ofDay);
}

void Exchange::Implementation::BeginAuction()
{
    const bool opens = floor.CurrentPhase() == Phase::OpeningAuction;
    for (std::size_t i = 0; i < m_beliefs.size(); ++i) {
        const Security& security = floor.SecurityOf(i);
        Belief& belief = m_beliefs[i];
        if (opens) {
            const Belief before = belief;
            belief = m_crowd.Begin(security, floor.QuoteOf(i).previousClose);
            belief.run = before.run;
            belief.runPrice = before.runPrice;
        }
        if (belief.run) {
            Press(i);
        } else if (rate > 0 && opens && HasBook(security)) {
            for (int order = 0; order < kFirstOrders; ++order) {
                Apply(i, m_crowd.InAuction(security, floor.QuoteOf(i), belief));
            }
        }
    }
}

void Exchange::Implementation::BeginTrade()
{
    // Orders meet here that weren't dealt in an auction, as the security was suspended then.
    floor.UncrossAll();
    floor.AdmitWaiting();
    for (std::size_t i = 0; i < m_beliefs.size(); ++i) {
        if (m_beliefs[i].run) {
            Press(i);
        }
    }
}

void Exchange::Implementation::ListActive()
{
    m_active.clear();
    for (std::size_t i = 0; i < m_beliefs.size(); ++i) {
        if (floor.SecurityOf(i).kind != SecurityKind::Subscription && !floor.QuoteOf(i).suspended) {
            m_active.push_back(i);
        }
    }
}

void Exchange::Implementation::ScheduleMove(nanoseconds from)
{
    const Phase phase = floor.CurrentPhase();
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

void Exchange::Implementation::PlayMove(std::size_t i)
{
    const Security& security = floor.SecurityOf(i);
    const Quote& quote = floor.QuoteOf(i);
    Belief& belief = m_beliefs[i];
    if (security.kind == SecurityKind::Index) {
        if (floor.CurrentPhase() == Phase::Continuous) {
            floor.Tick(i, m_crowd.NextIndex(security, quote, belief));
        }
        return;
    }
    if (IsAuction(floor.CurrentPhase())) {
        Apply(i, m_crowd.InAuction(security, quote, belief));
        floor.Show(i);
        return;
    }
    const std::int64_t before = quote.changes;
    for (int tries = 0; tries < kTries && quote.changes == before; ++tries) {
        Apply(i, m_crowd.InTrade(security, quote, floor.BookOf(i), belief));
        floor.Show(i);
    }
}

void Exchange::Implementation::Apply(std::size_t security, const Move& move)
{
    if (move.quantity == 0) {
        return;
    }
    if (move.takesBack) {
        floor.TakeBack(security, move.side, move.price, move.quantity);
        return;
    }
    floor.Enter(security, move.side, {move.price, move.quantity});
    if (!m_beliefs[security].run) {
        floor.Trim(security, move.side, Crowd::kMostOrders, Crowd::MostAtOnce(floor.SecurityOf(security)));
    }
}

// The crowd's great order at the limit, where trade or an auction lets it in.
void Exchange::Implementation::Press(std::size_t security)
{
    const Phase phase = floor.CurrentPhase();
    const bool isOpen = IsAuction(phase) || phase == Phase::Continuous;
    if (!isOpen || floor.QuoteOf(security).suspended) {
        return;
    }
    const Belief& belief = m_beliefs[security];
    Quantity wanted = Crowd::RunQuantity(floor.SecurityOf(security));
    for (const BookOrder& order : floor.BookOf(security).Of(Opposite(*belief.run))) {
        wanted += order.rest;
    }
    floor.Enter(security, *belief.run, {belief.runPrice, wanted});
}

std::variant<OrderId, Refusal> Exchange::Implementation::Submit(const NewOrder& order)
{
    if (order.security >= floor.Count()) {
        return Refusal{"证券代码不存在"};
    }
    std::string objection = Objection(floor.SecurityOf(order.security), floor.QuoteOf(order.security),
                                      floor.CurrentPhase(), order);
    if (!objection.empty()) {
        return Refusal{std::move(objection)};
    }
    return floor.Submit(order);
}

bool Exchange::Implementation::Cancel(OrderId id)
{
    return CancelsAreOpen(now.ofDay) && floor.Cancel(id);
}

void Exchange::Implementation::RunToLimit(std::size_t i, Side side)
{
    const Security& security = floor.SecurityOf(i);
    const Quote& quote = floor.QuoteOf(i);
    const bool isOver = floor.CurrentPhase() == Phase::Closed && now.ofDay >= std::chrono::hours(12);
    if (!HasBook(security) || isOver) {
        return;
    }
    const Price limit = side == Side::Buy ? quote.upperLimit : quote.lowerLimit;
    const int percent = side == Side::Buy ? 110 : 90;
    m_beliefs[i].run = side;
    m_beliefs[i].runPrice =
        limit > 0 ? limit : std::max(security.step, OnStep(security, quote.previousClose * percent / 100));
    Press(i);
    floor.Show(i);
}

void Exchange::Implementation::SetSuspended(std::size_t security, bool suspended)
{
    if (floor.QuoteOf(security).suspended == suspended) {
        return;
    }
    floor.SetSuspended(security, suspended);
    ListActive();
    if (floor.CurrentPhase() == Phase::Continuous) {
        floor.Uncross(security);
    }
    if (!suspended && m_beliefs[security].run) {
        Press(security);
    }
    floor.Show(security);
}

void Exchange::Implementation::SetRate(double changesPerSecond)
{
    rate = std::max(0.0, changesPerSecond);
    ScheduleMove(now.ofDay);
}

Exchange::Exchange(std::shared_ptr<const Listing> listing, Settings settings)
    : m_(std::make_unique<Implementation>(std::move(listing), settings))
{
}

Exchange::~Exchange() = default;

void Exchange::SetListener(ExchangeListener* listener)
{
    m_->floor.SetListener(listener);
}

MarketTime Exchange::Now() const
{
    return m_->now;
}

Phase Exchange::CurrentPhase() const
{
    return m_->floor.CurrentPhase();
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
    return m_->floor.NextOrderId();
}

bool Exchange::Cancel(OrderId order)
{
    return m_->Cancel(order);
}

const Quote& Exchange::QuoteOf(std::size_t security) const
{
    return m_->floor.QuoteOf(security);
}

const Listing& Exchange::Securities() const
{
    return m_->floor.Securities();
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
    return m_->floor.Fill(order, quantity, parts);
}

}  // namespace panelry::desk
