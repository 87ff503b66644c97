#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "desk/act.h"
#include "desk/announcer.h"
#include "desk/providers/market_host.h"
#include "desk/workspace.h"

namespace panelry::desk
{

/// What a person does on the market and asks of it: does it, and announces the answer.
///
/// Ownership: borrows both. Threading: one thread. Failures: come back as words.
class MarketConsole
{
public:
    MarketConsole(MarketHost& host, Announcer& announcer) : m_host(host), m_announcer(announcer) {}

    /// Empty, or why not. What a broker refuses is no failure: the refused order is announced.
    std::string Perform(const MarketCommand& command);

    /// Empty, or which of its codes the market doesn't have.
    [[nodiscard]] std::string CheckFeed(const Feed& feed) const;
    /// The push data of a feed that CheckFeed() has passed: all its quotes as they stand.
    [[nodiscard]] std::string FeedText(const Feed& feed) const;

private:
    std::string Do(const PlaceOrder& order);
    std::string Do(const CancelOrder& cancel);
    std::string Do(const ListAccounts& list);
    std::string Do(const ShowQuote& show);
    std::string Do(const FillOrder& fill);
    std::string Do(const ShowPhase& show);
    std::string Do(const MoveToPhase& move);
    std::string Do(const ShowClock& show);
    std::string Do(const SetSpeed& speed);
    std::string Do(const StepClock& step);
    std::string Do(const MoveClock& move);
    std::string Do(const RunScenario& scenario);
    std::string Do(const SwitchFault& fault);

    [[nodiscard]] std::size_t Find(const CodeName& name) const;
    [[nodiscard]] AccountKind AccountOf(const std::string& contract) const;
    void SayFaults();

    MarketHost& m_host;
    Announcer& m_announcer;
};

/// All codes of a market as commands take them: with "@MARKET" where one leaves a doubt.
std::vector<std::string> CodeWords(const Listing& listing);

}  // namespace panelry::desk
