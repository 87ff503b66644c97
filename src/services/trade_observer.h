#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <set>
#include <string>

#include "services/host_table.h"
#include "services/trade_provider.h"
#include "services/trade_records.h"
#include "services/virtual_enable_shared_from_this.h"

/// The library's end of a trade provider: forwards calls with itself as the subscriber, remembers what is
/// subscribed, and gets answers, tables and the state of the log-in.
///
/// Order of virtual operations is binary contract; append nothing, reorder nothing.
///
/// Ownership: must be owned by a shared pointer before its first call; the provider then shares it, so that
///   it lives on until the provider lets go. The provider belongs to the host.
/// Threading: callbacks come on the provider's threads, several at a time, and must touch no Qt object.
///   Everything else may be called from any thread. No lock is held over a call to the provider, which may
///   call straight back.
/// Failures: every forwarding call returns the provider's result; without a provider it does nothing and
///   returns -1, or an empty pointer. An object that nobody shares throws std::bad_weak_ptr where it would
///   have to pass itself on; in a destructor that is always so.
class TradeObserver : public virtual_enable_shared_from_this<TradeObserver>
{
public:
    TradeObserver() = default;
    ~TradeObserver() override;
    TradeObserver(const TradeObserver&) = delete;
    TradeObserver& operator=(const TradeObserver&) = delete;

    /// The complete object, whatever bases it has besides.
    virtual void* ObserverSelf() = 0;
    /// A table that is subscribed has been published anew. It may be empty, as what the next two bring.
    virtual void OnTableChanged(const std::string& name, std::shared_ptr<HostTable> table);
    /// A map that is subscribed has been published anew.
    virtual void OnDataPush(const std::string& name, std::shared_ptr<StringMap> map);
    /// The answer to a request of SendTradeRequest, whatever it asked for.
    virtual void OnFundsPush(std::shared_ptr<StockInfoAnswer> answer);
    /// 0: a log-in; 1: a log-in of the margin account; other states have no meaning to the library.
    virtual void OnLoginState(int state);

    /// Keeps `provider` and attaches to it; null detaches from nothing and returns -1.
    int SetProvider(TradeProvider* provider);

    int SendTradeRequest(std::shared_ptr<ddsdk::TradeRequestParam> request);
    int GetString(const std::string& key, std::shared_ptr<std::string>& value);
    /// Remembered after a result of 0 only.
    int SubscribeKey(const std::string& name, bool on);
    int SetStringMap(const std::string& name, std::shared_ptr<StringMap> map);
    std::shared_ptr<StringMap> GetStringMap(const std::string& name);
    std::shared_ptr<HostTable> GetTable(const std::string& name);
    /// Ends the subscriptions of SubscribeKey, in the order of their names. Not for destructors.
    void UnsubscribeAll();

    /// What is subscribed.
    std::set<std::string> SubscribedKeys() const;

private:
    std::atomic<TradeProvider*> m_provider{nullptr};

    mutable std::recursive_mutex m_keysLock;
    std::set<std::string> m_subscribedKeys;
};
