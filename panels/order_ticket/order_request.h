#pragma once

#include <QString>
#include <string>

#include "services/trade_records.h"
#include "ticket/ticket_session.h"

/// The order as the desk's trade side takes it (docs/order-ticket.md, "An order on the desk"), and its answer in
/// words. Pure functions, any thread.
namespace panelry
{

enum class OrderAccount { Ordinary, Margin, Connect };

/// What the user has said beside the ticket.
struct OrderEntry {
    std::string side;      ///< "B" or "S"
    std::string price;     ///< decimal text
    std::string quantity;  ///< in the unit that the ticket shows
    OrderAccount account = OrderAccount::Ordinary;
    bool onCredit = false;  ///< margin account: buys with borrowed cash, or pays back what the sale brings
};

/// The account that trades on `market`, as near to `chosen` as that can be.
OrderAccount AccountFor(const std::string& market, OrderAccount chosen);

/// Shares, or pieces of a bond: what `quantity` is without the ticket's unit. The largest number there is where
/// it has no room.
std::string InPieces(const std::string& quantity, const StringMap& ticket);

/// `fundsAccount` may be empty.
ddsdk::TradeRequestParam OrderRequest(const StringMap& ticket, const OrderEntry& entry,
                                      const std::string& fundsAccount);

/// "买入 600000，10.05 × 1000".
QString OrderWords(const ddsdk::TradeRequestParam& order);

/// An answer for the user.
struct OrderOutcome {
    bool accepted = false;
    QString words;
};
OrderOutcome ReadOutcome(const ddsdk::TradeRequestParam& reply);

}  // namespace panelry
