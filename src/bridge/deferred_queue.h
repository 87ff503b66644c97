#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <string>

/// Host messages that came before the application thread could take them. In a header of its own, since the
/// container manager empties the queue when it dies.
namespace panelry::bridge
{

struct DeferredMessage {
    std::int32_t nType;
    std::int32_t nId;
    std::shared_ptr<const std::string> strText;  ///< a copy of the host's text
};

/// Guards DeferredQueue. Held for an append, a swap or a clear only; nothing is called under it.
inline std::mutex DeferredQueueLock;
/// Oldest first. Any host thread appends, also while the process ends: so it is never destroyed.
inline std::deque<DeferredMessage>& DeferredQueue = *new std::deque<DeferredMessage>;
/// How many messages are parked, or swapped out and not yet emitted. While it isn't 0, host threads flush one
/// after the other: otherwise a thread's next message could overtake its parked one.
inline std::atomic<std::size_t> Undelivered{0};

/// Appends a message.
void ParkMessage(DeferredMessage message);
/// Takes all that is parked; each is counted in Undelivered until the caller has emitted it.
std::deque<DeferredMessage> TakeParked();
/// Forgets all that is parked.
void DiscardParked();

}  // namespace panelry::bridge
