#pragma once

#include <algorithm>
#include <initializer_list>
#include <iterator>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "desk/providers/market_host.h"
#include "services/trade_provider.h"

namespace panelry::test
{

/// What stands in the tables and maps of both accounts, each row as one text: name of the table to its rows.
using Books = std::map<std::string, std::multiset<std::string>>;

/// An account: what the names of its tables begin with, and the map of its funds.
struct World {
    desk::AccountKind account;
    const char* prefix;
    const char* funds;
};
inline constexpr World kWorlds[] = {{desk::AccountKind::Normal, "", "zijin_data_proc"},
                                    {desk::AccountKind::Margin, "rzrq_", "zijin_data_rzrq_0"}};

// Fields side by side; a number without the zeros behind its decimals, so that "10.50" is "10.500".
inline std::string Row(const std::vector<std::string>& fields)
{
    std::string row;
    for (std::string field : fields) {
        if (field.find('.') != std::string::npos) {
            field.erase(field.find_last_not_of('0') + 1);
            if (field.back() == '.') {
                field.pop_back();
            }
        }
        row += field + ' ';
    }
    return row;
}

inline void AddBrokersAccount(const World& world, const desk::Exchange& exchange,
                              const desk::Brokerage& broker, Books& books)
{
    const auto& securities = exchange.Securities().securities;
    const std::string prefix = world.prefix;
    auto& open = books[prefix + "chedan_table"];
    auto& orders = books[prefix + "weituo_table"];
    for (const desk::Order& order : broker.Orders(world.account)) {
        const std::string row =
            Row({order.contract, securities[order.wish.security].code, desk::PriceText(order.wish.price, 3),
                 std::to_string(order.wish.quantity), std::to_string(order.dealt)});
        orders.insert(row);
        if (order.IsOpen()) {
            open.insert(row);
        }
    }
    auto& deals = books[prefix + "chengjiao_table"];
    for (const desk::Deal& deal : broker.Deals(world.account)) {
        deals.insert(
            Row({deal.number, deal.contract, securities[deal.security].code, desk::PriceText(deal.price, 3),
                 std::to_string(deal.quantity), desk::MoneyText(deal.worth)}));
    }
    auto& holdings = books[prefix + "gupiao_table"];
    for (const desk::Holding& holding : broker.Holdings(world.account)) {
        holdings.insert(Row({securities[holding.security].code, std::to_string(holding.total),
                             std::to_string(holding.sellable)}));
    }
    const desk::Funds funds = broker.FundsOf(
        world.account, [&](std::size_t security) { return desk::Simulation::PriceOf(exchange, security); });
    std::vector<std::string> fields;
    for (const desk::Money money : {funds.balance, funds.available, funds.frozen, funds.withdrawable,
                                    funds.marketValue, funds.assets}) {
        fields.push_back(desk::MoneyText(money));
    }
    fields.push_back(world.account == desk::AccountKind::Margin ? desk::MoneyText(funds.credit) : "");
    books[world.funds].insert(Row(fields));
}

inline void AddTable(TradeProvider& trades, const std::string& name,
                     std::initializer_list<const char*> columns, Books& books)
{
    auto& rows = books[name];
    const std::shared_ptr<HostTable> table = trades.GetTable(name);
    for (int row = 0; table && row < table->RowCount(); ++row) {
        std::vector<std::string> fields;
        for (const char* const id : columns) {
            const int column = table->FindColumn(id);
            fields.emplace_back(column < 0 ? "(none)" : table->CellText(row, column));
        }
        rows.insert(Row(fields));
    }
}

/// As the broker has it.
inline Books BrokersBooks(const desk::Simulation& market)
{
    return market.Read([](const desk::Exchange& exchange, const desk::Brokerage& broker) {
        Books books;
        for (const World& world : kWorlds) {
            AddBrokersAccount(world, exchange, broker, books);
        }
        return books;
    });
}

/// As it was published when the library asked.
inline Books PublishedBooks(desk::MarketHost& host)
{
    TradeProvider& trades = *host.Trades();
    Books books;
    for (const World& world : kWorlds) {
        const std::string prefix = world.prefix;
        for (const char* const orders : {"chedan_table", "weituo_table"}) {
            AddTable(trades, prefix + orders, {"2135", "2102", "2127", "2126", "2128"}, books);
        }
        AddTable(trades, prefix + "chengjiao_table", {"2130", "2135", "2102", "2129", "2128", "2131"}, books);
        AddTable(trades, prefix + "gupiao_table", {"2102", "2117", "2121"}, books);
        if (const std::shared_ptr<StringMap> funds = trades.GetStringMap(world.funds)) {
            std::vector<std::string> fields;
            for (const char* const key : {"zjye", "kyye", "djye", "sjye", "gpsz", "zcc", "rzkyed"}) {
                fields.push_back((*funds)[key]);
            }
            books[world.funds].insert(Row(fields));
        }
    }
    return books;
}

/// The first few rows that only one side has, in words; empty where both agree.
inline std::string Difference(const Books& broker, const Books& published)
{
    constexpr std::size_t kShown = 3;
    std::string words;
    for (const auto& [name, rows] : broker) {
        const auto found = published.find(name);
        const auto others = found == published.end() ? std::multiset<std::string>() : found->second;
        const auto tell = [&, &table = name](const char* who, const auto& one, const auto& other) {
            std::vector<std::string> only;
            std::set_difference(one.begin(), one.end(), other.begin(), other.end(), std::back_inserter(only));
            for (std::size_t i = 0; i < std::min(only.size(), kShown); ++i) {
                words += table + ", only " + who + ": " + only[i] + '\n';
            }
        };
        tell("with the broker", rows, others);
        tell("published", others, rows);
    }
    return words;
}

}  // namespace panelry::test
