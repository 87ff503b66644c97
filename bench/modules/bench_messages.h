#pragma once

#include <cstdint>

namespace panelry::bench
{

/// Ids from here on are panels, those below count messages.
inline constexpr std::uint32_t kFirstPanel = 1000;

/// A counter reports to the host (205), in decimal, how many messages it has got before.
inline constexpr int kReportToHost = 901;
/// A counter adds that number to the payload, a std::uint64_t*.
inline constexpr int kAddCount = 902;

}  // namespace panelry::bench
