#pragma once

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "desk/act.h"
#include "desk/announcer.h"
#include "desk/workspace.h"

namespace panelry::desk
{

/// What the command line asks for; docs/desk.md tells it in full.
struct Options {
    std::filesystem::path library;
    std::optional<std::filesystem::path> workspace;
    std::optional<std::filesystem::path> script;  ///< neither this nor a workspace: only what is typed
    bool stay = false;
    std::optional<std::chrono::milliseconds> length;  ///< ends by itself
    EventForm form = EventForm::Json;
    bool tellsRequests = false;
    Titles titles;

    bool hasMarket = false;
    MarketWish market;
    bool afresh = false;
    bool keepsNothing = false;
    std::vector<MarketCommand> beginnings;  ///< faults and scenarios from the start
    std::optional<std::filesystem::path> tape;

    std::optional<std::filesystem::path> inspect;  ///< look at this directory and play nothing
};

/// The options, or the exit status of a program that has said all there is to say (help, version, wrong
/// usage).
std::variant<Options, int> ParseOptions(int argc, const char* const* argv);

/// Where the desk keeps what it remembers: "panelry" in XDG_STATE_HOME, or in ~/.local/state.
std::filesystem::path StateDirectory();

}  // namespace panelry::desk
