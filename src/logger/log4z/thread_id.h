#pragma once

#include <sys/syscall.h>
#include <unistd.h>

#include <cstdint>

namespace panelry::logger
{

/// The kernel's id of the calling thread. Good in a signal handler: touches no thread-local of ours.
inline std::uint32_t ThreadId()
{
    return static_cast<std::uint32_t>(::syscall(SYS_gettid));
}

}  // namespace panelry::logger
