#pragma once

#include <uiohook.h>

#include <cstdint>
#include <string>
#include <string_view>

/// The names of keys and of key combinations. Pure functions; any thread.
namespace panelry
{

/// "a" to "z", "0" to "9", "f1" to "f12", "enter", "left", "ctrl" and the like; "unknown" for every key without
/// a name, which all punctuation and the number pad are.
std::string_view KeyName(std::uint16_t keyCode);

/// The combination of a key event: the modifiers that are held, always in the order ctrl, shift, alt, meta,
/// each with a plus sign, and the name of the key. A modifier pressed alone stands twice: "ctrl+ctrl".
std::string KeyEventName(const uiohook_event& event);

/// `text` without white space and in lower case, both in ASCII alone: other bytes stay as they are, whatever the
/// locale.
std::string NormalizedCombination(std::string_view text);

}  // namespace panelry
