#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>

/// JSON that people write, held to its letter: what isn't expected is refused with a reason in words.
namespace panelry::desk
{

using Json = nlohmann::ordered_json;  // a text that is written as JSON keeps its order of keys

/// Leaves the reading; what() is the reason, for people.
class BadText : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

inline constexpr int kDeepest = 512;  ///< beyond, reading recurses too far; the library draws the same line

std::string Quoted(std::string_view text);
std::string_view Trimmed(std::string_view text);

/// Throws BadText for what is no JSON, no object, or nested too deep.
Json ParseObject(std::string_view text);

/// The reason that another exception of the JSON library gives, without its head.
std::string Reason(const Json::exception& error);

void RefuseOtherKeys(const Json& object, std::span<const std::string_view> known);

/// Throws BadText where there is none.
const Json& Member(const Json& object, const char* key);

std::optional<std::int64_t> WholeNumber(const Json& value, std::int64_t least, std::int64_t most);
std::optional<std::int32_t> Number32(const Json& value);

}  // namespace panelry::desk
