#include "support/test.h"
#include "support/text_rows.h"
#include "ticket/stage.h"

using namespace panelry::test;

namespace
{

const char kOldTicket[] =
    "usable_amount=7 rise_fall_scale=old price_decimal=4 zrlx=old is_bjscode=old local_cx_wtsl=old kept=1";

// `request` is "body | local", `reply` "head | body | local".
StringMap Answered(TicketStage& stage, const QByteArray& request, const QByteArray& reply,
                   StringMap ticket = Fields(kOldTicket))
{
    const QByteArrayList asked = (request + '|').split('|');
    const QByteArrayList told = (reply + "||").split('|');
    const AnswerText answer{asked[0], asked[1], told[0], told[1], told[2]};
    stage.m_rules.OnStockInfo(answer.Make(), ticket);
    return ticket;
}

// A row's "stockcode" begins with a raw market byte.
StringMap Pushed(const QByteArray& head, const std::vector<QByteArray>& rows, StringMap ticket)
{
    auto push = std::make_shared<QuotePushRecord>();
    push->head = Fields(head);
    for (const QByteArray& row : rows) {
        push->rows.push_back(Fields(row));
    }
    DataDealBase().OnQuotePush(push, ticket);
    return ticket;
}

// Each level with texts of its own.
QByteArray Book()
{
    QByteArray book;
    for (const QByteArray side : {"buy_", "sell_"}) {
        for (char level = '1'; level <= '5'; ++level) {
            const QByteArray name = side + level;
            book += ' ' + name + "_price=p" + name + ' ' + name + "_amount=a" + name;
        }
    }
    return book;
}

}  // namespace

class StockInfoTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void AnAnswer_data()
    {
        const QByteArray bounds = "amount_step=100 amount_min=-1 amount_max=1000000 price_step=0.0001 ";
        TextRows(
            "reply ticket request decimals",
            {{"with nothing in it", "",
              "pushflag=0 market= stockcode= price_decimal=4 stock_name= latest_price= buy_1_price= "
              "sell_5_amount= open= options= czlb= hand=100 usable_amount=7 rise_fall_scale=old "
              "amount_unit=股 "
              "amount_chart_volunit=1 zrlx=old isshowxj=0 !support_bhjg is_bjscode=old local_cx_wtsl=old "
              "kept=1 " +
                  bounds},
             {"its quote",
              "codetype=17 newprice=11 ztprice=12 dtprice=9 prevclose=10 hqtime=5 options=0" + Book() +
                  " | | zqdm=600000 zqmc=\xc6\xd6\xb7\xa2\xff open=9.9",
              "market=17 stockcode=600000 stock_name=浦发\uFFFD latest_price=11 raising_limit=12 "
              "limit_down=9 "
              "last_closing_price=10 hq_time=5 options=0 open=9.9 rise_fall_scale=-1.000000" +
                  Book()},
             {"without a latest price", "prevclose=10", "rise_fall_scale=old"},
             {"usable: no quantity known", "| wtsl=-1", "usable_amount=0"},
             {"usable: almost that", "| wtsl=-1.0", "usable_amount=-1.0"},
             {"usable by the quote", "options=4 canbuy=500 | wtsl=300", "usable_amount=500"},
             {"usable by the quote, which has none", "options=12 | wtsl=300", "usable_amount="},
             {"usable not by the quote", "options=11 canbuy=500 | wtsl=300", "usable_amount=300"},
             {"the host's bounds beat the rules", "| slbc=10 slsx=500 slxx=20 jgbc=0.05",
              "amount_step=10 amount_max=500 amount_min=20 price_step=0.05 price_decimal=4"},
             {"empty bounds don't", "| slbc= slsx= slxx= jgbc=", bounds},
             {"unit and hand by the options", "codetype=17 options=8704 | | zqdm=600000",
              "amount_unit=手 amount_chart_volunit=10 hand=10"},
             {"a bond", "codetype=17 options=0 | | zqdm=019666",
              "amount_unit=张 price_decimal=3 price_step=0.001"},
             {"limit prices", "codetype=17 newprice=10 | | zqdm=600000", "isshowxj=1 islxjj=0"},
             {"a market order with protection", "codetype=16 | | zqdm=600000",
              "support_bhjg=1 is_bjscode=old"},
             {"on the published list, of kind B", "codetype=33 | | zqdm=430001 zrlx=B",
              "zrlx=B support_bhjg=1 is_bjscode=1"},
             {"on it, of another kind", "codetype=33 | | zqdm=430001 zrlx=C",
              "zrlx=C !support_bhjg is_bjscode=old"},
             {"kind B, not on the list", "codetype=33 | | zqdm=000001 zrlx=B", "!support_bhjg"},

             {"the request's market wins", "codetype=18 | | zqdm=900901", "market=33 price_decimal=3",
              "| local_market=33"},
             {"a market of 0 doesn't", "codetype=18 | | zqdm=900901", "market=18", "| local_market=0"},
             {"an empty one neither", "codetype=18 | | zqdm=900901", "market=18", "| local_market="},
             {"its business kind", "", "czlb=S", "czlb=S"},
             {"its mark", "", "local_cx_wtsl=1", "| local_cx_wtsl=1"},
             {"an empty mark", "", "local_cx_wtsl=old", "| local_cx_wtsl="},
             {"an ordinary account", "codetype=18 | | zqdm=900901", "gdzh=A1", "rzrq=11"},
             {"a margin account", "codetype=18 | | zqdm=900901", "gdzh=M1", "rzrq=1"},

             {"main board", "codetype=17 | | zqdm=600000",
              "kcb=0 amount_step=100 amount_min=-1 amount_max=1000000"},
             {"ChiNext", "codetype=17 | | zqdm=300750",
              "kcb=0 cyb=1 amount_step=100 amount_min=-1 amount_max=300000"},
             {"STAR before ChiNext", "codetype=17 | | zqdm=689009",
              "kcb=1 cyb=1 amount_step=1 amount_min=200 amount_max=100000"},
             {"STAR, the host knows better", "codetype=17 | slxx=100 | zqdm=688001",
              "amount_step=1 amount_min=100"},

             {"1 decimal", "codetype=17 | | zqdm=600000", "price_decimal=1 price_step=0.1", "", "1"},
             {"4, of a fund", "codetype=17 | | zqdm=510300", "price_decimal=3 price_step=0.001", "", "4"},
             {"0", "codetype=17 | | zqdm=600000", "price_decimal=2 price_step=0.01", "", "0"},
             {"less than 0", "codetype=17 | | zqdm=600000", "price_decimal=2", "", "-1"},
             {"a map without them blanks the ticket's", "codetype=17 | | zqdm=600000",
              "price_decimal=2 price_step=0.01", "", "none"},
             {"more than anybody needs", "codetype=17 | | zqdm=600000",
              "price_decimal=15 price_step=0.000000000000001", "", "2000000000"}});
    }

    void AnAnswer()
    {
        TicketStage stage;
        stage.PublishText("Json_TZM_SBA", "x|43*");
        stage.PublishAccounts("0_begin=1 0_end=5 1_begin=6 1_end=6",
                              "1|16|A1|6*;90*||688*;689* 2|32|B1|3*||||300*;689* 6|9|M1|90*|");
        if (const QByteArray decimals = Given("decimals"); !decimals.isEmpty()) {
            stage.m_quote.m_fields =
                std::make_shared<StringMap>(Fields(decimals == "none" ? "x=1" : "price_decimal=" + decimals));
        }
        QCOMPARE(Unlike(Answered(stage, Given("request"), Given("reply")), Given("ticket")), QString());
    }

    void DecimalsAreAskedByTheAnswersOwnMarket()
    {
        TicketStage stage;
        Answered(stage, "| local_market=33", "codetype=17 | | zqdm=600000");
        QCOMPARE(stage.m_quote.Calls().back(), "QueryQuoteFields 4 17 600000");
    }

    void AnAmbiguousCodeFillsTheChoicesAlone()
    {
        TicketStage stage;
        const QByteArray reply = "codetype=17 newprice=1 | wtsl=5 | zqdm=2 dup=2 s1=11,2,a,b";
        QCOMPARE(Words(Answered(stage, "", reply, Fields("market=33 stockcode=1"))),
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

    void APushThatIsIgnored()
    {
        const StringMap old = Fields("market=33 mrxjg=old");
        const QByteArray row = "latest_price=1";
        for (const char* head : {"pushflag=1", "type=NowData", "type=pushdata repeatcode_num=0"}) {
            QVERIFY2(Pushed(head, {row}, old) == old, head);
        }
        QVERIFY(Pushed("type=nowdata", {}, old) == old);
        QVERIFY(Pushed("type=nowdata", {row, row}, old) == old);
    }

    void APush_data()
    {
        const QByteArray shanghai = "stockcode=\x11";
        const QByteArray quote =
            " benchmarkcode=T hq_time=2 raising_limit=3 limit_down=4 price_decimal=5" + Book();
        TextRows(
            "row ticket",
            {{"its stock and quote", shanghai + "600000" + quote, "market=17 stockcode=600000" + quote},
             {"a market byte above 127", QByteArray("stockcode=\x90") + "1", "market=144 stockcode=1"},
             {"a stock of one byte", shanghai, "market=17 stockcode="},
             {"no stock: the ticket's own stays", "stockcode=", "market=33 stockcode=old"},
             {"what it lacks becomes empty", "buy_1_price=9",
              "buy_1_price=9 buy_5_amount= latest_price= open="},
             {"the open price changes its key", "opening_price=9.5 open=7", "open=9.5"},
             {"the name isn't converted", "stock_name=\xc6\xd6", "stock_name=\xc6\xd6"},
             {"up, in percent", "latest_price=11.00 last_closing_price=10.00", "rise_fall_scale=10.000000"},
             {"no close: the old change stays", "latest_price=11.00", "rise_fall_scale=old isshowxj=1"},
             {"a close of 0 too", "latest_price=11.00 last_closing_price=0.00", "rise_fall_scale=old"},
             {"no trade yet", "last_closing_price=10", "rise_fall_scale=-100.000000"},
             {"limit prices come last",
              shanghai + "1 benchmarkcode=T price_decimal=2 sell_1_price=10 buy_1_price=9.99",
              "isshowxj=1 islxjj=1 mrxjg=10.20 mcxjg=9.80"}});
    }

    void APush()
    {
        const StringMap old = Fields("market=33 stockcode=old rise_fall_scale=old buy_5_amount=5 kept=1");
        const StringMap after = Pushed("type=nowdata pushflag=2", {Given("row")}, old);
        QCOMPARE(Unlike(after, "pushflag=2 kept=1 " + Given("ticket")), QString());
        QVERIFY(Pushed("type=pushdata pushflag=2", {Given("row")}, old) == after);
        QCOMPARE(Unlike(Pushed("type=pushdata", {Given("row")}, old), "pushflag="), QString());
    }
};

PANELRY_TEST(StockInfoTest)
#include "stock_info_test.moc"
