#include "desk/demo_trade.h"

#include <utility>

namespace panelry::desk
{

namespace
{

constexpr int kDone = 0;
constexpr int kFailed = -1;

}  // namespace

void DemoTrade::AnswerRequests(const std::string& type, Answerer answer)
{
    m_answerers[type] = std::move(answer);
}

void DemoTrade::PublishText(const std::string& key, const std::string& text)
{
    const std::lock_guard guard(m_lock);
    m_texts[key] = text;
}

void DemoTrade::PublishTable(std::shared_ptr<HostTable> table)
{
    const std::string name = table->Name();
    {
        const std::lock_guard guard(m_lock);
        m_tables[name] = table;
    }
    for (const Subscriber& subscriber : SubscribersOf(name)) {
        m_delivery.Post([=] { subscriber->OnTableChanged(name, table); });
    }
}

void DemoTrade::TellLogin(int state)
{
    std::set<Subscriber> attached;
    {
        const std::lock_guard guard(m_lock);
        attached = m_attached;
    }
    for (const Subscriber& subscriber : attached) {
        m_delivery.Post([=] { subscriber->OnLoginState(state); });
    }
}

void DemoTrade::Stop()
{
    std::set<Subscriber> attached;  // both die behind the lock: a subscriber's end may call back
    std::map<std::string, std::set<Subscriber>> subscribers;
    const std::lock_guard guard(m_lock);
    m_attached.swap(attached);
    m_subscribers.swap(subscribers);
}

int DemoTrade::Attach(int /*kind*/, Subscriber subscriber)
{
    const std::lock_guard guard(m_lock);
    m_attached.insert(std::move(subscriber));
    return kDone;
}

int DemoTrade::SendTradeRequest(Subscriber subscriber, Request request)
{
    const auto type = request->head.find("type");
    const auto answerer = type == request->head.end() ? m_answerers.end() : m_answerers.find(type->second);
    if (answerer == m_answerers.end()) {
        return kFailed;
    }
    m_delivery.Post([answer = answerer->second, subscriber = std::move(subscriber),
                     request = std::move(request)] { answer(subscriber, request); });
    return kDone;
}

int DemoTrade::GetString(const std::string& key, std::shared_ptr<std::string>& value)
{
    const std::lock_guard guard(m_lock);
    const auto found = m_texts.find(key);
    if (found == m_texts.end()) {
        value.reset();
        return kFailed;
    }
    value = std::make_shared<std::string>(found->second);
    return kDone;
}

int DemoTrade::SubscribeKey(const std::string& name, bool on, Subscriber subscriber)
{
    if (on && m_hear) {
        m_delivery.Post([this, name] { m_hear(name); });
    }
    const std::lock_guard guard(m_lock);
    if (on) {
        m_subscribers[name].insert(std::move(subscriber));
    } else {
        m_subscribers[name].erase(subscriber);
    }
    return kDone;
}

int DemoTrade::SetStringMap(const std::string& name, std::shared_ptr<StringMap> map)
{
    {
        const std::lock_guard guard(m_lock);
        m_maps[name] = *map;
    }
    for (const Subscriber& subscriber : SubscribersOf(name)) {
        m_delivery.Post([=] { subscriber->OnDataPush(name, map); });
    }
    return kDone;
}

std::shared_ptr<StringMap> DemoTrade::GetStringMap(const std::string& name)
{
    const std::lock_guard guard(m_lock);
    const auto found = m_maps.find(name);
    return found == m_maps.end() ? nullptr : std::make_shared<StringMap>(found->second);
}

std::shared_ptr<HostTable> DemoTrade::GetTable(const std::string& name)
{
    const std::lock_guard guard(m_lock);
    const auto found = m_tables.find(name);
    return found == m_tables.end() ? nullptr : found->second;
}

std::set<DemoTrade::Subscriber> DemoTrade::SubscribersOf(const std::string& name)
{
    const std::lock_guard guard(m_lock);
    const auto found = m_subscribers.find(name);
    return found == m_subscribers.end() ? std::set<Subscriber>() : found->second;
}

}  // namespace panelry::desk
