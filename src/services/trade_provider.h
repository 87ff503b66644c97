#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "services/host_table.h"
#include "services/trade_records.h"

class TradeObserver;

/// The trade side of a host: second argument of Init, and of ModuleBase::SetProviders. A host derives from it
/// and implements the pure operations; the reserved ones are never called and keep their places.
///
/// Order of operations is binary contract; append nothing, reorder nothing.
///
/// Ownership: the host's; good until Uninit has returned. A provider keeps the shared pointers of its
///   subscribers for as long as it delivers to them, and lets go when they unsubscribe. A table that it has
///   given out doesn't change any more; news is a new table under the same name.
/// Threading: operations come on any thread, several at a time, also from inside a callback. A provider calls
///   its subscribers on threads of its own and holds no lock over the call: they may call straight back.
/// Failures: 0 is success, a negative result is failure; a positive one is handed on to the caller.
///   Operations don't throw.
class TradeProvider
{
public:
    virtual ~TradeProvider() = default;

    /// A subscriber introduces itself; `kind` is always 1. From here on its callbacks may come.
    virtual int Attach(int kind, std::shared_ptr<TradeObserver> subscriber) = 0;

    /// Takes a request over and returns; the answer comes later, through `subscriber`'s OnFundsPush or, where
    /// the request's local "table_name" asks for it, as a table published under that name.
    virtual int SendTradeRequest(std::shared_ptr<TradeObserver> subscriber,
                                 std::shared_ptr<ddsdk::TradeRequestParam> request) = 0;

    virtual void ReservedTradeOp4(std::uintptr_t /*a*/, std::uintptr_t /*b*/) {}
    virtual void ReservedTradeOp5(std::uintptr_t /*a*/, std::uintptr_t /*b*/) {}

    /// Sets `value` to the text published as `key` ("account", "rzrq_account", "authority_0"), or leaves it
    /// empty where there is none.
    virtual int GetString(const std::string& key, std::shared_ptr<std::string>& value) = 0;

    /// Begins (`on`) or ends the news under `name`: OnTableChanged for a table, OnDataPush for a map.
    virtual int SubscribeKey(const std::string& name, bool on, std::shared_ptr<TradeObserver> subscriber) = 0;

    /// Publishes a map under `name`; it replaces the one before, and subscribers of the name are told. `map`
    /// is the provider's from here on.
    virtual int SetStringMap(const std::string& name, std::shared_ptr<StringMap> map) = 0;

    virtual void ReservedTradeOp9(std::uintptr_t /*a*/, std::uintptr_t /*b*/) {}

    /// A copy of the map published under `name`, empty where there is none: the caller may change it and
    /// publish it again.
    virtual std::shared_ptr<StringMap> GetStringMap(const std::string& name) = 0;

    /// The table published under `name`, empty where there is none.
    virtual std::shared_ptr<HostTable> GetTable(const std::string& name) = 0;
};
