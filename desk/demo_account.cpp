#include "desk/demo_account.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <utility>

#include "desk/demo_security.h"
#include "desk/demo_table.h"

namespace panelry::desk
{

namespace
{

constexpr char kOpen[] = "已报";
constexpr char kDealt[] = "已成";
constexpr char kCancelled[] = "已撤";

const std::string& Field(const StringMap& fields, const char* name)
{
    static const std::string none;
    const auto found = fields.find(name);
    return found == fields.end() ? none : found->second;
}

// "10.5" in fen: 1050. What is finer than a fen is cut.
long long Fen(const std::string& yuan)
{
    const std::size_t point = std::min(yuan.find('.'), yuan.size());
    const std::string part = (yuan + "00").substr(std::min(point + 1, yuan.size()), 2);
    return std::strtoll((yuan.substr(0, point) + (part + "00").substr(0, 2)).c_str(), nullptr, 10);
}

std::string Yuan(long long fen)
{
    char text[32];
    std::snprintf(text, sizeof text, "%s%lld.%02lld", fen < 0 ? "-" : "", std::abs(fen) / 100,
                  std::abs(fen) % 100);
    return text;
}

std::string HostDirection(bool buys)
{
    return ToHostText(buys ? "买入" : "卖出");
}

// The margin account's funds: one row, one currency.
class FundsTable : public HostAnswerTable
{
public:
    explicit FundsTable(std::vector<std::pair<std::string, std::string>> cells) : m_cells(std::move(cells)) {}

