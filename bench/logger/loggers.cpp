#include "loggers.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <mutex>

#include "logger/log.h"

namespace panelry::bench
{

namespace
{

std::unique_ptr<log4z::LogerManager> manager;
std::unique_ptr<logger::Logger> ours;

// The bare loop's: lines stay where they were made, the list of pointers is their queue.
constexpr std::size_t kBareLine = 224;
std::vector<char> bareLines;
std::vector<const char*> bareQueue;
std::mutex bareLock;

std::size_t FormatBareLine(char* out, std::uint32_t number)
{
    thread_local const auto thread = static_cast<unsigned>(::syscall(SYS_gettid));
    thread_local std::time_t second = 0;
    thread_local std::tm date = {};
    timespec now = {};
    ::clock_gettime(CLOCK_REALTIME, &now);
    if (now.tv_sec != second) {
        second = now.tv_sec;
        ::localtime_r(&second, &date);
    }
    return static_cast<std::size_t>(std::snprintf(
        out, kBareLine,
        "[%04d-%02d-%02d %02d:%02d:%02d.%03ld][%04u][INFO ][loggers.cpp:%d] order %u of account 8802345671: "
        "buy 1200 of 600519 at 1688.00, sent to the market\r\n",
        date.tm_year + 1900, date.tm_mon + 1, date.tm_mday, date.tm_hour, date.tm_min, date.tm_sec,
        now.tv_nsec / 1'000'000, thread, __LINE__, number));
}

}  // namespace

BenchedLogger OurLogger()
{
    BenchedLogger logger;
    logger.name = "panelry";
    logger.start = [](const std::string& directory, std::uint32_t /*lines*/) {
        manager = std::make_unique<log4z::LogerManager>();
        manager->SetPath(0, directory.c_str());
        manager->SetDisplay(0, false);
        manager->SetLimitSize(0, 0);
        manager->Start();
        ours = std::make_unique<logger::Logger>(0, *manager);
    };
    logger.write = [](std::uint32_t number) {
        ours->Write(log4z::Info, "order ", number,
                    " of account 8802345671: buy 1200 of 600519 at 1688.00, sent to the market");
    };
    logger.finish = [] { manager->Stop(); };
    return logger;
}

BenchedLogger BareLoop()
{
    BenchedLogger logger;
    logger.name = "a bare loop";
    logger.leavesFiles = false;
    logger.start = [](const std::string& /*directory*/, std::uint32_t lines) {
        bareLines.resize(lines * kBareLine);
        bareQueue.reserve(lines);
    };
    logger.write = [](std::uint32_t number) {
        char* const line = bareLines.data() + number * kBareLine;
        FormatBareLine(line, number);
        const std::lock_guard guard(bareLock);
        bareQueue.push_back(line);
    };
    logger.finish = [] {};
    return logger;
}

}  // namespace panelry::bench
