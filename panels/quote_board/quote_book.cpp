#include "quote_board/quote_book.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <algorithm>

#include "quote_board/quote_reader.h"

namespace panelry
{

namespace
{

constexpr std::size_t kMostStocks = 10'000;

// All exchanges together have fewer stocks; a wild push must not fill the memory.
QString TooManyStocks()
{
    return QStringLiteral("证券超过 %1 只，不再增加").arg(kMostStocks);
}

// The object with the quotes: the push itself, or what it wraps as "init_param".
QJsonObject Unwrapped(const QJsonObject& push)
{
    const QLatin1String wrapper("init_param");
    return push.contains(QLatin1String("quotes")) ? push : push.value(wrapper).toObject();
}

}  // namespace

QuoteBook::Result QuoteBook::Apply(const QByteArray& text)
{
    Result result;
    QJsonParseError error{};
    const QJsonDocument document = QJsonDocument::fromJson(text, &error);
    if (error.error != QJsonParseError::NoError) {
        result.problems.append(QStringLiteral("推送不是有效的 JSON（第 %1 字节处）").arg(error.offset));
        return result;
    }
    const QJsonObject push = Unwrapped(document.object());
    const QJsonValue quotes = push.value(QLatin1String("quotes"));
    if (quotes.isUndefined()) {
        return result;
    }
    result.quotes = true;
    if (!quotes.isArray()) {
        result.problems.append(QStringLiteral("“quotes”应为列表"));
        return result;
    }
    int number = 0;
    for (const QJsonValue entry : quotes.toArray()) {
        ++number;
        const QString problem = ApplyEntry(entry.toObject(), result.changed);
        if (!problem.isEmpty()) {
            result.problems.append(QStringLiteral("第 %1 项：%2").arg(number).arg(problem));
        }
    }
    std::sort(result.changed.begin(), result.changed.end());
    result.changed.erase(std::unique(result.changed.begin(), result.changed.end()), result.changed.end());
    return result;
}

// Returns what is wrong with the entry, which then changes nothing.
QString QuoteBook::ApplyEntry(const QJsonObject& entry, std::vector<int>& changed)
{
    const int known = RowOf(entry.value(QLatin1String("code")).toString().simplified());
    Quote quote = known < 0 ? Quote() : m_quotes[static_cast<std::size_t>(known)];
    const QString problem = ReadQuote(entry, quote);
    if (!problem.isEmpty()) {
        return quote.code.isEmpty() ? problem : quote.code + QLatin1Char(' ') + problem;
    }
    if (known >= 0) {
        Quote& row = m_quotes[static_cast<std::size_t>(known)];
        if (row != quote) {
            row = quote;
            changed.push_back(known);
        }
        return QString();
    }
    if (m_quotes.size() >= kMostStocks) {
        return TooManyStocks();
    }
    const int row = static_cast<int>(m_quotes.size());
    m_rows.insert(quote.code, row);
    m_quotes.push_back(quote);
    changed.push_back(row);
    return QString();
}

QString QuoteBook::Text() const
{
    QJsonArray quotes;
    for (const Quote& quote : m_quotes) {
        quotes.append(WriteQuote(quote));
    }
    const QJsonObject push{{QStringLiteral("quotes"), quotes}};
    return QString::fromUtf8(QJsonDocument(push).toJson(QJsonDocument::Compact));
}

}  // namespace panelry
