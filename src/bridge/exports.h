#pragma once

#include <cstdint>

/// The three functions of libpanelry.so, as a host finds them by name. A host needs no Qt and no other
/// header; what the codes of the callback carry is told with bridge/host_callback.h.
extern "C" {

/// Hands over the host's two service objects and its callback, each may be null, and starts the panels'
/// thread.
__attribute__((visibility("default"))) void Init(void* quoteProvider, void* tradeProvider,
                                                 void (*hostCallback)(std::int32_t nCode, void* pData));

/// Sends a message to the panels. `type` 0: operate message, 1: push data; `id`: the component, -1 for none
/// in particular; `text`: NUL-terminated UTF-8, copied. Any thread, never waits for the panels.
__attribute__((visibility("default"))) void NotifyMsg(std::int32_t type, std::int32_t id, const char* text);

/// Ends the panels and returns when their thread is gone.
__attribute__((visibility("default"))) void Uninit();
}
