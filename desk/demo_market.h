#pragma once

#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "desk/delivery.h"
#include "desk/demo_security.h"
#include "desk/demo_trade.h"
#include "services/quote_observer.h"
#include "services/quote_provider.h"

namespace panelry::desk
{

/// A small market out of a file: the quote side of the desk, and the answers to requests "1025" on its trade
/// side. Prices wander by a tick a second, the same way in every run.
///
/// Ownership: owns the thread that moves the prices; keeps subscribers until they end their subscription or
///   until Stop(). Borrows the delivery thread and the trade side.
/// Threading: any thread; construction and Stop() belong to the owner.
class DemoMarket : public QuoteProvider
{
public:
    using Subscriber = std::shared_ptr<QuoteObserver>;

    DemoMarket(DemoMarketFile file, DemoTrade& trade, Delivery& delivery);
    ~DemoMarket() override;

    /// Ends the movement of prices and lets go of all subscribers.
    void Stop();

    /// One movement of all prices, and a push to each subscriber of each stock. The thread calls it.
    void Move();

    int Attach(int kind, Subscriber subscriber) override;
    int QueryQuoteFields(int mask, StringMap& key, std::shared_ptr<StringMap>& fields) override;
    int SubscribeCodes(std::vector<MarketCode>& codes, bool on, Subscriber subscriber) override;
    int SubscribeTopicA(std::uint32_t topic, bool on, Subscriber subscriber) override;
    int SubscribeTopicB(std::uint32_t a, std::uint32_t b, std::uint32_t topic, bool on,
                        Subscriber subscriber) override;
    int ResolveCodeMarkets(std::vector<MarketCode>& codes) override;
    int ListCodeMatches(std::vector<MarketCode>& codes, std::vector<std::vector<std::string>>& rows) override;
    int AgreedQuoteCall(std::uintptr_t a, std::uintptr_t b) override;

private:
    void Publish(DemoTrade& trade, const std::vector<DemoAccountRow>& accounts);
    void Answer(const DemoTrade::Subscriber& subscriber, const DemoTrade::Request& request);
    std::string Usable(const DemoSecurity& security, const ddsdk::TradeRequestParam& request) const;
    const DemoSecurity* Find(std::uint8_t market, const std::string& code) const;
    std::vector<DemoSecurity> Meant(const std::string& market, const std::string& code);
    void Push(const DemoSecurity& security, const char* type, const Subscriber& subscriber);

    Delivery& m_delivery;
    const std::string m_cash;

    std::mutex m_lock;  // guards the next four
    std::vector<DemoSecurity> m_securities;
    std::map<std::string, std::set<Subscriber>> m_subscribers;  // by MarketCodeKey()
    unsigned m_moves = 0;
    bool m_stopped = false;
    std::condition_variable m_stop;
    std::thread m_mover;
};

}  // namespace panelry::desk
