#pragma once

#include <chrono>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

namespace panelry::desk
{

/// Fields of an event in the order in which they are written.
using Fields = nlohmann::ordered_json;

/// An event as {"at": milliseconds, "event": ..., fields...} on one line. Bytes that aren't UTF-8 are
/// replaced by U+FFFD.
std::string EventJson(std::chrono::milliseconds at, std::string_view event, const Fields& fields);

/// The same for people: seconds, then what happened in a line; what an event lists follows in a line each.
/// Control characters of texts show as spaces.
std::string EventText(std::chrono::milliseconds at, std::string_view event, const Fields& fields);

}  // namespace panelry::desk
