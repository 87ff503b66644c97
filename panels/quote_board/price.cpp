#include "quote_board/price.h"

#include <algorithm>

namespace panelry
{

namespace
{

constexpr int kPlaces = 6;
constexpr int kMostWholeDigits = 8;  // keeps a price times 10,000 within 64 bits
constexpr int kMostLotsDigits = 12;
constexpr qint64 kTenThousand = 10'000;
constexpr qint64 kHundredMillion = 100'000'000;

const QString& NoValue()
{
    static const QString text = QStringLiteral("--");
    return text;
}

bool IsNoValue(QStringView text)
{
    return text.isEmpty() || text == QLatin1String("-") || text == QLatin1String("--");
}

// ASCII digits alone: QChar::isDigit knows many more.
std::optional<qint64> ReadDigits(QStringView text)
{
    qint64 number = 0;
    for (const QChar c : text) {
        if (c < QLatin1Char('0') || c > QLatin1Char('9')) {
            return std::nullopt;
        }
        number = number * 10 + (c.unicode() - u'0');
    }
    return number;
}

qint64 PowerOfTen(int exponent)
{
    qint64 power = 1;
    while (exponent-- > 0) {
        power *= 10;
    }
    return power;
}

// `number` is in units of the last of `places` decimal places.
QString FixedText(qint64 number, int places)
{
    const qint64 unit = PowerOfTen(places);
    QString whole = QString::number(number / unit);
    if (places == 0) {
        return whole;
    }
    return whole + QLatin1Char('.') + QString::number(number % unit).rightJustified(places, QLatin1Char('0'));
}

qint64 DivideRounded(qint64 number, qint64 divisor)
{
    return (number + divisor / 2) / divisor;
}

// The size of a price without its sign.
QString SizeText(Price size, int decimals)
{
    int places = std::clamp(decimals, 0, kPlaces);
    while (size % PowerOfTen(kPlaces - places) != 0) {
        ++places;
    }
    return FixedText(size / PowerOfTen(kPlaces - places), places);
}

QString SignText(Price price, Price prevClose)
{
    if (price == prevClose) {
        return QString();
    }
    return QString(QLatin1Char(price > prevClose ? '+' : '-'));
}

}  // namespace

std::optional<Price> ReadPrice(QStringView text)
{
    if (IsNoValue(text)) {
        return 0;
    }
    const auto* const point = std::find(text.begin(), text.end(), QLatin1Char('.'));
    const QStringView whole = text.left(point - text.begin());
    QStringView fraction = text.mid(whole.size() + (point == text.end() ? 0 : 1));
    if (whole.isEmpty() || whole.size() > kMostWholeDigits || (fraction.isEmpty() && point != text.end())) {
        return std::nullopt;
    }
    while (fraction.size() > kPlaces && fraction.back() == QLatin1Char('0')) {
        fraction.chop(1);
    }
    const std::optional<qint64> units = ReadDigits(whole);
    const std::optional<qint64> parts = fraction.size() > kPlaces ? std::nullopt : ReadDigits(fraction);
    if (!units || !parts) {
        return std::nullopt;
    }
    return *units * PowerOfTen(kPlaces) + *parts * PowerOfTen(kPlaces - static_cast<int>(fraction.size()));
}

std::optional<qint64> ReadLots(QStringView text)
{
    if (IsNoValue(text)) {
        return 0;
    }
    return text.size() > kMostLotsDigits ? std::nullopt : ReadDigits(text);
}

QString PriceText(Price price, int decimals)
{
    return price == 0 ? NoValue() : SizeText(price, decimals);
}

QString ChangeText(Price price, Price prevClose, int decimals)
{
    if (price == 0 || prevClose == 0) {
        return NoValue();
    }
    return SignText(price, prevClose) + SizeText(qAbs(price - prevClose), decimals);
}

QString ChangePercentText(Price price, Price prevClose)
{
    if (price == 0 || prevClose == 0) {
        return NoValue();
    }
    return SignText(price, prevClose) + PercentText(qAbs(price - prevClose), prevClose);
}

QString PercentText(Price part, Price whole)
{
    if (whole == 0) {
        return NoValue();
    }
    // Hundredths of a per cent.
    return FixedText(DivideRounded(part * kTenThousand, whole), 2) + QLatin1Char('%');
}

QString LotsText(qint64 lots)
{
    if (lots < 10 * kTenThousand) {
        return QString::number(lots);
    }
    const qint64 inTenThousands = DivideRounded(lots, kTenThousand / 100);
    if (inTenThousands < kTenThousand * 100) {
        return FixedText(inTenThousands, 2) + QStringLiteral("万");
    }
    return FixedText(DivideRounded(lots, kHundredMillion / 100), 2) + QStringLiteral("亿");
}

Trend TrendOf(Price price, Price prevClose)
{
    if (price == 0 || prevClose == 0) {
        return Trend::Unknown;
    }
    if (price == prevClose) {
        return Trend::Flat;
    }
    return price > prevClose ? Trend::Rise : Trend::Fall;
}

}  // namespace panelry
