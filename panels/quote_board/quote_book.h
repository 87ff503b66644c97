#pragma once

#include <QByteArray>
#include <QHash>
#include <QJsonObject>
#include <QString>
#include <QStringList>
#include <vector>

#include "quote_board/quote.h"

namespace panelry
{

/// All quotes that were pushed so far, one row a stock, in the order in which the stocks first came.
///
/// Ownership: a plain value. Threading: one thread. No widget.
/// Failures: what can't be read is named in the result and changes nothing; what is good beside it counts.
class QuoteBook
{
public:
    struct Result {
        bool quotes = false;       ///< the text was a push of quotes, good or bad
        std::vector<int> changed;  ///< rows that read otherwise than before or are new, ascending
        QStringList problems;      ///< in words for the trader; empty if all was well
    };

    /// Takes a push: {"quotes":[...]} or {"init_param":{"quotes":[...]}}, see ReadQuote() for the elements.
    /// An object without quotes is somebody else's push: no problem, and nothing happens.
    Result Apply(const QByteArray& text);

    const std::vector<Quote>& Quotes() const { return m_quotes; }

    /// -1 for a stock that never came.
    int RowOf(const QString& code) const { return m_rows.value(code, -1); }

    /// Everything, as one push that makes the same book of an empty one.
    QString Text() const;

private:
    QString ApplyEntry(const QJsonObject& entry, std::vector<int>& changed);

    std::vector<Quote> m_quotes;
    QHash<QString, int> m_rows;
};

}  // namespace panelry
