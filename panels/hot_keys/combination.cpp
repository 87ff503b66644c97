#include "hot_keys/combination.h"

#include <QSet>
#include <QStringList>
#include <limits>

#include "input/key_names.h"

namespace panelry
{

namespace
{

const QStringList& Modifiers()
{
    static const QStringList modifiers{QStringLiteral("ctrl"), QStringLiteral("shift"), QStringLiteral("alt"),
                                       QStringLiteral("meta")};
    return modifiers;
}

QString Text(std::string_view text)
{
    return QString::fromUtf8(text.data(), static_cast<int>(text.size()));
}

const QSet<QString>& KnownKeys()
{
    static const QSet<QString> keys = [] {
        QSet<QString> names;
        for (int code = 0; code <= std::numeric_limits<std::uint16_t>::max(); ++code) {
            names.insert(Text(KeyName(static_cast<std::uint16_t>(code))));
        }
        return names;
    }();
    return keys;
}

}  // namespace

Combination ReadCombination(const QString& typed)
{
    const QString normalized = Text(NormalizedCombination(typed.toStdString()));
    QStringList parts = normalized.split(QLatin1Char('+'));
    const QString key = parts.takeLast();
    if (key.isEmpty()) {
        return {{},
                normalized.isEmpty() ? QStringLiteral("请输入组合键") : QStringLiteral("加号后面还缺一个键")};
    }
    if (!KnownKeys().contains(key)) {
        return {{}, QStringLiteral("不认识的键：%1").arg(key)};
    }
    for (const QString& part : parts) {
        if (!Modifiers().contains(part)) {
            return {{}, QStringLiteral("“%1”不是修饰键（ctrl、shift、alt、meta）").arg(part)};
        }
    }
    if (Modifiers().contains(key)) {
        parts.append(key);
    }
    QString text;
    for (const QString& modifier : Modifiers()) {
        if (parts.contains(modifier)) {
            text += modifier + QLatin1Char('+');
        }
    }
    return {text + key, {}};
}

}  // namespace panelry
