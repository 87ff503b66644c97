#pragma once

#include <array>
#include <memory>
#include <string>

#include "services/trade_observer.h"
#include "services/trade_records.h"

/// How the requests for tables and funds are put together.
namespace panelry::tables
{

using Request = std::shared_ptr<ddsdk::TradeRequestParam>;

inline constexpr char kMarginType[] = "2314";
inline constexpr char kStockConnectType[] = "2317";

/// Some keys and values as they go out, up to four; the rest are null.
struct Field {
    const char* key = nullptr;
    const char* value = nullptr;
};
using Fields = std::array<Field, 4>;

inline void Put(StringMap& map, const Fields& fields)
{
    for (const Field& field : fields) {
        if (field.key) {
            map[field.key] = field.value;
        }
    }
}

/// Copies `key` where `from` has it.
inline void CopyPresent(const StringMap& from, StringMap& to, const char* key)
{
    if (const auto found = from.find(key); found != from.end()) {
        to[key] = found->second;
    }
}

/// Names the funds account that the trade side publishes as `key`. An empty name is a name, none is not.
inline void PutAccount(TradeObserver& tradeSide, const char* key, ddsdk::TradeRequestParam& request)
{
    std::shared_ptr<std::string> account;
    tradeSide.GetString(key, account);
    if (account) {
        request.body["zjzh"] = *account;
    }
}

}  // namespace panelry::tables
