#pragma once

#include <filesystem>
#include <istream>
#include <vector>

#include "desk/finding.h"

namespace panelry::desk
{

/// Looks at the three settings files of a host's directory. A missing one is fine; a malformed one, or one
/// with a value that isn't a text, ends the host: said where.
std::vector<Finding> InspectSettings(const std::filesystem::path& hostDirectory);

}  // namespace panelry::desk
