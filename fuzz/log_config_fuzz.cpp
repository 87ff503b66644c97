// The logger's configuration text: any bytes are read without harm, the way lines end and comments don't
// matter, and what was read is what the manager then has.

#include <cstdint>
#include <cstdio>
#include <string>
#include <tuple>
#include <utility>

#include "check.h"
#include "logger/log4z/log_config.h"
#include "logger/log4z/loger_manager.h"

using panelry::logger::LogConfig;
using panelry::logger::LoggerConfig;
using panelry::logger::ParseLogConfig;

namespace
{

auto Fields(const LoggerConfig& c)
{
    return std::tie(c.name, c.path, c.level, c.limitsize, c.display, c.outfile, c.monthdir, c.fileline,
                    c.enable);
}

void CheckSame(const LogConfig& one, const LogConfig& other)
{
    Check(one.size() == other.size(), "another number of loggers");
    for (auto a = one.begin(), b = other.begin(); a != one.end(); ++a, ++b) {
        Check(a->first == b->first && Fields(a->second) == Fields(b->second), "another logger");
    }
}

std::string WithOtherLineEnds(const std::string& text)
{
    std::string changed;
    for (const char letter : text) {
        changed += letter == '\n' ? "\t \r\n# level=info\n" : std::string(1, letter);
    }
    return changed;
}

void CheckApplied(const std::string& text, const LogConfig& config)
{
    log4z::LogerManager manager;
    Check(manager.ConfigFromText(text.c_str()), "not taken");
    for (const auto& [key, logger] : config) {
        const int id = manager.FindLogger(key.c_str());
        Check(id >= 0 || config.size() > log4z::LOGGER_MAX - 1, "a logger is missing");
        Check(id < 0 || (manager.GetLevel(id) == logger.level && manager.IsEnabled(id) == logger.enable),
              "not applied");
    }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/)
{
    return std::freopen("/dev/null", "w", stdout) ? 0 : 1;  // the manager's warnings
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    std::string text(reinterpret_cast<const char*>(data), size);
    text.resize(std::string(text.c_str()).size());  // a C string ends at its first NUL
    int warnings = 0;
    const auto count = [&](const std::string& warning) {
        ++warnings;
        Check(warning.size() > 2 && warning.ends_with("\r\n"), "no line of a warning");
    };
    const LogConfig config = ParseLogConfig(text, count);
    const int told = std::exchange(warnings, 0);
    CheckSame(config, ParseLogConfig(WithOtherLineEnds(text), count));
    Check(warnings == told, "another number of warnings");
    CheckApplied(text, config);
    return 0;
}
