// What goes out for each query and each account, map by map, and what is kept of an answer about funds.

#include "tables/table_form_info.h"

#include <clocale>

#include "support/rows.h"
#include "support/test.h"
#include "support/text_rows.h"
#include "tables/column_dictionary.h"
#include "tables/fake_account.h"
#include "tables/rzrq_zi_jin_info.h"
#include "tables/zi_jin_info.h"
#include "ticket/fields.h"

using ddsdk::TradeRequestParam;
using namespace panelry::test;

namespace
{

// "key=value ...". Bytes that can't be read are shown as numbers.
std::string Shown(const StringMap& map)
{
    std::string words;
    for (const auto& [key, value] : map) {
        words += (words.empty() ? "" : " ") + key + '=';
        for (const char byte : value) {
            const bool plain = byte > ' ' && byte < 127;
            words +=
                plain ? std::string(1, byte) : '<' + std::to_string(static_cast<unsigned char>(byte)) + '>';
        }
    }
    return words;
}

// What a host does with the logic: queries, and two requests that are filled for it.
void Ask(DataDealBase& logic, const QByteArray& what, const std::shared_ptr<TradeRequestParam>& request,
         StringMap& parameters)
{
    static const std::map<QByteArray, void (DataDealBase::*)(StringMap&)> queries{
        {"positions", &DataDealBase::QueryPositions}, {"deals", &DataDealBase::QueryDeals},
        {"orders", &DataDealBase::QueryOrders},       {"cancelable", &DataDealBase::QueryCancelableOrders},
        {"funds", &DataDealBase::QueryFunds},         {"margin_funds", &DataDealBase::QueryFunds}};
    if (const auto query = queries.find(what); query != queries.end()) {
        return (logic.*query->second)(parameters);
    }
    what == "cancel" ? logic.FillCancelRequest(request, parameters)
                     : logic.FillTableRefreshRequest(request, parameters);
}

// A number that changes with any letter of any entry.
std::uint64_t Fingerprint()
{
    std::uint64_t hash = 14695981039346656037U;
    for (const panelry::ColumnEntry& column : panelry::kColumnDictionary) {
        for (const char byte : std::string(column.id) + '=' + std::string(column.name) + ';') {
            hash = (hash ^ static_cast<unsigned char>(byte)) * 1099511628211U;
        }
    }
    return hash;
}

constexpr char kStored[] = "zijin_data_proc";

template <class Funds>
using Stage = LogicStage<Funds>;

std::shared_ptr<StockInfoAnswer> Answer(const char* type, const TradeRequestParam& reply)
{
    auto answer = std::make_shared<StockInfoAnswer>();
    answer->request = std::make_shared<TradeRequestParam>();
    answer->request->head["type"] = type;
    answer->reply = std::make_shared<TradeRequestParam>(reply);
    return answer;
}

std::shared_ptr<StockInfoAnswer> MarginAnswer(const QByteArray& table)
{
    auto answer = Answer("2314", {{}, Fields("cmd=rzrq_cxzj"), {}});
    answer->table = std::make_shared<FakeAnswerTable>(FakeTable::LinesOf(table));
    return answer;
}

StringMap Funds(const QByteArray& given)
{
    return With(Fields("account= zcc= zjye= djye= cqye= sjye= options= kyye= gpsz= zyk="), given);
}

QByteArray MarginFunds(const StringMap& funds)
{
    QByteArrayList texts;
    for (const char* const key : {"zjye", "kyye", "sjye", "gpsz", "zcc", "account", "djye", "rzkyed"}) {
        texts.append(funds.at(key).c_str());
    }
    return texts.join(' ') + (funds.size() == 8 ? "" : " and more");
}

}  // namespace

class TablesTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void WhatGoesOutByAccount_data()
    {
        const Rows<const char*> row("sent");  // head | body | local
        row("positions table_name=t", "cachedata=1 setcode=50 type=1537 | zjzh=8001 | table_name=t");
        row("positions rzrq=1 table_name=t",
            "cachedata=1 type=2314 | cmd=rzrq_cxgp dataid=rzrq_gupiao rzrq=1 zjzh=8001 | table_name=t");
        row("positions ggt=1 table_name=t",
            "cachedata=1 table_name=ggt_gupiao type=2317 | cmd=ggt_query_cican dataid=ggt_gupiao zjzh=8001 | "
            "table_name=t");
        // By the host's own name, be it empty.
        row("positions table_name=t standard_table_name=own",
            "cachedata=1 setcode=50 table_name=own type=1537 | zjzh=8001 | table_name=t");
        row("positions ggt=1 standard_table_name=",
            "cachedata=1 table_name= type=2317 | cmd=ggt_query_cican dataid=ggt_gupiao zjzh=8001 | "
            "table_name=");

        row("deals menuid=7 table_name=t", "cachedata=1 command=7 type=1538 | menuid=7 | table_name=t");
        row("deals rzrq=1", "cachedata=1 command= type=2314 | cmd=rzrq_cxcj menuid= rzrq=1 | table_name=");
        row("deals ggt=1",
            "cachedata=1 command= table_name=ggt_chengjiao type=2317 | cmd=ggt_query_chengjiao "
            "dataid=ggt_chengjiao menuid= | table_name=");

        row("orders table_name=t", "cachedata=1 setcode=50 type=1539 |  | table_name=t");
        row("orders rzrq=1", "cachedata=1 type=2314 | cmd=rzrq_cxwt dataid=rzrq_weituo rzrq=1 | table_name=");
        row("orders ggt=1",
            "cachedata=1 table_name=ggt_weituo type=2317 | cmd=ggt_query_drwt dataid=ggt_drwt | table_name=");

        row("cancelable table_name=t",
            "cachedata=1 pub_3_str=W setcode=50 type=1539 | dataid=ptwt_kcwt | table_name=t");
        row("cancelable ggt=1",
            "cachedata=1 pub_3_str=W table_name=ggt_weituo type=2317 | cmd=ggt_query_kcwt dataid=ggt_kcwt | "
            "table_name=");
        // That table is of Stock Connect, but margin wins, and it chooses nothing elsewhere.
        row("cancelable table_name=ggt_chedan_table",
            "cachedata=1 pub_3_str=W table_name=ggt_weituo type=2317 | cmd=ggt_query_kcwt dataid=ggt_kcwt | "
            "table_name=ggt_chedan_table");
        row("cancelable rzrq=1 ggt=1 table_name=ggt_chedan_table",
            "cachedata=1 pub_3_str=W type=2314 | cmd=rzrq_cxwt dataid=rzrq_chedan rzrq=1 | "
            "table_name=ggt_chedan_table");
        row("orders rzrq=true ggt=11 table_name=ggt_chedan_table",
            "cachedata=1 setcode=50 type=1539 |  | table_name=ggt_chedan_table");

        // Past deals. 19990101 is 0x01310655 and 20111231 0x0132DF7F: eight bytes, the low ones first, none of
        // them zero; a zero byte ends the text, be it the first. One date is none.
        row("deals qsrq=19990101 jzrq=20111231",
            "cachedata=1 command= pub_1_str=U<6>1<1><127><223>2<1> type=1538 | "
            "dataid=H jzrq=20111231 menuid= qsrq=19990101 | table_name=");
        row("deals qsrq=20240128 jzrq=20250731",
            "cachedata=1 command= pub_1_str= type=1538 | dataid=H jzrq=20250731 menuid= qsrq=20240128 | "
            "table_name=");
        row("deals rzrq=1 qsrq=20250701 jzrq=x",
            "cachedata=1 command= pub_1_str=M type=2314 | cmd=rzrq_cxcj dataid=rzrq_lishichengjiao jzrq=x "
            "menuid= qsrq=20250701 rzrq=1 | table_name=");
        row("deals ggt=1 qsrq= jzrq=",
            "cachedata=1 command= pub_1_str= table_name=ggt_chengjiao type=2317 | cmd=ggt_query_chengjiao "
            "dataid=H jzrq= menuid= qsrq= | table_name=");
        row("deals qsrq=20250701", "cachedata=1 command= type=1538 | menuid= | table_name=");
        row("deals jzrq=20250701", "cachedata=1 command= type=1538 | menuid= | table_name=");

        row("funds", "cachedata=1 pub_4_int=555 refresh=1 type=5 | dd_local_name=query_zijin zjzh=8001 | ");
        row("funds ggt=0",
            "cachedata=1 pub_4_int=555 refresh=1 type=5 | dd_local_name=query_zijin zjzh=8001 | ");
        row("funds ggt=1",
            "cachedata=1 pub_4_int=555 refresh=1 type=2317 | cmd=ggt_query_zijin dd_local_name=query_zijin "
            "zjzh=8001 | table_name=ggt_zijin_data");
        row("margin_funds ggt=1", "type=2314 | cmd=rzrq_cxzj dataid=rzrq_zijin rzrq=1 zjzh=9001 | ");

        row("cancel htbh=12 chedan_num= index=3 other=x",
            "pub_5_str=12 type=4 | htbh=12 | chedan_num= index=3");
        row("cancel htbh=12 rzrq=1 time_stamp=9",
            "pub_5_str=12 type=2314 | cmd=rzrq_cd htbh=12 rzrq=1 | time_stamp=9");
        row("cancel htbh=12 ggt=1 cjbh=c", "pub_5_str=12 type=2317 | cjbh=c cmd=ggt_cd czlb= htbh=12 | ");
        row("cancel htbh=12 ggt=1 rzrq=1 cjbh=c czlb=z",
            "pub_5_str=12 type=2317 | cjbh=c cmd=ggt_cd czlb=z htbh=12 rzrq=1 | ");
        row("cancel rzrq=0", "pub_5_str= type=4 | htbh= | ");

        row("refresh cmd=c", "command= type= | cmd=c menuid= | table_name=");
        row("refresh type=1539 menuid=m table_name=t setcode= cmd=c dataid=d rzrq=0 other=x",
            "command=m setcode= type=1539 | cmd=c dataid=d menuid=m rzrq=0 | table_name=t");
    }

    void WhatGoesOutByAccount()
    {
        const QByteArray asked = QTest::currentDataTag();
        const QByteArray what = asked.split(' ')[0];
        const StringMap before = Fields(asked);
        StringMap parameters = before;
        LogicStage<TableFormInfo> stage;
        stage.account.m_strings = {{"account", "8001"}, {"rzrq_account", "9001"}};
        ZiJinInfo funds;
        RzrqZiJinInfo marginFunds;
        DataDealBase& logic = what == "funds"          ? static_cast<DataDealBase&>(funds)
                              : what == "margin_funds" ? static_cast<DataDealBase&>(marginFunds)
                                                       : stage.logic;
        logic.SetObservers(stage.observers, stage.observers);
        const auto filled = std::make_shared<TradeRequestParam>();
        Ask(logic, what, filled, parameters);
        const auto& requests = stage.account.m_sent;
        const bool fills = what == "cancel" || what == "refresh";
        QCOMPARE(requests.size(), std::size_t{fills ? 0U : 1U});
        const TradeRequestParam& sent = fills ? *filled : *requests[0];
        QTEST(QString::fromStdString(Shown(sent.head) + " | " + Shown(sent.body) + " | " + Shown(sent.local)),
              "sent");
        QCOMPARE(parameters, before);
        // Without a request to fill, and without a trade side, nothing happens.
        const std::size_t count = requests.size();
        stage.observers.reset();
        Ask(logic, what, nullptr, parameters);
        QCOMPARE(requests.size(), count);
    }

    void AnAccountWithoutANameIsLeftOut()
    {
        LogicStage<TableFormInfo> stage;
        StringMap parameters;
        stage.logic.QueryPositions(parameters);
        QCOMPARE(Shown(stage.account.m_sent.at(0)->body), "");
        ZiJinInfo funds;
        funds.SetObservers(stage.observers, stage.observers);
        funds.QueryFunds(parameters);
        QCOMPARE(Shown(stage.account.m_sent.at(1)->body), "dd_local_name=query_zijin");
        stage.account.m_strings["account"] = "";  // an empty one is one
        stage.logic.QueryPositions(parameters);
        QCOMPARE(Shown(stage.account.m_sent.at(2)->body), "zjzh=");
    }

    void ColumnsHaveTheAgreedNames()
    {
        // The last but one: the host has such columns all the same.
        for (const auto& [id, name] : {std::pair("1017", "可撤标志"),
                                       {"2145", "借方(收入)"},
                                       {"3916", "协议编号"},
                                       {"32009", ""},
                                       {"3917", ""},
                                       {"2306", ""},
                                       {"", ""}}) {
            QCOMPARE(std::string(panelry::ColumnName(id)), name);
        }
        // Taken once from the list as it was agreed; a change of any entry is a change of the list.
        QCOMPARE(Fingerprint(), std::uint64_t{0xf4405a125fcc2d20U});
    }

    void AnAnswerReplacesAllButTheProfit()
    {
        Stage<ZiJinInfo> stage;
        StringMap& stored = stage.account.m_maps[kStored];
        // "gpsz" counts in the body and nowhere else; the others count in the head.
        const auto answer = [&stage](const char* type) {
            StringMap scratch;
            stage.logic.OnFundsAnswer(
                Answer(type, {Fields("account=8001 kyye=5.00 gpsz=8 more=x"), Fields("gpsz=7 zcc=9"), {}}),
                scratch);
        };
        const StringMap before = stored = Fields("zyk=-1.000000 kyye=4 own=x");
        answer("2317");
        answer("five");
        QCOMPARE(stored, before);
        answer("5");
        QCOMPARE(stored, Funds("account=8001 kyye=5.00 gpsz=7 zyk=-1.000000"));
        stage.account.m_maps.clear();
        answer("5");
        QCOMPARE(stage.account.m_maps[kStored], Funds("account=8001 kyye=5.00 gpsz=7"));
    }

    void APushIsReadFromOneMap()
    {
        Stage<ZiJinInfo> stage;
        stage.account.m_maps[kStored] = Fields("zyk=2 zcc=1");
        stage.logic.OnFundsFields(std::make_shared<StringMap>(Fields("gpsz=7 zyk=3")));
        QCOMPARE(stage.account.m_maps[kStored], Funds("gpsz=7 zyk=2"));
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
        stage.logic.OnFundsAnswer(Answer("5", {Fields("zcc=1"), {}, {}}), scratch);
        QCOMPARE(scratch["zcc"], "1");
    }

    void TheProfitIsSummed_data()
    {
        TextRows("column cells profit", {{"what is no number", "2147", "abc,,-2.25, 3.5yuan", "1.250000"},
                                         {"no rows", "2147", "-", "0.000000"},
                                         {"an empty cell", "2147", ",", "0.000000"},
                                         {"another column", "2148", "1.5", "0.000000"},
                                         {"large", "2147", "123456789012.25,1e3", "123456790012.250000"},
                                         {"in the rows' order", "2147", "1e16,1,-1e16", "0.000000"}});
    }

    void TheProfitIsSummed()
    {
        FakeTable::Rows rows;
        if (Given("cells") != "-") {
            for (const QByteArray& cell : Given("cells").split(',')) {
                rows.push_back({"9", cell.toStdString()});
            }
        }
        Stage<ZiJinInfo> stage;
        stage.account.m_maps[kStored] = Fields("zcc=1 own=x");
        const std::vector<std::string> columns{"2102", Given("column")};
        stage.logic.OnPositionsTable(std::make_shared<FakeTable>("gupiao_table", columns, rows));
        QCOMPARE(stage.account.m_maps[kStored], Fields("own=x zcc=1 zyk=" + Given("profit")));
    }

    // All of this runs once more where the decimal point is a comma.
    void TheLocaleIsTheWantedOne()
    {
        const QByteArray point = qgetenv("PANELRY_DECIMAL_POINT");
        QCOMPARE(QByteArray(std::localeconv()->decimal_point), point.isEmpty() ? QByteArray(".") : point);
    }

    void EachCurrencyIsPublished_data()
    {
        const QByteArray all = "2172|2971|2116|2114|2973|2191|2908|2113|3857";
        TextRows("table published", {{"two currencies", all + " 0|a|b|c|d|e|f|g|h 1|i|j|k|l|m|n|o|p",
                                      "0: a b c d e f g h; 1: i j k l m n o p; "},
                                     {"no rows", all, ""},
                                     {"a column that isn't there reads as the first one",
                                      "2908|2172|2971 9001|0|a", "0: a 9001 9001 9001 9001 9001 9001 9001; "},
                                     {"without ids all is the first one", "?|- x|y", "x: x x x x x x x x; "},
                                     {"of two columns with one id the later counts",
                                      "2172|2116|2116 0|first|second", "0: 0 second 0 0 0 0 0 0; "},
                                     {"cells without a text", "2172|2971 -|-", ":        ; "}});
    }

    void EachCurrencyIsPublished()
    {
        Stage<RzrqZiJinInfo> stage;
        StringMap scratch;
        stage.logic.OnFundsAnswer(MarginAnswer(Given("table")), scratch);
        QByteArray published;
        for (const auto& [name, funds] : stage.account.m_maps) {
            QVERIFY(name.starts_with("zijin_data_rzrq_"));
            published += name.substr(16).c_str() + QByteArray(": ") + MarginFunds(funds) + "; ";
        }
        QCOMPARE(published, Given("published"));
        QCOMPARE(scratch, published.isEmpty() ? StringMap() : stage.account.m_maps.rbegin()->second);
    }

    void OtherAnswersPublishNothing()
    {
        Stage<RzrqZiJinInfo> stage;
        StringMap scratch;
        auto orders = MarginAnswer("2172 0");
        orders->reply->body["cmd"] = "rzrq_cxwt";
        auto normal = MarginAnswer("2172 0");
        normal->request->head["type"] = "5";
        auto inTheHead = MarginAnswer("2172 0");
        inTheHead->reply->body.swap(inTheHead->reply->head);
        auto withoutTable = MarginAnswer("2172");
        withoutTable->table.reset();
        for (const auto& answer :
             {orders, normal, inTheHead, withoutTable, std::make_shared<StockInfoAnswer>(), {}}) {
            stage.logic.OnFundsAnswer(answer, scratch);
        }
        QVERIFY(stage.account.m_maps.empty() && scratch.empty());
        // Without a trade side the rows are read all the same.
        stage.observers.reset();
        stage.logic.OnFundsAnswer(MarginAnswer("2172 0"), scratch);
        QCOMPARE(scratch["zcc"], "0");
    }
};

PANELRY_TEST(TablesTest)

#include "tables_test.moc"
