#include "bridge/message_road.h"

#include <atomic>
#include <deque>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

#include "base/posting_order.h"
#include "bridge/application_thread_mark.h"
#include "bridge/deferred_queue.h"
#include "bridge/host_gate.h"
#include "hosting/container_manager.h"

namespace panelry::bridge
{

namespace
{

constexpr std::int32_t kOperateMessage = 0;
constexpr std::int32_t kPushMessage = 1;
constexpr char kQuit[] = "quit";

std::atomic<bool> StopRequested{false};

// Host threads emit parked messages, and what follows them, one thread after the other.
std::mutex FlushOrderLock;

// Straight through on the application thread, queued from any other.
void Emit(ContainerManager& manager, std::int32_t type, std::int32_t id, const std::string& text)
{
    std::optional<Posting> posting;
    if (!OnApplicationThread()) {
        posting.emplace();
    }
    if (type == kOperateMessage) {
        Q_EMIT manager.SignalOperateFromDealDesk(id, text);
    } else if (type == kPushMessage) {
        Q_EMIT manager.SignalGetPushData(id, text);
    }
}

void EmitQuit(ContainerManager& manager)
{
    Emit(manager, kOperateMessage, -1, kQuit);
}

void EmitParked(ContainerManager& manager, std::deque<DeferredMessage> parked)
{
    for (; !parked.empty(); parked.pop_front()) {
        const DeferredMessage& message = parked.front();
        Emit(manager, message.nType, message.nId, *message.strText);
        --Undelivered;
    }
}

void EmitFromHost(ContainerManager& manager, std::int32_t type, std::int32_t id, const char* text)
{
    if (Undelivered == 0) {
        Emit(manager, type, id, text);
        return;
    }
    // Somebody's messages are still on their way, perhaps our own: none of ours may overtake them. Everything
    // under this lock is only posted.
    const std::lock_guard order(FlushOrderLock);
    EmitParked(manager, TakeParked());
    Emit(manager, type, id, text);
}

}  // namespace

bool DeliverLive(std::int32_t type, std::int32_t id, const char* text)
{
    if (!ApplicationRunning || !ManagerAlive) {
        return false;
    }
    if (OnApplicationThread()) {
        ContainerManager* const manager = ContainerManager::Instance(false);
        if (manager) {
            FlushDeferred();
            Emit(*manager, type, id, text);
        }
        return manager != nullptr;
    }
    if (!Gate.IsOpen()) {
        return false;
    }
    const HostGate::Visit visit(Gate);  // keeps the manager from dying meanwhile
    if (!visit.Manager()) {
        return false;
    }
    EmitFromHost(*visit.Manager(), type, id, text);
    return true;
}

void FlushDeferred()
{
    std::deque<DeferredMessage> parked;
    {
        // For the swap alone: a direct delivery may do anything.
        const std::lock_guard order(FlushOrderLock);
        parked = TakeParked();
    }
    if (!parked.empty()) {
        EmitParked(*ContainerManager::Instance(true), std::move(parked));
    }
}

void AskToQuit()
{
    StopRequested = true;
    if (OnApplicationThread()) {
        if (ContainerManager* const manager = ContainerManager::Instance(false)) {
            EmitQuit(*manager);
        }
    } else if (const HostGate::Visit visit(Gate); visit.Manager()) {
        EmitQuit(*visit.Manager());
    }
}

void ForgetQuit()
{
    StopRequested = false;
}

void BecomeRunning()
{
    if (StopRequested) {
        EmitQuit(*ContainerManager::Instance(true));  // what is parked isn't delivered
        return;
    }
    FlushDeferred();
    ApplicationRunning.exchange(true);
}

}  // namespace panelry::bridge
