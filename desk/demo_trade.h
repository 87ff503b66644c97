#pragma once

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <utility>

#include "desk/delivery.h"
#include "services/trade_observer.h"
#include "services/trade_provider.h"

namespace panelry::desk
{

/// The trade side of the desk: what is published, who wants to hear of it, and who answers which request. The
/// demonstrations (a market, an account) each put their part into it.
///
/// Ownership: keeps its subscribers until Stop(). Borrows the delivery thread, on which answers and news
///   travel.
/// Threading: any thread. Answerers run on the delivery thread, without a lock.
class DemoTrade : public TradeProvider
{
public:
    using Request = std::shared_ptr<ddsdk::TradeRequestParam>;
    using Subscriber = std::shared_ptr<TradeObserver>;
    /// Answers one request: through `subscriber`'s OnFundsPush(), by publishing, or not at all.
    using Answerer = std::function<void(const Subscriber& subscriber, const Request& request)>;

    explicit DemoTrade(Delivery& delivery) : m_delivery(delivery) {}

    /// Requests whose head "type" is `type` go to `answer`; before Init.
    void AnswerRequests(const std::string& type, Answerer answer);

    /// `hear` is told of every subscription, on the delivery thread; before Init.
    void WhenSubscribed(std::function<void(const std::string& name)> hear) { m_hear = std::move(hear); }

    /// What GetString() gives. No news is told.
    void PublishText(const std::string& key, const std::string& text);
    /// Replaces the table of that name and tells who has subscribed it.
    void PublishTable(std::shared_ptr<HostTable> table);
    /// Tells everybody attached of a log-in: 0, or 1 for the margin account.
    void TellLogin(int state);

    /// Lets go of all subscribers.
    void Stop();

    int Attach(int kind, Subscriber subscriber) override;
    int SendTradeRequest(Subscriber subscriber, Request request) override;
    int GetString(const std::string& key, std::shared_ptr<std::string>& value) override;
    int SubscribeKey(const std::string& name, bool on, Subscriber subscriber) override;
    int SetStringMap(const std::string& name, std::shared_ptr<StringMap> map) override;
    std::shared_ptr<StringMap> GetStringMap(const std::string& name) override;
    std::shared_ptr<HostTable> GetTable(const std::string& name) override;

private:
    std::set<Subscriber> SubscribersOf(const std::string& name);

    Delivery& m_delivery;
    std::map<std::string, Answerer> m_answerers;  // unchanged from Init on, and so is the next
    std::function<void(const std::string&)> m_hear;

    std::mutex m_lock;  // guards the rest
    std::map<std::string, std::string> m_texts;
    std::map<std::string, StringMap> m_maps;
    std::map<std::string, std::shared_ptr<HostTable>> m_tables;
    std::set<Subscriber> m_attached;
    std::map<std::string, std::set<Subscriber>> m_subscribers;
};

}  // namespace panelry::desk
