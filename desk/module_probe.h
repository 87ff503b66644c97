#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace panelry::desk
{

/// A module that a library offers.
struct Offer {
    std::uint32_t id = 0;
    std::string title;
};

/// What came of loading one module library the way the panels' library does.
struct ModuleProbe {
    std::string skipped;  ///< why the library passes over the file; empty: it doesn't
    std::string fatal;    ///< how loading it ends the host; empty: it doesn't
    std::string missing;  ///< a symbol that nobody has: the first call of it ends the host
    std::vector<Offer> offers;
};

/// Loads the library at `path` in a process of its own, with `hostDirectory` as the current directory, so
/// that one that crashes, exits or never comes back is told of like the others. Its standard output goes to
/// standard error. With `askOffers` false GetModuleInfo isn't called: its records can't be read if they were
/// built otherwise. Called while the process has one thread. Failures: std::system_error if there is no
/// process to be had.
ModuleProbe ProbeModule(const std::filesystem::path& path, const std::filesystem::path& hostDirectory,
                        bool askOffers);

}  // namespace panelry::desk
