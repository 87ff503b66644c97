#pragma once

#include <cstdint>

namespace panelry::logger
{

/// What the logger takes from the world besides files; tests put their own in its place.
///
/// Threading: called on any thread.
class Surroundings
{
public:
    virtual std::int64_t NowMicros() const;      ///< system time, microseconds since 1970
    virtual void Sleep(int milliseconds) const;  ///< slows a caller down
    virtual std::uint32_t Random() const;        ///< any number

    static const Surroundings& Real();

protected:
    ~Surroundings() = default;
};

}  // namespace panelry::logger
