#pragma once

#include <QString>
#include <QTime>

namespace panelry
{

/// How a payload may be read. A message id alone tells the type of what its pointer points to.
enum class PayloadKind {
    Text,     ///< `const char*`, UTF-8
    Stock,    ///< `StringMap*`
    Unknown,  ///< agreed between modules that we don't know: to read it would be a guess with a foreign
              ///< pointer
};

/// Text: the push ids 113 and 114, and what a host sends as "cmd", always with its text: -1 (a "show" or
/// "hide" without a "cmd"), every other id below 100, and ids from 9000 on. Those two ranges are the host's
/// by agreement; modules use other ids among themselves. Stock: 102. Unknown: all others.
PayloadKind PayloadKindOf(int msgId);

/// The payload as one line: a stock's pairs as "key=value"; line breaks, tabs and other control characters as
/// blanks; at most 4,000 characters, and then how many bytes there were. Null and unread payloads say so.
QString PayloadText(int msgId, const void* payload);

/// "09:31:05.123     114  text". The columns of time and id have a fixed width for ids of up to seven digits.
QString MessageLine(const QTime& time, int msgId, const QString& text);

/// Where those columns end in a line.
inline constexpr int kTimeColumnEnd = 12;
inline constexpr int kIdColumnEnd = kTimeColumnEnd + 1 + 7;

}  // namespace panelry
