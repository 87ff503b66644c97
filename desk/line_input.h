#pragma once

#include <optional>
#include <string>

namespace panelry::desk
{

/// Lines that a person, or a program, gives the desk while it plays.
///
/// Threading: one thread.
class LineInput
{
public:
    LineInput() = default;
    virtual ~LineInput() = default;
    LineInput(const LineInput&) = delete;
    LineInput& operator=(const LineInput&) = delete;

    /// To be polled; -1 (which poll passes over) once its end was seen.
    [[nodiscard]] virtual int Descriptor() const = 0;

    /// Reads once what is there. Blocks if nothing is: call when poll reports something.
    virtual void Read() = 0;

    /// The next whole line without its end.
    virtual std::optional<std::string> TakeLine() = 0;

    /// How many lines were taken.
    [[nodiscard]] virtual int LineNumber() const = 0;
};

}  // namespace panelry::desk
