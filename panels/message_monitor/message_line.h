#pragma once

#include <QString>
#include <QTime>

namespace panelry
{

/// How a payload may be read. A message id alone tells the type of what its pointer points to.
enum class PayloadKind {
    Text,     ///< `const char*`, UTF-8
    Stock,    ///< `StringMap*`
    Unknown,  ///< a record of the library, or agreed between modules that we don't know: to read it would be
              ///< a guess with a foreign pointer
};

/// Stock: 102. Unknown: the library's other ids (119 to 123, 200 to 207) and the modules' own, from 1,000,000
/// on. Text: all others, so push data and what a host sends as "cmd". Who sends one of these from a module
/// sends text too: that is the agreement (CarriesText in hosting/message_ids.h).
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
