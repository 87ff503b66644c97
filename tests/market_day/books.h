#pragma once

#include <map>
#include <set>
#include <string>

#include "desk/providers/market_host.h"

namespace panelry::test
{

/// What stands in the tables and maps of both accounts, each row as one text: name of the table to its rows.
using Books = std::map<std::string, std::multiset<std::string>>;

/// As the broker has it.
Books BrokersBooks(const desk::Simulation& market);
/// As it was published when the library asked.
Books PublishedBooks(desk::MarketHost& host);
/// The first few rows that only one side has, in words; empty where both agree.
std::string Difference(const Books& broker, const Books& published);

}  // namespace panelry::test
