#pragma once

#include <QString>
#include <array>

#include "quote_board/quote.h"

namespace panelry
{

/// In which colour a value stands: by its way against the previous close, or beside the game.
enum class Tone { Plain, Muted, Rise, Fall, Flat };

/// One value as it is shown.
struct FaceCell {
    QString text;
    Tone tone = Tone::Plain;
    int barPermille = 0;  ///< length of the depth bar behind it, of the longest
    bool operator==(const FaceCell&) const = default;
};

enum FaceField : std::size_t {
    kFaceName,
    kFaceCode,
    kFaceLast,
    kFaceChange,
    kFacePercent,
    kFaceOpen,
    kFaceHigh,
    kFacePrevClose,
    kFaceLow,
    kFaceVolume,
    kFaceAmplitude,  ///< high less low, in per cent of the previous close
    kFaceFields
};

inline constexpr std::size_t kFaceLevels = 2 * kLevels;

/// All that the board shows of one stock. Levels stand from top to bottom: fifth ask to first, first bid to
/// fifth.
struct QuoteFace {
    std::array<FaceCell, kFaceFields> fields;
    std::array<FaceCell, kFaceLevels> prices;
    std::array<FaceCell, kFaceLevels> lots;
};

QuoteFace FaceOf(const Quote& quote);

/// A price in the colour of its way; "--" and muted without one.
FaceCell PriceCell(Price price, const Quote& quote);
/// The change of the latest price in per cent, in its colour.
FaceCell PercentCell(const Quote& quote);

/// 卖五 ... 卖一, 买一 ... 买五.
const std::array<QString, kFaceLevels>& LevelLabels();

}  // namespace panelry
