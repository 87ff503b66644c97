#include "refresh/auto_refresh.h"

#include <mutex>

#include "refresh/auto_refresh_present.h"

namespace
{

// The presenter of the service that lives, for the end of the process, which comes on another thread. Never
// destroyed.
struct Living {
    std::mutex lock;
    std::weak_ptr<AutoRefreshPresent> present;
};
Living& living = *new Living;

void Announce(std::weak_ptr<AutoRefreshPresent> present)
{
    const std::lock_guard guard(living.lock);
    living.present.swap(present);
}

}  // namespace

AutoRefresh::AutoRefresh() : m_present(std::make_shared<AutoRefreshPresent>())
{
    Announce(m_present);
}

AutoRefresh::~AutoRefresh()
{
    m_present->Stop();
    Announce({});
}

void AutoRefresh::Initialize(int /*moduleId*/, const char* /*a*/, const char* /*b*/,
                             const char* /*initParam*/)
{
}

void AutoRefresh::OnMessage(int /*msgId*/, void* /*payload*/) {}

void AutoRefresh::SetProviders(void* quoteProvider, void* tradeProvider)
{
    m_present->QuoteObserver::SetProvider(static_cast<QuoteProvider*>(quoteProvider));
    m_present->TradeObserver::SetProvider(static_cast<TradeProvider*>(tradeProvider));
}

void AutoRefresh::Start()
{
    m_present->Start();
}

void AutoRefresh::StopForExit()
{
    std::shared_ptr<AutoRefreshPresent> present;
    {
        const std::lock_guard guard(living.lock);
        present = living.present.lock();
    }
    if (present) {
        present->StopForExit();
    }
}
