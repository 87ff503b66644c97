#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "desk/providers/delivery.h"
#include "desk/providers/simulation.h"
#include "services/quote_observer.h"
#include "services/quote_provider.h"

namespace panelry::desk
{

/// The quote side of the desk's host. Who subscribes a security gets a snapshot ("nowdata") and then, for
/// each change, one push ("pushdata") with what stands at the moment of the push: changes that come faster
/// than they are taken are told once. For what nobody subscribes nothing is built.
///
/// There are no topics: they are taken and never heard of again.
///
/// Ownership: keeps subscribers until they end their subscription or until Stop(). Borrows market and faults.
/// Threading: any thread; pushes come on a thread of the desk's. OnQuote() comes with the market locked. No
///   lock is held over a subscriber's call.
class QuoteDesk : public QuoteProvider
{
public:
    using Subscriber = std::shared_ptr<QuoteObserver>;

    QuoteDesk(const Simulation& market, Faults& faults);
    ~QuoteDesk() override;

    /// The quote of a security has changed.
    void OnQuote(std::size_t security);
    /// All quotes have changed.
    void OnPhase();

    /// Ends the pushes and lets go of all subscribers. Calls fail from here on. Harmless the second time.
    void Stop();

    int Attach(int kind, Subscriber subscriber) override;
    int QueryQuoteFields(int mask, StringMap& key, std::shared_ptr<StringMap>& fields) override;
    int SubscribeCodes(std::vector<MarketCode>& codes, bool on, Subscriber subscriber) override;
    int SubscribeTopicA(std::uint32_t topic, bool on, Subscriber subscriber) override;
    int SubscribeTopicB(std::uint32_t a, std::uint32_t b, std::uint32_t topic, bool on,
                        Subscriber subscriber) override;
    /// A number that nothing stands under becomes that of the same family, and 0 that of the one security
    /// with the code.
    int ResolveCodeMarkets(std::vector<MarketCode>& codes) override;
    /// Codes that begin with what is given, on all markets.
    int ListCodeMatches(std::vector<MarketCode>& codes, std::vector<std::vector<std::string>>& rows) override;
    int AgreedQuoteCall(std::uintptr_t a, std::uintptr_t b) override;

private:
    // One a security. Locked alone, and for no call.
    struct Feed {
        std::mutex lock;  // guards the next
        std::set<Subscriber> subscribers;
        std::atomic<bool> wanted{false};   // somebody subscribes it
        std::atomic<bool> waiting{false};  // its push is posted and hasn't begun
    };

    bool IsCut();
    bool IsSubscribed(std::size_t security, const Subscriber& subscriber);
    void Push(std::size_t security, const char* type, const std::set<Subscriber>& subscribers);

    const Simulation& m_market;
    Faults& m_faults;
    std::vector<Feed> m_feeds;  // one a security
    std::atomic<bool> m_stopped{false};
    Delivery m_delivery;
};

}  // namespace panelry::desk
