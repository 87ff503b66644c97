#include "contract/contract_providers.h"

#include <map>
#include <memory>
#include <mutex>
#include <vector>

#include "observers/fake_providers.h"

namespace panelry::test
{

namespace
{

// Never destroyed: the panels' thread may outlive the main function.
std::mutex& lock = *new std::mutex;
Tell& teller = *new Tell;
std::vector<std::shared_ptr<TradeObserver>>& subscribers = *new std::vector<std::shared_ptr<TradeObserver>>;
std::map<void*, std::uintptr_t>& numbers = *new std::map<void*, std::uintptr_t>;  // null: 0

void Say(const std::string& line)
{
    Tell tell;
    {
        const std::lock_guard guard(lock);
        tell = teller;
    }
    if (tell) {
        tell(line);
    }
}

class Quotes : public FakeQuoteProvider
{
public:
    explicit Quotes(std::string number) : m_number(std::move(number)) { m_result = -1; }

    int Attach(int, std::shared_ptr<QuoteObserver>) override
    {
        Say("quotes " + m_number + " attached");
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
            const std::lock_guard guard(lock);
            subscribers.push_back(std::move(subscriber));  // for ever
        }
        Say("trades " + m_number + " attached");
        return 0;
    }
    int SendTradeRequest(std::shared_ptr<TradeObserver>,
                         std::shared_ptr<ddsdk::TradeRequestParam> request) override
    {
        Say("trades " + m_number + " request " + request->head["type"] + ' ' + request->local["table_name"]);
        return 0;
    }
    int GetString(const std::string&, std::shared_ptr<std::string>&) override { return -1; }
    int SubscribeKey(const std::string& name, bool on, std::shared_ptr<TradeObserver>) override
    {
        Say("trades " + m_number + (on ? " on " : " off ") + name);
        return 0;
    }
    int SetStringMap(const std::string&, std::shared_ptr<StringMap>) override { return -1; }
    std::shared_ptr<StringMap> GetStringMap(const std::string&) override { return nullptr; }
    std::shared_ptr<HostTable> GetTable(const std::string&) override { return nullptr; }

private:
    const std::string m_number;
};

template <class Provider, class Base>
void* Made(std::uintptr_t number)
{
    static auto& made = *new std::map<std::uintptr_t, Provider*>;
    if (number == 0) {
        return nullptr;
    }
    const std::lock_guard guard(lock);
    Provider*& provider = made[number];
    if (!provider) {
        provider = new Provider(std::to_string(number));
        numbers[static_cast<Base*>(provider)] = number;
    }
    return static_cast<Base*>(provider);
}

std::vector<std::shared_ptr<TradeObserver>> Subscribers()
{
    const std::lock_guard guard(lock);
    return subscribers;
}

}  // namespace

void TellOfProviders(Tell tell)
{
    const std::lock_guard guard(lock);
    teller = std::move(tell);
}

void* QuoteProviderOf(std::uintptr_t number)
{
    return Made<Quotes, QuoteProvider>(number);
}

void* TradeProviderOf(std::uintptr_t number)
{
    return Made<Trades, TradeProvider>(number);
}

std::uintptr_t NumberOfProvider(void* provider)
{
    const std::lock_guard guard(lock);
    return numbers[provider];
}

void PushLogin(int state)
{
    for (const auto& subscriber : Subscribers()) {
        subscriber->OnLoginState(state);
    }
}

void PushCancel()
{
    const auto map = std::make_shared<StringMap>(StringMap{{"chedan", "1"}});
    for (const auto& subscriber : Subscribers()) {
        subscriber->OnDataPush("auto_refresh_data", map);
    }
}

}  // namespace panelry::test
