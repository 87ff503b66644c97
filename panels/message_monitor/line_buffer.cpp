#include "message_monitor/line_buffer.h"

namespace panelry
{

void LineBuffer::Add(const QString& line)
{
    m_lines.push_back(line);
    if (m_lines.size() > m_most) {
        m_lines.pop_front();
    }
}

QStringList LineBuffer::Take()
{
    QStringList lines(m_lines.begin(), m_lines.end());
    m_lines.clear();
    return lines;
}

}  // namespace panelry
