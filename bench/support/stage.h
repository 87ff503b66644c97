#pragma once

#include <filesystem>
#include <string>

namespace panelry::bench
{

/// A fresh directory with a plug-in directory in it, for a run that shall see these module libraries and no
/// others.
///
/// The library looks for modules beside the program that runs, and follows links to find that place. So a
/// program that needs a stage of its own runs as a copy of itself. Ownership: the directory is removed with
/// the object. Failures: std::filesystem::filesystem_error.
class Stage
{
public:
    Stage();
    ~Stage();
    Stage(const Stage&) = delete;
    Stage& operator=(const Stage&) = delete;

    const std::filesystem::path& Directory() const { return m_directory; }

    /// Puts `count` copies of the benchmarks' module library on the stage, numbered from 1.
    void AddModules(int count);

    /// Runs this program from the stage, waits for its end and returns what it wrote to standard output; a
    /// failure of it ends this program too. `arguments` is text for a shell.
    std::string RunSelf(const std::string& arguments);

private:
    std::filesystem::path m_directory;
};

/// Where the programs and the library of the build lie. Not on a stage.
std::filesystem::path BuildOutput();

}  // namespace panelry::bench
