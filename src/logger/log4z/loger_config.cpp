// LogerManager: settings from a text file.

#include <cerrno>
#include <cstdio>
#include <memory>
#include <optional>

#include "logger/log4z/log_config.h"
#include "logger/log4z/loger_manager.h"

namespace log4z
{

namespace
{

void PrintError(const std::string& message)
{
    constexpr char frame[] = " !!! !!! !!! !!!\r\n";
    std::fputs(frame, stdout);
    std::fputs(message.c_str(), stdout);
    std::fputs(frame, stdout);
}

std::optional<std::string> ReadWhole(const std::string& path)
{
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rbe"), &std::fclose);
    if (!file) {
        return std::nullopt;
    }
    std::string text;
    char part[4096];
    while (const std::size_t count = std::fread(part, 1, sizeof part, file.get())) {
        text.append(part, count);
    }
    if (std::ferror(file.get()) != 0) {  // a directory, for one
        return std::nullopt;
    }
    return text;
}

std::uint64_t SumOfBytes(std::string_view text)
{
    std::uint64_t sum = 0;
    for (const char letter : text) {
        sum += static_cast<unsigned char>(letter);
    }
    return sum;
}

}  // namespace

bool LogerManager::Config(const char* file)
{
    if (!file) {
        return false;
    }
    const std::lock_guard guard(m_configLock);
    if (!m_configFile.empty()) {
        PrintError(" !!! !!! log4z configure error: too many calls to Config. the old config file=" +
                   m_configFile + ",  the new config file=" + file + " !!! !!! \r\n");
        return false;
    }
    m_configFile = file;
    const std::optional<std::string> text = ReadWhole(m_configFile);
    if (!text) {
        PrintError(" !!! !!! log4z load config file error. filename=" + m_configFile + "  !!! !!! \r\n");
        return false;
    }
    return ApplyConfig(*text, false);
}

bool LogerManager::ConfigFromText(const char* text)
{
    if (!text) {
        PrintError(" !!! !!! log4z load config file error \r\n");
        return false;
    }
    const std::lock_guard guard(m_configLock);
    return ApplyConfig(text, false);
}

bool LogerManager::RereadConfig()
{
    const std::lock_guard guard(m_configLock);
    if (m_configFile.empty()) {
        return false;
    }
    const std::optional<std::string> text = ReadWhole(m_configFile);
    return text && ApplyConfig(*text, true);
}

// A plain sum tells most texts apart; it only saves work.
bool LogerManager::ApplyConfig(std::string_view text, bool hot)
{
    const std::uint64_t sum = SumOfBytes(text);
    if (sum == m_textSum) {
        return true;
    }
    m_textSum = sum;
    const auto print = [](const std::string& warning) { std::fputs(warning.c_str(), stdout); };
    for (const auto& [key, config] : panelry::logger::ParseLogConfig(text, print)) {
        ConfigureLogger(key, config, hot);
    }
    return true;
}

void LogerManager::ConfigureLogger(const std::string& key, const panelry::logger::LoggerConfig& config,
                                   bool hot)
{
    int id = FindLogger(key.c_str());
    if (id < 0 && !hot) {  // a file that is read again can't add a logger
        id = CreateLogger(key.c_str());
    }
    if (id < 0) {
        return;
    }
    SetEnabled(id, config.enable);
    SetName(id, config.name.c_str());
    SetPath(id, config.path.c_str());
    SetLevel(id, config.level);
    SetFileLine(id, config.fileline);
    SetDisplay(id, config.display);
    SetOutFile(id, config.outfile);
    SetLimitSize(id, config.limitsize);
    SetMonthDir(id, config.monthdir);
}

}  // namespace log4z
