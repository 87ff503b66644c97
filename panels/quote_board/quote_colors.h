#pragma once

#include <QColor>

#include "quote_board/quote_face.h"
#include "services/records.h"

namespace panelry
{

/// The colours of rise, fall and no change.
struct QuoteColors {
    QColor rise{0xD7, 0x34, 0x2C};
    QColor fall{0x0B, 0x8F, 0x3C};
    QColor flat{0x5B, 0x64, 0x70};

    QColor Of(Tone tone) const;
};

/// The keys "rise", "fall" and "flat" of section "quote", "#RRGGBB" or a colour's name; the default colour
/// where a key is missing or no colour, and everywhere if `table` is null.
QuoteColors ReadQuoteColors(const ConfigTable* table);

}  // namespace panelry
