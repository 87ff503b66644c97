#pragma once

#include <optional>
#include <string>

namespace panelry::desk
{

/// Lines from a file descriptor, as they come.
///
/// Ownership: borrows the descriptor.
/// Threading: one thread.
/// Failures: an error of the descriptor counts as its end.
class TypedInput
{
public:
    explicit TypedInput(int descriptor);

    /// The descriptor; -1 (which poll passes over) once its end was seen.
    [[nodiscard]] int Descriptor() const { return m_descriptor; }

    /// Reads once what is there. Blocks if nothing is: call when poll reports something.
    void Read();

    /// The next whole line without its end; at the end of input also a last one that isn't ended.
    std::optional<std::string> TakeLine();

    /// How many lines were taken.
    [[nodiscard]] int LineNumber() const { return m_lineNumber; }

private:
    int m_descriptor;
    std::string m_buffer;
    std::size_t m_taken = 0;  // how much of the buffer TakeLine has given away
    int m_lineNumber = 0;
};

}  // namespace panelry::desk
