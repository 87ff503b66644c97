#include "services/quote_observer.h"

#include "services/subscriptions.h"

using namespace panelry::subscriptions;

namespace
{

void DropUnknown(std::vector<MarketCode>& codes)
{
    std::erase_if(codes, [](const MarketCode& stock) { return stock.market == 0; });
}

}  // namespace

QuoteObserver::~QuoteObserver()
{
    m_provider = nullptr;
}

int QuoteObserver::ForwardQuoteCall(std::uintptr_t a, std::uintptr_t b)
{
    QuoteProvider* const provider = m_provider;
    return provider ? provider->AgreedQuoteCall(a, b) : kNoProvider;
}

void QuoteObserver::OnQuotePush(std::shared_ptr<QuotePushRecord> /*record*/) {}

void QuoteObserver::OnQuoteEvent(std::uintptr_t /*event*/) {}

int QuoteObserver::SetProvider(QuoteProvider* provider)
{
    m_provider = provider;
    return provider ? provider->Attach(kAttachKind, shared_from_this()) : kNoProvider;
}

int QuoteObserver::SubscribeCodes(std::vector<MarketCode>& codes, bool on)
{
    QuoteProvider* const provider = m_provider;
    if (!provider) {
        return kNoProvider;
    }
    const int result = provider->SubscribeCodes(codes, on, shared_from_this());
    if (result < 0) {
        DropUnknown(codes);
        return result;
    }
    for (const MarketCode& stock : codes) {
        Note(m_subscribedCodes, m_codesLock, panelry::MarketCodeKey(stock), on);
    }
    return result;
}

int QuoteObserver::SubscribeTopicA(std::uint32_t topic, bool on)
{
    QuoteProvider* const provider = m_provider;
    if (!provider) {
        return kNoProvider;
    }
    const int result = provider->SubscribeTopicA(topic, on, shared_from_this());
    if (result == 0) {
        Note(m_subscribedTopicsA, m_topicsALock, topic, on);
    }
    return result;
}

int QuoteObserver::SubscribeTopicB(std::uint32_t a, std::uint32_t b, std::uint32_t topic, bool on)
{
    QuoteProvider* const provider = m_provider;
    if (!provider) {
        return kNoProvider;
    }
    const int result = provider->SubscribeTopicB(a, b, topic, on, shared_from_this());
    if (result == 0) {
        Note(m_subscribedTopicsB, m_topicsBLock, topic, on);
    }
    return result;
}

int QuoteObserver::ResolveCodeMarkets(std::vector<MarketCode>& codes)
{
    QuoteProvider* const provider = m_provider;
    if (!provider) {
        return kNoProvider;
    }
    const int result = provider->ResolveCodeMarkets(codes);
    if (result < 0) {
        DropUnknown(codes);
    }
    return result;
}

int QuoteObserver::QueryQuoteFields(int mask, StringMap& key, std::shared_ptr<StringMap>& fields)
{
    QuoteProvider* const provider = m_provider;
    return provider ? provider->QueryQuoteFields(mask, key, fields) : kNoProvider;
}

int QuoteObserver::ListCodeMatches(std::vector<MarketCode>& codes,
                                   std::vector<std::vector<std::string>>& rows)
{
    QuoteProvider* const provider = m_provider;
    return provider ? provider->ListCodeMatches(codes, rows) : kNoProvider;
}

void QuoteObserver::UnsubscribeTopicsA()
{
    QuoteProvider* const provider = m_provider;
    if (!provider) {
        return;
    }
    for (const std::uint32_t topic : TakeAll(m_subscribedTopicsA, m_topicsALock)) {
        provider->SubscribeTopicA(topic, false, shared_from_this());
    }
}

std::set<std::string> QuoteObserver::SubscribedCodes() const
{
    return CopyOf(m_subscribedCodes, m_codesLock);
}

std::set<std::uint32_t> QuoteObserver::SubscribedTopicsA() const
{
    return CopyOf(m_subscribedTopicsA, m_topicsALock);
}

std::set<std::uint32_t> QuoteObserver::SubscribedTopicsB() const
{
    return CopyOf(m_subscribedTopicsB, m_topicsBLock);
}
