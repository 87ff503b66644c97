#include "services/trade_observer.h"

#include <utility>

namespace
{

constexpr int kNoProvider = -1;
constexpr int kAttachKind = 1;

}  // namespace

TradeObserver::~TradeObserver()
{
    m_provider = nullptr;
}

void TradeObserver::OnTableChanged(const std::string& /*name*/, std::shared_ptr<HostTable> /*table*/) {}

void TradeObserver::OnDataPush(const std::string& /*name*/, std::shared_ptr<StringMap> /*map*/) {}

void TradeObserver::OnFundsPush(std::shared_ptr<StockInfoAnswer> /*answer*/) {}

void TradeObserver::OnLoginState(int /*state*/) {}

int TradeObserver::SetProvider(TradeProvider* provider)
{
    m_provider = provider;
    return provider ? provider->Attach(kAttachKind, shared_from_this()) : kNoProvider;
}

int TradeObserver::SendTradeRequest(std::shared_ptr<ddsdk::TradeRequestParam> request)
{
    TradeProvider* const provider = m_provider;
    return provider ? provider->SendTradeRequest(shared_from_this(), std::move(request)) : kNoProvider;
}

int TradeObserver::GetString(const std::string& key, std::shared_ptr<std::string>& value)
{
    TradeProvider* const provider = m_provider;
    return provider ? provider->GetString(key, value) : kNoProvider;
}

int TradeObserver::SubscribeKey(const std::string& name, bool on)
{
    TradeProvider* const provider = m_provider;
    if (!provider) {
        return kNoProvider;
    }
    const int result = provider->SubscribeKey(name, on, shared_from_this());
    if (result == 0) {
        const std::lock_guard guard(m_keysLock);
        if (on) {
            m_subscribedKeys.insert(name);
        } else {
            m_subscribedKeys.erase(name);
        }
    }
    return result;
}

int TradeObserver::SetStringMap(const std::string& name, std::shared_ptr<StringMap> map)
{
    TradeProvider* const provider = m_provider;
    return provider ? provider->SetStringMap(name, std::move(map)) : kNoProvider;
}

std::shared_ptr<StringMap> TradeObserver::GetStringMap(const std::string& name)
{
    TradeProvider* const provider = m_provider;
    return provider ? provider->GetStringMap(name) : nullptr;
}

std::shared_ptr<HostTable> TradeObserver::GetTable(const std::string& name)
{
    TradeProvider* const provider = m_provider;
    return provider ? provider->GetTable(name) : nullptr;
}

void TradeObserver::UnsubscribeAll()
{
    TradeProvider* const provider = m_provider;
    if (!provider) {
        return;
    }
    std::set<std::string> keys;
    {
        const std::lock_guard guard(m_keysLock);
        keys.swap(m_subscribedKeys);
    }
    for (const std::string& key : keys) {
        provider->SubscribeKey(key, false, shared_from_this());
    }
}

std::set<std::string> TradeObserver::SubscribedKeys() const
{
    const std::lock_guard guard(m_keysLock);
    return m_subscribedKeys;
}
