#include "desk/providers/simulation.h"

#include <algorithm>
#include <exception>
#include <stdexcept>

namespace panelry::desk
{

namespace
{

using std::chrono::milliseconds;
using Instant = MarketClock::Instant;

constexpr milliseconds kTick(20);
constexpr milliseconds kOpeningAuction = std::chrono::hours(9) + std::chrono::minutes(15);
constexpr milliseconds kLastMoment = std::chrono::hours(24) - milliseconds(1);
constexpr double kMostChangesAtOnce = 5'000'000;

constexpr char kBroken[] = "柜台系统故障，请稍后再试";
constexpr char kNoSuchOrder[] = "没有这笔委托";
constexpr char kNotOpen[] = "该委托已成交或已撤销";
constexpr char kNotNow[] = "当前时段不能撤单";
constexpr char kNoSuchSecurity[] = "证券代码不存在";

Instant Now()
{
    return std::chrono::steady_clock::now();
}

double SecondsBetween(MarketTime from, MarketTime to)
{
    const std::chrono::duration<double> ofDay = to.ofDay - from.ofDay;
    return ofDay.count() + 86400.0 * (to.day - from.day);
}

}  // namespace

Simulation::Simulation(const Settings& settings)
    : m_listing(std::make_shared<Listing>(ReadListing(settings.listing))),
      m_startOfDay(settings.startOfDay),
      m_rate(settings.changesPerSecond),
      m_speed(settings.speed)
{
    m_brokerage = std::make_unique<Brokerage>(m_listing, ReadOpening(settings.opening, *m_listing),
                                              Brokerage::Settings{settings.store, settings.afresh});
    m_exchange = std::make_unique<Exchange>(m_listing, Exchange::Settings{settings.seed, 0});
    if (!settings.tape.empty()) {
        m_tapeFile.open(settings.tape, std::ios::binary);
        if (!m_tapeFile) {
            throw std::runtime_error(settings.tape.string() + ": can't be written");
        }
        m_tape = std::make_unique<Tape>(*m_exchange, m_tapeFile);
    }
    const std::lock_guard guard(m_lock);
    BeginAtBrokersDay();
}

Simulation::~Simulation()
{
    Stop();
    m_exchange->SetListener(nullptr);
}

void Simulation::BeginAtBrokersDay()
{
    const int today = m_brokerage->Day();
    m_exchange->AdvanceTo({today, milliseconds(0)});
    m_exchange->SetRate(m_rate);
    m_exchange->SetListener(this);
    m_clock = std::make_unique<MarketClock>(MarketTime{today, m_startOfDay}, 0, desk::Now());
    PlayTo({today, m_startOfDay});
    for (const AccountKind account : {AccountKind::Normal, AccountKind::Margin, AccountKind::Connect}) {
        for (const Order& order : m_brokerage->Orders(account, true)) {
            m_kept.push_back(order.contract);
        }
    }
    std::sort(m_kept.begin(), m_kept.end());
    PutKeptOrders();
}

void Simulation::SetListener(SimulationListener* listener)
{
    const std::lock_guard guard(m_lock);
    m_listener = listener;
}

void Simulation::Start()
{
    const std::lock_guard guard(m_lock);
    if (!std::exchange(m_running, true)) {
        m_clock->SetSpeed(m_speed, desk::Now());
        m_thread = std::thread([this] { RunClock(); });
    }
}

void Simulation::Stop()
{
    {
        const std::lock_guard guard(m_lock);
        m_running = false;
        m_clock->SetSpeed(0, desk::Now());
    }
    m_changed.notify_all();
    if (m_thread.joinable()) {
        m_thread.join();
    }
}

void Simulation::RunClock()
{
    std::unique_lock lock(m_lock);
    while (m_running) {
        PlayToNow();
        if (m_speed > 0) {
            m_changed.wait_for(lock, kTick);
        } else {
            m_changed.wait(lock);
        }
    }
}

void Simulation::PlayToNow()
{
    PlayTo(m_clock->At(desk::Now()));
}

// Day by day: the broker opens a day when all of the day before is booked.
void Simulation::PlayTo(MarketTime time)
{
    while (m_exchange->Now().day < time.day) {
        const int day = m_exchange->Now().day;
        AdvanceTo({day, kLastMoment});
        if (!OpenDay(day + 1)) {
            return;
        }
        AdvanceTo({day + 1, milliseconds(0)});
        if (m_listener) {
            m_listener->OnDay(day + 1);
        }
    }
    AdvanceTo(time);
}

bool Simulation::OpenDay(int day)
{
    return m_happenings.empty() && Try([&] {
               if (m_brokerage->Day() < day) {
                   m_brokerage->OpenDay(day);
               }
           });
}

void Simulation::AdvanceTo(MarketTime time)
{
    if (!m_kept.empty()) {
        AdvanceExchangeTo(std::min(time, MarketTime{time.day, kOpeningAuction}));
        PutKeptOrders();
    }
    AdvanceExchangeTo(time);
    Book();
}

void Simulation::AdvanceExchangeTo(MarketTime time)
{
    const double changes = SecondsBetween(m_exchange->Now(), time) * m_rate;
    const bool thin = changes > kMostChangesAtOnce;
    if (thin) {
        m_exchange->SetRate(m_rate * kMostChangesAtOnce / changes);
    }
    m_exchange->AdvanceTo(time);
    if (thin) {
        m_exchange->SetRate(m_rate);
    }
}

void Simulation::PutKeptOrders()
{
    if (m_exchange->Now().ofDay < kOpeningAuction) {
        return;
    }
    for (; !m_kept.empty(); m_kept.pop_front()) {
        const Order* const order = m_brokerage->Find(m_kept.front());
        const OrderWish& wish = order->wish;
        const Quantity held = m_brokerage->HoldingOf(wish.account, wish.security).sellable + order->Rest();
        Send(m_kept.front(), {wish.security, wish.side, wish.price, order->Rest(), held}, true);
    }
    Book();
}

Brokerage::Placed Simulation::Place(const OrderWish& wish)
{
    const std::lock_guard guard(m_lock);
    if (wish.security >= m_listing->securities.size()) {
        return {"", kNoSuchSecurity};
    }
    Book();
    const Quantity held = m_brokerage->HoldingOf(wish.account, wish.security).sellable;
    Brokerage::Placed placed;
    if (!m_happenings.empty() || !Try([&] { placed = m_brokerage->Place(wish, m_exchange->Now()); })) {
        return {"", kBroken};
    }
    if (!placed.refusal.empty()) {
        Tell(placed.contract, OrderEvent::Refused);
        return placed;
    }
    placed.refusal =
        Send(placed.contract, {wish.security, wish.side, wish.price, wish.quantity, held}, false);
    Book();
    return placed;
}

std::string Simulation::Send(const std::string& contract, const NewOrder& order, bool again)
{
    const OrderId id = m_exchange->NextOrderId();
    m_contracts[id] = contract;
    m_happenings.push_back({m_exchange->Now(), Taken{contract, id, again}});
    const auto result = m_exchange->Submit(order);
    if (const Refusal* const refusal = std::get_if<Refusal>(&result)) {
        m_happenings.back().what = TurnedDown{contract, refusal->reason, again};
        return refusal->reason;
    }
    m_ids[contract] = id;
    return {};
}

std::string Simulation::Cancel(AccountKind account, const std::string& contract)
{
    const std::lock_guard guard(m_lock);
    Book();
    if (std::string why = WhyNotOpen(account, contract); !why.empty()) {
        return why;
    }
    if (const auto kept = std::find(m_kept.begin(), m_kept.end(), contract); kept != m_kept.end()) {
        if (!Try([&] { m_brokerage->OnGone(contract); })) {
            return kBroken;
        }
        m_kept.erase(kept);
        Tell(contract, OrderEvent::Cancelled);
        return {};
    }
    m_cancelling = m_ids[contract];
    const bool done = m_exchange->Cancel(m_cancelling);
    m_cancelling = 0;
    Book();
    return done ? std::string() : kNotNow;
}

std::string Simulation::WhyNotOpen(AccountKind account, const std::string& contract) const
{
    const Order* const order = m_brokerage->Find(contract);
    if (!order || order->wish.account != account) {
        return kNoSuchOrder;
    }
    if (!m_happenings.empty()) {
        return kBroken;  // what has become of it isn't booked yet
    }
    return order->IsOpen() ? std::string() : kNotOpen;
}

MarketTime Simulation::Now() const
{
    return Read([](const Exchange& exchange, const Brokerage&) { return exchange.Now(); });
}

double Simulation::Speed() const
{
    const std::lock_guard guard(m_lock);
    return m_speed;
}

void Simulation::SetSpeed(double speed)
{
    {
        const std::lock_guard guard(m_lock);
        m_speed = speed;
        if (m_running) {
            m_clock->SetSpeed(speed, desk::Now());
        }
    }
    m_changed.notify_all();
}

void Simulation::Step(milliseconds by)
{
    const std::lock_guard guard(m_lock);
    m_clock->Step(by, desk::Now());
    PlayToNow();
}

void Simulation::MoveTo(milliseconds ofDay)
{
    const std::lock_guard guard(m_lock);
    PlayToNow();
    const MarketTime now = m_exchange->Now();
    m_clock->MoveTo({ofDay < now.ofDay ? now.day + 1 : now.day, ofDay}, desk::Now());
    PlayToNow();
}

void Simulation::Midnight()
{
    const std::lock_guard guard(m_lock);
    PlayToNow();
    m_clock->MoveTo({m_exchange->Now().day + 1, milliseconds(0)}, desk::Now());
    PlayToNow();
}

void Simulation::RunToLimit(std::size_t security, Side side)
{
    const std::lock_guard guard(m_lock);
    m_exchange->RunToLimit(security, side);
    Book();
}

void Simulation::SetSuspended(std::size_t security, bool suspended)
{
    const std::lock_guard guard(m_lock);
    m_exchange->SetSuspended(security, suspended);
    Book();
}

void Simulation::SetRate(double changesPerSecond)
{
    const std::lock_guard guard(m_lock);
    m_rate = changesPerSecond;
    m_exchange->SetRate(changesPerSecond);
}

std::string Simulation::Fill(AccountKind account, const std::string& contract, Quantity quantity, int parts)
{
    const std::lock_guard guard(m_lock);
    Book();
    if (std::string why = WhyNotOpen(account, contract); !why.empty()) {
        return why;
    }
    const auto id = m_ids.find(contract);
    const bool done = id != m_ids.end() && m_exchange->Fill(id->second, quantity, parts);
    Book();
    return done ? std::string() : kNotOpen;
}

Price Simulation::PriceOf(const Exchange& exchange, std::size_t security)
{
    const Quote& quote = exchange.QuoteOf(security);
    return quote.last != 0 ? quote.last : quote.previousClose;
}

void Simulation::OnQuote(std::size_t security)
{
    if (m_tape) {
        m_tape->OnQuote(security);
    }
    if (m_listener) {
        m_listener->OnQuote(security);
    }
}

void Simulation::OnPhase(Phase phase)
{
    if (m_tape) {
        m_tape->OnPhase(phase);
    }
    if (m_listener) {
        m_listener->OnPhase(phase, m_exchange->Now());
    }
}

void Simulation::OnDeal(OrderId order, Price price, Quantity quantity)
{
    if (m_tape) {
        m_tape->OnDeal(order, price, quantity);
    }
    m_happenings.push_back({m_exchange->Now(), Dealt{m_contracts[order], price, quantity}});
}

void Simulation::OnGone(OrderId order)
{
    if (m_tape) {
        m_tape->OnGone(order);
    }
    const std::string& contract = m_contracts[order];
    m_ids.erase(contract);
    m_happenings.push_back({m_exchange->Now(), Gone{contract, order == m_cancelling ? OrderEvent::Cancelled
                                                                                    : OrderEvent::Expired}});
}

void Simulation::Book()
{
    while (!m_happenings.empty() && Try([this] {
        std::visit([this](const auto& what) { BookOne(what, m_happenings.front().time); },
                   m_happenings.front().what);
    })) {
        m_happenings.pop_front();
    }
}

void Simulation::BookOne(const Taken& taken, MarketTime /*time*/)
{
    m_brokerage->Accept(taken.contract, taken.id);
    if (!taken.again) {
        Tell(taken.contract, OrderEvent::Accepted);
    }
}

void Simulation::BookOne(const TurnedDown& order, MarketTime /*time*/)
{
    if (order.again) {
        m_brokerage->OnGone(order.contract);
    } else {
        m_brokerage->Refuse(order.contract, order.reason);
    }
    Tell(order.contract, order.again ? OrderEvent::Expired : OrderEvent::Refused);
}

void Simulation::BookOne(const Dealt& dealt, MarketTime time)
{
    const Deal deal = m_brokerage->OnDeal(dealt.contract, dealt.price, dealt.quantity, time);
    if (m_listener) {
        m_listener->OnDeal(deal);
        Tell(dealt.contract, OrderEvent::Dealt);
    }
}

void Simulation::BookOne(const Gone& gone, MarketTime /*time*/)
{
    m_brokerage->OnGone(gone.contract);
    Tell(gone.contract, gone.event);
}

void Simulation::Tell(const std::string& contract, OrderEvent event)
{
    const Order* const order = m_brokerage->Find(contract);
    if (m_listener && order) {
        m_listener->OnOrder(*order, event);
    }
}

// Trouble is told once, until something works again.
template <typename Action>
bool Simulation::Try(Action&& action)
{
    try {
        action();
        m_troubled = false;
        return true;
    } catch (const std::exception& error) {
        if (!std::exchange(m_troubled, true) && m_listener) {
            m_listener->OnTrouble(error.what());
        }
        return false;
    }
}

}  // namespace panelry::desk
