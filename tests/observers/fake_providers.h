#pragma once

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "services/quote_observer.h"
#include "services/trade_observer.h"

namespace panelry::test
{

/// What both fakes have: a record of the calls in words, a result for all of them, and a hook that runs
/// inside each call. Any thread.
class FakeProvider
{
public:
    std::vector<std::string> Calls() const
    {
        const std::lock_guard guard(m_lock);
        return m_calls;
    }

    int m_result = 0;
    std::function<void()> m_inside;  // set while nobody calls

protected:
    int Record(std::string call, const void* subscriber = nullptr)
    {
        std::unique_lock guard(m_lock);
        call += !subscriber ? "" : subscriber == m_expectedSubscriber ? " self" : " stranger";
        m_calls.push_back(std::move(call));
        if (const auto inside = std::exchange(m_inside, nullptr)) {
            guard.unlock();
            inside();
        }
        return m_result;
    }

    static std::string Words(const std::vector<MarketCode>& codes)
    {
        std::string words;
        for (const MarketCode& stock : codes) {
            words += ' ' + std::to_string(stock.market) + ':' + stock.code;
        }
        return words;
    }

    mutable std::mutex m_lock;
    std::vector<std::string> m_calls;
    const void* m_expectedSubscriber = nullptr;
};

/// A quote provider; after a SubscribeCodes or ResolveCodeMarkets, stocks named "unknown" have market 0.
class FakeQuoteProvider : public FakeProvider, public QuoteProvider
{
public:
    void Expect(const QuoteObserver* subscriber) { m_expectedSubscriber = subscriber; }

    int Attach(int kind, std::shared_ptr<QuoteObserver> subscriber) override
    {
        return Record("Attach " + std::to_string(kind), subscriber.get());
    }
    int QueryQuoteFields(int mask, StringMap& key, std::shared_ptr<StringMap>& fields) override
    {
        fields = std::make_shared<StringMap>(StringMap{{"price_decimal", "3"}});
        return Record("QueryQuoteFields " + std::to_string(mask) + ' ' + key["stockcode"]);
    }
    int SubscribeCodes(std::vector<MarketCode>& codes, bool on,
                       std::shared_ptr<QuoteObserver> subscriber) override
    {
        Resolve(codes);
        return Record("SubscribeCodes" + Words(codes) + (on ? " on" : " off"), subscriber.get());
    }
    int SubscribeTopicA(std::uint32_t topic, bool on, std::shared_ptr<QuoteObserver> subscriber) override
    {
        return Record("SubscribeTopicA " + std::to_string(topic) + (on ? " on" : " off"), subscriber.get());
    }
    int SubscribeTopicB(std::uint32_t a, std::uint32_t b, std::uint32_t topic, bool on,
                        std::shared_ptr<QuoteObserver> subscriber) override
    {
        return Record("SubscribeTopicB " + std::to_string(a) + ' ' + std::to_string(b) + ' ' +
                          std::to_string(topic) + (on ? " on" : " off"),
                      subscriber.get());
    }
    int ResolveCodeMarkets(std::vector<MarketCode>& codes) override
    {
        Resolve(codes);
        return Record("ResolveCodeMarkets" + Words(codes));
    }
    int ListCodeMatches(std::vector<MarketCode>& codes, std::vector<std::vector<std::string>>& rows) override
    {
        rows = {{"\020600000", "name"}};
        return Record("ListCodeMatches" + Words(codes));
    }
    int AgreedQuoteCall(std::uintptr_t a, std::uintptr_t b) override
    {
        return Record("AgreedQuoteCall " + std::to_string(a) + ' ' + std::to_string(b));
    }

private:
    static void Resolve(std::vector<MarketCode>& codes)
    {
        for (MarketCode& stock : codes) {
            stock.market = stock.code == "unknown" ? std::uint8_t{0} : stock.market;
        }
    }
};

/// A trade provider with the maps, tables and texts that a test puts into it; keeps the requests. Any thread.
class FakeTradeProvider : public FakeProvider, public TradeProvider
{
public:
    void Expect(const TradeObserver* subscriber) { m_expectedSubscriber = subscriber; }

    int Attach(int kind, std::shared_ptr<TradeObserver> subscriber) override
    {
        return Record("Attach " + std::to_string(kind), subscriber.get());
    }
    int SendTradeRequest(std::shared_ptr<TradeObserver> subscriber,
                         std::shared_ptr<ddsdk::TradeRequestParam> request) override
    {
        m_lock.lock();
        m_sent.push_back(request);
        m_lock.unlock();
        return Record("SendTradeRequest " + request->head["type"], subscriber.get());
    }
    int GetString(const std::string& key, std::shared_ptr<std::string>& value) override
    {
        value = Kept(m_strings, key);
        const int result = Record("GetString " + key);
        return value ? result : -1;
    }
    int SubscribeKey(const std::string& name, bool on, std::shared_ptr<TradeObserver> subscriber) override
    {
        return Record("SubscribeKey " + name + (on ? " on" : " off"), subscriber.get());
    }
    int SetStringMap(const std::string& name, std::shared_ptr<StringMap> map) override
    {
        m_lock.lock();
        m_maps[name] = *map;
        m_lock.unlock();
        return Record("SetStringMap " + name);
    }
    std::shared_ptr<StringMap> GetStringMap(const std::string& name) override
    {
        Record("GetStringMap " + name);
        return Kept(m_maps, name);
    }
    std::shared_ptr<HostTable> GetTable(const std::string& name) override
    {
        Record("GetTable " + name);
        const auto table = Kept(m_tables, name);
        return table ? *table : nullptr;
    }

    std::map<std::string, std::string> m_strings;  // these are set while nobody calls
    std::map<std::string, StringMap> m_maps;
    std::map<std::string, std::shared_ptr<HostTable>> m_tables;
    std::vector<std::shared_ptr<ddsdk::TradeRequestParam>> m_sent;

private:
    template <class Value>
    std::shared_ptr<Value> Kept(const std::map<std::string, Value>& values, const std::string& name) const
    {
        const std::lock_guard guard(m_lock);
        const auto found = values.find(name);
        return found == values.end() ? nullptr : std::make_shared<Value>(found->second);
    }
};

/// Both observers in one object, as the library's own have it.
class PairOfObservers : public QuoteObserver, public TradeObserver
{
public:
    void* ObserverSelf() override { return this; }
};

}  // namespace panelry::test