    int ColumnCount() const override { return static_cast<int>(m_cells.size()); }
    int RowCount() const override { return 1; }
    void ColumnInfo(int column, std::shared_ptr<StringMap>& record) const override
    {
        record = std::make_shared<StringMap>(
            StringMap{{"id", m_cells.at(static_cast<std::size_t>(column)).first}});
    }
    void CellValue(int /*row*/, int column, std::shared_ptr<std::string>& text) const override
    {
        text = std::make_shared<std::string>(m_cells.at(static_cast<std::size_t>(column)).second);
    }

private:
    const std::vector<std::pair<std::string, std::string>> m_cells;
};

const std::vector<std::string> kOrderColumns{"2140", "2102", "2103", "2109", "2127",
                                             "2126", "2128", "2946", "2135", "32009"};

}  // namespace

DemoAccount::DemoAccount(DemoTrade& trade)
    : m_trade(trade),
      m_normal{"",
               50'000'000,
               {{"1001", "600000", "17", "演示银行", "10.60", true, 1000, 0, kOpen},
                {"1002", "600519", "17", "演示酒业", "1750.00", false, 100, 0, kOpen},
                {"1003", "300750", "33", "演示电池", "210.00", true, 100, 0, kOpen},
                {"1004", "000001", "33", "演示平安", "12.00", false, 500, 0, kOpen}},
               false},
      m_margin{"rzrq_",
               20'000'000,
               {{"2001", "688981", "17", "演示芯片", "48.00", true, 200, 0, kOpen},
                {"2002", "510300", "17", "演示指数基金", "4.10", false, 10000, 0, kOpen}},
               true}  // nothing of it is dealt unasked
{
    for (const char* const type : {"1537", "1538", "1539", "4", "5"}) {
        trade.AnswerRequests(
            type, [this](const auto& subscriber, const auto& request) { Answer(subscriber, request); });
    }
    trade.AnswerRequests(
        "2314", [this](const auto& subscriber, const auto& request) { AnswerMargin(subscriber, request); });
    for (const auto& [key, text] : {std::pair{"account", "8800100"}, std::pair{"rzrq_account", "9900100"},
                                    std::pair{"authority_0", "1"}, std::pair{"authority_1", "1"}}) {
        trade.PublishText(key, text);
    }
    trade.WhenSubscribed([this](const std::string& name) { LogIn(name); });
}

// The log-in of a client is told once its refresh service listens; each log-in makes it listen once more.
void DemoAccount::LogIn(const std::string& subscribed)
{
    if (subscribed == "rzrq_chedan_table" && !std::exchange(m_loggedIn, true)) {
        m_trade.TellLogin(0);
    }
}

void DemoAccount::Answer(const DemoTrade::Subscriber& subscriber, const DemoTrade::Request& request)
{
    const std::string& type = Field(request->head, "type");
    const std::string& table = Field(request->local, "table_name");
    if (type == "1537") {
        PublishHoldings(m_normal, table);
    } else if (type == "1538") {
        PublishDeals(m_normal, table);
    } else if (type == "1539" && Field(request->body, "dataid") == "ptwt_kcwt") {
        PublishOpenOrders(m_normal, table);
    } else if (type == "1539") {
        PublishOrders(m_normal, table, false);
    } else if (type == "4") {
        Cancel(m_normal, Field(request->body, "htbh"));
    } else {
        AnswerFunds(subscriber, request);
    }
}

void DemoAccount::AnswerMargin(const DemoTrade::Subscriber& subscriber, const DemoTrade::Request& request)
{
    const std::string& command = Field(request->body, "cmd");
    const std::string& table = Field(request->local, "table_name");
    if (command == "rzrq_cxgp") {
        PublishHoldings(m_margin, table);
    } else if (command == "rzrq_cxcj") {
        PublishDeals(m_margin, table);
    } else if (command == "rzrq_cxwt" && Field(request->body, "dataid") == "rzrq_chedan") {
        PublishOpenOrders(m_margin, table);
    } else if (command == "rzrq_cxwt") {
        PublishOrders(m_margin, table, false);
    } else if (command == "rzrq_cd") {
        Cancel(m_margin, Field(request->body, "htbh"));
    } else if (command == "rzrq_cxzj") {
        AnswerFunds(subscriber, request);
    }
}

void DemoAccount::AnswerFunds(const DemoTrade::Subscriber& subscriber, const DemoTrade::Request& request)
{
    const bool margin = Field(request->body, "cmd") == "rzrq_cxzj";
    const Account& account = margin ? m_margin : m_normal;
    long long frozen = 0;
    for (const Order& order : account.orders) {
        frozen += order.buys && order.state == kOpen ? Fen(order.price) * order.amount : 0;
    }
    const std::string cash = Yuan(account.cash);
    const std::string available = Yuan(account.cash - frozen);
    auto answer = std::make_shared<StockInfoAnswer>();
    answer->request = request;
    answer->reply = std::make_shared<ddsdk::TradeRequestParam>();
    if (margin) {
        answer->reply->body["cmd"] = "rzrq_cxzj";
        answer->table = std::make_shared<FundsTable>(
            std::vector<std::pair<std::string, std::string>>{{"2172", "0"},
                                                             {"2971", cash},
                                                             {"2116", available},
                                                             {"2114", available},
                                                             {"2973", "41000.00"},
                                                             {"2191", Yuan(account.cash + 4'100'000)},
                                                             {"2113", Yuan(frozen)},
                                                             {"2908", "9900100"},
                                                             {"3857", "300000.00"}});
    } else {
        answer->reply->head = {{"account", "8800100"}, {"zjye", cash},
                               {"kyye", available},    {"sjye", available},
                               {"djye", Yuan(frozen)}, {"zcc", Yuan(account.cash + 64'000'000)}};
        answer->reply->body["gpsz"] = "640000.00";
    }
    subscriber->OnFundsPush(answer);
}

// The first one is dealt when somebody asks for the second time; nobody is told.
void DemoAccount::PublishOpenOrders(Account& account, const std::string& name)
{
    Order& first = account.orders.front();
    if (std::exchange(account.asked, true) && account.prefix.empty() && first.state == kOpen) {
        first.state = kDealt;
        first.dealt = first.amount;
        account.cash -= Fen(first.price) * first.amount;
    }
    PublishOrders(account, name, true);
}

void DemoAccount::PublishOrders(const Account& account, const std::string& name, bool onlyOpen)
{
    std::vector<DemoTable::Row> rows;
    for (const Order& order : account.orders) {
        if (onlyOpen && order.state != kOpen) {
            continue;
        }
        rows.push_back({"09:31:07", order.code, ToHostText(order.name), HostDirection(order.buys),
                        order.price, std::to_string(order.amount), std::to_string(order.dealt),
                        ToHostText(order.state), order.contract, order.market});
    }
    m_trade.PublishTable(std::make_shared<DemoTable>(name, kOrderColumns, std::move(rows)));
}

void DemoAccount::PublishDeals(const Account& account, const std::string& name)
{
    std::vector<DemoTable::Row> rows;
    for (const Order& order : account.orders) {
        if (order.dealt > 0) {
            rows.push_back({"09:35:12", order.code, ToHostText(order.name), HostDirection(order.buys),
                            order.price, std::to_string(order.dealt), Yuan(Fen(order.price) * order.dealt),
                            order.contract, "D" + order.contract, order.market});
        }
    }
    m_trade.PublishTable(
        std::make_shared<DemoTable>(name,
                                    std::vector<std::string>{"2142", "2102", "2103", "2109", "2129", "2128",
                                                             "2131", "2135", "2130", "32009"},
                                    std::move(rows)));
}

void DemoAccount::PublishHoldings(const Account& account, const std::string& name)
{
    std::vector<DemoTable::Row> rows;
    for (const Order& order : account.orders) {
        const int held = order.buys ? order.dealt : 2 * order.amount;
        const long long cost = Fen(order.price) * 96 / 100;
        if (held > 0) {
            rows.push_back({order.code, ToHostText(order.name), std::to_string(held),
                            std::to_string(order.buys ? 0 : held), Yuan(cost), order.price,
                            Yuan(Fen(order.price) * held), Yuan((Fen(order.price) - cost) * held), "4.17",
                            order.market});
        }
    }
    m_trade.PublishTable(
        std::make_shared<DemoTable>(name,
                                    std::vector<std::string>{"2102", "2103", "2117", "2121", "2122", "2124",
                                                             "2125", "2147", "3616", "32009"},
                                    std::move(rows)));
}

void DemoAccount::Cancel(Account& account, const std::string& contract)
{
    for (Order& order : account.orders) {
        if (order.contract == contract && order.state == kOpen) {
            order.state = kCancelled;
        }
    }
    PublishOpenOrders(account, account.prefix + "chedan_table");
    m_trade.SetStringMap("auto_refresh_data",
                         std::make_shared<StringMap>(
                             StringMap{{"chedan", "1"}, {"rzrq", account.prefix.empty() ? "0" : "1"}}));
}

}  // namespace panelry::desk
