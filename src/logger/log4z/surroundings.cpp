#include "logger/log4z/surroundings.h"

#include <chrono>
#include <thread>

namespace panelry::logger
{

std::int64_t Surroundings::NowMicros() const
{
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::microseconds>(now).count();
}

void Surroundings::Sleep(int milliseconds) const
{
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

// One state a thread: rand() may be shared with the host, and locks.
std::uint32_t Surroundings::Random() const
{
    thread_local std::uint32_t state = 0;
    if (state == 0) {
        state = static_cast<std::uint32_t>(NowMicros()) | 1U;
    }
    state ^= state << 13U;
    state ^= state >> 17U;
    state ^= state << 5U;
    return state;
}

const Surroundings& Surroundings::Real()
{
    // NOLINTNEXTLINE(cppcoreguidelines-virtual-class-destructor): final, and never deleted
    struct RealSurroundings final : Surroundings {
    };
    static const RealSurroundings real;
    return real;
}

}  // namespace panelry::logger
