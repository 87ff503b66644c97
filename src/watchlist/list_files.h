#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <string>

namespace panelry
{

/// Where the lists stand. Joined once, as plain text: a host that changes its directory later doesn't part
/// the files from each other.
struct ListFiles {
    std::string user;    ///< the user's watchlist, read and written
    std::string system;  ///< the installation's, read where there is no user's
    std::string latest;  ///< the latest stocks, written at the end

    /// Under the current directory of this moment.
    static ListFiles Here();
};

/// The JSON value at the head of the file. Empty if it can't be opened, doesn't parse, or is nested deeper
/// than any list could be.
std::optional<nlohmann::json> ReadList(const std::string& path);

/// Replaces the file whole: whoever reads it, and whoever finds it after a crash, sees the old text or the
/// new one. Only in a directory in which no file may be made is an existing file overwritten in place: a
/// failure puts the old text back, but a crash in the middle leaves a part. False if the file stays as it
/// was.
bool ReplaceFile(const std::string& path, const std::string& text);

}  // namespace panelry
