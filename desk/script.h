#pragma once

#include <chrono>
#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "desk/act.h"

/// What a line of a host script, or a line that a person types, asks the desk to do. Pure: text in, values
/// out. The format is told in docs/desk.md.
namespace panelry::desk
{

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

/// Tells an act where it was written, for complaints that come when it is performed.
void SetOrigin(Act& act, const std::string& where);

struct TimedAct {
    std::chrono::milliseconds at;
    Act act;
};

struct Complaint {
    std::string where;  ///< "<name>:<line number>"
    std::string reason;
};

struct Script {
    std::vector<TimedAct> acts;         ///< in the order of the lines
    std::vector<Complaint> complaints;  ///< one for each bad line
};

/// Reads to the end of `input`. A line without a time has that of the good line before it, the first one 0.
Script ReadScript(std::istream& input, std::string_view name);

}  // namespace panelry::desk
