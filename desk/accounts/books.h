#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "desk/accounts/account.h"

/// What the broker's file and the broker's memory both hold. Enumerators are filed by their place: new ones
/// go behind the others.
namespace panelry::desk
{

inline constexpr std::array kAccountKinds{AccountKind::Normal, AccountKind::Margin, AccountKind::Connect};

/// The cash of an account. What is frozen follows from the open orders and isn't filed.
struct Cash {
    Money balance = 0;
    Money debt = 0;
    Money soldToday = 0;     ///< came in from sales of today
    Money frozen = 0;        ///< for open buys with own cash
    Money frozenCredit = 0;  ///< for open buys with borrowed cash

    bool operator==(const Cash&) const = default;
};

/// What an account holds of a security.
struct Position {
    Quantity total = 0;
    Quantity boughtToday = 0;  ///< can't be sold before tomorrow
    Money cost = 0;
    Quantity frozen = 0;  ///< in open sales; not filed

    bool operator==(const Position&) const = default;
};

struct AccountBooks {
    Cash cash;
    std::map<std::size_t, Position> positions;  ///< by security; none is empty
};

struct Books {
    int day = 1;
    std::int64_t firstOrder = 1;  ///< the number of orders.front(); they have no gaps
    std::int64_t nextDeal = 1;
    std::array<AccountBooks, kAccountKinds.size()> accounts;
    std::vector<Order> orders;  ///< of the day
    std::vector<Deal> deals;    ///< of the day

    AccountBooks& Of(AccountKind kind) { return accounts.at(static_cast<std::size_t>(kind)); }
    [[nodiscard]] const AccountBooks& Of(AccountKind kind) const
    {
        return accounts.at(static_cast<std::size_t>(kind));
    }
};

/// Orders and deals are counted from 1; people see the numbers with a fixed length.
std::string ContractText(std::int64_t number);
/// 0 for what no order could have.
std::int64_t ContractNumber(const std::string& contract);
std::string DealText(std::int64_t number);

}  // namespace panelry::desk
