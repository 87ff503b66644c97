#include "stage.h"

#include <fcntl.h>
#include <pty.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <termios.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <thread>

namespace panelry::test
{

namespace fs = std::filesystem;

void UseShanghaiTime()
{
    ::setenv("TZ", "CST-8", 1);
    ::tzset();
}

std::int64_t At(int year, int month, int day, int hour, int minute, int second)
{
    std::tm date = {};
    date.tm_year = year - 1900;
    date.tm_mon = month - 1;
    date.tm_mday = day;
    date.tm_hour = hour;
    date.tm_min = minute;
    date.tm_sec = second;
    return ::timegm(&date) - 8 * 3600;
}

Stage::Stage() : m_former(fs::current_path().string())
{
    fs::current_path(m_directory.path().toStdString());
}

Stage::~Stage()
{
    fs::current_path(m_former);
}

std::string FileName(const std::string& logger, const std::string& minute, int index)
{
    char tail[48];
    std::snprintf(tail, sizeof tail, "_%06d_%03d.log", static_cast<int>(::getpid()), index);
    return fs::read_symlink("/proc/self/exe").stem().string() + "_" + logger + "_" + minute + tail;
}

std::vector<std::string> FilesIn(const std::string& directory)
{
    std::vector<std::string> files;
    std::error_code error;
    for (const auto& entry : fs::recursive_directory_iterator(directory, error)) {
        if (!entry.is_directory()) {
            files.push_back(fs::relative(entry.path(), directory).string());
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

std::string Contents(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void WriteFile(const std::string& path, const std::string& contents)
{
    fs::create_directories(fs::absolute(path).parent_path());
    std::ofstream(path, std::ios::binary) << contents;
}

void WriteOldFile(const std::string& path, std::int64_t writtenAt)
{
    WriteFile(path, "log");
    const timespec times[2] = {{writtenAt, 0}, {writtenAt, 0}};
    ::utimensat(AT_FDCWD, path.c_str(), times, 0);
}

std::vector<std::string> TextsOf(const std::string& logger, const std::string& directory)
{
    std::vector<std::string> texts;
    for (const std::string& name : FilesIn(directory)) {
        if (name.find("_" + logger + "_") == std::string::npos) {
            continue;
        }
        std::istringstream file(Contents(directory + "/" + name));
        for (std::string line; std::getline(file, line);) {
            if (line.find("log4z thread started!") == std::string::npos &&
                line.find("logger id=") == std::string::npos && !line.empty()) {
                const std::size_t head = line.find("] ");
                texts.push_back(line.substr(head + 2, line.size() - head - 3));  // less the carriage return
            }
        }
    }
    return texts;
}

std::string Printed(const std::function<void()>& action, bool toTerminal)
{
    int ends[2];
    if (toTerminal ? ::openpty(&ends[0], &ends[1], nullptr, nullptr, nullptr) != 0 : ::pipe(ends) != 0) {
        return "no channel";
    }
    if (toTerminal) {
        termios mode = {};
        ::tcgetattr(ends[1], &mode);
        ::cfmakeraw(&mode);
        ::tcsetattr(ends[1], TCSANOW, &mode);
    }
    std::fflush(stdout);
    const int former = ::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 0);
    ::dup2(ends[1], STDOUT_FILENO);
    ::close(ends[1]);
    std::string printed;
    std::thread reader([&] {
        char part[4096];
        for (ssize_t count = 0; (count = ::read(ends[0], part, sizeof part)) > 0;) {
            printed.append(part, static_cast<std::size_t>(count));
        }
    });
    action();
    std::fflush(stdout);
    ::dup2(former, STDOUT_FILENO);  // the last writer is gone: the reader comes to its end
    ::close(former);
    reader.join();
    ::close(ends[0]);
    return printed;
}

}  // namespace panelry::test
