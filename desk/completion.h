#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace panelry::desk
{

/// The words that a desk knows beyond its commands.
struct Vocabulary {
    std::vector<std::string> panels;  ///< ids
    std::vector<std::string> codes;   ///< as commands take them: with "@MARKET" where they need it
};

/// What the last word of `line`, which ends at the cursor, can become; in the order of the tables. Nothing
/// for a word that is free.
std::vector<std::string> Completions(std::string_view line, const Vocabulary& vocabulary);

}  // namespace panelry::desk
