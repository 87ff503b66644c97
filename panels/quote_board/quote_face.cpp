#include "quote_board/quote_face.h"

#include <algorithm>

namespace panelry
{

namespace
{

Tone ToneOf(Price price, Price prevClose)
{
    switch (TrendOf(price, prevClose)) {
        case Trend::Rise:
            return Tone::Rise;
        case Trend::Fall:
            return Tone::Fall;
        case Trend::Flat:
            return Tone::Flat;
        case Trend::Unknown:
            break;
    }
    return price == 0 ? Tone::Muted : Tone::Plain;
}

const PriceLevel& LevelAt(const Quote& quote, std::size_t row)
{
    return row < kLevels ? quote.asks[kLevels - 1 - row] : quote.bids[row - kLevels];
}

void FillLevels(const Quote& quote, QuoteFace& face)
{
    qint64 most = 1;
    for (std::size_t row = 0; row < kFaceLevels; ++row) {
        const PriceLevel& level = LevelAt(quote, row);
        most = std::max(most, level.price == 0 ? 0 : level.lots);
    }
    for (std::size_t row = 0; row < kFaceLevels; ++row) {
        const PriceLevel& level = LevelAt(quote, row);
        face.prices[row] = PriceCell(level.price, quote);
        if (level.price != 0) {
            face.lots[row] = {LotsText(level.lots), Tone::Plain, static_cast<int>(level.lots * 1000 / most)};
        }
    }
}

}  // namespace

FaceCell PriceCell(Price price, const Quote& quote)
{
    return {PriceText(price, quote.decimals), ToneOf(price, quote.prevClose)};
}

FaceCell PercentCell(const Quote& quote)
{
    const Tone tone = ToneOf(quote.last, quote.prevClose);
    return {ChangePercentText(quote.last, quote.prevClose), tone == Tone::Plain ? Tone::Muted : tone};
}

QuoteFace FaceOf(const Quote& quote)
{
    QuoteFace face;
    const FaceCell percent = PercentCell(quote);
    const bool range = quote.high != 0 && quote.low != 0;
    face.fields[kFaceName] = {quote.name.isEmpty() ? quote.code : quote.name};
    face.fields[kFaceCode] = {quote.code, Tone::Muted};
    face.fields[kFaceLast] = PriceCell(quote.last, quote);
    face.fields[kFaceChange] = {ChangeText(quote.last, quote.prevClose, quote.decimals), percent.tone};
    face.fields[kFacePercent] = percent;
    face.fields[kFaceOpen] = PriceCell(quote.open, quote);
    face.fields[kFaceHigh] = PriceCell(quote.high, quote);
    face.fields[kFaceLow] = PriceCell(quote.low, quote);
    face.fields[kFacePrevClose] = {PriceText(quote.prevClose, quote.decimals)};
    face.fields[kFaceVolume] = {LotsText(quote.volume)};
    face.fields[kFaceAmplitude] = {PercentText(qAbs(quote.high - quote.low), range ? quote.prevClose : 0)};
    FillLevels(quote, face);
    return face;
}

const std::array<QString, kFaceLevels>& LevelLabels()
{
    static const std::array<QString, kFaceLevels> labels{
        QStringLiteral("卖五"), QStringLiteral("卖四"), QStringLiteral("卖三"), QStringLiteral("卖二"),
        QStringLiteral("卖一"), QStringLiteral("买一"), QStringLiteral("买二"), QStringLiteral("买三"),
        QStringLiteral("买四"), QStringLiteral("买五")};
    return labels;
}

}  // namespace panelry
