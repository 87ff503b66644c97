#include <QRandomGenerator>

#include "support/test.h"
#include "ticket/data_deal_base.h"
#include "ticket/fields.h"

using panelry::test::Fields;

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
        QTest::addColumn<QByteArray>("ticket");
        QTest::addColumn<QByteArray>("amount");
        const auto row = [](const char* name, const QByteArray& ticket, const char* amount) {
            QTest::newRow(name) << ticket << QByteArray(amount);
        };
        row("whole lots", "dd_money=10000 dd_price=10", "1000.000000");
        row("lots, rounded down", "dd_money=10990 dd_price=10", "1000.000000");
        row("less than a lot", "dd_money=999 dd_price=10", "0.000000");
        row("STAR: single shares", "dd_money=10059 dd_price=10 kcb=1", "1005.000000");
        row("no price", "dd_money=10000", "0");
        row("price below the least", "dd_money=10000 dd_price=0.0009", "0");
        row("least price", "dd_money=1 dd_price=0.001", "1000.000000");
        row("money below the least", "dd_money=0.0009 dd_price=1", "0");
        row("no money", "dd_money= dd_price=10", "0");
        row("units, not shares", "dd_money=10050 dd_price=10 amount_chart_volunit=10", "100.000000");
        row("a unit of 1 is counted in lots", "dd_money=10050 dd_price=10 amount_chart_volunit=1",
            "1000.000000");
        row("a unit below 1 as well", "dd_money=10050 dd_price=10 amount_chart_volunit=-5", "1000.000000");
        row("bonds in lots of 10", "dd_money=1059 dd_price=10 market=17 stockcode=019666", "100.000000");
        row("the host says it is a bond", "dd_money=1059 dd_price=10 market=17 stockcode=6 iszhangmask=1",
            "100.000000");
        row("new shares of an exchange", "dd_money=9990 dd_price=1 IsXGSG=1 market=17", "9500.000000");
        row("new shares elsewhere", "dd_money=9990 dd_price=1 IsXGSG=1 market=1", "9000.000000");
        row("new shares: the bond's lot has no say",
            "dd_money=9990 dd_price=1 IsXGSG=1 market=33 stockcode=100001", "9500.000000");
        row("new shares without a market", "dd_money=9990 dd_price=1 IsXGSG=1", "9000.000000");

        row("S: to the nearest unit", "czlb=S dd_money=1506 dd_price=10 amount_chart_volunit=1",
            "151.000000");
        row("S: half a unit goes up", "czlb=S dd_money=1505 dd_price=10", "151.000000");
        row("S: below half goes down", "czlb=S dd_money=1504.9 dd_price=10", "150.000000");
        row("S: in units of the table", "czlb=S dd_money=1500 dd_price=10 amount_chart_volunit=10",
            "15.000000");
        row("S: hand applies", "czlb=S newhand=1 hand=50 dd_money=1500 dd_price=10 amount_chart_volunit=10",
            "3.000000");
        row("S: hand doesn't apply", "czlb=S newhand=0 hand=50 dd_money=1500 dd_price=10", "150.000000");
        row("S: an empty hand", "czlb=S newhand=1 hand= dd_money=1500 dd_price=10 amount_chart_volunit=10",
            "15.000000");
        row("S: STAR has no say", "czlb=S kcb=1 dd_money=1500 dd_price=10 amount_chart_volunit=10",
            "15.000000");
        row("B with hand: the lots of the code", "czlb=B newhand=1 hand=50 dd_money=1500 dd_price=10",
            "100.000000");
        row("more than a whole number holds", "dd_money=1e30 dd_price=1 kcb=1",
            "1000000000000000019884624838656.000000");
    }

    void MoneyBuys()
    {
        QFETCH(const QByteArray, ticket);
        QTEST(AmountFor(Fields(ticket)), "amount");
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
        QTest::addColumn<QByteArray>("codeType");
        QTest::addColumn<QByteArray>("code");
        QTest::addColumn<QByteArray>("options");
        QTest::addColumn<QByteArray>("unit");
        const auto row = [](const char* name, const char* codeType, const char* code,
                            const QByteArray& options, const char* unit) {
            QTest::newRow(name) << QByteArray(codeType) << QByteArray(code) << options << QByteArray(unit);
        };
        const auto digit = [](int n) { return QByteArray::number(n << 12); };
        row("shares", "17", "600000", "0", "1 股");
        row("options say 10", "17", "600000", digit(2), "10 手");
        row("options say 1000, beside other bits", "17", "600000",
            QByteArray::number((4 << 12) + 4095 + (1 << 16)), "1000 手");
        row("options say 10^14", "17", "600000", digit(15), "100000000000000 手");
        row("options say 1: none, and no kind 3 either", "19", "123456", digit(1), "1 股");
        row("options say 1: still a sheet", "19", "019666", digit(1), "1 张");
        row("kind 3 below 7", "19", "123456", "0", "10 手");
        row("kind 3 from 7 on", "19", "712345", "0", "1 股");
        row("kind 3, a byte above all digits", "19", "\xe6", "0", "1 股");
        row("kind 3 in the low byte", "275", "123456", "0", "10 手");
        row("Shanghai bond", "17", "019666", "0", "1 张");
        row("Shenzhen bond", "33", "101666", "0", "1 张");
        row("Shenzhen fund", "33", "159001", "0", "1 股");
        row("another family", "65", "019666", "0", "1 股");
        row("both families: none of the two", "49", "019666", "0", "1 股");
        row("no options", "19", "123456", "", "1 股");
        row("no market", "", "019666", "0", "1 股");
        row("no code", "19", "", "0", "1 股");
    }

    void AUnit()
    {
        QFETCH(const QByteArray, codeType);
        QFETCH(const QByteArray, code);
        QFETCH(const QByteArray, options);
        std::string unit = "old";
        std::string multiplier = "old";
        DataDealBase().ResolveAmountUnit(codeType.toStdString(), code.toStdString(), options.toStdString(),
                                         unit, multiplier);
        QTEST(QByteArray::fromStdString(multiplier + ' ' + unit), "unit");
    }

    void AHand_data()
    {
        QTest::addColumn<QByteArray>("options");
        QTest::addColumn<QByteArray>("hand");
        const auto row = [](const char* options, const char* hand) {
            QTest::newRow(options) << QByteArray(options) << QByteArray(hand);
        };
        row("0", "100");
        row("", "100");
        row("255", "100");
        row("256", "1");
        row("512", "10");
        row("1279", "1000");
        row("3840", "100000000000000");
        row("4096", "100");
    }

    void AHand()
    {
        QFETCH(const QByteArray, options);
        std::string hand = "old";
        DataDealBase().ResolveHandSize(options.toStdString(), hand);
        QTEST(QByteArray::fromStdString(hand), "hand");
    }
};

PANELRY_TEST(QuantitiesTest)
#include "quantities_test.moc"
