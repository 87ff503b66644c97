#pragma once

#include <span>
#include <string>
#include <vector>

namespace panelry::desk
{

class MarketHost;

/// Something that happens on a market, by name.
struct Scenario {
    const char* name;
    const char* arguments;  ///< for people: "CODE [MARKET]"
    const char* help;       ///< one line for people
};

/// In the order in which they are listed.
std::span<const Scenario> Scenarios();

/// Plays one; `words` are its name and what follows. Empty, or why not, for people. A code that stands on
/// several markets is meant where it can be traded, unless the market's number follows it.
std::string PlayScenario(MarketHost& host, const std::vector<std::string>& words);

}  // namespace panelry::desk
