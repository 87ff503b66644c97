#include "watchlist/list_files.h"

#include <QFile>
#include <QSaveFile>
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <utility>

namespace panelry
{

namespace
{

using Json = nlohmann::json;

// The library parses without recursion but copies and prints with it.
constexpr int kDeepest = 512;

bool IsDeeperThan(const Json& value, int levels)
{
    if (!value.is_structured()) {
        return false;
    }
    return levels == 0 || std::any_of(value.begin(), value.end(), [levels](const Json& element) {
               return IsDeeperThan(element, levels - 1);
           });
}

}  // namespace

ListFiles ListFiles::Here()
{
    std::error_code error;  // without a current directory nothing is found and nothing written
    const std::string directory = std::filesystem::current_path(error).string();
    return {directory + "/userconfig/Watchlist.json", directory + "/sysconfig/Watchlist.json",
            directory + "/userconfig/Lastestlist.json"};
}

std::optional<nlohmann::json> ReadList(const std::string& path)
{
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error)) {  // a pipe would hold up the reader
        return std::nullopt;
    }
    std::ifstream stream(path, std::ios::binary);
    try {
        Json list;
        stream >> list;  // takes what stands at the head, so that a tail left by another program does no harm
        if (!IsDeeperThan(list, kDeepest)) {
            return list;
        }
    } catch (const std::exception&) {
        // skipped silently: counts as not read
    }
    return std::nullopt;
}

bool ReplaceFile(const std::string& path, const std::string& text)
{
    QSaveFile file(QFile::decodeName(path.c_str()));
    file.setDirectWriteFallback(true);
    return file.open(QIODevice::WriteOnly) &&
           file.write(text.data(), static_cast<qint64>(text.size())) == static_cast<qint64>(text.size()) &&
           file.commit();
}

}  // namespace panelry
