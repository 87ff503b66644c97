#include "desk/exchange/listing.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <fstream>
#include <initializer_list>
#include <iterator>
#include <nlohmann/json.hpp>
#include <set>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace panelry::desk
{

namespace
{

using Json = nlohmann::json;

constexpr std::array<std::pair<std::string_view, SecurityKind>, 9> kKinds{{
    {"stock", SecurityKind::Stock},
    {"star", SecurityKind::Star},
    {"chinext", SecurityKind::ChiNext},
    {"fund", SecurityKind::Fund},
    {"bond", SecurityKind::Bond},
    {"convertible", SecurityKind::Convertible},
    {"subscription", SecurityKind::Subscription},
    {"connect", SecurityKind::Connect},
    {"index", SecurityKind::Index},
}};

constexpr Price kHighestPrice = 1'000'000'000;  // so that what an order is worth can be counted
constexpr Quantity kLargestLot = 1'000'000;
constexpr Quantity kLargestOrder = 1'000'000'000;

void Demand(bool holds, const std::string& reason)
{
    if (!holds) {
        throw std::runtime_error(reason);
    }
}

std::string TextOf(const Json& object, const char* key)
{
    const auto found = object.find(key);
    Demand(found != object.end(), std::string("\"") + key + "\" is missing");
    Demand(found->is_string(), std::string("\"") + key + "\" is no text");
    return found->get<std::string>();
}

/// A whole number from `least` to `most`; `fallback` where the key isn't there.
template <typename Number>
Number NumberOf(const Json& object, const char* key, Number fallback, std::int64_t least, std::int64_t most)
{
    const auto found = object.find(key);
    if (found == object.end()) {
        return fallback;
    }
    const std::int64_t number = found->is_number_integer() ? found->get<std::int64_t>() : least - 1;
    Demand(number >= least && number <= most, std::string("\"") + key + "\" is no whole number from " +
                                                  std::to_string(least) + " to " + std::to_string(most));
    return static_cast<Number>(number);
}

bool FlagOf(const Json& object, const char* key)
{
    const auto found = object.find(key);
    Demand(found == object.end() || found->is_boolean(),
           std::string("\"") + key + "\" is neither true nor false");
    return found != object.end() && found->get<bool>();
}

Price PriceOf(const Json& object, const char* key)
{
    const std::optional<Price> price = ReadPrice(TextOf(object, key));
    Demand(price && *price > 0 && *price <= kHighestPrice, std::string("\"") + key + "\" is no price");
    return *price;
}

SecurityKind KindOf(const Json& object)
{
    const std::string name = TextOf(object, "kind");
    const auto* const kind =
        std::find_if(kKinds.begin(), kKinds.end(), [&](const auto& known) { return known.first == name; });
    Demand(kind != kKinds.end(), "\"kind\" is none that is known: " + name);
    return kind->second;
}

void DemandKnownKeys(const Json& object, std::initializer_list<std::string_view> known)
{
    Demand(object.is_object(), "is no object");
    for (const auto& item : object.items()) {
        Demand(std::find(known.begin(), known.end(), item.key()) != known.end(),
               "\"" + item.key() + "\" is no key of it");
    }
}

void DemandMarketable(const Security& security)
{
    const bool isCode = (security.code.size() == 5 || security.code.size() == 6) &&
                        security.code.find_first_not_of("0123456789") == std::string::npos;
    Demand(isCode, "\"code\" isn't five or six digits");
    const int family = security.market & 0xF0;
    Demand(family == 16 || family == 32 || security.market == 64, "\"market\" is of no known family");
    Demand(!security.name.empty(), "\"name\" is empty");
    Demand(security.step % (security.decimals == 3 ? 1 : 10) == 0,
           R"("step" has more decimals than "decimals")");
    Demand(security.close % security.step == 0, "\"close\" is off the step");
    Demand(security.minimum % security.lot == 0, R"("minimum" is no multiple of "lot")");
    Demand(security.minimum <= security.maximum, R"("maximum" is less than "minimum")");
}

Security ReadSecurity(const Json& entry)
{
    DemandKnownKeys(entry, {"code", "market", "name", "kind", "decimals", "step", "close", "limit_percent",
                            "lot", "minimum", "maximum", "options", "suspended", "same_day"});
    Security security;
    security.code = TextOf(entry, "code");
    Demand(entry.contains("market"), "\"market\" is missing");
    security.market = NumberOf<std::uint8_t>(entry, "market", 0, 1, 255);
    security.name = TextOf(entry, "name");
    security.kind = KindOf(entry);
    security.decimals = NumberOf(entry, "decimals", security.decimals, 2, 3);
    security.step = entry.contains("step") ? PriceOf(entry, "step") : security.decimals == 3 ? 1 : 10;
    security.close = PriceOf(entry, "close");
    security.limitPercent = NumberOf(entry, "limit_percent", security.limitPercent, 0, 99);
    security.lot = NumberOf(entry, "lot", security.lot, 1, kLargestLot);
    security.minimum = NumberOf(entry, "minimum", security.lot, 1, kLargestLot);
    security.maximum = NumberOf(entry, "maximum", security.maximum, 1, kLargestOrder);
    security.options = NumberOf(entry, "options", security.options, 0, 0xFFFF);
    security.suspended = FlagOf(entry, "suspended");
    security.sameDay = FlagOf(entry, "same_day");
    DemandMarketable(security);
    return security;
}

bool IsDate(const std::string& text)
{
    const auto part = [&](std::size_t from, std::size_t count) {
        return static_cast<unsigned>(ReadQuantity(std::string_view(text).substr(from, count)).value_or(0));
    };
    return text.size() == 10 && text[4] == '-' && text[7] == '-' &&
           std::chrono::year_month_day(std::chrono::year(static_cast<int>(part(0, 4))),
                                       std::chrono::month(part(5, 2)), std::chrono::day(part(8, 2)))
               .ok() &&
           part(0, 4) > 0;
}

std::string Label(const Json& entry, std::size_t number)
{
    std::string label = "entry " + std::to_string(number + 1);
    if (entry.is_object() && entry.contains("code") && entry["code"].is_string()) {
        label += " (" + entry["code"].get<std::string>() + ")";
    }
    return label;
}

std::vector<Security> ReadSecurities(const Json& entries)
{
    Demand(entries.is_array() && !entries.empty(), "\"securities\" is no list with something in it");
    std::vector<Security> securities;
    std::set<std::pair<std::uint8_t, std::string>> seen;
    for (std::size_t i = 0; i < entries.size(); ++i) {
        try {
            securities.push_back(ReadSecurity(entries[i]));
            Demand(seen.emplace(securities.back().market, securities.back().code).second,
                   "stands twice on market " + std::to_string(securities.back().market));
        } catch (const std::runtime_error& error) {
            throw std::runtime_error(Label(entries[i], i) + ": " + error.what());
        }
    }
    return securities;
}

Listing ReadJson(std::istream& in)
{
    Json file;
    try {
        file = Json::parse(in);
    } catch (const Json::parse_error& error) {
        throw std::runtime_error(std::string("is no JSON: ") + error.what());
    }
    DemandKnownKeys(file, {"about", "rules", "rules_date", "securities"});
    Listing listing;
    listing.rules = TextOf(file, "rules");
    listing.rulesDate = TextOf(file, "rules_date");
    Demand(IsDate(listing.rulesDate), "\"rules_date\" is no date as 2026-07-01 is one");
    Demand(file.contains("securities"), "\"securities\" is missing");
    listing.securities = ReadSecurities(file["securities"]);
    return listing;
}

}  // namespace

std::optional<std::size_t> Listing::Find(std::uint8_t market, const std::string& code) const
{
    for (std::size_t i = 0; i < securities.size(); ++i) {
        if (securities[i].market == market && securities[i].code == code) {
            return i;
        }
    }
    return std::nullopt;
}

std::vector<std::size_t> Listing::FindAll(const std::string& code) const
{
    std::vector<std::size_t> found;
    for (std::size_t i = 0; i < securities.size(); ++i) {
        if (securities[i].code == code) {
            found.push_back(i);
        }
    }
    return found;
}

Listing ReadListing(const std::filesystem::path& file)
{
    std::ifstream in(file, std::ios::binary);
    if (!in) {
        throw std::runtime_error(file.string() + ": can't be read");
    }
    try {
        return ReadJson(in);
    } catch (const std::runtime_error& error) {
        throw std::runtime_error(file.string() + ": " + error.what());
    }
}

Listing Enlarged(Listing listing, std::size_t count)
{
    constexpr int kFirst = 600000;
    constexpr int kCodes = 6000;
    std::set<std::string> taken;
    for (const Security& security : listing.securities) {
        taken.insert(security.code);
    }
    listing.securities.reserve(count);
    for (int i = 0; i < kCodes && listing.securities.size() < count; ++i) {
        Security security;
        security.code = std::to_string(kFirst + i);
        security.market = 17;
        security.name = "模拟" + security.code;
        security.close = 2000 + i % 500 * 100;
        if (taken.insert(security.code).second) {
            listing.securities.push_back(std::move(security));
        }
    }
    return listing;
}

}  // namespace panelry::desk
