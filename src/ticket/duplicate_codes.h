#pragma once

#include <optional>
#include <string_view>

namespace panelry::ticket
{

/// One of the stocks that a code may mean, as the host writes it: "market,code,market's name,stock's name".
/// The parts stay good as long as the text.
struct CodeChoice {
    std::string_view market;  ///< hexadecimal
    std::string_view code;
    std::string_view marketName;
    std::string_view stockName;
};

/// The first place in `text` that has the form of a choice. A part is one letter or more without line end,
/// "'", "=", "&" or ","; the first and the third have no blank either. Takes time that grows with the text's
/// length, no stack.
std::optional<CodeChoice> FindCodeChoice(std::string_view text);

}  // namespace panelry::ticket
