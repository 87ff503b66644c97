#pragma once

#include <cstdint>

namespace panelry::logger
{

inline constexpr std::int64_t kMicrosASecond = 1'000'000;

/// What the logger takes from the world besides files; tests put their own in its place.
///
/// Threading: called on any thread.
class Surroundings
{
public:
    virtual std::int64_t NowMicros() const;      ///< system time, microseconds since 1970
    virtual void Sleep(int milliseconds) const;  ///< slows a caller down
    virtual std::uint32_t Random() const;        ///< any number

    std::int64_t NowSeconds() const { return NowMicros() / kMicrosASecond; }

    static const Surroundings& Real();

protected:
    ~Surroundings() = default;
};

}  // namespace panelry::logger
