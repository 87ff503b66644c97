#pragma once

#include <memory>
#include <regex>
#include <string>

namespace panelry::ticket
{

/// The compiled form of `pattern`, default grammar, classic locale; from a cache that all threads share and
/// that forgets everything when it is full. Throws std::regex_error.
std::shared_ptr<const std::regex> CompiledExpression(const std::string& pattern);

}  // namespace panelry::ticket
