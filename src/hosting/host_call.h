#pragma once

#include "bridge/host_values.h"
#include "hosting/dispatch_scope.h"

namespace panelry
{

/// Calls the host back, if it gave a callback. The host may come straight back in with NotifyMsg or Uninit,
/// so the caller keeps nothing across the call that a message could destroy.
inline void CallHost(std::int32_t nCode, void* pData)
{
    if (const bridge::HostCallbackFunction callback = bridge::HostCallback.load()) {
        const DispatchScope scope;
        callback(nCode, pData);
    }
}

}  // namespace panelry
