#pragma once

#include <filesystem>
#include <stdexcept>

#include "bridge/exports.h"

namespace panelry::desk
{

/// The panels' shared library, found by names alone, as any host finds it.
///
/// Ownership: the library stays loaded until the process ends: it may have threads.
/// Failures: the constructor throws LoadError.
class HostLibrary
{
public:
    /// what() is the dynamic linker's own text, or names the function that is missing.
    class LoadError : public std::runtime_error
    {
    public:
        using std::runtime_error::runtime_error;
    };

    explicit HostLibrary(const std::filesystem::path& path);

    decltype(&::Init) Init = nullptr;
    decltype(&::NotifyMsg) NotifyMsg = nullptr;
    decltype(&::Uninit) Uninit = nullptr;
};

/// The directory of the running program, links resolved; the panels' thread makes it the current one.
std::filesystem::path ProgramDirectory();

/// The library that is used when none is named: beside the program, or else where an installation has it.
std::filesystem::path DefaultLibrary();

}  // namespace panelry::desk
