// What goes out for each query and each account, map by map.

#include "tables/table_form_info.h"

#include "support/test.h"
#include "tables/fake_account.h"

using ddsdk::TradeRequestParam;

namespace
{

// "key=value ...". Bytes that can't be read are shown as numbers.
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

StringMap MapOf(const QString& words)
{
    StringMap map;
    for (const QString& word : words.split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
        map[word.section(QLatin1Char('='), 0, 0).toStdString()] =
            word.section(QLatin1Char('='), 1).toStdString();
    }
    return map;
}

// What a host does with the logic: four queries, and two requests that are filled for it.
void Ask(DataDealBase& form, const QString& what, const std::shared_ptr<TradeRequestParam>& request,
         StringMap& parameters)
{
    static const std::map<QString, void (DataDealBase::*)(StringMap&)> queries{
        {QStringLiteral("positions"), &DataDealBase::QueryPositions},
        {QStringLiteral("deals"), &DataDealBase::QueryDeals},
        {QStringLiteral("orders"), &DataDealBase::QueryOrders},
        {QStringLiteral("cancelable"), &DataDealBase::QueryCancelableOrders}};
    if (const auto query = queries.find(what); query != queries.end()) {
        return (form.*query->second)(parameters);
    }
    what == QStringLiteral("cancel") ? form.FillCancelRequest(request, parameters)
                                     : form.FillTableRefreshRequest(request, parameters);
}

}  // namespace

class TableFormInfoTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void WhatGoesOutByAccount_data()
    {
        QTest::addColumn<QString>("sent");  // head | body | local
        const auto row = [](const char* asked, const char* sent) {
            QTest::newRow(asked) << QString::fromLatin1(sent);
        };
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
        const QString asked = QString::fromLatin1(QTest::currentDataTag());
        const QString what = asked.section(QLatin1Char(' '), 0, 0);
        const StringMap before = MapOf(asked.section(QLatin1Char(' '), 1));
        StringMap parameters = before;
        panelry::test::LogicStage<TableFormInfo> stage;
        stage.account.m_strings["account"] = "8001";
        const auto filled = std::make_shared<TradeRequestParam>();
        Ask(stage.logic, what, filled, parameters);
        const auto& requests = stage.account.m_requests;
        const bool fills = what == QStringLiteral("cancel") || what == QStringLiteral("refresh");
        QCOMPARE(requests.size(), std::size_t{fills ? 0U : 1U});
        const TradeRequestParam& sent = fills ? *filled : requests[0];
        QTEST(QString::fromStdString(Words(sent.head) + " | " + Words(sent.body) + " | " + Words(sent.local)),
              "sent");
        QCOMPARE(parameters, before);
        // Without a request to fill, and without a trade side, nothing happens.
        const std::size_t count = requests.size();
        stage.observers.reset();
        Ask(stage.logic, what, nullptr, parameters);
        QCOMPARE(requests.size(), count);
    }

    void AnAccountWithoutANameIsLeftOut()
    {
        panelry::test::LogicStage<TableFormInfo> stage;
        StringMap parameters;
        stage.logic.QueryPositions(parameters);
        QCOMPARE(Words(stage.account.m_requests.at(0).body), std::string());
        stage.account.m_strings["account"] = "";  // an empty one is one
        stage.logic.QueryPositions(parameters);
        QCOMPARE(Words(stage.account.m_requests.at(1).body), std::string("zjzh="));
    }
};

PANELRY_TEST(TableFormInfoTest)

#include "table_form_info_test.moc"
