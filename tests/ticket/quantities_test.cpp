#include <QRandomGenerator>

#include "support/test.h"
#include "support/text_rows.h"
#include "ticket/data_deal_base.h"
#include "ticket/fields.h"

using panelry::test::Fields;
using panelry::test::Given;
using panelry::test::TextRows;
using panelry::test::With;

namespace
{

QByteArray AmountFor(StringMap ticket)
{
    DataDealBase().FillMaxAmount(ticket);
    return QByteArray::fromStdString(ticket["dd_amount"]);
}

}  // namespace

class QuantitiesTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void MoneyBuys_data()
    {
        const QByteArray tens = " amount_chart_volunit=10";
        TextRows("ticket amount",
                 {{"lots, rounded down", "czlb=B dd_money=10990", "1000.000000"},
                  {"STAR: single shares", "dd_money=10059 kcb=1", "1005.000000"},
                  {"price below the least", "dd_price=0.0009", "0"},
                  {"least price", "dd_money=1 dd_price=0.001", "1000.000000"},
                  {"money below the least", "dd_money=0.0009 dd_price=1", "0"},
                  {"units, not shares", "dd_money=10050" + tens, "100.000000"},
                  {"a unit below 1: lots", "dd_money=10050 amount_chart_volunit=-5", "1000.000000"},
                  {"bonds in lots of 10", "dd_money=1059 market=17 stockcode=019666", "100.000000"},
                  {"S: half a unit goes up", "czlb=S dd_money=1505 amount_chart_volunit=1", "151.000000"},
                  {"S: below half goes down", "czlb=S dd_money=1504.9", "150.000000"},
                  {"S: in units of the table, and STAR has no say", "czlb=S kcb=1" + tens, "15.000000"},
                  {"S: hand applies", "czlb=S newhand=1 hand=50" + tens, "3.000000"},
                  {"S: hand doesn't apply", "czlb=S newhand=0 hand=50", "150.000000"},
                  {"S: an empty hand", "czlb=S newhand=1" + tens, "15.000000"},
                  {"B with hand: the lots of the code", "newhand=1 hand=50", "100.000000"},
                  {"beyond whole numbers", "dd_money=1e30 dd_price=1 kcb=1",
                   "1000000000000000019884624838656.000000"}});
    }

    void MoneyBuys()
    {
        QTEST(AmountFor(With(Fields("dd_money=1500 dd_price=10"), Given("ticket"))), "amount");
    }

    void AnAmountNeverCostsMoreThanTheMoney()
    {
        QRandomGenerator random(4);
        for (int i = 0; i < 20'000; ++i) {
            const qint64 price = 1 + random.bounded(1 << (4 + random.bounded(16)));  // of 1/1000 yuan
            const qint64 money = 1 + random.bounded(1 << 30);
            const int unit = random.bounded(3) == 0 ? 10 : 1;
            const StringMap ticket{
                {"dd_price", QByteArray::number(static_cast<double>(price) / 1000, 'f', 3).toStdString()},
                {"dd_money", QByteArray::number(static_cast<double>(money) / 1000, 'f', 3).toStdString()},
                {"amount_chart_volunit", std::to_string(unit)},
                {"kcb", random.bounded(3) == 0 ? "1" : "0"}};
            const qint64 pieces =
                AmountFor(ticket).split('.')[0].toLongLong() * (ticket.at("kcb") == "1" ? 1 : unit);
            QVERIFY(pieces >= 0 && pieces * price <= money);
            QVERIFY((pieces + 101) * price > money);  // and leaves less than a lot
        }
    }

    void AUnit_data()
    {
        const auto digit = [](int n) { return QByteArray::number(n << 12); };
        TextRows("codeType code options unit",
                 {{"shares", "17", "600000", "0", "1 股"},
                  {"options say 1000, beside other bits", "17", "600000",
                   QByteArray::number((4 << 12) + 4095 + (1 << 16)), "1000 手"},
                  {"options say 10^14", "17", "600000", digit(15), "100000000000000 手"},
                  {"options say 1: none, and no kind 3 either", "19", "123456", digit(1), "1 股"},
                  {"options say 1: still a sheet", "19", "019666", digit(1), "1 张"},
                  {"kind 3 from 7 on", "19", "712345", "0", "1 股"},
                  {"kind 3, a byte above all digits", "19", "\xe6", "0", "1 股"},
                  {"kind 3 in the low byte", "275", "123456", "0", "10 手"},
                  {"Shenzhen bond", "33", "101666", "0", "1 张"},
                  {"Shenzhen fund", "33", "159001", "0", "1 股"},
                  {"both families: none of the two", "49", "019666", "0", "1 股"},
                  {"no options", "19", "123456", "", "1 股"},
                  {"no market", "", "019666", "0", "1 股"},
                  {"no code", "19", "", "0", "1 股"}});
    }

    void AUnit()
    {
        std::string unit = "old";
        std::string multiplier = "old";
        DataDealBase().ResolveAmountUnit(Given("codeType"), Given("code"), Given("options"), unit,
                                         multiplier);
        QTEST(QByteArray::fromStdString(multiplier + ' ' + unit), "unit");
    }

    void AHand()
    {
        QByteArray hands;
        for (const char* options : {"", "255", "256", "512", "1279", "3840", "4096"}) {
            std::string hand = "old";
            DataDealBase().ResolveHandSize(options, hand);
            hands += hand.c_str() + QByteArray(" ");
        }
        QCOMPARE(hands, "100 100 1 10 1000 100000000000000 100 ");
    }
};

PANELRY_TEST(QuantitiesTest)
#include "quantities_test.moc"
