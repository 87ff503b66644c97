#include "services/trade_observer.h"

#include <utility>

#include "services/subscriptions.h"

using namespace panelry::subscriptions;

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
        Note(m_subscribedKeys, m_keysLock, name, on);
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
    for (const std::string& key : TakeAll(m_subscribedKeys, m_keysLock)) {
        provider->SubscribeKey(key, false, shared_from_this());
    }
}

std::set<std::string> TradeObserver::SubscribedKeys() const
{
    return CopyOf(m_subscribedKeys, m_keysLock);
}
