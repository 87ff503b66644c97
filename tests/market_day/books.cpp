#include "market_day/books.h"

#include <algorithm>
#include <initializer_list>
#include <iterator>
#include <memory>
#include <vector>

#include "services/trade_provider.h"

namespace panelry::test
{

namespace
{

using desk::AccountKind;

struct World {
    AccountKind account;
    const char* prefix;
    const char* funds;
};
constexpr World kWorlds[] = {{AccountKind::Normal, "", "zijin_data_proc"},
                             {AccountKind::Margin, "rzrq_", "zijin_data_rzrq_0"}};

// Fields side by side; a number without the zeros behind its decimals, so that "10.50" is "10.500".
std::string Row(const std::vector<std::string>& fields)
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

std::string Price(desk::Price price)
{
    return desk::PriceText(price, 3);
}

std::string Text(desk::Quantity quantity)
{
    return std::to_string(quantity);
}

void AddBrokersAccount(const World& world, const desk::Exchange& exchange, const desk::Brokerage& broker,
                       Books& books)
{
    const auto& securities = exchange.Securities().securities;
    const std::string prefix = world.prefix;
    auto& open = books[prefix + "chedan_table"];
    auto& orders = books[prefix + "weituo_table"];
    for (const desk::Order& order : broker.Orders(world.account)) {
        const std::string row = Row({order.contract, securities[order.wish.security].code,
                                     Price(order.wish.price), Text(order.wish.quantity), Text(order.dealt)});
        orders.insert(row);
        if (order.IsOpen()) {
            open.insert(row);
        }
    }
    auto& deals = books[prefix + "chengjiao_table"];
    for (const desk::Deal& deal : broker.Deals(world.account)) {
        deals.insert(Row({deal.number, deal.contract, securities[deal.security].code, Price(deal.price),
                          Text(deal.quantity), desk::MoneyText(deal.worth)}));
    }
    auto& holdings = books[prefix + "gupiao_table"];
    for (const desk::Holding& holding : broker.Holdings(world.account)) {
        holdings.insert(
            Row({securities[holding.security].code, Text(holding.total), Text(holding.sellable)}));
    }
    const desk::Funds funds = broker.FundsOf(
        world.account, [&](std::size_t security) { return desk::Simulation::PriceOf(exchange, security); });
    books[world.funds].insert(
        Row({desk::MoneyText(funds.balance), desk::MoneyText(funds.available), desk::MoneyText(funds.frozen),
             desk::MoneyText(funds.withdrawable), desk::MoneyText(funds.marketValue),
             desk::MoneyText(funds.assets),
             world.account == AccountKind::Margin ? desk::MoneyText(funds.credit) : ""}));
}

void AddTable(TradeProvider& trades, const std::string& name, std::initializer_list<const char*> columns,
              Books& books)
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

}  // namespace

Books BrokersBooks(const desk::Simulation& market)
{
    return market.Read([](const desk::Exchange& exchange, const desk::Brokerage& broker) {
        Books books;
        for (const World& world : kWorlds) {
            AddBrokersAccount(world, exchange, broker, books);
        }
        return books;
    });
}

Books PublishedBooks(desk::MarketHost& host)
{
    TradeProvider& trades = *host.Trades();
    Books books;
    for (const World& world : kWorlds) {
        const std::string prefix = world.prefix;
        AddTable(trades, prefix + "chedan_table", {"2135", "2102", "2127", "2126", "2128"}, books);
        AddTable(trades, prefix + "weituo_table", {"2135", "2102", "2127", "2126", "2128"}, books);
        AddTable(trades, prefix + "chengjiao_table", {"2130", "2135", "2102", "2129", "2128", "2131"}, books);
        AddTable(trades, prefix + "gupiao_table", {"2102", "2117", "2121"}, books);
        const std::shared_ptr<StringMap> funds = trades.GetStringMap(world.funds);
        if (funds) {
            books[world.funds].insert(
                Row({(*funds)["zjye"], (*funds)["kyye"], (*funds)["djye"], (*funds)["sjye"], (*funds)["gpsz"],
                     (*funds)["zcc"], (*funds)["rzkyed"]}));
        }
    }
    return books;
}

std::string Difference(const Books& broker, const Books& published)
{
    constexpr std::size_t kShown = 3;
    std::string words;
    for (const auto& [name, rows] : broker) {
        const auto found = published.find(name);
        const std::multiset<std::string> others =
            found == published.end() ? std::multiset<std::string>() : found->second;
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
