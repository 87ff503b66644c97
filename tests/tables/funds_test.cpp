// The funds of both accounts: what is asked, and what is kept of an answer.

#include <clocale>

#include "support/test.h"
#include "tables/fake_account.h"
#include "tables/rzrq_zi_jin_info.h"
#include "tables/zi_jin_info.h"

using ddsdk::TradeRequestParam;
using panelry::test::FakeAnswerTable;
using panelry::test::FakeTable;

namespace
{

using Columns = std::vector<std::string>;

constexpr char kStored[] = "zijin_data_proc";

template <class Funds>
using Stage = panelry::test::LogicStage<Funds>;

std::shared_ptr<StockInfoAnswer> Answer(const char* type, const TradeRequestParam& reply)
{
    auto answer = std::make_shared<StockInfoAnswer>();
    answer->request = std::make_shared<TradeRequestParam>();
    answer->request->head["type"] = type;
    answer->reply = std::make_shared<TradeRequestParam>(reply);
    return answer;
}

std::shared_ptr<StockInfoAnswer> MarginAnswer(Columns columns, FakeTable::Rows rows)
{
    auto answer = Answer("2314", {{}, {{"cmd", "rzrq_cxzj"}}, {}});
    answer->table = std::make_shared<FakeAnswerTable>(std::move(columns), std::move(rows));
    return answer;
}

const StringMap kNoFunds{{"account", ""}, {"zcc", ""},     {"zjye", ""}, {"djye", ""}, {"cqye", ""},
                         {"sjye", ""},    {"options", ""}, {"kyye", ""}, {"gpsz", ""}, {"zyk", ""}};

StringMap Funds(StringMap given)
{
    given.insert(kNoFunds.begin(), kNoFunds.end());
    return given;
}

StringMap MarginFunds(const char* texts)
{
    const QStringList values = QString::fromLatin1(texts).split(QLatin1Char(' '));
    StringMap funds;
    int i = 0;
    for (const char* const key : {"zjye", "kyye", "sjye", "gpsz", "zcc", "account", "djye", "rzkyed"}) {
        funds[key] = values[i++].toStdString();
    }
    return funds;
}

}  // namespace

class FundsTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void TheNormalAccountIsAsked()
    {
        Stage<ZiJinInfo> stage;
        StringMap none;
        stage.logic.QueryFunds(none);
        stage.account.m_strings["account"] = "8001";
        StringMap stockConnect{{"ggt", "1"}};
        stage.logic.QueryFunds(stockConnect);
        StringMap head{{"type", "5"}, {"pub_4_int", "555"}, {"refresh", "1"}, {"cachedata", "1"}};
        const auto& requests = stage.account.m_requests;
        QCOMPARE(requests.size(), std::size_t{2});
        QCOMPARE(requests[0].head, head);
        QCOMPARE(requests[0].body, (StringMap{{"dd_local_name", "query_zijin"}}));
        QVERIFY(requests[0].local.empty());
        head["type"] = "2317";
        QCOMPARE(requests[1].head, head);
        QCOMPARE(requests[1].body,
                 (StringMap{{"cmd", "ggt_query_zijin"}, {"dd_local_name", "query_zijin"}, {"zjzh", "8001"}}));
        QCOMPARE(requests[1].local, (StringMap{{"table_name", "ggt_zijin_data"}}));
    }

    void TheMarginAccountIsAsked()
    {
        Stage<RzrqZiJinInfo> stage;
        stage.account.m_strings = {{"account", "8001"}, {"rzrq_account", "9001"}};
        StringMap unread{{"ggt", "1"}};
        stage.logic.QueryFunds(unread);
        const auto& request = stage.account.m_requests.at(0);
        QCOMPARE(request.head, (StringMap{{"type", "2314"}}));
        QCOMPARE(
            request.body,
            (StringMap{{"cmd", "rzrq_cxzj"}, {"dataid", "rzrq_zijin"}, {"rzrq", "1"}, {"zjzh", "9001"}}));
        QVERIFY(request.local.empty());
    }

    void AnAnswerReplacesAllButTheProfit()
    {
        Stage<ZiJinInfo> stage;
        StringMap& stored = stage.account.m_maps[kStored];
        // "gpsz" counts in the body and nowhere else; the others count in the head.
        const auto answer = [&stage](const char* type) {
            const TradeRequestParam reply{
                {{"account", "8001"}, {"kyye", "5.00"}, {"gpsz", "8"}, {"more", "x"}},
                {{"gpsz", "7"}, {"zcc", "9"}},
                {}};
            StringMap scratch;
            stage.logic.OnFundsAnswer(Answer(type, reply), scratch);
        };
        const StringMap before{{"zyk", "-1.000000"}, {"kyye", "4"}, {"own", "x"}};
        stored = before;
        answer("2317");
        answer("five");
        QCOMPARE(stored, before);
        answer("5");
        StringMap expected = Funds({{"account", "8001"}, {"kyye", "5.00"}, {"gpsz", "7"}});
        expected["zyk"] = "-1.000000";
        QCOMPARE(stored, expected);
        stage.account.m_maps.clear();
        answer("5");
        expected["zyk"].clear();
        QCOMPARE(stage.account.m_maps[kStored], expected);
    }

    void APushIsReadFromOneMap()
    {
        Stage<ZiJinInfo> stage;
        stage.account.m_maps[kStored] = {{"zyk", "2"}, {"zcc", "1"}};
        stage.logic.OnFundsFields(std::make_shared<StringMap>(StringMap{{"gpsz", "7"}, {"zyk", "3"}}));
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
            stage.logic.OnFundsAnswer(answer, scratch);
        }
        stage.logic.OnFundsFields(nullptr);
        stage.logic.OnPositionsTable(nullptr);
        QVERIFY(stage.account.m_maps.empty());
        // Without a trade side the caller's map is filled all the same.
        stage.observers.reset();
        stage.logic.OnFundsAnswer(Answer("5", {{{"zcc", "1"}}, {}, {}}), scratch);
        QCOMPARE(scratch["zcc"], std::string("1"));
    }

    void TheProfitIsSummed()
    {
        const std::tuple<const char*, std::vector<const char*>, const char*> positions[] = {
            {"2147", {"abc", "", "-2.25", " 3.5yuan"}, "1.250000"},
            {"2147", {}, "0.000000"},
            {"2148", {"1.5"}, "0.000000"},
            {"2147", {"123456789012.25", "1e3"}, "123456790012.250000"},
            {"2147", {"1e16", "1", "-1e16"}, "0.000000"}};  // in the rows' order
        for (const auto& [column, cells, profit] : positions) {
            FakeTable::Rows rows;
            for (const char* const cell : cells) {
                rows.push_back({"9", cell});
            }
            Stage<ZiJinInfo> stage;
            stage.account.m_maps[kStored] = {{"zcc", "1"}, {"own", "x"}};
            stage.logic.OnPositionsTable(
                std::make_shared<FakeTable>("gupiao_table", Columns{"2102", column}, rows));
            QCOMPARE(stage.account.m_maps[kStored], (StringMap{{"own", "x"}, {"zcc", "1"}, {"zyk", profit}}));
        }
    }

    // All of this runs once more where the decimal point is a comma.
    void TheLocaleIsTheWantedOne()
    {
        const QByteArray wanted = qgetenv("PANELRY_DECIMAL_POINT");
        if (!wanted.isEmpty()) {
            QCOMPARE(QByteArray(std::localeconv()->decimal_point), wanted);
        }
    }

    void EachCurrencyIsPublished()
    {
        struct Case {
            const char* what;
            Columns columns;
            FakeTable::Rows rows;
            std::map<std::string, StringMap> published;
        };
        const Columns all{"2172", "2971", "2116", "2114", "2973", "2191", "2908", "2113", "3857"};
        const Case cases[] = {
            {"two currencies",
             all,
             {{"0", "a", "b", "c", "d", "e", "f", "g", "h"}, {"1", "i", "j", "k", "l", "m", "n", "o", "p"}},
             {{"zijin_data_rzrq_0", MarginFunds("a b c d e f g h")},
              {"zijin_data_rzrq_1", MarginFunds("i j k l m n o p")}}},
            {"no rows", all, {}, {}},
            {"a column that isn't there reads as the first one",
             {"2908", "2172", "2971"},
             {{"9001", "0", "a"}},
             {{"zijin_data_rzrq_0", MarginFunds("a 9001 9001 9001 9001 9001 9001 9001")}}},
            {"without ids all is the first one",
             {"?", "-"},
             {{"x", "y"}},
             {{"zijin_data_rzrq_x", MarginFunds("x x x x x x x x")}}},
            {"of two columns with one id the later counts",
             {"2172", "2116", "2116"},
             {{"0", "first", "second"}},
             {{"zijin_data_rzrq_0", MarginFunds("0 second 0 0 0 0 0 0")}}},
            {"cells without a text",
             {"2172", "2971"},
             {{"-", "-"}},
             {{"zijin_data_rzrq_", MarginFunds("       ")}}}};
        for (const auto& [what, columns, rows, published] : cases) {
            Stage<RzrqZiJinInfo> stage;
            StringMap scratch;
            stage.logic.OnFundsAnswer(MarginAnswer(columns, rows), scratch);
            QVERIFY2(stage.account.m_maps == published, what);
            QVERIFY2(published.empty() || scratch == published.rbegin()->second, what);
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
            stage.logic.OnFundsAnswer(answer, scratch);
        }
        QVERIFY(stage.account.m_maps.empty() && scratch.empty());
        // Without a trade side the rows are read all the same.
        stage.observers.reset();
        stage.logic.OnFundsAnswer(MarginAnswer(columns, {{"0"}}), scratch);
        QCOMPARE(scratch["zcc"], std::string("0"));
    }
};

PANELRY_TEST(FundsTest)

#include "funds_test.moc"
