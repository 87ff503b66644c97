// The funds of both accounts: what is asked, and what is kept of an answer.

#include <clocale>

#include "support/test.h"
#include "tables/fake_account.h"
#include "tables/rzrq_zi_jin_info.h"
#include "tables/zi_jin_info.h"

using ddsdk::TradeRequestParam;
using panelry::test::FakeAccount;
using panelry::test::FakeAnswerTable;
using panelry::test::FakeObservers;
using panelry::test::FakeTable;

namespace
{

constexpr char kStored[] = "zijin_data_proc";

template <class Funds>
struct Stage {
    Stage()
    {
        observers->TradeObserver::SetProvider(&account);
        funds.SetObservers(observers, observers);
    }

    FakeAccount account;
    std::shared_ptr<FakeObservers> observers = std::make_shared<FakeObservers>();
    Funds funds;
};

std::shared_ptr<StockInfoAnswer> Answer(const char* type, const TradeRequestParam& reply)
{
    auto answer = std::make_shared<StockInfoAnswer>();
    answer->request = std::make_shared<TradeRequestParam>();
    answer->request->head["type"] = type;
    answer->reply = std::make_shared<TradeRequestParam>(reply);
    return answer;
}

std::shared_ptr<StockInfoAnswer> MarginAnswer(std::vector<std::string> columns, FakeTable::Rows rows)
{
    auto answer = Answer("2314", {{}, {{"cmd", "rzrq_cxzj"}}, {}});
    answer->table = std::make_shared<FakeAnswerTable>(std::move(columns), std::move(rows));
    return answer;
}

const StringMap kNoFunds{{"account", ""}, {"zcc", ""},     {"zjye", ""}, {"djye", ""}, {"cqye", ""},
                         {"sjye", ""},    {"options", ""}, {"kyye", ""}, {"gpsz", ""}, {"zyk", ""}};

StringMap Funds(const StringMap& given)
{
    StringMap funds = kNoFunds;
    for (const auto& [key, value] : given) {
        funds[key] = value;
    }
    return funds;
}

}  // namespace

Q_DECLARE_METATYPE(StringMap)
Q_DECLARE_METATYPE(std::string)
using Rows = FakeTable::Rows;
Q_DECLARE_METATYPE(Rows)
using Columns = std::vector<std::string>;
Q_DECLARE_METATYPE(Columns)
using Maps = std::map<std::string, StringMap>;
Q_DECLARE_METATYPE(Maps)

class FundsTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void TheNormalAccountIsAsked()
    {
        Stage<ZiJinInfo> stage;
        StringMap none;
        stage.funds.QueryFunds(none);
        stage.account.m_strings["account"] = "8001";
        StringMap stockConnect{{"ggt", "1"}};
        stage.funds.QueryFunds(stockConnect);
        const StringMap head{{"type", "5"}, {"pub_4_int", "555"}, {"refresh", "1"}, {"cachedata", "1"}};
        const auto& requests = stage.account.m_requests;
        QCOMPARE(requests.size(), std::size_t{2});
        QCOMPARE(requests[0].head, head);
        QCOMPARE(requests[0].body, (StringMap{{"dd_local_name", "query_zijin"}}));
        QVERIFY(requests[0].local.empty());
        StringMap stockConnectHead = head;
        stockConnectHead["type"] = "2317";
        QCOMPARE(requests[1].head, stockConnectHead);
        QCOMPARE(requests[1].body,
                 (StringMap{{"cmd", "ggt_query_zijin"}, {"dd_local_name", "query_zijin"}, {"zjzh", "8001"}}));
        QCOMPARE(requests[1].local, (StringMap{{"table_name", "ggt_zijin_data"}}));
    }

    void TheMarginAccountIsAsked()
    {
        Stage<RzrqZiJinInfo> stage;
        stage.account.m_strings = {{"account", "8001"}, {"rzrq_account", "9001"}};
        StringMap unread{{"ggt", "1"}};
        stage.funds.QueryFunds(unread);
        const auto& request = stage.account.m_requests.at(0);
        QCOMPARE(request.head, (StringMap{{"type", "2314"}}));
        QCOMPARE(
            request.body,
            (StringMap{{"cmd", "rzrq_cxzj"}, {"dataid", "rzrq_zijin"}, {"rzrq", "1"}, {"zjzh", "9001"}}));
        QVERIFY(request.local.empty());
    }

    void AnAnswerReplacesAllButTheProfit_data()
    {
        QTest::addColumn<QByteArray>("type");
        QTest::addColumn<StringMap>("stored");
        QTest::addColumn<StringMap>("expected");
        const StringMap answered = Funds({{"account", "8001"}, {"kyye", "5.00"}, {"gpsz", "7"}});
        StringMap withProfit = answered;
        withProfit["zyk"] = "-1.000000";
        const StringMap before{{"zyk", "-1.000000"}, {"kyye", "4"}, {"own", "x"}};
        QTest::newRow("nothing stored") << QByteArray("5") << StringMap() << answered;
        QTest::newRow("stored") << QByteArray("5") << before << withProfit;
        QTest::newRow("of Stock Connect") << QByteArray("2317") << before << before;
        QTest::newRow("no number") << QByteArray("five") << before << before;
    }

    void AnAnswerReplacesAllButTheProfit()
    {
        QFETCH(const QByteArray, type);
        QFETCH(const StringMap, stored);
        QFETCH(const StringMap, expected);
        Stage<ZiJinInfo> stage;
        if (!stored.empty()) {
            stage.account.m_maps[kStored] = stored;
        }
        StringMap scratch;
        // "gpsz" counts in the body and nowhere else; the others count in the head.
        stage.funds.OnFundsAnswer(
            Answer(type, {{{"account", "8001"}, {"kyye", "5.00"}, {"gpsz", "8"}, {"more", "x"}},
                          {{"gpsz", "7"}, {"zcc", "9"}},
                          {}}),
            scratch);
        QCOMPARE(stage.account.m_maps[kStored], expected);
    }

    void APushIsReadFromOneMap()
    {
        Stage<ZiJinInfo> stage;
        stage.account.m_maps[kStored] = {{"zyk", "2"}, {"zcc", "1"}};
        stage.funds.OnFundsFields(std::make_shared<StringMap>(StringMap{{"gpsz", "7"}, {"zyk", "3"}}));
        QCOMPARE(stage.account.m_maps[kStored], Funds({{"gpsz", "7"}, {"zyk", "2"}}));
    }

    void WhatIsMissingChangesNothing()
    {
        Stage<ZiJinInfo> stage;
        StringMap scratch;
        auto half = Answer("5", {});
        half->reply.reset();
        for (const auto& answer :
             {std::shared_ptr<StockInfoAnswer>(), std::make_shared<StockInfoAnswer>(), half}) {
            stage.funds.OnFundsAnswer(answer, scratch);
        }
        stage.funds.OnFundsFields(nullptr);
        stage.funds.OnPositionsTable(nullptr);
        QVERIFY(stage.account.m_maps.empty());
        // Without a trade side the caller's map is filled all the same.
        stage.observers.reset();
        stage.funds.OnFundsAnswer(Answer("5", {{{"zcc", "1"}}, {}, {}}), scratch);
        QCOMPARE(scratch["zcc"], std::string("1"));
    }

    void TheProfitIsSummed_data()
    {
        QTest::addColumn<Columns>("columns");
        QTest::addColumn<Rows>("rows");
        QTest::addColumn<std::string>("profit");
        const auto row = [](const char* name, const char* column, const Rows& rows, const char* profit) {
            QTest::newRow(name) << Columns{"2102", column} << rows << std::string(profit);
        };
        row("both signs", "2147", {{"9", "1.5"}, {"9", "-2.25"}}, "-0.750000");
        row("not a number", "2147", {{"9", "abc"}, {"9", ""}, {"9", " 3.5yuan"}}, "3.500000");
        row("no rows", "2147", {}, "0.000000");
        row("no such column", "2148", {{"9", "1.5"}}, "0.000000");
        row("large", "2147", {{"9", "123456789012.25"}, {"9", "1e3"}}, "123456790012.250000");
        row("in the rows' order", "2147", {{"9", "1e16"}, {"9", "1"}, {"9", "-1e16"}}, "0.000000");
    }

    void TheProfitIsSummed()
    {
        QFETCH(const Columns, columns);
        QFETCH(const Rows, rows);
        QFETCH(const std::string, profit);
        Stage<ZiJinInfo> stage;
        stage.account.m_maps[kStored] = {{"zcc", "1"}, {"own", "x"}};
        stage.funds.OnPositionsTable(std::make_shared<FakeTable>("gupiao_table", columns, rows));
        QCOMPARE(stage.account.m_maps[kStored], (StringMap{{"own", "x"}, {"zcc", "1"}, {"zyk", profit}}));
    }

    // All of this runs once more where the decimal point is a comma.
    void TheLocaleIsTheWantedOne()
    {
        const QByteArray wanted = qgetenv("PANELRY_DECIMAL_POINT");
        if (!wanted.isEmpty()) {
            QCOMPARE(QByteArray(std::localeconv()->decimal_point), wanted);
        }
    }

    void EachCurrencyIsPublished_data()
    {
        QTest::addColumn<Columns>("columns");
        QTest::addColumn<Rows>("rows");
        QTest::addColumn<Maps>("published");
        const Columns all{"2172", "2971", "2116", "2114", "2973", "2191", "2908", "2113", "3857"};
        const auto map = [](const char* texts) {
            StringMap funds;
            const QStringList values = QString::fromLatin1(texts).split(QLatin1Char(' '));
            const char* const keys[] = {"zjye", "kyye", "sjye", "gpsz", "zcc", "account", "djye", "rzkyed"};
            for (int i = 0; i < values.size(); ++i) {
                funds[keys[i]] = values[i].toStdString();
            }
            return funds;
        };
        QTest::newRow("two currencies") << all
                                        << Rows{{"0", "a", "b", "c", "d", "e", "f", "g", "h"},
                                                {"1", "i", "j", "k", "l", "m", "n", "o", "p"}}
                                        << Maps{{"zijin_data_rzrq_0", map("a b c d e f g h")},
                                                {"zijin_data_rzrq_1", map("i j k l m n o p")}};
        QTest::newRow("no rows") << all << Rows{} << Maps{};
        QTest::newRow("a column that isn't there reads as the first one")
            << Columns{"2908", "2172", "2971"} << Rows{{"9001", "0", "a"}}
            << Maps{{"zijin_data_rzrq_0", map("a 9001 9001 9001 9001 9001 9001 9001")}};
        QTest::newRow("without ids all is the first one")
            << Columns{"?", "-"} << Rows{{"x", "y"}} << Maps{{"zijin_data_rzrq_x", map("x x x x x x x x")}};
        QTest::newRow("of two columns with one id the later counts")
            << Columns{"2172", "2116", "2116"} << Rows{{"0", "first", "second"}}
            << Maps{{"zijin_data_rzrq_0", map("0 second 0 0 0 0 0 0")}};
        QTest::newRow("a cell without a text")
            << Columns{"2172", "2971"} << Rows{{"-", "-"}} << Maps{{"zijin_data_rzrq_", Funds({})}};
    }

    void EachCurrencyIsPublished()
    {
        QFETCH(const Columns, columns);
        QFETCH(const Rows, rows);
        QFETCH(Maps, published);
        if (QTest::currentDataTag() == QByteArray("a cell without a text")) {
            published.begin()->second = {{"zjye", ""}, {"kyye", ""},    {"sjye", ""}, {"gpsz", ""},
                                         {"zcc", ""},  {"account", ""}, {"djye", ""}, {"rzkyed", ""}};
        }
        Stage<RzrqZiJinInfo> stage;
        StringMap scratch;
        stage.funds.OnFundsAnswer(MarginAnswer(columns, rows), scratch);
        QCOMPARE(stage.account.m_maps, published);
        if (!published.empty()) {
            QCOMPARE(scratch, published.rbegin()->second);
        }
    }

    void OtherAnswersPublishNothing()
    {
        Stage<RzrqZiJinInfo> stage;
        StringMap scratch;
        const Columns columns{"2172"};
        auto orders = MarginAnswer(columns, {{"0"}});
        orders->reply->body["cmd"] = "rzrq_cxwt";
        auto normal = MarginAnswer(columns, {{"0"}});
        normal->request->head["type"] = "5";
        auto inTheHead = MarginAnswer(columns, {{"0"}});
        inTheHead->reply->body.swap(inTheHead->reply->head);
        auto withoutTable = MarginAnswer(columns, {});
        withoutTable->table.reset();
        for (const auto& answer :
             {orders, normal, inTheHead, withoutTable, std::make_shared<StockInfoAnswer>(), {}}) {
            stage.funds.OnFundsAnswer(answer, scratch);
        }
        QVERIFY(stage.account.m_maps.empty() && scratch.empty());
        // Without a trade side the rows are read all the same.
        stage.observers.reset();
        stage.funds.OnFundsAnswer(MarginAnswer(columns, {{"0"}}), scratch);
        QCOMPARE(scratch["zcc"], std::string("0"));
    }
};

PANELRY_TEST(FundsTest)

#include "funds_test.moc"
