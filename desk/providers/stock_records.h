#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "desk/exchange/exchange.h"
#include "desk/providers/simulation.h"
#include "services/quote_records.h"
#include "services/trade_records.h"

/// What clients are told of single securities, and how they name them.
namespace panelry::desk
{

/// A market number out of a client's text; 0 for what is none.
int MarketNumber(const std::string& text);

/// The securities that a client may mean: by code and market number; where nothing stands on exactly that
/// market, all of its family; without a number (0) all that have the code.
std::vector<std::size_t> SecuritiesMeant(const Listing& listing, int market, const std::string& code);

/// The one that a client may mean where one must be chosen: of several one that can be traded.
std::optional<std::size_t> SecurityMeant(const Listing& listing, int market, const std::string& code);

/// The row of a quote push, of the security at `place` in the listing; its name is UTF-8.
StringMap QuoteRow(const Exchange& exchange, std::size_t place);

/// The reply to a request "1025". For a code that several securities have, and no market that tells them
/// apart, only the choices; for one that none has, nothing. How much can be traded is asked of the account
/// that `request` means: margin with body "rzrq" "1", Stock Connect for its securities.
ddsdk::TradeRequestParam StockInfoReply(const Simulation& market, const ddsdk::TradeRequestParam& request);

/// The two lists of codes of transferred shares that clients look up by name: a head, "|", masks.
inline constexpr char kTransferMasksA[] = "SBA|43*;83*;87*;";
inline constexpr char kTransferMasksB[] = "SBB|42*;";

}  // namespace panelry::desk
