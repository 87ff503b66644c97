#pragma once

#include <cstdint>
#include <string>
#include <string_view>

/// Numbers from text and text from numbers, the only ones in the system: none of them looks at the locale,
/// which the toolkit switches to the user's, decimal comma included.
///
/// What all readers share: leading blanks (space, \t \n \v \f \r) are skipped, one sign is taken, the longest
/// number that follows counts and the rest is ignored; a text without a number yields 0, and a number that
/// doesn't fit the nearest that does.
namespace panelry
{

/// A whole number: digits. "3.9" is 3, "1e3" is 1, "0x10" is 0.
int TextToInt(std::string_view text);
std::int64_t TextToInt64(std::string_view text);

/// A decimal number: digits with a point before, within or behind them, then an exponent that has digits:
/// "-1.5", ".5", "5." and "1e3" are numbers; of "1e" the 1 counts. Hexadecimal numbers, "inf" and "nan" are
/// none, so "0x10" is 0. Finite always.
double TextToDouble(std::string_view text);

/// Hexadecimal digits, with or without "0x" before them: "21" is 33. No sign.
std::uint64_t HexTextToInt(std::string_view text);

/// A whole number without a sign, told apart from no number: throws std::invalid_argument ("invalid stoul
/// argument") where the others yield 0, and std::out_of_range ("stoul argument out of range") where they yield
/// the nearest. A minus sign is taken and wraps round, as in the function of that name: "-5" is 2^64 - 5.
std::uint64_t TextToUnsignedOrThrow(std::string_view text);

/// The most decimals that FixedText() prints.
inline constexpr int kMostDecimals = 15;

/// `number` with exactly `decimals` digits behind a point (0: without the point), the exact value of the
/// double rounded to them, ties to even: the form "%.*f" of the C locale. `decimals` is held within 0 to
/// kMostDecimals.
std::string FixedText(double number, int decimals);
/// The same into a text that is there; no allocation where it has room.
void AssignFixedText(std::string& text, double number, int decimals);

/// The form "%f": six decimals.
inline constexpr int kPlainDecimals = 6;

/// A whole number in decimal.
std::string IntText(std::int64_t number);
/// The same into a text that is there; no allocation where it has room.
void AssignIntText(std::string& text, std::int64_t number);

}  // namespace panelry
