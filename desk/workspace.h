#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "desk/act.h"

namespace panelry::desk
{

/// The market of a desk, as workspace and command line wish it; what is unset has its usual value.
struct MarketWish {
    std::optional<std::filesystem::path> securities;
    std::optional<std::filesystem::path> accounts;
    std::optional<std::filesystem::path> state;  ///< where the accounts are kept
    std::optional<double> speed;
    std::optional<std::chrono::milliseconds> start;  ///< time of day
    std::optional<double> rate;                      ///< quote changes a second
    std::optional<std::uint64_t> seed;
};

/// What `stronger` sets, and `weaker` for the rest.
MarketWish Merged(const MarketWish& stronger, const MarketWish& weaker);

/// Quotes of the market as push data for a panel.
struct Feed {
    std::int32_t panel = 0;
    std::vector<CodeName> codes;
    std::chrono::milliseconds every{1000};
};

/// Which panels stand on the desk, with what, on which market. Read from a JSON file that docs/desk.md
/// describes.
struct Workspace {
    struct Panel {
        std::int32_t id = 0;
        std::string title;
        bool open = true;
        std::string init;  ///< JSON text for the panel; empty: none
    };
    std::string title;
    std::vector<Panel> panels;
    std::optional<std::filesystem::path> script;
    MarketWish market;
    std::vector<Feed> feeds;

    [[nodiscard]] Titles PanelTitles() const;
    /// The messages that open what is to be open.
    [[nodiscard]] std::vector<Message> Openings() const;
};

/// Paths in the file count from its directory. Throws std::runtime_error with the file's name and the reason.
Workspace ReadWorkspace(const std::filesystem::path& file);

}  // namespace panelry::desk
