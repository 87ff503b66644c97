#pragma once

#include <QJsonObject>
#include <QString>

#include "quote_board/quote.h"

namespace panelry
{

/// Overwrites in `quote` what `entry`, one element of a push, holds; keys that it lacks leave `quote` as it
/// is.
///
/// "code" and "name" are texts, "decimals" is a whole number 0 to 6 (as a number or a text), "prev_close",
/// "last", "open", "high" and "low" are price texts, "volume" is a text of lots, "bids" and "asks" are lists
/// of pairs [price text, lots text] from the best outward, of which the first five count and which replace
/// the side as a whole. Returns an empty text, or what is wrong, in words for the trader; `quote` is then
/// worth nothing.
[[nodiscard]] QString ReadQuote(const QJsonObject& entry, Quote& quote);

/// The element that ReadQuote() makes the same quote of.
QJsonObject WriteQuote(const Quote& quote);

}  // namespace panelry
