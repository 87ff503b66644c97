#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "desk/exchange/book.h"
#include "desk/exchange/exchange.h"

namespace panelry::desk
{

/// Random numbers that are the same everywhere.
class Dice
{
public:
    explicit Dice(std::uint64_t seed);

    /// 0 to `limit` - 1; 0 for a limit below 2. Limits are below 2^31.
    std::int64_t Below(std::int64_t limit);
    bool OneIn(std::int64_t count) { return Below(count) == 0; }

private:
    std::uint64_t Next();

    std::array<std::uint64_t, 4> m_state{};
};

/// What the crowd believes of one security.
struct Belief {
    Price fair = 0;           ///< wanders slowly
    Price gap = 0;            ///< from one price of the book to the next
    std::optional<Side> run;  ///< all are on this side, at `runPrice`
    Price runPrice = 0;
};

/// One thing that the crowd does: an order, or a part of its order at that price taken back.
struct Move {
    Side side = Side::Buy;
    Price price = 0;
    Quantity quantity = 0;
    bool takesBack = false;
};

/// The crowd: throws the dice for what it does next with a security. Orders are lawful: prices on the step
/// and inside the limits, quantities in lots.
///
/// Threading: as its owner. Failures: none.
class Crowd
{
public:
    static constexpr std::size_t kMostOrders = 12;  ///< on one side of a book

    explicit Crowd(std::uint64_t seed) : m_dice(seed) {}

    /// How long until the next move, in nanoseconds, at so many a second. More than 0.
    std::int64_t Pause(double movesPerSecond);
    std::size_t Choose(std::size_t count);

    [[nodiscard]] Belief Begin(const Security& security, Price previousClose);
    Move InAuction(const Security& security, const Quote& quote, Belief& belief);
    Move InTrade(const Security& security, const Quote& quote, const Book& book, Belief& belief);
    /// Where the index goes.
    Price NextIndex(const Security& security, const Quote& quote, Belief& belief);
    /// What it leaves standing behind itself at one price.
    [[nodiscard]] static Quantity MostAtOnce(const Security& security);
    /// What stands at the limit in a run.
    [[nodiscard]] static Quantity RunQuantity(const Security& security);

private:
    void Wander(const Security& security, const Quote& quote, Belief& belief);
    Side AnySide();
    Move Join(const Security& security, const Quote& quote, const Book& book, const Belief& belief,
              Side side);
    Move Deal(const Security& security, const Book& book, const Belief& belief);
    Move TakeBack(const Book& book, Side side);
    Move InRun(const Security& security, const Book& book, const Belief& belief);
    Quantity Size(const Security& security, Price price);

    Dice m_dice;
};

}  // namespace panelry::desk
