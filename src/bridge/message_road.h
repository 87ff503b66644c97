#pragma once

#include <cstdint>

/// The road of a host message to the container manager, on whichever thread it starts.
///
/// Threading: any thread, unless an operation says otherwise. From a host thread an emission is queued to the
///   application thread; on that thread itself (the host called from inside its callback, or the first drain)
///   it is a direct call.
namespace panelry::bridge
{

/// Emits the message, behind all that is still parked, and returns true; false when the panels aren't there
/// to take it. A type that is neither 0 nor 1 is dropped; what is parked goes out all the same.
bool DeliverLive(std::int32_t type, std::int32_t id, const char* text);

/// Emits what is parked, oldest first. Application thread; host threads do the same inside DeliverLive().
void FlushDeferred();

/// Asks the panels to end; a start that isn't finished yet heeds it when it is.
void AskToQuit();

/// Forgets the request: the life that it ended is over.
void ForgetQuit();

/// The end of a start, in the first turn of the event loop: the panels take what was parked, or end at once
/// if they were asked to. Application thread.
void BecomeRunning();

}  // namespace panelry::bridge
