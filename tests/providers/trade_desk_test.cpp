// The trade side: what is answered, published and pushed, and what isn't.

#include <QTemporaryDir>

#include "desk/providers/scenarios.h"
#include "providers/stage.h"
#include "support/rows.h"
#include "support/test.h"
#include "tables/rzrq_zi_jin_info.h"
#include "tables/zi_jin_info.h"

using namespace panelry::test;
using panelry::HostTextToUtf8;
using panelry::desk::AccountKind;
using panelry::desk::MarketHost;
using panelry::desk::Order;
using Json = nlohmann::ordered_json;

namespace
{

constexpr const char* kServiceKeys[] = {"auto_refresh_data", "chedan_table", "rzrq_chedan_table"};

// As the refresh service listens.
void Serve(Stage& stage)
{
    for (const char* const key : kServiceKeys) {
        stage.client->SubscribeKey(key, true);
    }
    stage.Settle();
}

StringMap LastReply(const Stage& stage)  // before the waiting's own
{
    const auto answers = stage.client->Answers();
    return answers[answers.size() - 2]->reply->body;
}

class Listener : public panelry::desk::MarketListener
{
public:
    void OnMarketEvent(const std::string& event, const Json& fields) override
    {
        const std::lock_guard guard(m_lock);
        m_events[event].push_back(fields);
    }
    std::vector<Json> Of(const std::string& event)
    {
        const std::lock_guard guard(m_lock);
        return m_events[event];
    }

private:
    std::mutex m_lock;
    std::map<std::string, std::vector<Json>> m_events;
};

const StringMap kConnectOrder{
    {"ggt", "1"}, {"zqdm", "00700"}, {"market", "64"}, {"wtjg", "370.000"}, {"wtsl", "200"}};

// Orders of all three accounts in the book, and a deal of each.
struct TradedStage : Stage {
    TradedStage()
    {
        problems = Fill(AccountKind::Normal, Order()["htbh"], 100) +
                   Fill(AccountKind::Margin, Order({{"rzrq", "1"}, {"rzfs", "rz"}})["htbh"], 100) +
                   Fill(AccountKind::Connect, Order(kConnectOrder)["htbh"], 100);
    }
    std::string problems;
};

}  // namespace

class TradeDeskTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void AListIsPublishedUnderItsName_data()
    {
        const Rows<StringMap, const char*, const char*> row("account column texts");
        const StringMap margin{{"rzrq", "1"}};
        const StringMap connect{{"ggt", "1"}};
        row("gupiao_table", {}, "2117", "12600 300 850 150 500 20000 120 60 ");
        row("gupiao_table: to be sold, not today's", {}, "2121", "12500 300 850 150 500 20000 120 60 ");
        row("gupiao_table: the profit", {}, "2147",
            "1869.99 18090.00 -281.00 435.00 8150.00 1420.00 60.60 279.00 ");
        row("rzrq_gupiao_table", margin, "2117", "6100 200 10000 ");
        row("ggt_gupiao_table", connect, "2117", "400 ");
        row("chengjiao_table", {}, "2128", "100 ");
        row("rzrq_chengjiao_table", margin, "2129", "9.90 ");
        row("ggt_chengjiao_table", connect, "2129", "370.000 ");
        row("weituo_table", {}, "2128", "100 ");
        row("rzrq_weituo_table", margin, "2109", "融资买入 ");
        row("ggt_weituo_table", connect, "2946", "部成 ");
        row("ggt_weituo_table: in its own currency", connect, "2129", "370.000 ");
        row("chedan_table", {}, "2126", "1000 ");
        row("rzrq_chedan_table", margin, "32009", "17 ");
        row("ggt_chedan_table", connect, "32009", "64 ");
    }

    void AListIsPublishedUnderItsName()
    {
        QFETCH(StringMap, account);
        QFETCH(const QString, column);
        const std::string table =
            QString::fromLatin1(QTest::currentDataTag()).section(QLatin1Char(':'), 0, 0).toStdString();
        const auto asked = table.find("gupiao") != std::string::npos      ? &DataDealBase::QueryPositions
                           : table.find("chengjiao") != std::string::npos ? &DataDealBase::QueryDeals
                           : table.find("weituo") != std::string::npos    ? &DataDealBase::QueryOrders
                                                                       : &DataDealBase::QueryCancelableOrders;
        TradedStage stage;
        QCOMPARE(stage.problems, std::string());
        account["table_name"] = table;
        stage.client->SubscribeKey(table, true);
        (static_cast<DataDealBase&>(stage.form).*asked)(account);
        QCOMPARE(stage.Settle(), "table " + table + "; ");  // and no answer besides
        QTEST(QString::fromStdString(stage.client->Column(table, column.toUtf8())), "texts");
        QCOMPARE(stage.client->Table(table)->Name(), table);
        QVERIFY(stage.client->GetTable(table) != nullptr);
    }

    void WithoutANameAListComesWithTheAnswer()
    {
        Stage stage;
        const auto reply = stage.Ask({{"type", "2314"}}, {{"cmd", "rzrq_cxgp"}}, {{"mine", "7"}});
        QCOMPARE(reply.body, (StringMap{{"cmd", "rzrq_cxgp"}, {"ret", "0"}}));
        const auto answer = stage.client->Answers().front();
        QCOMPARE(answer->table->RowCount(), 3);
        QCOMPARE(answer->request->local, (StringMap{{"mine", "7"}}));
    }

    void WhatIsNotKnownIsTurnedDown()
    {
        Stage stage;
        QCOMPARE(stage.Send({{"type", "1537"}}, {}), 0);
        QCOMPARE(stage.Send({}, {}), -1);
        QCOMPARE(stage.Send({{"type", "77"}}, {}), -1);
        QCOMPARE(stage.Send({{"type", "2314"}}, {{"cmd", "rzrq_xx"}}), -1);
        QCOMPARE(stage.Send({{"type", "2317"}}, {}), -1);
        QCOMPARE(stage.Send({{"type", "2317"}}, {{"cmd", "rzrq_cd"}}), -1);  // of another account
        QCOMPARE(stage.Send({{"type", "2304"}}, {{"cmd", "other"}}), -1);
    }

    void OrdersAreTakenOrRefusedWithAReason_data()
    {
        const Rows<StringMap, const char*, bool> row("changes reason kept");
        row("taken", {}, "", true);
        row("by a market's family", {{"market", "16"}}, "", true);
        row("with its accounts", {{"zjzh", "880010001"}, {"gdzh", "A880010011"}}, "", true);
        row("borrowed", {{"rzrq", "1"}, {"rzfs", "rz"}, {"wtsl", "30000"}}, "", true);
        row("sold", {{"mmlb", "S"}, {"wtjg", "10.50"}, {"wtsl", "12500"}}, "", true);
        row("an unknown code", {{"zqdm", "600001"}}, "代码", false);
        row("no side", {{"mmlb", ""}}, "买卖", false);
        row("no price", {{"wtjg", "x"}}, "价格", false);
        row("no quantity", {{"wtsl", "0"}}, "数量", false);
        row("another's funds account", {{"zjzh", "1"}}, "资金账号", false);
        row("another's shareholder account", {{"gdzh", "B1"}}, "股东", false);
        row("an unknown way to pay", {{"rzrq", "1"}, {"rzfs", "x"}}, "融资", false);
        row("by the broker", {{"wtsl", "100000"}}, "资金", true);
        row("by the exchange", {{"wtjg", "11.03"}}, "涨跌停", true);
    }

    void OrdersAreTakenOrRefusedWithAReason()
    {
        QFETCH(StringMap, changes);
        QFETCH(const QString, reason);
        QFETCH(bool, kept);
        Stage stage;
        Serve(stage);
        const std::size_t before = stage.client->Answers().size();
        StringMap reply = stage.Order(changes);
        const bool margin = changes["rzrq"] == "1";
        const QString text = QString::fromStdString(HostTextToUtf8(reply["ret_text"]));
        QCOMPARE(reply["ret"], std::string(reason.isEmpty() ? "0" : "-1"));
        QVERIFY2(text.contains(reason) && text.isEmpty() == reason.isEmpty(), qPrintable(text));
        QCOMPARE(!reply["htbh"].empty(), kept);
        QCOMPARE(stage.client->Answers()[before]->request->body.at("mmlb"),
                 changes.count("mmlb") == 1 ? changes["mmlb"] : "B");
        QCOMPARE(stage.client->Map("auto_refresh_data"),
                 reason.isEmpty() ? (StringMap{{"htbh", reply["htbh"]}, {"rzrq", margin ? "1" : "0"}})
                                  : StringMap());
        QCOMPARE(stage.client->Column(margin ? "rzrq_chedan_table" : "chedan_table", "2135"),
                 reason.isEmpty() ? reply["htbh"] + " " : std::string("none"));
        const auto orders = [&](const char* column) {
            return stage.List(&DataDealBase::QueryOrders, "weituo_table", column,
                              {{"rzrq", margin ? "1" : "0"}});
        };
        QCOMPARE(orders("2135"), kept ? reply["htbh"] + " " : std::string());
        QCOMPARE(orders("2946"), std::string(!kept ? "" : reason.isEmpty() ? "已报 " : "废单 "));
    }

    void ACancelGoesThereAndBack_data()
    {
        const Rows<StringMap, const char*, const char*> row("account table told");
        row("normal", {}, "chedan_table", "map auto_refresh_data; table chedan_table; ");
        row("margin", {{"rzrq", "1"}}, "rzrq_chedan_table",
            "map auto_refresh_data; table rzrq_chedan_table; ");
        row("Connect", kConnectOrder, "ggt_chedan_table", "table ggt_chedan_table; ");
    }

    void ACancelGoesThereAndBack()
    {
        QFETCH(StringMap, account);
        QFETCH(const QString, table);
        QFETCH(const QString, told);
        Stage stage;
        const std::string contract = stage.Order(account)["htbh"];
        stage.client->SubscribeKey("auto_refresh_data", true);
        stage.client->SubscribeKey(table.toStdString(), true);
        StringMap row = account;
        row["htbh"] = contract;
        const auto cancel = std::make_shared<ddsdk::TradeRequestParam>();
        stage.form.FillCancelRequest(cancel, row);
        stage.client->SendTradeRequest(cancel);
        QCOMPARE(stage.Settle(), "answer " + cancel->head["type"] + "; " + told.toStdString());
        QCOMPARE(stage.client->Column(table.toStdString(), "2135"), std::string());
        StringMap reply = LastReply(stage);
        QCOMPARE(reply["ret"] + reply["htbh"], "0" + contract);
        if (account["ggt"].empty()) {
            QCOMPARE(stage.client->Map("auto_refresh_data"),
                     (StringMap{{"chedan", "1"}, {"rzrq", account["rzrq"].empty() ? "0" : "1"}}));
        }
        stage.client->SendTradeRequest(cancel);  // there is nothing left
        QCOMPARE(stage.Settle(), "answer " + cancel->head["type"] + "; ");
        QCOMPARE(LastReply(stage)["ret"], std::string("-1"));
    }

    void AnotherAccountsOrderCannotBeCancelled()
    {
        Stage stage;
        const std::string contract = stage.Order()["htbh"];
        const auto reply = stage.Ask({{"type", "2314"}}, {{"cmd", "rzrq_cd"}, {"htbh", contract}});
        QCOMPARE(reply.body.at("ret"), std::string("-1"));
    }

    // A host tells of orders that come in through any client, and leaves deals to whoever asks.
    void OrdersOfOthersArePushedAndDealsAreNot()
    {
        Stage stage;
        Serve(stage);
        const std::string contract = stage.BuyAtCounter(AccountKind::Margin, 9900, 1000);
        QCOMPARE(stage.Settle(), std::string("map auto_refresh_data; table rzrq_chedan_table; "));
        QCOMPARE(stage.client->Column("rzrq_chedan_table", "2135"), contract + " ");
        QCOMPARE(stage.Fill(AccountKind::Margin, contract, 1000, 7), std::string());
        QCOMPARE(stage.Settle(), std::string());
        StringMap parameters{{"table_name", "rzrq_chedan_table"}, {"rzrq", "1"}};
        stage.form.QueryCancelableOrders(parameters);
        QCOMPARE(stage.Settle(), std::string("table rzrq_chedan_table; "));
        QCOMPARE(stage.client->Column("rzrq_chedan_table", "2135"), std::string());
    }

    void FundsComeAsTheFundsObjectsReadThem()
    {
        Stage stage;
        ZiJinInfo normal;
        RzrqZiJinInfo margin;
        normal.SetObservers({}, stage.client);
        margin.SetObservers({}, stage.client);
        StringMap none;
        stage.Order({{"wtsl", "10000"}});
        stage.Order({{"wtsl", "10000"}, {"rzrq", "1"}, {"rzfs", "rz"}});
        stage.client->TakeNews();
        normal.QueryFunds(none);
        margin.QueryFunds(none);
        QCOMPARE(stage.Settle(), std::string("answer 5; answer 2314; "));
        for (const Client::Answer& answer : stage.client->Answers()) {
            StringMap scratch;
            normal.OnFundsAnswer(answer, scratch);
            scratch.clear();
            margin.OnFundsAnswer(answer, scratch);
        }
        StringMap funds = *stage.client->GetStringMap("zijin_data_proc");
        // 10000 at 9.90, a commission of 0.025 % and a fee of 0.001 %.
        QCOMPARE(funds["account"] + " " + funds["zjye"] + " " + funds["djye"] + " " + funds["kyye"],
                 std::string("880010001 500000.00 99025.74 400974.26"));
        QCOMPARE(funds["gpsz"], std::string("860916.20"));
        QCOMPARE(funds["zcc"], std::string("1360916.20"));
        funds = *stage.client->GetStringMap("zijin_data_rzrq_0");
        QCOMPARE(funds["account"] + " " + funds["zjye"] + " " + funds["kyye"] + " " + funds["rzkyed"],
                 std::string("990010001 200000.00 200000.00 200974.26"));
        QCOMPARE(funds["gpsz"], std::string("143360.00"));
        StringMap connect{{"ggt", "1"}};
        stage.client->SubscribeKey("ggt_zijin_data", true);
        normal.QueryFunds(connect);
        QCOMPARE(stage.Settle(), std::string("table ggt_zijin_data; "));
        QCOMPARE(stage.client->Column("ggt_zijin_data", "2116"), std::string("300000.00 "));
    }

    void DealsOfThePastAreAskedForByDate()
    {
        TradedStage stage;
        stage.host.Market().Midnight();
        const auto deals = [&](const char* table, StringMap parameters) {
            return stage.List(&DataDealBase::QueryDeals, table, "2141", std::move(parameters));
        };
        std::string first = panelry::desk::DateText(1);
        std::erase(first, '-');
        const std::string day = first + " ";
        for (const auto& [account, operation] : {std::pair(StringMap(), "买入 "),
                                                 {StringMap{{"rzrq", "1"}}, "融资买入 "},
                                                 {StringMap{{"ggt", "1"}}, "买入 "}}) {
            StringMap range = account;
            range["qsrq"] = range["jzrq"] = first;
            QCOMPARE(deals("today", account), std::string());
            QCOMPARE(deals("past", range), day);
            QCOMPARE(stage.client->Column("past", "2109"), std::string(operation));
            range["jzrq"] = "20991231";
            QCOMPARE(deals("past", range), day);
            range["qsrq"] = "20991230";
            QCOMPARE(deals("past", range), std::string());
        }
        QCOMPARE(deals("broken", {{"qsrq", "2026"}, {"jzrq", "20260230"}}), std::string("none"));
        QCOMPARE(LastReply(stage)["ret"], std::string("-1"));
    }

    void TheAccountsAreThereFromTheStart()
    {
        Stage stage;
        std::shared_ptr<std::string> text;
        const StringMap texts{{"account", "880010001"},
                              {"rzrq_account", "990010001"},
                              {"ggt_account", "770010001"},
                              {"authority_0", "1"},
                              {"authority_1", "1"}};
        for (const auto& [key, value] : texts) {
            QCOMPARE(stage.client->GetString(key, text), 0);
            QCOMPARE(*text, value);
        }
        QCOMPARE(stage.client->GetString("other", text), -1);
        QVERIFY(!text);
        QVERIFY(stage.form.IsTzmCode("430001") && !stage.form.IsTzmCode("600000"));
        QCOMPARE(*stage.client->GetStringMap("scdm_range"),
                 (StringMap{{"0_begin", "1"}, {"0_end", "2"}, {"1_begin", "!1"}, {"1_end", "!2"}}));
        QCOMPARE(stage.form.QueryMarketOrderTypes(1, "33", "300750"), std::string("1;2;3;"));
        std::string account;
        stage.form.FindAccountByMarket("5", account);
        QCOMPARE(account, std::string("H880010013"));
    }

    void AMapIsTheProvidersOnceItIsSet()
    {
        Stage stage;
        stage.client->SubscribeKey("mine", true);
        const auto map = std::make_shared<StringMap>(StringMap{{"a", "1"}});
        QCOMPARE(stage.client->SetStringMap("mine", map), 0);
        (*map)["a"] = "2";
        (*stage.client->GetStringMap("mine"))["a"] = "3";
        QCOMPARE(stage.Settle(), std::string("map mine; "));
        QCOMPARE(stage.client->Map("mine").at("a") + stage.client->GetStringMap("mine")->at("a"),
                 std::string("11"));
        stage.client->SubscribeKey("mine", false);
        stage.client->SetStringMap("mine", map);
        QCOMPARE(stage.Settle(), std::string());
    }

    void ALogInIsToldWhenTheServiceListens()
    {
        Stage stage;
        const auto later = std::make_shared<Client>();
        stage.client->SubscribeKey(kServiceKeys[0], true);
        stage.client->SubscribeKey(kServiceKeys[1], true);
        QCOMPARE(stage.Settle(), std::string());
        stage.client->SubscribeKey(kServiceKeys[2], true);
        QCOMPARE(stage.Settle(), std::string("login 0; login 1; "));
        stage.client->SubscribeKey(kServiceKeys[2], true);
        QCOMPARE(stage.Settle(), std::string());
        later->TradeObserver::SetProvider(stage.host.Trades());
        stage.host.LoseLogin();
        for (const auto& client : {stage.client, later}) {
            std::vector<std::string> news;
            QVERIFY(QTest::qWaitFor([&] { return !(news = client->TakeNews()).empty(); }));
            QCOMPARE(news, std::vector<std::string>{"login 2"});
        }
        std::shared_ptr<std::string> text;
        QCOMPARE(stage.Send({{"type", "1537"}}, {}), -1);
        QCOMPARE(stage.client->SubscribeKey(kServiceKeys[0], true), -1);
        QVERIFY(!stage.form.HasAuthority(1) && !stage.form.HasAuthority(2));
        QVERIFY(!stage.BuyAtCounter(AccountKind::Normal, 9900, 1000).empty());
        stage.host.LogIn();
        // The subscriptions are gone, and so is what would have been pushed.
        QCOMPARE(stage.Settle(), std::string("login 0; login 1; "));
        QCOMPARE(later->TakeNews(), (std::vector<std::string>{"login 0", "login 1"}));
        QVERIFY(stage.form.HasAuthority(1) && stage.form.HasAuthority(2));
        QCOMPARE(stage.client->SubscribeKey(kServiceKeys[0], true), 0);
    }

    void WhatHappensIsAnnounced()
    {
        Listener listener;
        Stage stage;
        stage.host.SetListener(&listener);
        StringMap fields{{"notify_wtzz", "on"}, {"module", "41005"}};
        stage.form.NotifyConfigChange(fields);
        const std::string contract = stage.Order()["htbh"];
        stage.Fill(AccountKind::Normal, contract, 400);
        stage.host.Market().Midnight();
        QCOMPARE(listener.Of("setting").at(0), (Json{{"module", "41005"}, {"value", "on"}}));
        const std::string request =
            R"({"type":"3","cmd":"","dataid":"","table":"","code":"600000","taken":true})";
        QCOMPARE(listener.Of("request").at(1).dump(), request);
        std::string orders;
        for (const Json& order : listener.Of("order")) {
            orders += order["what"].get<std::string>() + " " + order["dealt"].dump() + " " +
                      order["state"].get<std::string>() + "; ";
        }
        QCOMPARE(orders, std::string("accepted 0 已报; dealt 400 部成; expired 400 部撤; "));
        const Json deal = listener.Of("deal").at(0);
        QCOMPARE(deal["price"].get<std::string>() + " " + deal["worth"].get<std::string>() + " " +
                     deal["contract"].get<std::string>(),
                 "9.90 3960.00 " + contract);
        QCOMPARE(listener.Of("day").at(0)["day"], 2);
        QCOMPARE(listener.Of("phase").at(0)["time"], "11:30:00");
        stage.host.Stop();
    }

    void ScenariosAreCalledByName()
    {
        Stage stage;
        const auto play = [&](const std::vector<std::string>& words) {
            return panelry::desk::PlayScenario(stage.host, words);
        };
        const auto quote = [&] {
            return stage.host.Market().Read([&](const auto& exchange, const auto&) {
                return exchange.QuoteOf(stage.Security(17, "600000"));
            });
        };
        const std::string contract = stage.Order({{"wtsl", "20000"}, {"wtjg", "9.80"}})["htbh"];
        QCOMPARE(play({"thousand-fills", "600000"}), std::string());
        stage.host.Market().Read([](const auto&, const auto& broker) {
            QCOMPARE(broker.Deals(AccountKind::Normal).size(), std::size_t{1000});
        });
        QVERIFY(!play({"thousand-fills"}).empty());
        QCOMPARE(play({"limit-up", "600000", "17"}), std::string());
        QCOMPARE(quote().bids[0].price, quote().upperLimit);
        QCOMPARE(play({"suspend", "600000"}), std::string());
        QVERIFY(quote().suspended);
        QCOMPARE(play({"resume", "600000"}), std::string());
        QVERIFY(!quote().suspended);
        QCOMPARE(play({"fast-market", "500"}), std::string());
        QCOMPARE(stage.host.Market().Read([](const auto& exchange, const auto&) { return exchange.Rate(); }),
                 500.0);
        QCOMPARE(play({"login-lost"}), std::string());
        QCOMPARE(stage.Send({{"type", "1537"}}, {}), -1);
        QCOMPARE(play({"login-back"}), std::string());
        QCOMPARE(stage.Send({{"type", "1537"}}, {}), 0);
        QCOMPARE(play({"midnight"}), std::string());
        QCOMPARE(stage.host.Market().Now().day, 2);
        const std::vector<std::vector<std::string>> wrong{
            {}, {"other"}, {"limit-up"}, {"limit-down", "1"}, {"fast-market", "x"}, {"fast-market", "-1"}};
        for (const auto& words : wrong) {
            QVERIFY(!play(words).empty());
        }
    }

    void OpenOrdersGoToTheExchangeAgain_data()
    {
        const Rows<int, bool> row("hour stays");
        row("in the day", 11, true);
        row("before it opens", 8, true);
        row("when it is closed", 16, false);
    }

    void OpenOrdersGoToTheExchangeAgain()
    {
        QFETCH(int, hour);
        QFETCH(bool, stays);
        const QTemporaryDir folder;
        MarketHost::Settings settings = StillMarket();
        settings.store = folder.path().toStdString() + "/accounts";
        std::string contract;
        std::string other;
        {
            Stage stage(settings);
            contract = stage.Order()["htbh"];
            other = stage.Order({{"mmlb", "S"}, {"wtjg", "10.80"}})["htbh"];
            stage.Fill(AccountKind::Normal, contract, 300);
        }
        settings.startOfDay = std::chrono::hours(hour);
        Stage stage(settings);
        QCOMPARE(stage.List(&DataDealBase::QueryCancelableOrders, "chedan_table", "2135"),
                 stays ? contract + " " + other + " " : std::string());
        QCOMPARE(stage.Fill(AccountKind::Normal, contract, 700).empty(), stays && hour > 9);
        stage.host.Market().MoveTo(13h);
        QCOMPARE(stage.Fill(AccountKind::Normal, contract, 700).empty(), stays && hour < 9);
        QCOMPARE(stage.host.Market().Cancel(AccountKind::Normal, other).empty(), stays);
        stage.host.Market().Read([&](const auto&, const auto& broker) {
            QCOMPARE(broker.DealsBetween(AccountKind::Normal, 1, 1).back().quantity, stays ? 700 : 300);
            QCOMPARE(broker.Audit(), std::string());
        });
    }
};

PANELRY_TEST(TradeDeskTest)

#include "trade_desk_test.moc"
