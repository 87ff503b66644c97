#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "desk/accounts/account.h"
#include "desk/exchange/listing.h"

/// The words of the desk's host. UTF-8 unless one says otherwise.
namespace panelry::desk
{

/// `utf8` in the code page in which the host answers, GB18030; bytes that have no place there stay away.
/// Throws std::runtime_error where the system can't convert.
std::string ToHostText(const std::string& utf8);

/// "上海", "深圳", "港股通" or, for another market, its number.
std::string MarketName(std::uint8_t market);

/// "买入", "卖出"; for the margin account "担保品买入", "融资买入", "担保品卖出", "卖券还款". What buys has "买" in it.
std::string OperationName(AccountKind account, Side side, Funding funding);

/// "已报", "部成", "已成", "已撤", "部撤", "废单".
std::string StateName(OrderState state);

/// "normal", "margin", "connect".
std::string AccountName(AccountKind account);

/// The day of a date "20260701", counted as DateText() does, so below 1 for earlier ones; nothing for what is
/// no date.
std::optional<int> DayOf(const std::string& date);

/// "20260701" for a day.
std::string CompactDate(int day);

}  // namespace panelry::desk
