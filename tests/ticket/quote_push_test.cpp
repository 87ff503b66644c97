#include "support/test.h"
#include "ticket/data_deal_base.h"
#include "ticket/fields.h"

using panelry::test::Fields;
using panelry::test::Unlike;

namespace
{

// The row's "stockcode" begins with a raw market byte, which a literal splits from digits behind it.
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
    void APushThatIsIgnored_data()
    {
        QTest::addColumn<QByteArray>("head");
        QTest::addColumn<int>("rows");
        QTest::newRow("without a type") << QByteArray("pushflag=1") << 1;
        QTest::newRow("of another type") << QByteArray("type=NowData") << 1;
        QTest::newRow("of an ambiguous code") << QByteArray("type=pushdata repeatcode_num=0") << 1;
        QTest::newRow("of no stock") << QByteArray("type=nowdata") << 0;
        QTest::newRow("of two stocks") << QByteArray("type=nowdata") << 2;
    }

    void APushThatIsIgnored()
    {
        QFETCH(const QByteArray, head);
        QFETCH(const int, rows);
        const StringMap ticket = Fields("market=33 mrxjg=old");
        const std::vector<QByteArray> pushed(static_cast<std::size_t>(rows), "latest_price=1");
        QVERIFY(Pushed(head, pushed, ticket) == ticket);
    }

    void APush_data()
    {
        QTest::addColumn<QByteArray>("row");
        QTest::addColumn<QByteArray>("ticket");
        const auto row = [](const char* name, const QByteArray& fields, const QByteArray& ticket) {
            QTest::newRow(name) << fields << ticket;
        };
        row("its stock",
            "stockcode=\x11"
            "600000",
            "market=17 stockcode=600000");
        row("a market byte above 127",
            "stockcode=\x90"
            "1",
            "market=144 stockcode=1");
        row("a stock of one byte", "stockcode=\x11", "market=17 stockcode=");
        row("no stock: the ticket's own stays", "stockcode=", "market=33 stockcode=old");
        row("what it lacks becomes empty", "buy_1_price=9",
            "buy_1_price=9 buy_5_amount= latest_price= open=");
        row("the open price changes its key", "opening_price=9.5 open=7", "open=9.5");
        row("the name isn't converted", "stock_name=\xc6\xd6", "stock_name=\xc6\xd6");
        row("up, in percent", "latest_price=11.00 last_closing_price=10.00", "rise_fall_scale=10.000000");
        row("down, in percent", "latest_price=9.5 last_closing_price=10", "rise_fall_scale=-5.000000");
        row("no close: the old change stays", "latest_price=11.00", "rise_fall_scale=old isshowxj=1");
        row("a close of 0 too", "latest_price=11.00 last_closing_price=0.00", "rise_fall_scale=old");
        row("a close in words too", "latest_price=11.00 last_closing_price=--", "rise_fall_scale=old");
        row("no trade yet", "last_closing_price=10", "rise_fall_scale=-100.000000");
        row("limit prices come last",
            "stockcode=\x11"
            "1 benchmarkcode=T price_decimal=2 sell_1_price=10 buy_1_price=9.99",
            "isshowxj=1 islxjj=1 mrxjg=10.20 mcxjg=9.80");
    }

    void APush()
    {
        QFETCH(const QByteArray, row);
        QFETCH(const QByteArray, ticket);
        const StringMap old = Fields("market=33 stockcode=old rise_fall_scale=old buy_5_amount=5 kept=1");
        const StringMap after = Pushed("type=nowdata pushflag=2", {row}, old);
        QCOMPARE(Unlike(after, "pushflag=2 kept=1 " + ticket), QString());
        QVERIFY(Pushed("type=pushdata pushflag=2", {row}, old) == after);
        QCOMPARE(Unlike(Pushed("type=pushdata", {row}, old), "pushflag="), QString());
    }

    void EveryFieldHasItsOwnPlace()
    {
        QByteArray row =
            "stockcode=\x11"
            "1 benchmarkcode=T hq_time=2 raising_limit=3 limit_down=4 price_decimal=5";
        QByteArray ticket = row.mid(12) + " market=17 stockcode=1";
        for (const QByteArray side : {"buy_", "sell_"}) {
            for (char level = '1'; level <= '5'; ++level) {
                const QByteArray name = side + level;
                row += ' ' + name + "_price=p" + name + ' ' + name + "_amount=a" + name;
                ticket += ' ' + name + "_price=p" + name + ' ' + name + "_amount=a" + name;
            }
        }
        QCOMPARE(Unlike(Pushed("type=nowdata", {row}, {}), ticket), QString());
    }

    void AnEmptyRecordIsIgnored()
    {
        StringMap ticket;
        DataDealBase().OnQuotePush(nullptr, ticket);
        QVERIFY(ticket.empty());
    }
};

PANELRY_TEST(QuotePushTest)
#include "quote_push_test.moc"
