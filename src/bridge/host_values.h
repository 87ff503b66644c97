#pragma once

#include <atomic>

#include "bridge/host_callback.h"

/// What the host handed over with Init. In a header of its own, since the panels' code far below the exports
/// needs it.
///
/// Ownership: all three are the host's and stay valid until Uninit returns.
/// Threading: written by Init on a host thread, read on the application thread; a later Init replaces them.
namespace panelry::bridge
{

inline std::atomic<void*> QuoteProvider{nullptr};
inline std::atomic<void*> TradeProvider{nullptr};
inline std::atomic<HostCallbackFunction> HostCallback{nullptr};

}  // namespace panelry::bridge
