#pragma once

#include <optional>
#include <string>
#include <utility>

#include "desk/accounts/brokerage.h"
#include "services/trade_records.h"

/// What clients ask of the desk's trade side.
namespace panelry::desk
{

enum class Ask { StockInfo, Order, Cancel, Holdings, Deals, Orders, OpenOrders, Funds, Setting };

/// One request, as far as its addressing says.
struct ClientRequest {
    Ask ask = Ask::StockInfo;
    AccountKind account = AccountKind::Normal;
    bool ofThePast = false;  ///< deals of a range of days
};

/// By head "type" and, for the margin account (2314), Stock Connect (2317) and settings (2304), body "cmd";
/// body "dataid" tells lists of one command apart. Nothing for what this host doesn't know.
std::optional<ClientRequest> ReadRequest(const ddsdk::TradeRequestParam& request);

/// The days from body "qsrq" to "jzrq"; nothing where one of them is no date.
std::optional<std::pair<int, int>> ReadDays(const ddsdk::TradeRequestParam& request);

/// The order that a request "3" wants, or why it wants none that could be placed (UTF-8, for traders).
struct WantedOrder {
    OrderWish wish;
    std::string refusal;
};
WantedOrder ReadOrder(const ddsdk::TradeRequestParam& request, const Listing& listing,
                      const Opening& opening);

}  // namespace panelry::desk
