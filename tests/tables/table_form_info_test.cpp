// What goes out for each query and each account, map by map.

#include "tables/table_form_info.h"
#include "support/test.h"
#include "tables/fake_account.h"

using ddsdk::TradeRequestParam;
using panelry::test::FakeAccount;
using panelry::test::FakeObservers;

namespace
{

using Query = void (DataDealBase::*)(StringMap&);

const Query kPositions = &DataDealBase::QueryPositions;
const Query kDeals = &DataDealBase::QueryDeals;
const Query kOrders = &DataDealBase::QueryOrders;
const Query kCancelable = &DataDealBase::QueryCancelableOrders;

struct Stage {
    Stage()
    {
        account.m_strings["account"] = "8001";
        observers->TradeObserver::SetProvider(&account);
        form.SetObservers(observers, observers);
    }

    FakeAccount account;
    std::shared_ptr<FakeObservers> observers = std::make_shared<FakeObservers>();
    TableFormInfo form;
};

// "head: key=value ...", for readable rows and failures. Bytes that can't be read are shown as numbers.
std::string Words(const StringMap& map)
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

std::string Words(const TradeRequestParam& request)
{
    return Words(request.head) + " | " + Words(request.body) + " | " + Words(request.local);
}

StringMap With(StringMap map, const StringMap& more)
{
    map.insert(more.begin(), more.end());
    return map;
}

const StringMap kMargin{{"rzrq", "1"}, {"table_name", "t"}};
const StringMap kStockConnect{{"ggt", "1"}, {"table_name", "t"}};
const StringMap kNormal{{"table_name", "t"}};

}  // namespace

Q_DECLARE_METATYPE(std::string)
Q_DECLARE_METATYPE(StringMap)
Q_DECLARE_METATYPE(Query)

class TableFormInfoTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void QueriesGoOutByAccount_data()
    {
        QTest::addColumn<Query>("query");
        QTest::addColumn<StringMap>("parameters");
        QTest::addColumn<std::string>("sent");
        const auto row = [](const char* name, Query query, const StringMap& parameters, const char* sent) {
            QTest::newRow(name) << query << parameters << std::string(sent);
        };
        row("positions", kPositions, kNormal, "cachedata=1 setcode=50 type=1537 | zjzh=8001 | table_name=t");
        row("positions, margin", kPositions, kMargin,
            "cachedata=1 type=2314 | cmd=rzrq_cxgp dataid=rzrq_gupiao rzrq=1 zjzh=8001 | table_name=t");
        row("positions, ggt", kPositions, kStockConnect,
            "cachedata=1 table_name=ggt_gupiao type=2317 | cmd=ggt_query_cican dataid=ggt_gupiao zjzh=8001 | "
            "table_name=t");
        row("positions, by the host's own name", kPositions, With(kNormal, {{"standard_table_name", "own"}}),
            "cachedata=1 setcode=50 table_name=own type=1537 | zjzh=8001 | table_name=t");
        row("positions, ggt by an empty name", kPositions, With(kStockConnect, {{"standard_table_name", ""}}),
            "cachedata=1 table_name= type=2317 | cmd=ggt_query_cican dataid=ggt_gupiao zjzh=8001 | "
            "table_name=t");

        row("deals", kDeals, With(kNormal, {{"menuid", "7"}}),
            "cachedata=1 command=7 type=1538 | menuid=7 | table_name=t");
        row("deals, margin", kDeals, kMargin,
            "cachedata=1 command= type=2314 | cmd=rzrq_cxcj menuid= rzrq=1 | table_name=t");
        row("deals, ggt", kDeals, kStockConnect,
            "cachedata=1 command= table_name=ggt_chengjiao type=2317 | cmd=ggt_query_chengjiao "
            "dataid=ggt_chengjiao menuid= | table_name=t");

        row("orders", kOrders, kNormal, "cachedata=1 setcode=50 type=1539 |  | table_name=t");
        row("orders, margin", kOrders, kMargin,
            "cachedata=1 type=2314 | cmd=rzrq_cxwt dataid=rzrq_weituo rzrq=1 | table_name=t");
        row("orders, ggt", kOrders, kStockConnect,
            "cachedata=1 table_name=ggt_weituo type=2317 | cmd=ggt_query_drwt dataid=ggt_drwt | "
            "table_name=t");

        row("cancelable", kCancelable, kNormal,
            "cachedata=1 pub_3_str=W setcode=50 type=1539 | dataid=ptwt_kcwt | table_name=t");
        row("cancelable, margin", kCancelable, kMargin,
            "cachedata=1 pub_3_str=W type=2314 | cmd=rzrq_cxwt dataid=rzrq_chedan rzrq=1 | table_name=t");
        row("cancelable, ggt", kCancelable, kStockConnect,
            "cachedata=1 pub_3_str=W table_name=ggt_weituo type=2317 | cmd=ggt_query_kcwt dataid=ggt_kcwt | "
            "table_name=t");
        row("cancelable, ggt by the table's name", kCancelable, {{"table_name", "ggt_chedan_table"}},
            "cachedata=1 pub_3_str=W table_name=ggt_weituo type=2317 | cmd=ggt_query_kcwt dataid=ggt_kcwt | "
            "table_name=ggt_chedan_table");
        row("that name chooses nothing elsewhere", kOrders, {{"table_name", "ggt_chedan_table"}},
            "cachedata=1 setcode=50 type=1539 |  | table_name=ggt_chedan_table");

        row("margin wins", kCancelable, {{"rzrq", "1"}, {"ggt", "1"}, {"table_name", "ggt_chedan_table"}},
            "cachedata=1 pub_3_str=W type=2314 | cmd=rzrq_cxwt dataid=rzrq_chedan rzrq=1 | "
            "table_name=ggt_chedan_table");
        row("only 1 is yes", kOrders, {{"rzrq", "true"}, {"ggt", "11"}},
            "cachedata=1 setcode=50 type=1539 |  | table_name=");
    }

    void QueriesGoOutByAccount()
    {
        QFETCH(const Query, query);
        QFETCH(StringMap, parameters);
        QFETCH(const std::string, sent);
        Stage stage;
        const StringMap before = parameters;
        (static_cast<DataDealBase&>(stage.form).*query)(parameters);
        QCOMPARE(stage.account.m_requests.size(), std::size_t{1});
        QCOMPARE(Words(stage.account.m_requests[0]), sent);
        QCOMPARE(parameters, before);
        // Without a trade side nothing goes out.
        stage.observers.reset();
        (static_cast<DataDealBase&>(stage.form).*query)(parameters);
        QCOMPARE(stage.account.m_requests.size(), std::size_t{1});
    }

    void PastDeals_data()
    {
        QTest::addColumn<StringMap>("parameters");
        QTest::addColumn<std::string>("sent");
        const auto row = [](const char* name, const StringMap& parameters, const char* sent) {
            QTest::newRow(name) << parameters << std::string(sent);
        };
        // 19990101 is 0x01310655 and 20111231 0x0132DF7F: eight bytes, the low ones first, none of them zero.
        row("both dates whole", {{"qsrq", "19990101"}, {"jzrq", "20111231"}},
            "cachedata=1 command= pub_1_str=U<6>1<1><127><223>2<1> type=1538 | "
            "dataid=H jzrq=20111231 menuid= qsrq=19990101 | table_name=");
        row("a zero byte ends the text", {{"qsrq", "20250701"}, {"jzrq", "20250731"}},
            "cachedata=1 command= pub_1_str=M type=1538 | dataid=H jzrq=20250731 menuid= qsrq=20250701 | "
            "table_name=");
        row("a zero byte at its head", {{"qsrq", "20240128"}, {"jzrq", "20250731"}},
            "cachedata=1 command= pub_1_str= type=1538 | dataid=H jzrq=20250731 menuid= qsrq=20240128 | "
            "table_name=");
        row("margin", {{"rzrq", "1"}, {"qsrq", "20250701"}, {"jzrq", "x"}},
            "cachedata=1 command= pub_1_str=M type=2314 | cmd=rzrq_cxcj dataid=rzrq_lishichengjiao jzrq=x "
            "menuid= "
            "qsrq=20250701 rzrq=1 | table_name=");
        row("ggt", {{"ggt", "1"}, {"qsrq", ""}, {"jzrq", ""}},
            "cachedata=1 command= pub_1_str= table_name=ggt_chengjiao type=2317 | cmd=ggt_query_chengjiao "
            "dataid=H "
            "jzrq= menuid= qsrq= | table_name=");
        row("one date is none", {{"qsrq", "20250701"}},
            "cachedata=1 command= type=1538 | menuid= | table_name=");
        row("the other neither", {{"jzrq", "20250701"}, {"rzrq", "1"}},
            "cachedata=1 command= type=2314 | cmd=rzrq_cxcj menuid= rzrq=1 | table_name=");
    }

    void PastDeals()
    {
        QFETCH(StringMap, parameters);
        QFETCH(const std::string, sent);
        Stage stage;
        stage.form.QueryDeals(parameters);
        QCOMPARE(Words(stage.account.m_requests.at(0)), sent);
    }

    void AnAccountWithoutANameIsLeftOut_data()
    {
        QTest::addColumn<bool>("published");
        QTest::addColumn<std::string>("body");
        QTest::newRow("none") << false << std::string();
        QTest::newRow("an empty one is one") << true << std::string("zjzh=");
    }

    void AnAccountWithoutANameIsLeftOut()
    {
        QFETCH(const bool, published);
        QFETCH(const std::string, body);
        Stage stage;
        stage.account.m_strings.clear();
        if (published) {
            stage.account.m_strings["account"] = "";
        }
        StringMap parameters;
        stage.form.QueryPositions(parameters);
        QCOMPARE(Words(stage.account.m_requests.at(0).body), body);
    }

    void Cancels_data()
    {
        QTest::addColumn<StringMap>("row");
        QTest::addColumn<std::string>("filled");
        const auto row = [](const char* name, const StringMap& order, const char* filled) {
            QTest::newRow(name) << order << std::string(filled);
        };
        row("normal", {{"htbh", "12"}, {"chedan_num", ""}, {"index", "3"}, {"other", "x"}},
            "pub_5_str=12 type=4 | htbh=12 | chedan_num= index=3");
        row("margin", {{"htbh", "12"}, {"rzrq", "1"}, {"time_stamp", "9"}},
            "pub_5_str=12 type=2314 | cmd=rzrq_cd htbh=12 rzrq=1 | time_stamp=9");
        row("ggt", {{"htbh", "12"}, {"ggt", "1"}, {"cjbh", "c"}},
            "pub_5_str=12 type=2317 | cjbh=c cmd=ggt_cd czlb= htbh=12 | ");
        row("ggt over margin", {{"htbh", "12"}, {"ggt", "1"}, {"rzrq", "1"}, {"cjbh", "c"}, {"czlb", "z"}},
            "pub_5_str=12 type=2317 | cjbh=c cmd=ggt_cd czlb=z htbh=12 rzrq=1 | ");
        row("nothing known", {{"rzrq", "0"}}, "pub_5_str= type=4 | htbh= | ");
    }

    void Cancels()
    {
        QFETCH(StringMap, row);
        QFETCH(const std::string, filled);
        Stage stage;
        const StringMap before = row;
        const auto request = std::make_shared<TradeRequestParam>();
        stage.form.FillCancelRequest(request, row);
        QCOMPARE(Words(*request), filled);
        QCOMPARE(row, before);
        stage.form.FillCancelRequest(nullptr, row);
        QVERIFY(stage.account.m_requests.empty());
    }

    void ATableThatTheCallerDescribes()
    {
        Stage stage;
        const auto request = std::make_shared<TradeRequestParam>();
        StringMap bare{{"cmd", "c"}};
        stage.form.FillTableRefreshRequest(request, bare);
        QCOMPARE(Words(*request), std::string("command= type= | cmd=c menuid= | table_name="));
        StringMap full{{"type", "1539"}, {"menuid", "m"}, {"table_name", "t"}, {"setcode", ""},
                       {"cmd", "c"},     {"dataid", "d"}, {"rzrq", "0"},       {"other", "x"}};
        const auto second = std::make_shared<TradeRequestParam>();
        stage.form.FillTableRefreshRequest(second, full);
        QCOMPARE(Words(*second),
                 std::string("command=m setcode= type=1539 | cmd=c dataid=d menuid=m rzrq=0 | table_name=t"));
        stage.form.FillTableRefreshRequest(nullptr, full);
        QVERIFY(stage.account.m_requests.empty());
    }
};

PANELRY_TEST(TableFormInfoTest)

#include "table_form_info_test.moc"
