#pragma once

#include <algorithm>
#include <charconv>
#include <cstring>
#include <string_view>

#include "logger/log4z/log_record.h"

namespace panelry::logger
{

/// Appends to a record's content; what doesn't fit is dropped. Never looks at the locale.
class RecordText
{
public:
    explicit RecordText(log4z::LogRecord& record) : m_record(record) {}

    void Append(std::string_view text)
    {
        const auto used = static_cast<std::size_t>(m_record.length);
        const std::size_t count = std::min(text.size(), log4z::kContentBytes - used);
        if (count > 0) {
            std::memcpy(m_record.content + used, text.data(), count);
            m_record.length += static_cast<std::int32_t>(count);
        }
    }

    void Append(char letter) { Append(std::string_view(&letter, 1)); }

    /// An integer (with its base) or a floating number, in the shortest form that reads back the same.
    template <class Number, class... Base>
    void AppendNumber(Number number, Base... base)
    {
        char digits[64];
        const auto end = std::to_chars(digits, digits + sizeof digits, number, base...);
        Append(std::string_view(digits, static_cast<std::size_t>(end.ptr - digits)));
    }

private:
    log4z::LogRecord& m_record;
};

}  // namespace panelry::logger
