#pragma once

#include <cstdint>
#include <string>

#include "base/number_text.h"
#include "services/records.h"

/// Reading of field maps, whatever they stand for.
namespace panelry::ticket
{

/// A text that stays for ever: a thread that outlives the end of main() may still read keys.
inline const std::string& Key(const char* text)
{
    return *new std::string(text);
}

inline const std::string& kOne = Key("1");
inline const std::string& kZero = Key("0");

inline bool IsOne(const StringMap& fields, const std::string& key)
{
    return FieldOf(fields, key) == kOne;
}

inline const std::string& Flag(bool set)
{
    return set ? kOne : kZero;
}

/// The low eight bits of a market number, 0 for a text that is none.
inline std::uint8_t MarketByte(const std::string& market)
{
    return static_cast<std::uint8_t>(TextToInt(market));
}

/// The two exchange families are bits of the market number.
inline constexpr int kShanghaiBit = 16;
inline constexpr int kShenzhenBit = 32;
inline constexpr int kFamilyMask = 0xF0;

}  // namespace panelry::ticket
