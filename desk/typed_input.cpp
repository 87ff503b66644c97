#include "desk/typed_input.h"

#include <unistd.h>

#include <array>
#include <cerrno>
#include <utility>

namespace panelry::desk
{

TypedInput::TypedInput(int descriptor) : m_descriptor(descriptor) {}

void TypedInput::Read()
{
    m_buffer.erase(0, std::exchange(m_taken, 0));
    std::array<char, 65536> block{};
    const ssize_t size = read(m_descriptor, block.data(), block.size());
    if (size > 0) {
        m_buffer.append(block.data(), static_cast<std::size_t>(size));
    } else if (size == 0 || (errno != EINTR && errno != EAGAIN)) {
        m_descriptor = -1;
    }
}

std::optional<std::string> TypedInput::TakeLine()
{
    const std::size_t end = m_buffer.find('\n', m_taken);
    const bool lastOne = end == std::string::npos && m_descriptor < 0 && m_taken < m_buffer.size();
    if (end == std::string::npos && !lastOne) {
        return std::nullopt;
    }
    std::string line = m_buffer.substr(m_taken, lastOne ? std::string::npos : end - m_taken);
    m_taken = lastOne ? m_buffer.size() : end + 1;
    ++m_lineNumber;
    return line;
}

}  // namespace panelry::desk
