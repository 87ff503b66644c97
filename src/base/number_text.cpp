#include "base/number_text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <stdexcept>
#include <system_error>

namespace panelry
{

namespace
{

constexpr int kHexadecimal = 16;

bool IsDigit(char letter)
{
    return letter >= '0' && letter <= '9';
}

// The text from its first letter on that isn't blank.
std::string_view WithoutBlanks(std::string_view text)
{
    if (!text.empty() && IsDigit(text.front())) {
        return text;
    }
    const std::size_t start = text.find_first_not_of(" \t\n\v\f\r");
    return start == std::string_view::npos ? std::string_view() : text.substr(start);
}

// Takes a sign off the front; true for a minus.
bool TakeSign(std::string_view& text)
{
    const bool negative = text.starts_with('-');
    if (negative || text.starts_with('+')) {
        text.remove_prefix(1);
    }
    return negative;
}

template <class Whole>
Whole ReadWhole(std::string_view text)
{
    text = WithoutBlanks(text);
    const bool negative = text.starts_with('-');
    if (text.starts_with('+') && !text.substr(1).starts_with('-')) {
        text.remove_prefix(1);
    }
    Whole number = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
    if (result.ec == std::errc::result_out_of_range) {
        return negative ? std::numeric_limits<Whole>::min() : std::numeric_limits<Whole>::max();
    }
    return number;
}

bool StartsDecimal(std::string_view text)
{
    const std::string_view digits = text.starts_with('.') ? text.substr(1) : text;
    return !digits.empty() && IsDigit(digits.front());
}

// Plain digits with a point or without, few enough that whole number and power of ten are both exact: then one
// division gives the nearest double. False for all else.
bool ReadShort(std::string_view text, double& number)
{
    constexpr std::size_t kMostLetters = 16;  // with the point
    static constexpr double kPowers[] = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                         1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};
    if (text.size() > kMostLetters) {
        return false;
    }
    std::int64_t whole = 0;
    std::size_t point = text.size();
    for (std::size_t place = 0; place < text.size(); ++place) {
        if (IsDigit(text[place])) {
            whole = whole * 10 + (text[place] - '0');
        } else if (text[place] == '.' && point == text.size()) {
            point = place;
        } else {
            return false;
        }
    }
    const std::size_t decimals = text.size() - std::min(point + 1, text.size());
    if (text.size() == kMostLetters && decimals == 0) {
        return false;
    }
    number = static_cast<double>(whole) / kPowers[decimals];
    return true;
}

// Is a decimal number that no double can hold too small rather than too large?
bool IsTiny(std::string_view text)
{
    const std::size_t end = std::min(text.find_first_of("eE"), text.size());
    const std::string_view digits = text.substr(0, end);
    const std::int64_t exponent = end < text.size() ? ReadWhole<std::int64_t>(text.substr(end + 1)) : 0;
    const auto point = static_cast<std::int64_t>(std::min(digits.find('.'), digits.size()));
    const auto first = static_cast<std::int64_t>(digits.find_first_of("123456789"));
    return exponent < first - point;
}

// Numbers of the size of prices, much faster: scaled to a whole number, which is right unless the exact value
// lies about halfway between two. False where that can't be told.
bool AssignShort(std::string& text, double number, int decimals)
{
    constexpr int kMostShortDecimals = 6;
    constexpr double kMostScaled = 1e15;       // well below where doubles lose the ones
    constexpr double kSurelyNotHalf = 0.4999;  // from the nearest whole number
    static constexpr double kScales[] = {1e0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6};
    if (decimals > kMostShortDecimals) {
        return false;
    }
    const double scale = kScales[decimals];
    const double size = std::fabs(number);
    const double scaled = size * scale;
    if (!(scaled < kMostScaled)) {
        return false;
    }
    // Checked below, unlike what lround would give, and faster.
    auto whole = static_cast<std::int64_t>(scaled + 0.5);  // NOLINT(bugprone-incorrect-roundings)
    const double lost = std::fma(size, scale, -scaled);    // what the product's rounding took away, exactly
    if (std::fabs((scaled - static_cast<double>(whole)) + lost) > kSurelyNotHalf) {
        return false;
    }
    char letters[32];
    char* const end = letters + sizeof letters;
    char* letter = end;
    for (int digit = 0; digit <= decimals || whole > 0; ++digit, whole /= 10) {
        if (digit == decimals && decimals > 0) {
            *--letter = '.';
        }
        *--letter = static_cast<char>('0' + whole % 10);
    }
    if (std::signbit(number)) {
        *--letter = '-';
    }
    text.assign(letter, end);
    return true;
}

}  // namespace

int TextToInt(std::string_view text)
{
    return ReadWhole<int>(text);
}

std::int64_t TextToInt64(std::string_view text)
{
    return ReadWhole<std::int64_t>(text);
}

double TextToDouble(std::string_view text)
{
    text = WithoutBlanks(text);
    const bool negative = TakeSign(text);
    if (!StartsDecimal(text)) {
        return 0.0;
    }
    double number = 0.0;
    if (ReadShort(text, number)) {
        return negative ? -number : number;
    }
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
    if (result.ec == std::errc::result_out_of_range) {
        const std::string_view taken(text.data(), static_cast<std::size_t>(result.ptr - text.data()));
        number = IsTiny(taken) ? 0.0 : std::numeric_limits<double>::max();
    }
    return negative ? -number : number;
}

std::uint64_t HexTextToInt(std::string_view text)
{
    text = WithoutBlanks(text);
    if (text.starts_with("0x") || text.starts_with("0X")) {
        text.remove_prefix(2);
    }
    std::uint64_t number = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number, kHexadecimal);
    return result.ec == std::errc::result_out_of_range ? std::numeric_limits<std::uint64_t>::max() : number;
}

std::uint64_t TextToUnsignedOrThrow(std::string_view text)
{
    text = WithoutBlanks(text);
    const bool negative = TakeSign(text);
    std::uint64_t number = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
    if (result.ec == std::errc::invalid_argument) {
        throw std::invalid_argument("invalid stoul argument");
    }
    if (result.ec == std::errc::result_out_of_range) {
        throw std::out_of_range("stoul argument out of range");
    }
    return negative ? 0 - number : number;
}

void AssignFixedText(std::string& text, double number, int decimals)
{
    decimals = std::clamp(decimals, 0, kMostDecimals);
    if (AssignShort(text, number, decimals)) {
        return;
    }
    // The longest double has 309 digits before the point.
    constexpr std::size_t kMostLetters = 340;
    char letters[kMostLetters];
    const auto result =
        std::to_chars(letters, letters + kMostLetters, number, std::chars_format::fixed, decimals);
    text.assign(letters, result.ptr);
}

std::string FixedText(double number, int decimals)
{
    std::string text;
    AssignFixedText(text, number, decimals);
    return text;
}

void AssignIntText(std::string& text, std::int64_t number)
{
    char letters[std::numeric_limits<std::int64_t>::digits10 + 3];
    const auto result = std::to_chars(letters, letters + sizeof letters, number);
    text.assign(letters, result.ptr);
}

std::string IntText(std::int64_t number)
{
    std::string text;
    AssignIntText(text, number);
    return text;
}

}  // namespace panelry
