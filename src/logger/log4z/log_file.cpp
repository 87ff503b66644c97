#include "logger/log4z/log_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace panelry::logger
{

namespace
{

constexpr mode_t kFileMode = 0666;  // less the umask

bool WriteAll(int descriptor, const char* bytes, std::size_t count)
{
    while (count > 0) {
        const ssize_t written = ::write(descriptor, bytes, count);
        if (written > 0) {
            bytes += written;
            count -= static_cast<std::size_t>(written);
        } else if (written == 0 || errno != EINTR) {
            return false;
        }
    }
    return true;
}

}  // namespace

bool LogFile::Open(const std::string& path, std::uint64_t& size)
{
    Close();
    if (!m_buffer) {
        m_buffer.reset(new char[kBufferBytes]);
    }
    m_descriptor = ::open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, kFileMode);
    struct stat status = {};
    if (!IsOpen() || ::fstat(m_descriptor, &status) != 0) {
        Close();
        return false;
    }
    size = static_cast<std::uint64_t>(status.st_size);
    return true;
}

bool LogFile::Append(std::string_view bytes)
{
    if (m_used + bytes.size() > kBufferBytes && !Flush()) {
        return false;
    }
    std::memcpy(m_buffer.get() + m_used, bytes.data(), bytes.size());  // a line is shorter than the buffer
    m_used += bytes.size();
    return true;
}

bool LogFile::Flush()
{
    const std::size_t count = m_used;
    m_used = 0;
    return WriteAll(m_descriptor, m_buffer.get(), count);
}

void LogFile::Close()
{
    if (IsOpen()) {
        Flush();
        ::close(m_descriptor);
        m_descriptor = -1;
    }
}

}  // namespace panelry::logger
