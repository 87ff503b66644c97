#include "desk/accounts/opening.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <initializer_list>
#include <iterator>
#include <nlohmann/json.hpp>
#include <optional>
#include <stdexcept>
#include <string_view>

#include "desk/accounts/charges.h"

namespace panelry::desk
{

namespace
{

using Json = nlohmann::ordered_json;

constexpr std::int64_t kMillion = 1'000'000;
constexpr Money kMostMoney = 1'000'000'000'000'000;
constexpr Quantity kLargestHolding = 1'000'000'000;
constexpr std::int64_t kHighestHongKongRate = 10 * kMillion;
constexpr int kHighestMarket = 255;
constexpr std::array<const char*, 3> kAccountNames{"normal", "margin", "connect"};

std::string Quoted(const std::string& text)
{
    return '"' + text + '"';
}

// One object of the file. Each key is read once; what isn't read by the end is unknown, and refused.
class Entry
{
public:
    Entry(const Json& json, std::string where) : m_json(json), m_where(std::move(where))
    {
        if (!json.is_object()) {
            Fail("is no object");
        }
    }

    [[noreturn]] void Fail(const std::string& reason) const
    {
        throw std::runtime_error(m_where + ' ' + reason);
    }

    [[nodiscard]] std::string Place(const std::string& key) const { return m_where + ", " + Quoted(key); }

    /// A key that may be there, for people.
    void Skip(const char* key) { m_taken.emplace_back(key); }

