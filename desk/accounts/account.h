#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "desk/exchange/exchange.h"
#include "desk/exchange/units.h"

/// The records of the three accounts, as whoever shows them gets them: copies.
namespace panelry::desk
{

enum class AccountKind { Normal, Margin, Connect };

/// How a margin order is paid: with the account's own cash, with borrowed cash, or, for a sale, so that the
/// proceeds pay back what was borrowed first.
enum class Funding { Own, Borrowed, PayBack };

enum class OrderState {
    Sent,             ///< 已报: in the book
    PartlyDealt,      ///< 部成
    Dealt,            ///< 已成
    Cancelled,        ///< 已撤
    PartlyCancelled,  ///< 部撤: the rest was taken back after deals
    Refused,          ///< 废单
};

/// What a user wants.
struct OrderWish {
    AccountKind account = AccountKind::Normal;
    std::size_t security = 0;  ///< in the listing
    Side side = Side::Buy;
    Price price = 0;
    Quantity quantity = 0;
    Funding funding = Funding::Own;
};

struct Order {
    std::string contract;  ///< 合同编号: unique for ever
    OrderWish wish;
    MarketTime time;  ///< when it came in
    Quantity dealt = 0;
    Money dealtWorth = 0;  ///< of its deals, in the account's currency
    OrderState state = OrderState::Sent;
    std::string reason;  ///< of a refusal, UTF-8
    OrderId exchangeOrder = 0;

    [[nodiscard]] bool IsOpen() const
    {
        return state == OrderState::Sent || state == OrderState::PartlyDealt;
    }
    [[nodiscard]] Quantity Rest() const { return wish.quantity - dealt; }
};

struct Deal {
    std::string number;    ///< 成交编号
    std::string contract;  ///< of its order
    AccountKind account = AccountKind::Normal;
    std::size_t security = 0;
    Side side = Side::Buy;
    Funding funding = Funding::Own;  ///< of its order
    Price price = 0;
    Quantity quantity = 0;
    Money worth = 0;  ///< in the account's currency
    Money fees = 0;   ///< commission, stamp duty, transfer fee
    MarketTime time;
};

struct Holding {
    AccountKind account = AccountKind::Normal;
    std::size_t security = 0;
    Quantity total = 0;
    Quantity sellable = 0;  ///< bought before today (or tradable the same day), less frozen
    Quantity frozen = 0;    ///< in open sales
    Money cost = 0;         ///< what the present total has cost, fees included
};

/// The cash side of one account.
struct Funds {
    Money balance = 0;       ///< cash, frozen part included
    Money frozen = 0;        ///< for open buys
    Money available = 0;     ///< to buy with: balance - frozen
    Money withdrawable = 0;  ///< available less the proceeds of today's sales; never below 0
    Money marketValue = 0;   ///< of the holdings, at the prices that were asked for
    Money assets = 0;        ///< balance + marketValue - debt
    Money debt = 0;          ///< margin: borrowed and not paid back
    Money creditLine = 0;    ///< margin: how much may be borrowed in all
    Money credit =
        0;  ///< margin: how much may still be borrowed: line - debt - frozen for open borrowed buys
};

}  // namespace panelry::desk
