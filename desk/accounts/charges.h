#pragma once

#include <string>

#include "desk/accounts/account.h"
#include "desk/accounts/opening.h"

/// What orders and deals cost, and who may trade what. Values in, values out.
namespace panelry::desk
{

/// `part` of `whole` parts of `amount`, halves up. None is negative; `part` and `whole` are at most 10
/// millions.
std::int64_t Share(std::int64_t amount, std::int64_t part, std::int64_t whole);

/// All fees of an order whose deals are worth `worth` in all. Never more than a sale brings in: cash can't
/// become negative by selling.
Money OrderFees(const Rates& rates, Side side, Money worth);

/// The worth that a deal of `order` is booked with. Rounding never makes a buy dearer than its limit price.
Money DealWorth(const Opening& opening, const Security& security, const Order& order, Price price,
                Quantity quantity);

/// The most that the rest of a buy may cost, fees included: what stays frozen for it. 0 for a sale, or once
/// it has ended.
Money StillNeeded(const Opening& opening, const Security& security, const Order& order);

/// Why an account can't trade a security at all; empty where it can.
std::string WhyClosedTo(AccountKind account, const Security& security);
/// Why nobody would take this order, whatever cash and holdings there are; empty for a sound one.
std::string WhyUnsound(const OrderWish& wish, const Security& security);

}  // namespace panelry::desk