    const Json& Take(const char* key)
    {
        m_taken.emplace_back(key);
        const auto found = m_json.find(key);
        if (found == m_json.end()) {
            Fail("lacks " + Quoted(key));
        }
        return *found;
    }
    std::string Text(const char* key)
    {
        const Json& value = Take(key);
        if (!value.is_string()) {
            Fail("has a " + Quoted(key) + " that is no text");
        }
        return value.get<std::string>();
    }
    std::string Name(const char* key)
    {
        std::string text = Text(key);
        if (text.empty()) {
            Fail("has an empty " + Quoted(key));
        }
        return text;
    }
    std::int64_t Number(const char* key, std::int64_t least, std::int64_t most)
    {
        const Json& value = Take(key);
        if (!value.is_number_integer() || value < least || value > most) {
            Fail("has a " + Quoted(key) + " that is no whole number from " + std::to_string(least) + " to " +
                 std::to_string(most));
        }
        return value.get<std::int64_t>();
    }
    Money Amount(const char* key)
    {
        const std::optional<Money> money = ReadMoney(Text(key));
        if (!money || *money < 0 || *money > kMostMoney) {
            Fail("has a " + Quoted(key) + " that is no amount of money like \"1234.50\"");
        }
        return *money;
    }
    bool Flag(const char* key)
    {
        const Json& value = Take(key);
        if (!value.is_boolean()) {
            Fail("has a " + Quoted(key) + " that is neither true nor false");
        }
        return value.get<bool>();
    }
    const Json& List(const char* key)
    {
        const Json& value = Take(key);
        if (!value.is_array()) {
            Fail("has a " + Quoted(key) + " that is no list");
        }
        return value;
    }
    void End() const
    {
        for (const auto& item : m_json.items()) {
            if (std::find(m_taken.begin(), m_taken.end(), item.key()) == m_taken.end()) {
                Fail("has an unknown key " + Quoted(item.key()));
            }
        }
    }

private:
    const Json& m_json;
    std::string m_where;
    std::vector<std::string> m_taken;
};

Holding ReadHolding(Entry entry, AccountKind account, const Listing& listing)
{
    const auto market = static_cast<std::uint8_t>(entry.Number("market", 0, kHighestMarket));
    const std::string code = entry.Name("code");
    const std::optional<std::size_t> security = listing.Find(market, code);
    if (!security) {
        entry.Fail("is of " + code + " on market " + std::to_string(market) + ", which isn't listed");
    }
    const Security& listed = listing.securities[*security];
    if (!WhyClosedTo(account, listed).empty() || listed.kind == SecurityKind::Subscription) {
        entry.Fail("is of " + code + ", which this account can't hold");
    }
    Holding holding;
    holding.account = account;
    holding.security = *security;
    holding.total = entry.Number("quantity", 1, kLargestHolding);
    holding.sellable = holding.total;
    holding.cost = entry.Amount("cost");
    entry.End();
    return holding;
}

Opening::Account ReadAccount(Entry& file, AccountKind kind, const Listing& listing)
{
    const char* const name = kAccountNames.at(static_cast<std::size_t>(kind));
    Entry entry(file.Take(name), file.Place(name));
    Opening::Account account;
    account.number = entry.Name("number");
    account.cash = entry.Amount("cash");
    account.creditLine = kind == AccountKind::Margin ? entry.Amount("credit_line") : 0;
    int place = 0;
    for (const Json& json : entry.List("holdings")) {
        const Entry holding(json, entry.Place("holdings") + " entry " + std::to_string(++place));
        account.holdings.push_back(ReadHolding(holding, kind, listing));
        const std::size_t security = account.holdings.back().security;
        if (std::count_if(account.holdings.begin(), account.holdings.end(),
                          [security](const Holding& other) { return other.security == security; }) > 1) {
            holding.Fail("is of a security that an earlier entry is of");
        }
    }
    entry.End();
    return account;
}

Shareholder ReadShareholder(Entry entry)
{
    const std::string account = entry.Name("account");
    const auto* const kind = std::find(kAccountNames.begin(), kAccountNames.end(), account);
    if (kind == kAccountNames.end()) {
        entry.Fail("is of an unknown account " + Quoted(account));
    }
    Shareholder row;
    row.account = static_cast<AccountKind>(kind - kAccountNames.begin());
    row.number = entry.Name("number");
    row.market = std::to_string(entry.Number("market", 0, kHighestMarket));
    row.marketCode = entry.Name("market_code");
    row.masks = entry.Text("masks");
    row.starMask = entry.Text("star_mask");
    row.chiNextMask = entry.Text("chinext_mask");
    row.orderTypes = entry.Text("order_types");
    row.isMain = entry.Flag("is_main");
    entry.End();
    return row;
}

Rates ReadRates(Entry& all, const char* name)
{
    Entry entry(all.Take(name), all.Place(name));
    Rates rates;
    rates.commission = entry.Number("commission", 0, kMillion);
    rates.minimumCommission = entry.Amount("minimum_commission");
    rates.stampDutyOnSale = entry.Number("stamp_duty_on_sale", 0, kMillion);
    rates.stampDutyOnBuy = entry.Number("stamp_duty_on_buy", 0, kMillion);
    rates.transferFee = entry.Number("transfer_fee", 0, kMillion);
    entry.End();
    return rates;
}

Json AccountJson(const Opening::Account& account, AccountKind kind, const Listing& listing)
{
    Json holdings = Json::array();
    for (const Holding& holding : account.holdings) {
        const Security& security = listing.securities.at(holding.security);
        holdings.push_back({{"code", security.code},
                            {"market", security.market},
                            {"quantity", holding.total},
                            {"cost", MoneyText(holding.cost)}});
    }
    Json json{{"number", account.number}, {"cash", MoneyText(account.cash)}};
    if (kind == AccountKind::Margin) {
        json["credit_line"] = MoneyText(account.creditLine);
    }
    json["holdings"] = std::move(holdings);
    return json;
}

Json ShareholderJson(const Shareholder& row)
{
    return {{"account", kAccountNames.at(static_cast<std::size_t>(row.account))},
            {"number", row.number},
            {"market", std::stoi(row.market)},
            {"market_code", row.marketCode},
            {"masks", row.masks},
            {"star_mask", row.starMask},
            {"chinext_mask", row.chiNextMask},
            {"order_types", row.orderTypes},
            {"is_main", row.isMain}};
}

Json RatesJson(const Rates& rates)
{
    return {{"commission", rates.commission},
            {"minimum_commission", MoneyText(rates.minimumCommission)},
            {"stamp_duty_on_sale", rates.stampDutyOnSale},
            {"stamp_duty_on_buy", rates.stampDutyOnBuy},
            {"transfer_fee", rates.transferFee}};
}

}  // namespace

const Opening::Account& Opening::Of(AccountKind kind) const
{
    switch (kind) {
        case AccountKind::Margin:
            return margin;
        case AccountKind::Connect:
            return connect;
        case AccountKind::Normal:
            break;
    }
    return normal;
}

const Rates& Opening::RatesFor(SecurityKind kind) const
{
    static const Rates none;
    switch (kind) {
        case SecurityKind::Stock:
        case SecurityKind::Star:
        case SecurityKind::ChiNext:
            return stock;
        case SecurityKind::Fund:
            return fund;
        case SecurityKind::Bond:
        case SecurityKind::Convertible:
            return bond;
        case SecurityKind::Connect:
            return connectRates;
        case SecurityKind::Subscription:
        case SecurityKind::Index:
            break;
    }
    return none;
}

Money Opening::AccountWorth(const Security& security, Price price, Quantity quantity) const
{
    constexpr std::int64_t kPricesInAFen = 10;
    return security.kind == SecurityKind::Connect
               ? Share(price * quantity, hongKongRate, kMillion * kPricesInAFen)
               : Worth(price, quantity);
}

Opening ReadOpening(const std::filesystem::path& file, const Listing& listing)
{
    std::ifstream stream(file, std::ios::binary);
    if (!stream) {
        throw std::runtime_error(file.string() + " can't be read");
    }
    const std::string text{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
    return ParseOpening(text, file.string(), listing);
}

Opening ParseOpening(const std::string& text, const std::string& source, const Listing& listing)
{
    const Json json = Json::parse(text, nullptr, false);
    if (json.is_discarded()) {
        throw std::runtime_error(source + " is no JSON");
    }
    Entry file(json, source);
    file.Skip("about");
    Opening opening;
    opening.normal = ReadAccount(file, AccountKind::Normal, listing);
    opening.margin = ReadAccount(file, AccountKind::Margin, listing);
    opening.connect = ReadAccount(file, AccountKind::Connect, listing);
    int place = 0;
    for (const Json& row : file.List("shareholders")) {
        opening.shareholders.push_back(
            ReadShareholder(Entry(row, file.Place("shareholders") + " entry " + std::to_string(++place))));
    }
    Entry rates(file.Take("rates"), file.Place("rates"));
    opening.stock = ReadRates(rates, "stock");
    opening.fund = ReadRates(rates, "fund");
    opening.bond = ReadRates(rates, "bond");
    opening.connectRates = ReadRates(rates, "connect");
    rates.End();
    opening.hongKongRate = file.Number("hong_kong_rate", 1, kHighestHongKongRate);
    file.End();
    return opening;
}

std::string OpeningText(const Opening& opening, const Listing& listing)
{
    Json json;
    for (const AccountKind kind : {AccountKind::Normal, AccountKind::Margin, AccountKind::Connect}) {
        json[kAccountNames.at(static_cast<std::size_t>(kind))] = AccountJson(opening.Of(kind), kind, listing);
    }
    Json& shareholders = json["shareholders"] = Json::array();
    for (const Shareholder& row : opening.shareholders) {
        shareholders.push_back(ShareholderJson(row));
    }
    json["rates"] = {{"stock", RatesJson(opening.stock)},
                     {"fund", RatesJson(opening.fund)},
                     {"bond", RatesJson(opening.bond)},
                     {"connect", RatesJson(opening.connectRates)}};
    json["hong_kong_rate"] = opening.hongKongRate;
    return json.dump();
}

}  // namespace panelry::desk
