#pragma once

#include <string_view>

namespace panelry
{

/// The number at the head of a text: leading blanks and a sign are taken, what follows the digits is ignored,
/// a text without a number yields 0, a number that doesn't fit yields the nearest int. Never looks at the
/// locale.
int TextToInt(std::string_view text);

}  // namespace panelry
