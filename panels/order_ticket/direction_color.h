#pragma once

#include "common/panel_style.h"

namespace panelry
{

inline constexpr QRgb kUp = 0xFFC0392B;    ///< prices that rise, and buying
inline constexpr QRgb kDown = 0xFF1B7F4B;  ///< prices that fall, and selling

/// The colour of a price by its direction.
inline QRgb DirectionColor(int direction)
{
    return direction > 0 ? kUp : direction < 0 ? kDown : style::kText;
}

}  // namespace panelry
