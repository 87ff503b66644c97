#include "desk/exchange/units.h"

#include <algorithm>

namespace panelry::desk
{

namespace
{

constexpr std::size_t kMostDigits = 15;  // so that nothing overflows, decimals included

bool IsDigits(std::string_view text)
{
    return !text.empty() &&
           std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

std::int64_t Number(std::string_view digits)
{
    std::int64_t number = 0;
    for (const char digit : digits) {
        number = number * 10 + (digit - '0');
    }
    return number;
}

/// Digits with a point, as a whole number of units of the last of `decimals` places.
std::optional<std::int64_t> ReadScaled(std::string_view text, std::size_t decimals)
{
    const std::size_t point = text.find('.');
    const std::string_view whole = text.substr(0, point);
    std::string_view part = point == std::string_view::npos ? "0" : text.substr(point + 1);
    if (!IsDigits(whole) || !IsDigits(part) || whole.size() > kMostDigits - decimals) {
        return std::nullopt;
    }
    if (part.size() > decimals) {
        if (part.find_first_not_of('0', decimals) != std::string_view::npos) {
            return std::nullopt;
        }
        part = part.substr(0, decimals);
    }
    std::string digits(whole);
    digits += part;
    digits.append(decimals - part.size(), '0');
    return Number(digits);
}

/// `number` units of the last of `decimals` places.
std::string ScaledText(std::int64_t number, std::size_t decimals)
{
    const bool isNegative = number < 0;
    std::string text = std::to_string(number);
    text.erase(0, isNegative ? 1 : 0);
    if (text.size() <= decimals) {
        text.insert(0, decimals + 1 - text.size(), '0');
    }
    if (decimals > 0) {
        text.insert(text.size() - decimals, ".");
    }
    return isNegative ? "-" + text : text;
}

}  // namespace

Money Worth(Price price, Quantity quantity)
{
    const std::int64_t thousandths = price * quantity;
    return (thousandths + (thousandths < 0 ? -5 : 5)) / 10;
}

std::string PriceText(Price price, int decimals)
{
    Price unit = 1;
    for (int place = std::clamp(decimals, 0, 3); place < 3; ++place) {
        unit *= 10;
    }
    return ScaledText(price / unit, static_cast<std::size_t>(std::clamp(decimals, 0, 3)));
}

std::string MoneyText(Money money)
{
    return ScaledText(money, 2);
}

std::optional<Price> ReadPrice(std::string_view text)
{
    return ReadScaled(text, 3);
}

std::optional<Money> ReadMoney(std::string_view text)
{
    return ReadScaled(text, 2);
}

std::optional<Quantity> ReadQuantity(std::string_view text)
{
    if (!IsDigits(text) || text.size() > kMostDigits) {
        return std::nullopt;
    }
    return Number(text);
}

}  // namespace panelry::desk
