#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "services/quote_records.h"

class QuoteObserver;

/// The quote side of a host: first argument of Init, and of ModuleBase::SetProviders. A host derives from it
/// and implements the pure operations; the reserved ones are never called and keep their places.
///
/// Order of operations is binary contract; append nothing, reorder nothing.
///
/// Ownership: the host's; good until Uninit has returned. A provider keeps the shared pointers of its
///   subscribers for as long as it delivers to them, and lets go when they unsubscribe.
/// Threading: operations come on any thread, several at a time, also from inside a callback. A provider calls
///   its subscribers on threads of its own and holds no lock over the call: they may call straight back.
/// Failures: 0 is success, a negative result is failure; a positive one is handed on to the caller.
///   Operations don't throw.
class QuoteProvider
{
public:
    virtual ~QuoteProvider() = default;

    virtual void ReservedQuoteOp2(std::uintptr_t /*a*/, std::uintptr_t /*b*/) {}

    /// A subscriber introduces itself; `kind` is always 1. From here on its callbacks may come.
    virtual int Attach(int kind, std::shared_ptr<QuoteObserver> subscriber) = 0;

    virtual void ReservedQuoteOp4(std::uintptr_t /*a*/, std::uintptr_t /*b*/, std::uintptr_t /*c*/,
                                  std::uintptr_t /*d*/, std::uintptr_t /*e*/, std::uintptr_t /*f*/)
    {
    }

    /// Asks for fields of the stock in `key` ("market" in decimal, "stockcode") at once. `mask` says which: 4
    /// is "price_decimal". Success sets `fields` to a map of the provider's, failure leaves it empty.
    virtual int QueryQuoteFields(int mask, StringMap& key, std::shared_ptr<StringMap>& fields) = 0;

    virtual void ReservedQuoteOp6(std::uintptr_t /*a*/, std::uintptr_t /*b*/, std::uintptr_t /*c*/) {}

    /// Begins (`on`) or ends the pushes of quotes of `codes` to `subscriber`. With a negative result no stock
    /// counts as changed, and the provider has set the market of those that it doesn't know to 0.
    virtual int SubscribeCodes(std::vector<MarketCode>& codes, bool on,
                               std::shared_ptr<QuoteObserver> subscriber) = 0;

    /// Begins or ends a topic, which is a matter between host and subscriber.
    virtual int SubscribeTopicA(std::uint32_t topic, bool on, std::shared_ptr<QuoteObserver> subscriber) = 0;

    /// The same for topics with two more numbers; a subscriber remembers `topic` alone.
    virtual int SubscribeTopicB(std::uint32_t a, std::uint32_t b, std::uint32_t topic, bool on,
                                std::shared_ptr<QuoteObserver> subscriber) = 0;

    /// Corrects the market of each element. With a negative result those that aren't known have market 0.
    virtual int ResolveCodeMarkets(std::vector<MarketCode>& codes) = 0;

    virtual void ReservedQuoteOp11(std::uintptr_t /*a*/, std::uintptr_t /*b*/) {}
    virtual void ReservedQuoteOp12(std::uintptr_t /*a*/, std::uintptr_t /*b*/) {}
    virtual void ReservedQuoteOp13(std::uintptr_t /*a*/, std::uintptr_t /*b*/) {}
    virtual void ReservedQuoteOp14(std::uintptr_t /*a*/, std::uintptr_t /*b*/) {}

    /// All stocks that `codes` may mean, whatever their market: one row each with the stock's key (see
    /// MarketCodeKey(), never empty), its name, the market's name, and at least one more text. UTF-8.
    virtual int ListCodeMatches(std::vector<MarketCode>& codes,
                                std::vector<std::vector<std::string>>& rows) = 0;

    /// A call whose meaning host and panel agree on; the library itself never makes one.
    virtual int AgreedQuoteCall(std::uintptr_t a, std::uintptr_t b) = 0;
};
