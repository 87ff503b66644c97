#include "message_monitor/message_line.h"

#include <QStringList>
#include <algorithm>
#include <cstring>

#include "hosting/message_ids.h"
#include "services/records.h"

namespace panelry
{

namespace
{

constexpr int kMostCharacters = 4'000;
constexpr int kMostBytesRead = 4 * kMostCharacters;  // a character has at most four bytes

QString OnOneLine(QString text)
{
    const auto breaks = [](QChar c) {
        return c.category() == QChar::Other_Control || c == QChar::LineSeparator ||
               c == QChar::ParagraphSeparator;
    };
    std::replace_if(text.begin(), text.end(), breaks, QLatin1Char(' '));
    return text;
}

QString TextOf(const char* text)
{
    const std::size_t bytes = std::strlen(text);
    const auto read = static_cast<int>(std::min<std::size_t>(bytes, kMostBytesRead));
    const QString whole = QString::fromUtf8(text, read);
    if (bytes <= kMostBytesRead && whole.size() <= kMostCharacters) {
        return OnOneLine(whole);
    }
    return OnOneLine(whole.left(kMostCharacters)) + QStringLiteral(" …（已截短，共 %1 字节）").arg(bytes);
}

QString StockOf(const StringMap& stock)
{
    QStringList pairs;
    for (const auto& [key, value] : stock) {
        pairs.append(QString::fromStdString(key + '=' + value));
    }
    return TextOf(pairs.join(QLatin1String("  ")).toUtf8().constData());
}

}  // namespace

PayloadKind PayloadKindOf(int msgId)
{
    if (msgId == kStockSelected) {
        return PayloadKind::Stock;
    }
    return CarriesText(msgId) ? PayloadKind::Text : PayloadKind::Unknown;
}

QString PayloadText(int msgId, const void* payload)
{
    const PayloadKind kind = PayloadKindOf(msgId);
    if (kind == PayloadKind::Unknown) {
        return QStringLiteral("（未读取内容）");
    }
    if (!payload) {
        return QStringLiteral("（无内容）");
    }
    return kind == PayloadKind::Stock ? StockOf(*static_cast<const StringMap*>(payload))
                                      : TextOf(static_cast<const char*>(payload));
}

QString MessageLine(const QTime& time, int msgId, const QString& text)
{
    const QString id = QString::number(msgId).rightJustified(kIdColumnEnd - kTimeColumnEnd - 1);
    return time.toString(QStringLiteral("HH:mm:ss.zzz")) + QLatin1Char(' ') + id + QStringLiteral("  ") +
           text;
}

}  // namespace panelry
