#include "support/test.h"
#include "support/text_rows.h"
#include "ticket/data_deal_base.h"
#include "ticket/fields.h"

using panelry::test::Fields;
using panelry::test::Given;
using panelry::test::TextRows;
using panelry::test::Unlike;

namespace
{

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

}  // namespace

class QuotePushTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void APushThatIsIgnored()
    {
        const StringMap old = Fields("market=33 mrxjg=old");
        const QByteArray row = "latest_price=1";
        for (const char* head : {"pushflag=1", "type=NowData", "type=pushdata repeatcode_num=0"}) {
            QVERIFY2(Pushed(head, {row}, old) == old, head);
        }
        QVERIFY(Pushed("type=nowdata", {}, old) == old);
        QVERIFY(Pushed("type=nowdata", {row, row}, old) == old);
        StringMap ticket = old;
        DataDealBase().OnQuotePush(nullptr, ticket);
        QVERIFY(ticket == old);
    }

    void APush_data()
    {
        const QByteArray shanghai = "stockcode=\x11";
        TextRows(
            "row ticket",
            {{"its stock", shanghai + "600000", "market=17 stockcode=600000"},
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

    void EveryFieldHasItsOwnPlace()
    {
        QByteArray row = " benchmarkcode=T hq_time=2 raising_limit=3 limit_down=4 price_decimal=5";
        for (const QByteArray side : {"buy_", "sell_"}) {
            for (char level = '1'; level <= '5'; ++level) {
                const QByteArray name = side + level;
                row += ' ' + name + "_price=p" + name + ' ' + name + "_amount=a" + name;
            }
        }
        QCOMPARE(Unlike(Pushed("type=nowdata", {"stockcode=\x11" + row}, {}), "market=17 stockcode=" + row),
                 QString());
    }
};

PANELRY_TEST(QuotePushTest)
#include "quote_push_test.moc"
