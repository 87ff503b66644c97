#include "common/market.h"

namespace panelry
{

const char* MarketOf(const QString& code)
{
    const QChar first = code.isEmpty() ? QChar() : code.front();
    const bool shanghai = first == QLatin1Char('5') || first == QLatin1Char('6') || first == QLatin1Char('9');
    return shanghai ? kShanghai : kShenzhen;
}

QString MarketName(const std::string& market)
{
    if (market == kShanghai) {
        return QStringLiteral("上海");
    }
    return market == kShenzhen ? QStringLiteral("深圳") : QString::fromStdString(market);
}

}  // namespace panelry
