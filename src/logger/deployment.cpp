#include "logger/deployment.h"

#include <filesystem>
#include <string_view>
#include <system_error>

#include "logger/crash_guard.h"
#include "logger/log4z/loger_manager.h"
#include "logger/log4z/record_text.h"

namespace panelry::logger
{

namespace
{

constexpr int kStopAttempts = 3;

// Application threads follow one another; none overlap.
bool configured = false;
bool begun = false;

void AppendFormat(RecordText& text, std::string_view format)
{
    while (!format.empty()) {
        const std::size_t end = format.find("%%");
        if (end == std::string_view::npos) {
            text.Append(format);
            return;
        }
        text.Append(format.substr(0, end + 1));
        format.remove_prefix(end + 2);
    }
}

}  // namespace

void BeginLogging(const std::string& configFile, bool crashGuard)
{
    if (configFile.empty()) {
        return;
    }
    log4z::LogerManager& manager = log4z::LogerManager::Instance();
    if (configured) {
        manager.EnableAgain();
    } else {
        manager.Config(configFile.c_str());  // once a process; says itself what is wrong
        configured = true;
    }
    try {
        manager.Start();
    } catch (const std::system_error&) {
        return;  // no thread to be had: panels work without a log, too
    }
    begun = true;
    if (crashGuard) {
        InstallCrashGuard(manager);
    }
}

void EndLogging()
{
    if (!begun) {
        return;
    }
    begun = false;
    for (int attempt = 0; attempt < kStopAttempts; ++attempt) {
        try {
            log4z::LogerManager::Instance().Stop();
            break;
        } catch (const std::filesystem::filesystem_error&) {
            // Often a file that another process cleared first: it is gone at the next look.
        }
    }
    RemoveCrashGuard();
}

void WriteModuleText(int level, const char* text)
{
    if (level < log4z::Trace || level > log4z::Fatal || !text) {
        return;
    }
    log4z::LogerManager& manager = log4z::LogerManager::Instance();
    if (!manager.CanPush(0, level)) {
        return;
    }
    if (log4z::LogRecord* const record = manager.MakeRecord(0, level, nullptr, 0)) {
        RecordText line(*record);
        AppendFormat(line, text);
        manager.PushLine(record, nullptr, 0);
    }
}

}  // namespace panelry::logger
