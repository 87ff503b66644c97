#pragma once

#include <filesystem>
#include <string_view>
#include <vector>

#include "desk/finding.h"

namespace panelry::desk
{

/// Goes through a directory of module libraries in the order of the panels' library and says for each entry
/// whether it is taken, what it offers, and why not. `ownAbi` is the ABI note to compare theirs with.
std::vector<Finding> InspectModules(const std::filesystem::path& directory,
                                    const std::filesystem::path& hostDirectory, std::string_view ownAbi);

}  // namespace panelry::desk
