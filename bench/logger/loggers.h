#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

/// The loggers that are compared, behind one face.
namespace panelry::bench
{

/// A logger that writes the same line, with a number in it, into files of one directory.
///
/// Write() is called through a std::function that holds the direct call, the same small cost for all.
struct BenchedLogger {
    std::string name;
    std::function<void(const std::string& directory, std::uint32_t lines)> start;
    std::function<void(std::uint32_t number)> write;
    std::function<void()> finish;  ///< returns when all lines are in their files
    bool leavesFiles = true;       ///< one line a call, to be counted
};

BenchedLogger OurLogger();
/// Asynchronous, with its policy of blocking callers when its queue is full.
BenchedLogger SpdlogAsync();
/// Synchronous.
BenchedLogger GlogSync();
/// Formats the same head by hand and pushes a pointer under a mutex; nobody takes it.
BenchedLogger BareLoop();

}  // namespace panelry::bench
