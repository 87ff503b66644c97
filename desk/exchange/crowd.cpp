#include "desk/exchange/crowd.h"

#include <algorithm>
#include <bit>
#include <cmath>

#include "desk/exchange/rules.h"

namespace panelry::desk
{

namespace
{

constexpr Price kOrderWorth = 100'000'000;  // of a big ordinary order, in thousandths of a yuan
constexpr std::size_t kLevels = 5;

std::size_t LevelCount(const std::array<Level, 5>& levels)
{
    return static_cast<std::size_t>(
        std::count_if(levels.begin(), levels.end(), [](const Level& level) { return level.price > 0; }));
}

Price HeldInside(const Security& security, const Quote& quote, Price price)
{
    const Price lowest = std::max(quote.lowerLimit, security.step);
    const Price held = std::max(lowest, OnStep(security, price));
    return quote.upperLimit > 0 ? std::min(held, quote.upperLimit) : held;
}

/// How many lots a big ordinary order has.
Quantity ManyLots(const Security& security, Price price)
{
    return std::clamp<Quantity>(kOrderWorth / std::max<Price>(1, price * security.lot), 2, 2000);
}

}  // namespace

Dice::Dice(std::uint64_t seed)
{
    for (std::uint64_t& word : m_state) {
        seed += 0x9e3779b97f4a7c15;
        word = (seed ^ (seed >> 30)) * 0xbf58476d1ce4e5b9;
        word = (word ^ (word >> 27)) * 0x94d049bb133111eb;
        word ^= word >> 31;
    }
}

std::uint64_t Dice::Next()
{
    const std::uint64_t result = std::rotl(m_state[1] * 5, 7) * 9;
    const std::uint64_t shifted = m_state[1] << 17;
    m_state[2] ^= m_state[0];
    m_state[3] ^= m_state[1];
    m_state[1] ^= m_state[2];
    m_state[0] ^= m_state[3];
    m_state[2] ^= shifted;
    m_state[3] = std::rotl(m_state[3], 45);
    return result;
}

std::int64_t Dice::Below(std::int64_t limit)
{
    if (limit < 2) {
        return 0;
    }
    return static_cast<std::int64_t>((Next() >> 32) * static_cast<std::uint64_t>(limit) >> 32);
}

std::int64_t Crowd::Pause(double movesPerSecond)
{
    // Evenly spread up to twice the mean, in units that keep the dice inside their range.
    const auto mean = static_cast<std::int64_t>(std::llround(std::min(1e9 / movesPerSecond, 1e18)));
    constexpr std::int64_t kParts = 1 << 20;
    return 1 +
           static_cast<std::int64_t>(static_cast<double>(mean) * 2 *
                                     static_cast<double>(m_dice.Below(kParts)) / static_cast<double>(kParts));
}

std::size_t Crowd::Choose(std::size_t count)
{
    return static_cast<std::size_t>(m_dice.Below(static_cast<std::int64_t>(count)));
}

Belief Crowd::Begin(const Security& security, Price previousClose)
{
    Belief belief;
    const Price shift = previousClose * (m_dice.Below(201) - 100) / 10'000;
    belief.fair = std::max(security.step, OnStep(security, previousClose + shift));
    belief.gap = std::max(security.step, OnStep(security, previousClose / 4000));
    return belief;
}

Quantity Crowd::MostAtOnce(const Security& security)
{
    return std::max(security.minimum, 4 * security.lot * ManyLots(security, security.close));
}

Quantity Crowd::RunQuantity(const Security& security)
{
    return 50 * security.lot * ManyLots(security, security.close);
}

Quantity Crowd::Size(const Security& security, Price price)
{
    const Quantity many = ManyLots(security, price);
    const Quantity lots = m_dice.Below(m_dice.OneIn(8) ? many : std::max<Quantity>(2, many / 8));
    return std::min(security.minimum + lots * security.lot, security.maximum);
}

void Crowd::Wander(const Security& security, const Quote& quote, Belief& belief)
{
    if (!m_dice.OneIn(4)) {
        return;
    }
    const int percent = security.limitPercent == 0 ? 20 : security.limitPercent;
    const Price band = quote.previousClose * percent / 200;
    Price direction = m_dice.Below(3) - 1;
    if (belief.fair > quote.previousClose + band) {
        direction = std::min<Price>(direction, 0);
    } else if (belief.fair < quote.previousClose - band) {
        direction = std::max<Price>(direction, 0);
    }
    belief.fair = HeldInside(security, quote, belief.fair + direction * belief.gap);
}

Move Crowd::InAuction(const Security& security, const Quote& quote, Belief& belief)
{
    if (belief.run) {
        return {*belief.run, belief.runPrice, Size(security, belief.runPrice)};
    }
    Wander(security, quote, belief);
    const Side side = AnySide();
    const Price eager = m_dice.Below(8) - 5;
    const Price price = belief.fair + (side == Side::Buy ? eager : -eager) * belief.gap;
    return {side, HeldInside(security, quote, price), Size(security, price)};
}

Move Crowd::InTrade(const Security& security, const Quote& quote, const Book& book, Belief& belief)
{
    if (belief.run) {
        return InRun(security, book, belief);
    }
    Wander(security, quote, belief);
    const Price ask = book.Best(Side::Sell);
    const bool isStale = (ask > 0 && ask < belief.fair) || book.Best(Side::Buy) > belief.fair;
    if (isStale && m_dice.OneIn(2)) {
        return Deal(security, book, belief);
    }
    const std::size_t bids = LevelCount(quote.bids);
    const std::size_t asks = LevelCount(quote.asks);
    const std::int64_t choice = m_dice.Below(10);
    if (choice < 4 || (std::min(bids, asks) < kLevels && choice < 8)) {
        const Side thin = bids < asks ? Side::Buy : Side::Sell;
        return Join(security, quote, book, belief, bids == asks ? AnySide() : thin);
    }
    return choice < 6 ? TakeBack(book, AnySide()) : Deal(security, book, belief);
}

Side Crowd::AnySide()
{
    return m_dice.OneIn(2) ? Side::Buy : Side::Sell;
}

// An order somewhere among the best prices. It doesn't deal, unless it can't stand anywhere else.
Move Crowd::Join(const Security& security, const Quote& quote, const Book& book, const Belief& belief,
                 Side side)
{
    const Price away = (1 + m_dice.Below(8)) * belief.gap;
    const Price price = HeldInside(security, quote, belief.fair + (side == Side::Buy ? -away : away));
    const Price other = book.Best(Opposite(side));
    if (other > 0 && (side == Side::Buy ? price >= other : price <= other)) {
        return Deal(security, book, belief);
    }
    return {side, price, Size(security, price)};
}

// Takes what stands on the wrong side of the fair price, else of either side.
Move Crowd::Deal(const Security& security, const Book& book, const Belief& belief)
{
    const Price bid = book.Best(Side::Buy);
    const Price ask = book.Best(Side::Sell);
    Side side = AnySide();
    if (ask > 0 && ask < belief.fair) {
        side = Side::Buy;
    } else if (bid > belief.fair) {
        side = Side::Sell;
    }
    const Price price = side == Side::Buy ? ask : bid;
    if (price == 0) {
        return TakeBack(book, side);
    }
    return {side, price, Size(security, price)};
}

Move Crowd::TakeBack(const Book& book, Side side)
{
    const Book::Orders& orders = book.Of(side);
    const std::size_t place = Choose(std::min(orders.size(), kLevels));
    if (place >= orders.size() || orders[place].owner != kCrowd) {
        return {};
    }
    return {side, orders[place].price, orders[place].rest, true};
}

// Little deals at the limit out of what waits there, which never ends.
Move Crowd::InRun(const Security& security, const Book& book, const Belief& belief)
{
    const Side side = *belief.run;
    const Quantity size = Size(security, belief.runPrice);
    Quantity waiting = 0;  // users' orders too: they have their turn
    for (const BookOrder& order : book.Of(side)) {
        waiting += order.price == belief.runPrice ? order.rest : 0;
    }
    const bool isShort = waiting < RunQuantity(security) / 2;
    if (isShort || m_dice.OneIn(2)) {
        return {side, belief.runPrice, size};
    }
    return {Opposite(side), belief.runPrice, size};
}

Price Crowd::NextIndex(const Security& security, const Quote& quote, Belief& belief)
{
    const Price way = m_dice.Below(2) == 0 ? -1 : 1;
    const Price pull = belief.fair > quote.previousClose * 103 / 100  ? -1
                       : belief.fair < quote.previousClose * 97 / 100 ? 1
                                                                      : way;
    belief.fair = std::max(security.step, belief.fair + pull * security.step * (1 + m_dice.Below(30)));
    return belief.fair;
}

}  // namespace panelry::desk
