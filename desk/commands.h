#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "desk/act.h"

/// The short commands: what a person types, what stands under "desk" in a script, and what the manual says
/// about it. Pure: text in, values out.
namespace panelry::desk
{

/// What a word of a command is, for completion.
enum class Word { Free, Panel, Side, Code, Account, Phase, Scenario, Fault, OnOff, Command };

struct CommandDescription {
    const char* name;
    const char* arguments;  ///< for people
    const char* help;       ///< one line
    const char* example;    ///< empty: its form says all
    bool needsMarket;
    std::span<const Word> words;  ///< of its arguments, as far as completion helps
};

inline constexpr double kFastest = 100'000;        ///< of the market's clock, times real time
inline constexpr double kHighestRate = 1'000'000;  ///< quote changes a second

/// In the order in which they are listed.
std::span<const CommandDescription> Commands();
/// Null: there is no such command.
const CommandDescription* FindCommand(std::string_view name);

/// "order buy 600000 10.05 1000" as an act; throws BadText with the reason.
Act ParseCommand(std::string_view text);

/// The list of all commands, or one of them with an example.
std::string CommandHelp(std::string_view name = {});

/// The whole text as a decimal number that fits, or nothing.
std::optional<std::int32_t> ParseNumber(std::string_view text);
/// The same for a number with a point that isn't negative.
std::optional<double> ParseDecimal(std::string_view text);
/// "09:30" or "09:30:15", up to "23:59:59".
std::optional<std::chrono::milliseconds> ParseTimeOfDay(std::string_view text);
/// "late", "late=500", "late on", "late off"; throws BadText.
SwitchFault ParseFault(std::string_view name, std::string_view value);
/// "000001" or "000001@33"; throws BadText.
CodeName ParseCode(std::string_view text);

/// "opening-auction".
std::string PhaseWord(Phase phase);

inline constexpr Phase kPhases[] = {Phase::Closed,     Phase::OpeningAuction, Phase::BeforeOpen,
                                    Phase::Continuous, Phase::Break,          Phase::ClosingAuction};
inline constexpr AccountKind kAccounts[] = {AccountKind::Normal, AccountKind::Margin, AccountKind::Connect};

}  // namespace panelry::desk
