#include "quote_board/quote_reader.h"

#include <QJsonArray>
#include <algorithm>
#include <optional>

namespace panelry
{

namespace
{

constexpr int kMostDecimals = 6;
constexpr int kMostCodeLength = 32;
constexpr int kQuotedLength = 20;  // of a bad value in a message

struct PriceField {
    const char* key;
    QString label;
    Price Quote::*field;
};

const std::array<PriceField, 5>& PriceFields()
{
    static const std::array<PriceField, 5> fields{{
        {"prev_close", QStringLiteral("昨收价"), &Quote::prevClose},
        {"last", QStringLiteral("最新价"), &Quote::last},
        {"open", QStringLiteral("开盘价"), &Quote::open},
        {"high", QStringLiteral("最高价"), &Quote::high},
        {"low", QStringLiteral("最低价"), &Quote::low},
    }};
    return fields;
}

struct Side {
    const char* key;
    QString label;
    std::array<PriceLevel, kLevels> Quote::*levels;
};

const std::array<Side, 2>& Sides()
{
    static const std::array<Side, 2> sides{{
        {"bids", QStringLiteral("买盘"), &Quote::bids},
        {"asks", QStringLiteral("卖盘"), &Quote::asks},
    }};
    return sides;
}

QString Invalid(const QString& label, const QJsonValue& value)
{
    if (!value.isString()) {
        return QStringLiteral("%1应为文本").arg(label);
    }
    QString shown = value.toString().simplified();
    if (shown.size() > kQuotedLength) {
        shown = shown.left(kQuotedLength) + QStringLiteral("…");
    }
    return QStringLiteral("%1“%2”不是有效数字").arg(label, shown);
}

// Reads a text with `read` into `field`, if there is a value at all.
template <class Number, class Reader>
QString ReadNumber(const QJsonValue& value, const QString& label, Reader read, Number& field)
{
    if (value.isUndefined()) {
        return QString();
    }
    const QString text = value.toString();
    const std::optional<Number> number = value.isString() ? read(QStringView(text)) : std::nullopt;
    if (!number) {
        return Invalid(label, value);
    }
    field = *number;
    return QString();
}

QString ReadWords(const QJsonObject& entry, Quote& quote)
{
    const QString code = entry.value(QLatin1String("code")).toString().simplified();
    if (code.isEmpty() || code.size() > kMostCodeLength) {
        return QStringLiteral("没有有效的证券代码");
    }
    quote.code = code;
    const QJsonValue name = entry.value(QLatin1String("name"));
    if (!name.isUndefined() && !name.isString()) {
        return Invalid(QStringLiteral("名称"), name);
    }
    quote.name = name.toString(quote.name).simplified();
    return QString();
}

QString ReadDecimals(const QJsonValue& value, int& decimals)
{
    if (value.isUndefined()) {
        return QString();
    }
    bool whole = true;
    const int places = value.isString() ? value.toString().toInt(&whole) : value.toInt(-1);
    if (whole && places >= 0 && places <= kMostDecimals) {
        decimals = places;
        return QString();
    }
    return QStringLiteral("小数位数应为 0 到 %1").arg(kMostDecimals);
}

QString ReadLevel(const QJsonValue& value, const QString& label, PriceLevel& level)
{
    const QJsonArray pair = value.toArray();
    if (pair.size() != 2) {
        return QStringLiteral("%1应为[价格,数量]").arg(label);
    }
    QString problem = ReadNumber(pair.at(0), label + QStringLiteral("价"), &ReadPrice, level.price);
    return problem.isEmpty() ? ReadNumber(pair.at(1), label + QStringLiteral("量"), &ReadLots, level.lots)
                             : problem;
}

QString ReadSide(const QJsonValue& value, const QString& label, std::array<PriceLevel, kLevels>& levels)
{
    if (value.isUndefined()) {
        return QString();
    }
    if (!value.isArray()) {
        return QStringLiteral("%1应为列表").arg(label);
    }
    levels = {};
    const QJsonArray list = value.toArray();
    for (int i = 0; i < std::min(list.size(), kLevels); ++i) {
        QString problem = ReadLevel(list.at(i), label, levels[static_cast<std::size_t>(i)]);
        if (!problem.isEmpty()) {
            return problem;
        }
    }
    return QString();
}

QString DecimalText(Price price)
{
    return price == 0 ? QString() : PriceText(price, 0);
}

QJsonArray WriteSide(const std::array<PriceLevel, kLevels>& levels)
{
    QJsonArray list;
    for (const PriceLevel& level : levels) {
        list.append(QJsonArray{DecimalText(level.price), QString::number(level.lots)});
    }
    return list;
}

}  // namespace

QString ReadQuote(const QJsonObject& entry, Quote& quote)
{
    QString problem = ReadWords(entry, quote);
    if (problem.isEmpty()) {
        problem = ReadDecimals(entry.value(QLatin1String("decimals")), quote.decimals);
    }
    for (const PriceField& field : PriceFields()) {
        if (problem.isEmpty()) {
            problem = ReadNumber(entry.value(QLatin1String(field.key)), field.label, &ReadPrice,
                                 quote.*field.field);
        }
    }
    if (problem.isEmpty()) {
        problem = ReadNumber(entry.value(QLatin1String("volume")), QStringLiteral("成交量"), &ReadLots,
                             quote.volume);
    }
    for (const Side& side : Sides()) {
        if (problem.isEmpty()) {
            problem = ReadSide(entry.value(QLatin1String(side.key)), side.label, quote.*side.levels);
        }
    }
    return problem;
}

QJsonObject WriteQuote(const Quote& quote)
{
    QJsonObject entry{{QStringLiteral("code"), quote.code},
                      {QStringLiteral("name"), quote.name},
                      {QStringLiteral("decimals"), quote.decimals},
                      {QStringLiteral("volume"), QString::number(quote.volume)}};
    for (const PriceField& field : PriceFields()) {
        entry.insert(QLatin1String(field.key), DecimalText(quote.*field.field));
    }
    for (const Side& side : Sides()) {
        entry.insert(QLatin1String(side.key), WriteSide(quote.*side.levels));
    }
    return entry;
}

}  // namespace panelry
