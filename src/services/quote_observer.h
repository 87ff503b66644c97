#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "services/quote_provider.h"
#include "services/quote_records.h"
#include "services/virtual_enable_shared_from_this.h"

/// The library's end of a quote provider: forwards calls with itself as the subscriber, remembers what is
/// subscribed, and gets the pushes.
///
/// Order of virtual operations is binary contract; append nothing, reorder nothing.
///
/// Ownership: must be owned by a shared pointer before its first call; the provider then shares it, so that
///   it lives on until the provider lets go. The provider belongs to the host.
/// Threading: callbacks come on the provider's threads, several at a time, and must touch no Qt object.
///   Everything else may be called from any thread. No lock is held over a call to the provider, which may
///   call straight back.
/// Failures: every forwarding call returns the provider's result, and -1, with nothing done, as long as
///   there is no provider. An object that nobody shares throws std::bad_weak_ptr where it would have to pass
///   itself on; in a destructor that is always so.
class QuoteObserver : public virtual_enable_shared_from_this<QuoteObserver>
{
public:
    QuoteObserver() = default;
    ~QuoteObserver() override;
    QuoteObserver(const QuoteObserver&) = delete;
    QuoteObserver& operator=(const QuoteObserver&) = delete;

    /// Forwards to QuoteProvider::AgreedQuoteCall.
    virtual int ForwardQuoteCall(std::uintptr_t a, std::uintptr_t b);
    /// The complete object, whatever bases it has besides.
    virtual void* ObserverSelf() = 0;
    /// A push. The record may be empty.
    virtual void OnQuotePush(std::shared_ptr<QuotePushRecord> record);
    virtual void OnQuoteEvent(std::uintptr_t event);

    /// Keeps `provider` and attaches to it; null detaches from nothing and returns -1.
    int SetProvider(QuoteProvider* provider);

    /// A negative result takes the elements with market 0, the unknown ones, out of `codes`.
    int SubscribeCodes(std::vector<MarketCode>& codes, bool on);
    /// Remembered after a result of 0 only, and so is the next.
    int SubscribeTopicA(std::uint32_t topic, bool on);
    int SubscribeTopicB(std::uint32_t a, std::uint32_t b, std::uint32_t topic, bool on);
    /// In: what is supposed; out: each with its true market. A negative result takes the elements with market
    /// 0, the unknown ones, out of `codes`.
    int ResolveCodeMarkets(std::vector<MarketCode>& codes);
    int QueryQuoteFields(int mask, StringMap& key, std::shared_ptr<StringMap>& fields);
    int ListCodeMatches(std::vector<MarketCode>& codes, std::vector<std::vector<std::string>>& rows);
    /// Ends the topics of SubscribeTopicA, in the order of their numbers. Not for destructors.
    void UnsubscribeTopicsA();

    /// What is subscribed, stocks in the form of panelry::MarketCodeKey().
    std::set<std::string> SubscribedCodes() const;
    std::set<std::uint32_t> SubscribedTopicsA() const;
    std::set<std::uint32_t> SubscribedTopicsB() const;

private:
    std::atomic<QuoteProvider*> m_provider{nullptr};

    mutable std::recursive_mutex m_codesLock;
    std::set<std::string> m_subscribedCodes;

    mutable std::recursive_mutex m_topicsALock;
    std::set<std::uint32_t> m_subscribedTopicsA;

    mutable std::recursive_mutex m_topicsBLock;
    std::set<std::uint32_t> m_subscribedTopicsB;
};
