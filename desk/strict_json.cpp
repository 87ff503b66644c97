#include "desk/strict_json.h"

#include <algorithm>
#include <limits>

namespace panelry::desk
{

namespace
{

/// What follows the first `mark`, or the whole text where there is none.
std::string Behind(std::string_view mark, const std::string& text)
{
    const std::size_t at = text.find(mark);
    return at == std::string::npos ? text : text.substr(at + mark.size());
}

}  // namespace

std::string Quoted(std::string_view text)
{
    return '"' + std::string(text) + '"';
}

std::string_view Trimmed(std::string_view text)
{
    constexpr std::string_view kBlanks = " \t\r\n";
    const std::size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

// "[json.exception.parse_error.101] parse error at line 1, column 5: reason" without its head: the byte says
// where.
Json ParseObject(std::string_view text)
{
    const auto bounded = [](int depth, Json::parse_event_t, const Json&) {
        if (depth > kDeepest) {
            throw BadText("nested more than " + std::to_string(kDeepest) + " deep");
        }
        return true;
    };
    try {
        Json object = Json::parse(text, bounded);
        if (!object.is_object()) {
            throw BadText("not a JSON object");
        }
        return object;
    } catch (const Json::parse_error& error) {
        throw BadText("not JSON at byte " + std::to_string(error.byte) + ": " + Behind(": ", error.what()));
    }
}

std::string Reason(const Json::exception& error)
{
    return Behind("] ", error.what());
}

void RefuseOtherKeys(const Json& object, std::span<const std::string_view> known)
{
    for (const auto& [key, value] : object.items()) {
        if (std::find(known.begin(), known.end(), key) == known.end()) {
            throw BadText("unknown key " + Quoted(key));
        }
    }
}

const Json& Member(const Json& object, const char* key)
{
    const auto member = object.find(key);
    if (member == object.end()) {
        throw BadText(Quoted(key) + " is missing");
    }
    return *member;
}

std::optional<std::int64_t> WholeNumber(const Json& value, std::int64_t least, std::int64_t most)
{
    if (!value.is_number_integer() ||
        (value.is_number_unsigned() && value.get<std::uint64_t>() > static_cast<std::uint64_t>(most))) {
        return std::nullopt;
    }
    const auto number = value.get<std::int64_t>();
    return number < least || number > most ? std::nullopt : std::optional(number);
}

std::optional<std::int32_t> Number32(const Json& value)
{
    using Limits = std::numeric_limits<std::int32_t>;
    const std::optional<std::int64_t> number = WholeNumber(value, Limits::min(), Limits::max());
    return number ? std::optional(static_cast<std::int32_t>(*number)) : std::nullopt;
}

}  // namespace panelry::desk
