#include "desk/exchange/units.h"

#include "support/rows.h"
#include "support/test.h"

using namespace panelry::desk;
using panelry::test::Rows;

namespace
{

QString Text(const std::optional<std::int64_t>& number)
{
    return number ? QString::number(*number) : QStringLiteral("none");
}

}  // namespace

class UnitsTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void Reads_data()
    {
        const Rows<const char*, const char*, const char*, const char*> row("text price money quantity");
        row("whole", "12", "12000", "1200", "12");
        row("a place", "12.5", "12500", "1250", "none");
        row("three places", "0.125", "125", "none", "none");
        row("more places, all nought", "12.34000", "12340", "1234", "none");
        row("four places", "1.2345", "none", "none", "none");
        row("leading noughts", "007.10", "7100", "710", "none");
        row("nothing", "", "none", "none", "none");
        row("a bare point", ".", "none", "none", "none");
        row("no digit before the point", ".5", "none", "none", "none");
        row("no digit behind it", "5.", "none", "none", "none");
        row("two points", "1.2.3", "none", "none", "none");
        row("a sign", "-1", "none", "none", "none");
        row("a blank", "1 ", "none", "none", "none");
        row("the longest", "999999999999", "999999999999000", "99999999999900", "999999999999");
        row("too long to be held", "99999999999999999999", "none", "none", "none");
    }
    void Reads()
    {
        QFETCH(QString, text);
        QTEST(Text(ReadPrice(text.toStdString())), "price");
        QTEST(Text(ReadMoney(text.toStdString())), "money");
        QTEST(Text(ReadQuantity(text.toStdString())), "quantity");
    }

    void Prints_data()
    {
        const Rows<qlonglong, int, const char*, const char*> row("number decimals price money");
        row("two decimals", 10250, 2, "10.25", "102.50");
        row("three", 3952, 3, "3.952", "39.52");
        row("none", 3952, 0, "3", "39.52");
        row("digits behind are cut, not rounded", 10259, 2, "10.25", "102.59");
        row("below one", 5, 3, "0.005", "0.05");
        row("nought", 0, 2, "0.00", "0.00");
        row("negative", -1234, 3, "-1.234", "-12.34");
        row("negative, below one", -50, 2, "-0.05", "-0.50");
    }
    void Prints()
    {
        QFETCH(qlonglong, number);
        QFETCH(int, decimals);
        QTEST(QString::fromStdString(PriceText(number, decimals)), "price");
        QTEST(QString::fromStdString(MoneyText(number)), "money");
    }

    void WorthIsRoundedAwayFromZero()
    {
        QCOMPARE(Worth(10'020, 300), Money{300'600});
        QCOMPARE(Worth(1'234, 1), Money{123});
        QCOMPARE(Worth(1'235, 1), Money{124});
        QCOMPARE(Worth(-1'235, 1), Money{-124});
        QCOMPARE(Worth(1'702'300, 1'000'000), Money{170'230'000'000});
    }
};

PANELRY_TEST(UnitsTest)
#include "units_test.moc"
