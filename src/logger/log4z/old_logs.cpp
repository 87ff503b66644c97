#include "logger/log4z/old_logs.h"

#include <chrono>
#include <map>
#include <system_error>

namespace panelry::logger
{

namespace
{

namespace fs = std::filesystem;

using FilesByTime = std::map<std::int64_t, fs::path>;  // oldest first

constexpr std::int64_t kTicksASecond = 10'000'000;  // of 100 ns
constexpr std::int64_t kTicksFrom1601To1970 = 11'644'473'600 * kTicksASecond;

void ThrowIf(const std::error_code& error, const char* operation, const fs::path& path)
{
    if (error) {
        throw fs::filesystem_error(operation, path, error);
    }
}

// The library's file clock starts elsewhere and counts otherwise.
std::int64_t TicksSince1601(const fs::path& file)
{
    std::error_code error;
    const fs::file_time_type written = fs::last_write_time(file, error);
    ThrowIf(error, "last_write_time", file);
    const auto since1970 = std::chrono::file_clock::to_sys(written).time_since_epoch();
    using Ticks = std::chrono::duration<std::int64_t, std::ratio<1, kTicksASecond>>;
    return std::chrono::floor<Ticks>(since1970).count() + kTicksFrom1601To1970;
}

bool IsRegularFile(const fs::directory_entry& entry)
{
    std::error_code error;
    const fs::file_status status = entry.status(error);
    if (status.type() == fs::file_type::none) {  // a file that is gone has a type, and isn't an error
        ThrowIf(error, "directory_entry::status", entry.path());
    }
    return fs::is_regular_file(status);
}

bool Exists(const fs::path& path)
{
    std::error_code error;
    const bool exists = fs::exists(path, error);
    ThrowIf(error, "exists", path);
    return exists;
}

void Remove(const fs::path& path)
{
    std::error_code error;
    fs::remove(path, error);
    ThrowIf(error, "remove", path);
}

FilesByTime RegularFiles(const fs::path& directory)
{
    FilesByTime files;
    std::error_code error;
    fs::directory_iterator entry(directory, error);
    ThrowIf(error, "directory_iterator::directory_iterator", directory);
    while (entry != fs::directory_iterator()) {
        if (IsRegularFile(*entry)) {
            files.try_emplace(TicksSince1601(entry->path()), entry->path());
        }
        entry.increment(error);
        ThrowIf(error, "directory_iterator::operator++", directory);
    }
    return files;
}

}  // namespace

void ClearOldLogFiles(const fs::path& directory, std::size_t maxFiles, std::int64_t maxAgeSeconds,
                      std::int64_t now)
{
    if (!Exists(directory)) {
        return;
    }
    FilesByTime files = RegularFiles(directory);
    for (const auto& [ticks, path] : files) {
        if (now - ticks / kTicksASecond > maxAgeSeconds) {
            Remove(path);
        }
    }
    while (files.size() > maxFiles) {
        const auto oldest = files.begin();
        if (Exists(oldest->second)) {
            Remove(oldest->second);
        }
        files.erase(oldest);
    }
}

}  // namespace panelry::logger
