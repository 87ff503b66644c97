#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "desk/providers/memory_table.h"
#include "desk/providers/simulation.h"
#include "services/trade_records.h"

/// The accounts as the host's tables and answers tell them: columns by the ids of the column dictionary,
/// words in the host's code page, money and prices as decimal text.
///
/// Threading: any; the market is locked for as long as it takes to copy what is needed.
namespace panelry::desk
{

/// Today's orders, or those of them that can be cancelled.
std::shared_ptr<MemoryTable> OrdersTable(const std::string& name, const Simulation& market,
                                         AccountKind account, bool onlyOpen);
/// Today's deals, or those of the days of `range`, both included.
std::shared_ptr<MemoryTable> DealsTable(const std::string& name, const Simulation& market,
                                        AccountKind account, std::optional<std::pair<int, int>> range);
std::shared_ptr<MemoryTable> HoldingsTable(const std::string& name, const Simulation& market,
                                           AccountKind account);
/// One row, in yuan.
std::shared_ptr<MemoryTable> FundsTable(const std::string& name, const Simulation& market,
                                        AccountKind account);
/// The funds as flat fields: balances in the head, the holdings' worth in the body.
ddsdk::TradeRequestParam FundsReply(const Simulation& market, AccountKind account);

/// "account_table" (normal and Stock Connect) or "rzrq_account_table".
std::shared_ptr<MemoryTable> ShareholderTable(const std::string& name, const Opening& opening, bool margin);
/// "scdm_range": first and last market code of the normal ("0_begin", "0_end") and the margin account
/// ("1_...").
StringMap MarketCodeRange(const Opening& opening);

}  // namespace panelry::desk
