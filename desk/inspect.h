#pragma once

#include <filesystem>
#include <iosfwd>
#include <vector>

#include "desk/finding.h"

namespace panelry::desk
{

/// Why module libraries don't load and what is wrong with the settings: for a person, since the library
/// itself skips modules in silence and ends the host over a bad setting.
struct Inspection {
    std::filesystem::path modules;
    std::vector<Finding> moduleFindings;
    std::filesystem::path host;
    std::vector<Finding> settingFindings;

    [[nodiscard]] bool HasFaults() const;
};

/// `directory` is a host's directory, one that holds "adsplugins"; otherwise it is taken for a directory of
/// modules, with the host's directory above it.
Inspection Inspect(const std::filesystem::path& directory);

void Print(const Inspection& inspection, std::ostream& out);

}  // namespace panelry::desk
