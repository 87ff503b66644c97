#include "support/test.h"
#include "ticket/stage.h"

using panelry::test::AnswerText;
using panelry::test::Fields;
using panelry::test::TicketStage;
using panelry::test::Unlike;

namespace
{

const char kOldTicket[] =
    "usable_amount=7 rise_fall_scale=old price_decimal=4 zrlx=old is_bjscode=old local_cx_wtsl=old kept=1";

}  // namespace

class StockInfoTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void AnAnswer_data()
    {
        QTest::addColumn<QByteArray>("head");
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QByteArray>("local");
        QTest::addColumn<QByteArray>("ticket");
        const auto row = [](const char* name, const QByteArray& head, const QByteArray& body,
                            const QByteArray& local, const QByteArray& ticket) {
            QTest::newRow(name) << head << body << local << ticket;
        };
        row("with nothing in it", "", "", "",
            "pushflag=0 market= stockcode= amount_step=100 amount_min=-1 amount_max=1000000 "
            "price_step=0.0001 "
            "price_decimal=4 stock_name= latest_price= buy_1_price= sell_5_amount= open= options= czlb= "
            "usable_amount=7 rise_fall_scale=old amount_unit=股 amount_chart_volunit=1 hand=100 zrlx=old "
            "isshowxj=0 !support_bhjg is_bjscode=old local_cx_wtsl=old kept=1");
        row("its quote",
            "codetype=17 newprice=11 ztprice=12 dtprice=9 prevclose=10 hqtime=5 options=0 buy_3_price=1 "
            "sell_4_amount=2",
            "", "zqdm=600000 zqmc=\xc6\xd6\xb7\xa2 open=9.9",
            "market=17 stockcode=600000 stock_name=浦发 latest_price=11 raising_limit=12 limit_down=9 "
            "last_closing_price=10 hq_time=5 options=0 open=9.9 buy_3_price=1 sell_4_amount=2");
        row("a broken name", "", "", "zqmc=\xc6\xd6\xb7", "stock_name=浦\uFFFD");
        row("risen: close minus latest", "newprice=11 prevclose=10", "", "", "rise_fall_scale=-1.000000");
        row("without a latest price", "prevclose=10", "", "", "rise_fall_scale=old");
        row("usable", "", "wtsl=300", "", "usable_amount=300");
        row("usable: no quantity known", "", "wtsl=-1", "", "usable_amount=0");
        row("usable: almost that", "", "wtsl=-1.0", "", "usable_amount=-1.0");
        row("usable by the quote", "options=4 canbuy=500", "wtsl=300", "", "usable_amount=500");
        row("usable by the quote, which has none", "options=12", "wtsl=300", "", "usable_amount=");
        row("usable not by the quote", "options=11 canbuy=500", "wtsl=300", "", "usable_amount=300");
        row("a fund", "codetype=17", "", "zqdm=510300", "price_decimal=3 price_step=0.001");
        row("the host's bounds beat the rules", "", "slbc=10 slsx=500 slxx=20 jgbc=0.05", "",
            "amount_step=10 amount_max=500 amount_min=20 price_step=0.05 price_decimal=4");
        row("empty bounds don't", "", "slbc= slsx= slxx= jgbc=", "",
            "amount_step=100 amount_max=1000000 amount_min=-1 price_step=0.0001");
        row("unit and hand by the options", "codetype=17 options=8704", "", "zqdm=600000",
            "amount_unit=手 amount_chart_volunit=10 hand=10");
        row("a bond", "codetype=17 options=0", "", "zqdm=019666", "amount_unit=张 price_decimal=3");
        row("limit prices", "codetype=17 newprice=10 prevclose=10 hqtime=0", "", "zqdm=600000",
            "isshowxj=1 islxjj=0");
        row("a market order with protection", "codetype=16", "", "zqdm=600000",
            "support_bhjg=1 is_bjscode=old");
        row("on the published list, of kind B", "codetype=33", "", "zqdm=430001 zrlx=B",
            "zrlx=B support_bhjg=1 is_bjscode=1");
        row("on the published list, of another kind", "codetype=33", "", "zqdm=430001 zrlx=C",
            "zrlx=C !support_bhjg is_bjscode=old");
        row("kind B, not on the list", "codetype=33", "", "zqdm=000001 zrlx=B", "!support_bhjg");
    }

    void AnAnswer()
    {
        QFETCH(const QByteArray, head);
        QFETCH(const QByteArray, body);
        QFETCH(const QByteArray, local);
        QFETCH(const QByteArray, ticket);
        TicketStage stage;
        stage.PublishText("Json_TZM_SBA", "x|43*");
        StringMap out = Fields(kOldTicket);
        stage.m_rules.OnStockInfo(AnswerText{"", "", head, body, local}.Make(), out);
        QCOMPARE(Unlike(out, ticket), QString());
    }

    void WhatTheRequestCarried_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QByteArray>("local");
        QTest::addColumn<QByteArray>("ticket");
        const auto row = [](const char* name, const QByteArray& body, const QByteArray& local,
                            const QByteArray& ticket) { QTest::newRow(name) << body << local << ticket; };
        row("its market wins", "", "local_market=33", "market=33 price_decimal=3");
        row("a market of 0 doesn't", "", "local_market=0", "market=18");
        row("an empty one neither", "", "local_market=", "market=18");
        row("its business kind", "czlb=S", "", "czlb=S");
        row("its mark", "", "local_cx_wtsl=1", "local_cx_wtsl=1");
        row("an empty mark", "", "local_cx_wtsl=", "local_cx_wtsl=old");
        row("an ordinary account", "rzrq=11", "", "gdzh=A1");
        row("a margin account", "rzrq=1", "", "gdzh=M1");
    }

    void WhatTheRequestCarried()
    {
        QFETCH(const QByteArray, body);
        QFETCH(const QByteArray, local);
        QFETCH(const QByteArray, ticket);
        TicketStage stage;
        stage.PublishMap("scdm_range", "0_begin=1 0_end=1 1_begin=2 1_end=2");
        stage.PublishTable("account_table", {"2167|2108|2106|2170|2212", "1|9|A1|90*|", "2|9|M1|90*|"});
        StringMap out = Fields(kOldTicket);
        stage.m_rules.OnStockInfo(AnswerText{body, local, "codetype=18", "", "zqdm=900901"}.Make(), out);
        QCOMPARE(Unlike(out, ticket), QString());
    }

    void ABoardsBounds_data()
    {
        QTest::addColumn<QByteArray>("code");
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QByteArray>("ticket");
        const auto row = [](const char* name, const char* code, const char* body, const char* ticket) {
            QTest::newRow(name) << QByteArray(code) << QByteArray(body) << QByteArray(ticket);
        };
        row("main board", "600000", "", "kcb=0 amount_step=100 amount_min=-1 amount_max=1000000");
        row("STAR", "688001", "", "kcb=1 amount_step=1 amount_min=200 amount_max=100000");
        row("ChiNext", "300750", "", "kcb=0 cyb=1 amount_step=100 amount_min=-1 amount_max=300000");
        row("STAR before ChiNext", "689009", "", "kcb=1 cyb=1 amount_max=100000");
        row("STAR, the host knows better", "688001", "slxx=100",
            "amount_step=1 amount_min=100 amount_max=100000");
    }

    void ABoardsBounds()
    {
        QFETCH(const QByteArray, code);
        QFETCH(const QByteArray, body);
        QFETCH(const QByteArray, ticket);
        TicketStage stage;
        stage.PublishMap("scdm_range", "0_begin=1 0_end=5");
        stage.PublishTable("account_table", {"2167|2108|2106|2170|2212|2214", "1|16|A1|6*|688*;689*",
                                             "2|32|B1|3*||300*;689*"});
        StringMap out;
        stage.m_rules.OnStockInfo(AnswerText{"", "", "codetype=17", body, "zqdm=" + code}.Make(), out);
        QCOMPARE(Unlike(out, ticket), QString());
    }

    void DecimalsAndStep_data()
    {
        QTest::addColumn<QByteArray>("told");
        QTest::addColumn<QByteArray>("code");
        QTest::addColumn<QByteArray>("ticket");
        const auto row = [](const char* name, const char* told, const char* code, const char* ticket) {
            QTest::newRow(name) << QByteArray(told) << QByteArray(code) << QByteArray(ticket);
        };
        row("1", "price_decimal=1", "600000", "price_decimal=1 price_step=0.1");
        row("2", "price_decimal=2", "600000", "price_decimal=2 price_step=0.01");
        row("4", "price_decimal=4", "600000", "price_decimal=4 price_step=0.0001");
        row("4, of a fund", "price_decimal=4", "510300", "price_decimal=3 price_step=0.001");
        row("0", "price_decimal=0", "600000", "price_decimal=2 price_step=0.01");
        row("less than 0", "price_decimal=-1", "600000", "price_decimal=2 price_step=0.01");
        row("a map without them blanks the ticket's", "x=1", "600000", "price_decimal=2 price_step=0.01");
        row("more than anybody needs", "price_decimal=2000000000", "600000",
            "price_decimal=15 price_step=0.000000000000001");
    }

    void DecimalsAndStep()
    {
        QFETCH(const QByteArray, told);
        QFETCH(const QByteArray, code);
        QFETCH(const QByteArray, ticket);
        TicketStage stage;
        stage.m_quote.m_fields = std::make_shared<StringMap>(Fields(told));
        StringMap out = Fields("price_decimal=5");
        const AnswerText answer{"", "local_market=33", "codetype=17", "", "zqdm=" + code};
        stage.m_rules.OnStockInfo(answer.Make(), out);
        QCOMPARE(Unlike(out, ticket), QString());
        // By the answer's own market, not by the ticket's.
        QCOMPARE(stage.m_quote.Calls().back(), "QueryQuoteFields 4 17 " + code.toStdString());

        out = Fields("price_decimal=5");
        stage.m_quote.m_fields = nullptr;
        stage.m_rules.OnStockInfo(answer.Make(), out);
        const bool fund = code == "510300";
        QCOMPARE(Unlike(out, fund ? "price_decimal=3" : "price_decimal=5 price_step=0.00001"), QString());
    }

    void AnAmbiguousCodeFillsTheChoicesAlone()
    {
        StringMap out = Fields("market=33 stockcode=1");
        AnswerText answer{"", "", "codetype=17 newprice=1", "wtsl=5", "zqdm=2 dup=2 s1=11,2,a,b"};
        DataDealBase().OnStockInfo(answer.Make(), out);
        QCOMPARE(panelry::test::Words(out),
                 QStringLiteral("duplicatecode_count=2 duplicatecode_market0=17 duplicatecode_marketname0=a "
                                "duplicatecode_stockcode0=2 duplicatecode_stockname0=b market=33 pushflag=0 "
                                "stockcode=1"));
    }

    void OverridesChangeTheFlow()
    {
        class Other : public DataDealBase
        {
        public:
            void ResolveAccountFields(int kind, StringMap& ticket) override
            {
                ticket["kcb"] = kind == 1 ? "1" : "0";
            }
            void ResolveHandSize(const std::string&, std::string& hand) override { hand = "42"; }
            bool IsTzmCode(const std::string&) override { return true; }
            bool IsProtectedLimitSupported(StringMap&) override { return true; }
        };
        StringMap out;
        Other().OnStockInfo(AnswerText{"rzrq=1", "", "", "", "zrlx=B"}.Make(), out);
        QCOMPARE(Unlike(out, "amount_min=200 hand=42 is_bjscode=1 isshowxj=1"), QString());
    }
};

PANELRY_TEST(StockInfoTest)
#include "stock_info_test.moc"
