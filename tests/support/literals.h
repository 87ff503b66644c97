#pragma once

#include <QString>

namespace panelry::test
{

/// A text as it stands in the source.
inline QString operator""_q(const char* text, std::size_t length)
{
    return QString::fromUtf8(text, static_cast<int>(length));
}

}  // namespace panelry::test
