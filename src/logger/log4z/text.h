#pragma once

#include <string_view>

namespace panelry::logger
{

/// A text without the blanks, tabs and line ends at both ends.
inline std::string_view Trimmed(std::string_view text)
{
    constexpr std::string_view blanks = " \t\r\n";
    const std::size_t start = text.find_first_not_of(blanks);
    if (start == std::string_view::npos) {
        return {};
    }
    return text.substr(start, text.find_last_not_of(blanks) - start + 1);
}

}  // namespace panelry::logger
