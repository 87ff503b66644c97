#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>

namespace panelry::logger
{

/// Leaves the `maxFiles` newest regular files in a directory, subdirectories untouched. Of files of one write
/// time the first found counts for all: the others stay.
///
/// `now` is in seconds since 1970. A file that is older than `maxAgeSeconds` goes too, but its age is
/// counted from a clock that starts in 1601: the age of any real file is negative, and this removes nothing.
/// Failures: std::filesystem::filesystem_error, named after the operation that failed. A directory that
///   doesn't exist is none.
void ClearOldLogFiles(const std::filesystem::path& directory, std::size_t maxFiles,
                      std::int64_t maxAgeSeconds, std::int64_t now);

}  // namespace panelry::logger
