#pragma once

#include <atomic>
#include <cstdint>

/// What the host handed over with Init. In a header of its own, since the panels' code far below the exports
/// needs it.
///
/// Ownership: all three are the host's and stay valid until Uninit returns.
/// Threading: written by Init on a host thread, read on the application thread; a later Init replaces them.
namespace panelry::bridge
{

using HostCallbackFunction = void (*)(std::int32_t nCode, void* pData);

inline std::atomic<void*> QuoteProvider{nullptr};
inline std::atomic<void*> TradeProvider{nullptr};
inline std::atomic<HostCallbackFunction> HostCallback{nullptr};

/// What `nCode` of the callback says; 205 and 206 are messages of modules, passed on under their own numbers.
enum HostCode : std::int32_t {
    kUserActive = 0,     ///< null: a mouse button went down in a panel
    kCloneHandle = 1,    ///< decimal text of the native window id of a frame that isn't its component's first
    kComponentName = 2,  ///< StringMap*: in "component_id"; the host may add "component_name", the title
};

}  // namespace panelry::bridge
