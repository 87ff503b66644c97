#include "base/number_text.h"

#include <charconv>
#include <limits>
#include <system_error>

namespace panelry
{

int TextToInt(std::string_view text)
{
    const std::size_t start = text.find_first_not_of(" \t\n\v\f\r");
    if (start == std::string_view::npos) {
        return 0;
    }
    text.remove_prefix(start);
    const bool negative = text.front() == '-';
    if (text.front() == '+' && text.size() > 1 && text[1] != '-') {
        text.remove_prefix(1);
    }
    int number = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
    if (result.ec == std::errc::result_out_of_range) {
        return negative ? std::numeric_limits<int>::min() : std::numeric_limits<int>::max();
    }
    return number;
}

}  // namespace panelry
