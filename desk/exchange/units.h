#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// The numbers of the simulated market and its accounts. All are whole, so nothing is lost on the way.
namespace panelry::desk
{

using Price = std::int64_t;     ///< thousandths of a yuan (of a Hong Kong dollar for Stock Connect)
using Quantity = std::int64_t;  ///< shares, fund units or 张 (pieces) of a bond
using Money = std::int64_t;     ///< fen

enum class Side { Buy, Sell };

/// What `quantity` costs at `price`, to the fen, halves away from zero.
Money Worth(Price price, Quantity quantity);

/// Decimal text: 10250 with 2 decimals is "10.25". Digits behind `decimals` (at most 3) are cut.
std::string PriceText(Price price, int decimals);

/// Fen as yuan with two decimals: "-1234.50".
std::string MoneyText(Money money);

/// Plain decimal text ("12", "12.345") as a price; nothing for any other text, or with more than 3 decimals
/// that aren't 0.
std::optional<Price> ReadPrice(std::string_view text);

/// The same for money, with 2 decimals.
std::optional<Money> ReadMoney(std::string_view text);

/// A whole decimal number that isn't negative, or nothing.
std::optional<Quantity> ReadQuantity(std::string_view text);

}  // namespace panelry::desk
