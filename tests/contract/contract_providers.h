#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "observers/fake_providers.h"

/// The providers of the contract host: they answer nothing, and tell what is asked of them. Each has the number
/// that Init was called with. Nothing here is ever destroyed: the panels' thread may outlive the main function.
namespace panelry::test
{

/// Gets what they tell; the host's.
void HearProvider(const std::string& line);

inline std::mutex& providersLock = *new std::mutex;
inline std::vector<std::shared_ptr<TradeObserver>>& subscribers =
    *new std::vector<std::shared_ptr<TradeObserver>>;
inline std::map<void*, std::uintptr_t>& providerNumbers = *new std::map<void*, std::uintptr_t>;  // null: 0

class Quotes : public FakeQuoteProvider
{
public:
    explicit Quotes(std::string number) : m_number(std::move(number)) { m_result = -1; }

    int Attach(int, std::shared_ptr<QuoteObserver>) override
    {
        HearProvider("quotes " + m_number + " attached");
        return 0;
    }

private:
    const std::string m_number;
};

class Trades : public TradeProvider
{
public:
    explicit Trades(std::string number) : m_number(std::move(number)) {}

    int Attach(int, std::shared_ptr<TradeObserver> subscriber) override
    {
        {
            const std::lock_guard guard(providersLock);
            subscribers.push_back(std::move(subscriber));  // for ever
        }
        HearProvider("trades " + m_number + " attached");
        return 0;
    }
    int SendTradeRequest(std::shared_ptr<TradeObserver>,
                         std::shared_ptr<ddsdk::TradeRequestParam> request) override
    {
        HearProvider("trades " + m_number + " request " + request->head["type"] + ' ' +
                     request->local["table_name"]);
        return 0;
    }
    int GetString(const std::string&, std::shared_ptr<std::string>&) override { return -1; }
    int SubscribeKey(const std::string& name, bool on, std::shared_ptr<TradeObserver>) override
    {
        HearProvider("trades " + m_number + (on ? " on " : " off ") + name);
        return 0;
    }
    int SetStringMap(const std::string&, std::shared_ptr<StringMap>) override { return -1; }
    std::shared_ptr<StringMap> GetStringMap(const std::string&) override { return nullptr; }
    std::shared_ptr<HostTable> GetTable(const std::string&) override { return nullptr; }

private:
    const std::string m_number;
};

/// A provider's address as Init wants it, null for the number 0. The same number is the same object.
template <class Provider, class Base>
void* ProviderOf(std::uintptr_t number)
{
    static auto& made = *new std::map<std::uintptr_t, Base*>;
    const std::lock_guard guard(providersLock);
    if (number != 0 && !made[number]) {
        made[number] = new Provider(std::to_string(number));
        providerNumbers[made[number]] = number;
    }
    return made[number];
}

/// As the newest trade provider pushes to all that ever attached.
template <class Push>
void ForEachSubscriber(Push push)
{
    std::unique_lock guard(providersLock);
    const auto all = subscribers;
    guard.unlock();
    for (const auto& subscriber : all) {
        push(*subscriber);
    }
}

}  // namespace panelry::test
