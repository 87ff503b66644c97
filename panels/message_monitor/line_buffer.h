#pragma once

#include <QString>
#include <QStringList>
#include <cstddef>
#include <deque>

namespace panelry
{

/// Lines that wait to be shown; beyond the limit the oldest ones go.
///
/// Ownership: a plain value. Threading: one thread.
class LineBuffer
{
public:
    explicit LineBuffer(std::size_t most) : m_most(most) {}

    void Add(const QString& line);

    /// All that wait, oldest first; none wait afterwards.
    QStringList Take();
    void Clear() { m_lines.clear(); }

    std::size_t Size() const { return m_lines.size(); }

private:
    const std::size_t m_most;
    std::deque<QString> m_lines;
};

}  // namespace panelry
