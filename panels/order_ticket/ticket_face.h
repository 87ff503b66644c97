#pragma once

#include <QString>
#include <array>

#include "services/records.h"

namespace panelry
{

/// One line of the order book.
struct BookLevel {
    QString name;  ///< "卖1"
    QString price;
    QString amount;
    int direction = 0;  ///< against yesterday's close: 1 above, -1 below

    friend bool operator==(const BookLevel& a, const BookLevel& b) = default;
};

/// A ticket map as a trader reads it. Empty texts are shown as such.
struct TicketFace {
    bool known = false;  ///< the host has told of a stock
    QString name;
    QString market;
    QString latest;
    QString change;     ///< in percent, with its sign
    int direction = 0;  ///< of the change: 1 up, -1 down
    QString limits;     ///< the day's, "9.00 – 11.00"
    QString protectedLimits;
    QString usable;      ///< in the unit, as the next but one
    QString unit;        ///< "股", "张", "手"
    QString amountStep;  ///< what the quantity moves by; buys are multiples of it
    QString priceStep;
    int piecesPerUnit = 1;
    std::array<BookLevel, 10> book;  ///< sell 5 to 1, then buy 1 to 5
};

TicketFace ReadFace(const StringMap& ticket);

/// Shares, or pieces of a bond, of one unit of the quantity that is shown; 1 or more.
int PiecesPerUnit(const StringMap& ticket);

/// Units that a quantity moves by, empty while no stock is known.
std::string QuantityStep(const StringMap& ticket);

/// How many units `money` buys at `price` where they are sold in whole lots of QuantityStep() alone; 0 where one
/// of the three is missing.
std::string WholeLots(const StringMap& ticket, const QString& money, const QString& price);

/// Is it the market number of Stock Connect?
bool IsConnectMarket(const std::string& market);

/// "上海", "深圳", "港股通", or the number of another market.
QString TicketMarketName(const std::string& market);

/// A quantity without the decimals that mean nothing: "1200.000000" is "1200".
QString PlainQuantity(const std::string& quantity);

/// `text` moved by `steps` times `step`; never below 0. Printed with `decimals`, or with those of `step` where
/// it has more.
QString Stepped(const QString& text, const std::string& step, int steps, int decimals);

}  // namespace panelry
