#include "watchlist/list_files.h"

#include <fcntl.h>
#include <unistd.h>

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

// A file that is there, where no other may be made beside it.
bool IsInClosedDirectory(const std::string& path)
{
    std::error_code error;
    const std::filesystem::path file = std::filesystem::canonical(path, error);
    return std::filesystem::is_regular_file(file, error) &&
           ::faccessat(AT_FDCWD, file.parent_path().c_str(), W_OK, AT_EACCESS) != 0;
}

bool Put(QFile& file, const QByteArray& bytes)
{
    return file.seek(0) && file.write(bytes) == bytes.size() && file.resize(bytes.size());
}

// The file isn't emptied first: so it keeps its room on the disk, and the old text can be put back.
bool Overwrite(const std::string& path, const QByteArray& bytes)
{
    QFile file(QFile::decodeName(path.c_str()));
    if (!file.open(QIODevice::ReadWrite | QIODevice::ExistingOnly | QIODevice::Unbuffered)) {
        return false;
    }
    const QByteArray old = file.readAll();
    if (Put(file, bytes)) {
        return true;
    }
    Put(file, old);
    return false;
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
    const QByteArray bytes = QByteArray::fromRawData(text.data(), static_cast<int>(text.size()));
    if (IsInClosedDirectory(path)) {
        return Overwrite(path, bytes);
    }
    QSaveFile file(QFile::decodeName(path.c_str()));
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.commit();
}

}  // namespace panelry
