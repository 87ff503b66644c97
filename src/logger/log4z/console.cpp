#include "logger/log4z/console.h"

#include <unistd.h>

#include <cstdio>

#include "logger/log4z/log_record.h"

namespace panelry::logger
{

namespace
{

// Terminal sequences for levels 2 to 6.
constexpr std::string_view kColours[] = {"\x1b[36m", "\x1b[33m", "\x1b[31m", "\x1b[32m", "\x1b[35m"};
constexpr std::string_view kFormerColour = "\x1b[0m";

}  // namespace

void Console::Refresh()
{
    m_isTerminal = ::isatty(STDOUT_FILENO) == 1;
}

void Console::Print(std::string_view text)
{
    std::fwrite(text.data(), 1, text.size(), stdout);
    m_printed = true;
}

void Console::Show(std::string_view text, int level)
{
    if (level < log4z::Info || level > log4z::Fatal) {
        Print(text);
    } else if (m_isTerminal) {
        const std::lock_guard guard(m_consoleLock);
        Print(kColours[level - log4z::Info]);
        Print(text);
        Print(kFormerColour);
        Flush();
    }
}

void Console::Flush()
{
    if (m_printed.exchange(false)) {
        std::fflush(stdout);
    }
}

}  // namespace panelry::logger
