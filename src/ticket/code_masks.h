#pragma once

#include <string>
#include <string_view>

/// The two mask languages for stock codes. They differ on purpose and must not be merged; see
/// DataDealBase::MatchCodeMask() and DataDealBase::MatchFullMask().
///
/// Masks of plain letters and digits are compared as text. All others are regular expressions of the default
/// grammar in the classic locale, compiled once and kept in a cache of limited size.
///
/// Threading: any thread.
/// Failures: std::regex_error for a mask that is no regular expression, or one of more than kMostMaskLetters
///   (the engine recurses over it). For the same reason an expression sees only the first kMostCodeLetters of a
///   code in a mask list, and fits no longer code as a whole.
namespace panelry::ticket
{

inline constexpr std::size_t kMostMaskLetters = 500;
inline constexpr std::size_t kMostCodeLetters = 500;

/// Masks are judged in order and the first hit ends, so a malformed mask behind it doesn't throw.
bool MatchesMaskList(std::string_view masks, std::string_view code);

bool MatchesFullMask(std::string_view code, std::string_view mask);

/// The fixed list of codes with prices of three decimals.
bool IsThreeDecimalCode(std::string_view code, std::string_view market);

/// That list in the form in which it is kept.
extern const char kThreeDecimalMasks[];

}  // namespace panelry::ticket
