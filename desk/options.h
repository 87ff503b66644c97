#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <variant>

#include "desk/script.h"

namespace panelry::desk
{

/// What the command line asks for; docs/desk.md tells it in full.
struct Options {
    std::filesystem::path library;
    std::filesystem::path script;
    bool onlyTyped = false;  ///< no script: "-"
    bool stay = false;
    Titles titles;
    std::optional<std::filesystem::path> market;   ///< the file of the demonstration market
    std::optional<std::filesystem::path> inspect;  ///< look at this directory and play nothing
};

/// The options, or the exit status of a program that has said all there is to say (help, version, wrong
/// usage).
std::variant<Options, int> ParseOptions(int argc, const char* const* argv);

}  // namespace panelry::desk
