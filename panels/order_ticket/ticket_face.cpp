#include "order_ticket/ticket_face.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "base/number_text.h"

namespace panelry
{

namespace
{

constexpr int kLevels = 5;
constexpr double kSmallestPrice = 0.0001;
constexpr double kDivisionSlack = 1e-9;
constexpr int kFamily = 0xF0;
constexpr int kConnectFamily = 64;
constexpr char kUntoldStep[] = "100";  // stands in a ticket of which the host has told none

QString Text(const StringMap& ticket, const std::string& key)
{
    const auto found = ticket.find(key);
    return found == ticket.end() ? QString() : QString::fromStdString(found->second);
}

double Number(const StringMap& ticket, const char* key)
{
    return TextToDouble(Text(ticket, key).toStdString());
}

// Against yesterday's close; 0 where one of the two isn't known.
int Direction(double price, double close)
{
    if (close < kSmallestPrice || price < kSmallestPrice) {
        return 0;
    }
    return price > close ? 1 : price < close ? -1 : 0;
}

// Worked out here: "rise_fall_scale" is a percentage after a push and a difference after an answer.
void ReadChange(const StringMap& ticket, TicketFace& face)
{
    const double close = Number(ticket, "last_closing_price");
    const double latest = Number(ticket, "latest_price");
    if (close < kSmallestPrice || latest < kSmallestPrice) {
        return;
    }
    const double percent = (latest - close) / close * 100;
    face.direction = Direction(latest, close);
    face.change = QString::fromStdString((face.direction > 0 ? "+" : "") + FixedText(percent, 2) + '%');
}

QString Range(const QString& low, const QString& high)
{
    return low.isEmpty() && high.isEmpty() ? QString() : low + QStringLiteral(" – ") + high;
}

// A rest that makes no whole unit can't be traded.
QString InUnits(const QString& pieces, int piecesPerUnit)
{
    return pieces.isEmpty()
               ? QString()
               : QString::number(static_cast<qlonglong>(TextToInt64(pieces.toStdString()) / piecesPerUnit));
}

BookLevel ReadLevel(const StringMap& ticket, const char* side, const QString& name, int level)
{
    const std::string prefix = side + std::string(1, '_') + std::to_string(level);
    const QString price = Text(ticket, prefix + "_price");
    return {name + QString::number(level), price, Text(ticket, prefix + "_amount"),
            Direction(TextToDouble(price.toStdString()), Number(ticket, "last_closing_price"))};
}

}  // namespace

TicketFace ReadFace(const StringMap& ticket)
{
    TicketFace face;
    face.name = Text(ticket, "stock_name");
    face.latest = Text(ticket, "latest_price");
    face.known = !face.name.isEmpty() || !face.latest.isEmpty();
    face.market = TicketMarketName(Text(ticket, "market").toStdString());
    ReadChange(ticket, face);
    if (Number(ticket, "raising_limit") >= kSmallestPrice) {
        face.limits = Range(Text(ticket, "limit_down"), Text(ticket, "raising_limit"));
    }
    face.protectedLimits = Range(Text(ticket, "mcxjg"), Text(ticket, "mrxjg"));
    face.piecesPerUnit = PiecesPerUnit(ticket);
    face.usable = InUnits(Text(ticket, "usable_amount"), face.piecesPerUnit);
    face.unit = Text(ticket, "amount_unit");
    face.amountStep = QString::fromStdString(QuantityStep(ticket));
    face.priceStep = Text(ticket, "price_step");
    for (int level = 1; level <= kLevels; ++level) {
        const auto depth = static_cast<std::size_t>(level);
        face.book[kLevels - depth] = ReadLevel(ticket, "sell", QStringLiteral("卖"), level);
        face.book[kLevels - 1 + depth] = ReadLevel(ticket, "buy", QStringLiteral("买"), level);
    }
    return face;
}

int PiecesPerUnit(const StringMap& ticket)
{
    return std::max(1, TextToInt(FieldOf(ticket, "amount_chart_volunit")));
}

std::string QuantityStep(const StringMap& ticket)
{
    std::string step = FieldOf(ticket, "amount_step");
    if (step == kUntoldStep && IsConnectMarket(FieldOf(ticket, "market"))) {
        step = FieldOf(ticket, "hand");
    }
    return step.empty() ? step
                        : IntText(std::max<std::int64_t>(1, TextToInt64(step) / PiecesPerUnit(ticket)));
}

std::string WholeLots(const StringMap& ticket, const QString& money, const QString& price)
{
    const double lot = TextToDouble(QuantityStep(ticket));
    const double each = TextToDouble(price.toStdString()) * PiecesPerUnit(ticket);
    if (each < kSmallestPrice || lot < 1) {
        return "0";
    }
    // Money for exactly a lot buys it, whatever the division leaves.
    return FixedText(std::floor(TextToDouble(money.toStdString()) / each / lot + kDivisionSlack) * lot, 0);
}

bool IsConnectMarket(const std::string& market)
{
    return (TextToInt(market) & kFamily) == kConnectFamily;
}

QString TicketMarketName(const std::string& market)
{
    switch (TextToInt(market) & kFamily) {
        case 16:
            return QStringLiteral("上海");
        case 32:
            return QStringLiteral("深圳");
        case kConnectFamily:
            return QStringLiteral("港股通");
        default:
            return QString::fromStdString(market);
    }
}

QString PlainQuantity(const std::string& quantity)
{
    return quantity.empty() ? QString() : QString::fromStdString(FixedText(TextToDouble(quantity), 0));
}

QString Stepped(const QString& text, const std::string& step, int steps, int decimals)
{
    const double moved = TextToDouble(text.toStdString()) + steps * TextToDouble(step);
    const std::size_t point = std::min(step.find('.'), step.size() - 1);
    const int ofStep = step.empty() ? 0 : static_cast<int>(step.size() - 1 - point);
    return QString::fromStdString(FixedText(std::max(0.0, moved), std::max(decimals, ofStep)));
}

}  // namespace panelry
