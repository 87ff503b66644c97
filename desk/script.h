#pragma once

#include <chrono>
#include <cstdint>
#include <iosfwd>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

/// What a line of a host script, or a line that a person types, asks the desk to do. Pure: text in, values
/// out. The format is told in docs/desk.md.
namespace panelry::desk
{

/// One call of NotifyMsg.
struct Message {
    std::int32_t type = 0;
    std::int32_t id = 0;
    std::string text;
};

/// Panel titles, by component id.
using Titles = std::map<std::int32_t, std::string>;

/// A text that is only announced.
struct Note {
    std::string text;
};

struct Quit {
};

struct Help {
};

using Act = std::variant<Message, Titles, Note, Quit, Help>;

struct Line {
    std::optional<std::chrono::milliseconds> at;  ///< unset: the line doesn't say
    Act act;
};

/// Exactly one of three: a line; an error (a reason in words); or neither, for a blank line or a comment.
struct ParsedLine {
    std::optional<Line> line;
    std::string error;
};

/// One line of a script file: a JSON object, blank, or a comment that begins with "#".
ParsedLine ParseScriptLine(std::string_view text);

/// One line of standard input: as in a script file, or a short command ("open 41001").
ParsedLine ParseTypedLine(std::string_view text);

/// The short commands, for a person.
extern const char kTypedHelp[];

struct TimedAct {
    std::chrono::milliseconds at;
    Act act;
};

struct Script {
    std::vector<TimedAct> acts;           ///< in the order of the lines
    std::vector<std::string> complaints;  ///< "<name>:<line number>: <reason>", one for each bad line
};

/// Reads to the end of `input`. A line without a time has that of the good line before it, the first one 0.
Script ReadScript(std::istream& input, std::string_view name);

/// The whole text as a decimal number that fits, or nothing.
std::optional<std::int32_t> ParseNumber(std::string_view text);

}  // namespace panelry::desk
