#pragma once

#include <cstdint>

/// The host's callback, and what it is called with.
///
/// Threading: called on the panels' thread, which it holds up. It may call NotifyMsg and Uninit.
/// Ownership: `pData` is good for the call alone.
namespace panelry::bridge
{

using HostCallbackFunction = void (*)(std::int32_t nCode, void* pData);

/// What `nCode` says; 205 and 206 are messages of modules, passed on under their own numbers.
enum HostCode : std::int32_t {
    kUserActive = 0,     ///< null: a mouse button went down in a panel
    kCloneHandle = 1,    ///< decimal text of the native window id of a frame that isn't its component's first
    kComponentName = 2,  ///< StringMap*: in "component_id"; the host may add "component_name", the title
};

}  // namespace panelry::bridge
