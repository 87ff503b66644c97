#include "bridge/deferred_queue.h"

#include <utility>

namespace panelry::bridge
{

void ParkMessage(DeferredMessage message)
{
    const std::lock_guard guard(DeferredQueueLock);
    DeferredQueue.push_back(std::move(message));
    ++Undelivered;
}

std::deque<DeferredMessage> TakeParked()
{
    std::deque<DeferredMessage> taken;
    const std::lock_guard guard(DeferredQueueLock);
    taken.swap(DeferredQueue);
    return taken;
}

void DiscardParked()
{
    std::deque<DeferredMessage> discarded;  // declared first: destroyed once the lock is let go
    const std::lock_guard guard(DeferredQueueLock);
    discarded.swap(DeferredQueue);
    Undelivered -= discarded.size();
}

}  // namespace panelry::bridge
