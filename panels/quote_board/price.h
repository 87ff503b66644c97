#pragma once

#include <QString>
#include <QStringView>
#include <QtGlobal>
#include <optional>

/// Prices as whole numbers: read from decimal text, compared, subtracted and written without a fraction of a
/// binary number in between, and without a look at the locale.
namespace panelry
{

/// Millionths of the currency unit: "1702.30" is 1702300000. 0 stands for "no price".
using Price = qint64;

/// A decimal text such as "1702.30": digits, at most eight before the point; behind it six that count, and
/// zeros beyond. No sign, no blank, no exponent. Empty, "-" and "--" are no price: 0. Nothing for all else.
[[nodiscard]] std::optional<Price> ReadPrice(QStringView text);

/// A whole number of lots, at most twelve digits; empty, "-" and "--" are 0. Nothing for all else.
[[nodiscard]] std::optional<qint64> ReadLots(QStringView text);

/// With `decimals` places, with more where the price needs them; "--" for no price.
QString PriceText(Price price, int decimals);

/// The way from the previous close, with its sign unless it is zero: "+7.70", "-0.01", "0.00"; "--" if
/// either is no price.
QString ChangeText(Price price, Price prevClose, int decimals);

/// The same in per cent with two places, rounded half away from zero: "+0.45%".
QString ChangePercentText(Price price, Price prevClose);

/// `part` in per cent of `whole`, without a plus sign; "--" if `whole` is 0.
QString PercentText(Price part, Price whole);

/// A count as traders read it: up to five digits as it is, then in 万 or 亿 with two places, rounded half up.
QString LotsText(qint64 lots);

enum class Trend { Unknown, Fall, Flat, Rise };

/// Where `price` stands against the previous close; Unknown if either is no price.
Trend TrendOf(Price price, Price prevClose);

}  // namespace panelry
