#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace panelry::logger
{

/// A file that is appended to through a buffer of its own.
///
/// Ownership: owns the descriptor; closes it, flushed, when it dies.
/// Threading: one thread at a time.
/// Failures: false. What couldn't be written is dropped with the buffer; the file stays open.
/// Append() and Flush() on an open file use memory copies and write(2) alone: good in a signal handler.
class LogFile
{
public:
    LogFile() = default;
    ~LogFile() { Close(); }
    LogFile(const LogFile&) = delete;
    LogFile& operator=(const LogFile&) = delete;

    /// Opens for appending; `size` receives the bytes that the file has already.
    bool Open(const std::string& path, std::uint64_t& size);
    bool IsOpen() const { return m_descriptor >= 0; }
    bool Append(std::string_view bytes);
    bool Flush();
    void Close();

private:
    static constexpr std::size_t kBufferBytes = 64 * 1024;

    int m_descriptor = -1;
    std::size_t m_used = 0;
    std::unique_ptr<char[]> m_buffer;  // made by the first Open(), kept
};

}  // namespace panelry::logger
