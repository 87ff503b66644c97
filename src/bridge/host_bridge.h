#pragma once

#include <cstdint>

#include "bridge/host_values.h"

/// What stands behind the three exports: the host's values, and the start and end of the application thread.
///
/// Threading: Init, NotifyMsg and Uninit on any host thread at any time, and on the application thread from
/// inside
///   a HostCallback. No call but Uninit waits for the application thread.
/// Failures: nothing is reported. Only a thread that can't be started leaves as std::system_error.
namespace panelry::bridge
{

/// Keeps the three values, each may be null, and starts the application thread if none runs. A later call
/// replaces the values.
void Init(void* quoteProvider, void* tradeProvider, HostCallbackFunction hostCallback);

/// Carries `text` (not null; copied) to the panels: type 0 an operate message, 1 push data, any other type is
/// dropped. Messages of one thread arrive in their order. What comes before the panels are ready is parked.
void NotifyMsg(std::int32_t type, std::int32_t id, const char* text);

/// Ends the panels and waits for the end of the application thread; without one it only forgets what is
/// parked. On the application thread it asks for the end and returns; a host thread calls again to wait.
void Uninit();

/// Starts the application thread unless one was started and not yet joined.
void EnsureApplicationThread(std::int32_t type, std::int32_t id, const char* text);

}  // namespace panelry::bridge
