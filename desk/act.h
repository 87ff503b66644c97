#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "desk/accounts/account.h"
#include "desk/exchange/market_time.h"
#include "desk/exchange/units.h"

/// What the desk can be asked to do, as values.
namespace panelry::desk
{

/// One call of NotifyMsg.
struct Message {
    std::int32_t type = 0;
    std::int32_t id = 0;
    std::string text;
};

/// Panel titles, by component id.
using Titles = std::map<std::int32_t, std::string>;

/// A text that is only announced.
struct Note {
    std::string text;
};

struct Quit {
};

struct Help {
    std::string command;  ///< empty: the list of all
};

// ---- what only a desk with a market can do

/// A security as people name it: "000001", or "000001@33" where the code alone leaves a doubt.
struct CodeName {
    std::string code;
    std::optional<std::uint8_t> market;
};

struct PlaceOrder {
    AccountKind account = AccountKind::Normal;
    Funding funding = Funding::Own;
    Side side = Side::Buy;
    CodeName security;
    Price price = 0;
    Quantity quantity = 0;
};

struct CancelOrder {
    std::string contract;
};

enum class Listed { Orders, Deals, Holdings, Funds };

struct ListAccounts {
    Listed what = Listed::Orders;
    std::optional<AccountKind> account;  ///< unset: all three
};

struct ShowQuote {
    CodeName security;
};

struct FillOrder {
    std::string contract;
    std::optional<Quantity> quantity;  ///< unset: the rest
    int parts = 1;
};

struct ShowPhase {
};

/// Moves the clock on to where that phase begins next.
struct MoveToPhase {
    Phase phase = Phase::Closed;
};

struct ShowClock {
};

struct SetSpeed {
    double speed = 1;
};

struct StepClock {
    std::chrono::milliseconds by{0};
};

struct MoveClock {
    std::chrono::milliseconds ofDay{0};
};

/// No words: lists them.
struct RunScenario {
    std::vector<std::string> words;
};

/// No name: lists them.
struct SwitchFault {
    std::string name;
    bool on = true;
    std::optional<int> number;
};

using MarketCommand =
    std::variant<PlaceOrder, CancelOrder, ListAccounts, ShowQuote, FillOrder, ShowPhase, MoveToPhase,
                 ShowClock, SetSpeed, StepClock, MoveClock, RunScenario, SwitchFault>;

struct MarketAct {
    MarketCommand command;
    std::string where;  ///< ahead of a complaint: "day.jsonl:12"
};

using Act = std::variant<Message, Titles, Note, Quit, Help, MarketAct>;

}  // namespace panelry::desk
