#include "logger/log4z/log_config.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <system_error>

#include "logger/log4z/text.h"

namespace panelry::logger
{

namespace
{

using Warn = std::function<void(const std::string&)>;

constexpr std::string_view kMainKey = "Main";

std::string Lowered(std::string_view text)
{
    std::string lowered(text);
    for (char& letter : lowered) {
        if (letter >= 'A' && letter <= 'Z') {
            letter = static_cast<char>(letter - 'A' + 'a');
        }
    }
    return lowered;
}

bool IsOn(const std::string& value)
{
    return value != "false" && value != "0";
}

// The number at the head of a text, 0 when there is none; the nearest when it doesn't fit.
std::int32_t NumberIn(std::string_view value)
{
    std::int32_t number = 0;
    const auto result = std::from_chars(value.data(), value.data() + value.size(), number);
    if (result.ec == std::errc::result_out_of_range) {
        using Limits = std::numeric_limits<std::int32_t>;
        return value.front() == '-' ? Limits::min() : Limits::max();
    }
    return number;
}

std::int32_t LevelNamed(const std::string& word, std::int32_t otherwise)
{
    static const std::map<std::string_view, std::int32_t> levels{{"trace", 0}, {"all", 0},   {"debug", 1},
                                                                 {"info", 2},  {"warn", 3},  {"warning", 3},
                                                                 {"error", 4}, {"alarm", 5}, {"fatal", 6}};
    const auto found = levels.find(word);
    return found == levels.end() ? otherwise : found->second;
}

// "reserve" is known and has no effect: only SetReserve sets it.
void ApplySetting(LoggerConfig& logger, const std::string& key, std::string_view value)
{
    const std::string word = Lowered(value);
    if (key == "path") {
        logger.path = value;
    } else if (key == "name") {
        logger.name = value;
    } else if (key == "level") {
        logger.level = LevelNamed(word, logger.level);
    } else if (key == "display") {
        logger.display = IsOn(word);
    } else if (key == "outfile") {
        logger.outfile = IsOn(word);
    } else if (key == "monthdir") {
        logger.monthdir = IsOn(word);
    } else if (key == "limitsize") {
        logger.limitsize = NumberIn(word);
    } else if (key == "fileline") {
        logger.fileline = IsOn(word);
    } else if (key == "enable") {
        logger.enable = IsOn(word);
    }
}

class Parser
{
public:
    explicit Parser(const Warn& warn) : m_warn(warn) {}

    void ReadLine(std::string_view line)
    {
        ++m_line;
        line = Trimmed(line);
        if (line.empty() || line.front() == '#') {
            return;
        }
        if (line.front() == '[') {
            OpenLogger(Trimmed(line.substr(1, line.find(']') - 1)));
        } else if (const std::size_t split = line.find('='); split != std::string_view::npos) {
            ReadSetting(Trimmed(line.substr(0, split)), Trimmed(line.substr(split + 1)));
        }
    }

    LogConfig TakeResult() { return std::move(m_loggers); }

private:
    void OpenLogger(std::string_view key)
    {
        m_inSection = true;
        const std::string name(Lowered(key) == "main" ? kMainKey : key);
        const auto [place, isNew] = m_loggers.try_emplace(name);
        // The settings under a repeated key belong to nobody: the logger before it hasn't asked for them.
        m_current = isNew ? &place->second : nullptr;
        if (isNew) {
            m_current->name = name;
        } else {
            m_warn("log4z configure warning: duplicate logger key:[" + name +
                   "] at line: " + std::to_string(m_line) + " \r\n");
        }
    }

    void ReadSetting(std::string_view key, std::string_view value)
    {
        if (m_current) {
            ApplySetting(*m_current, Lowered(key), value);
        } else if (!m_inSection) {
            m_warn("log4z configure warning: not found current logger name:[] at line:" +
                   std::to_string(m_line) + ", key=" + std::string(key) + ", value=" + std::string(value) +
                   " \r\n");
        }
    }

    const Warn& m_warn;
    LogConfig m_loggers;
    LoggerConfig* m_current = nullptr;  // takes the settings; null: nobody does
    bool m_inSection = false;
    int m_line = 0;
};

}  // namespace

LogConfig ParseLogConfig(std::string_view text, const Warn& warn)
{
    constexpr std::string_view byteOrderMark = "\xef\xbb\xbf";
    if (text.substr(0, byteOrderMark.size()) == byteOrderMark) {
        text.remove_prefix(byteOrderMark.size());
    }
    Parser parser(warn);
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size() - 1);
        parser.ReadLine(text.substr(0, end + 1));
        text.remove_prefix(end + 1);
    }
    return parser.TakeResult();
}

}  // namespace panelry::logger
