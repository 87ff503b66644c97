#pragma once

#include "desk/line_input.h"

namespace panelry::desk
{

/// Lines from a file descriptor, as they come.
///
/// Ownership: borrows the descriptor.
/// Threading: one thread.
/// Failures: an error of the descriptor counts as its end.
class TypedInput : public LineInput
{
public:
    explicit TypedInput(int descriptor);

    [[nodiscard]] int Descriptor() const override { return m_descriptor; }
    void Read() override;
    /// At the end of input also a last line that isn't ended.
    std::optional<std::string> TakeLine() override;
    [[nodiscard]] int LineNumber() const override { return m_lineNumber; }

private:
    int m_descriptor;
    std::string m_buffer;
    std::size_t m_taken = 0;  // how much of the buffer TakeLine has given away
    int m_lineNumber = 0;
};

}  // namespace panelry::desk
