#include "quote_board/price.h"

#include "support/test.h"

using panelry::Price;

namespace
{

constexpr Price kBad = -1;

QString S(const char* text)
{
    return QString::fromUtf8(text);
}

}  // namespace

class PriceTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void DecimalTextIsReadExactly_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<Price>("price");
        QTest::newRow("two places") << S("1702.30") << Price(1702300000);
        QTest::newRow("whole") << S("12") << Price(12000000);
        QTest::newRow("leading zeros") << S("0012.5") << Price(12500000);
        QTest::newRow("six places") << S("0.000001") << Price(1);
        QTest::newRow("zeros beyond six places") << S("1.2500000000") << Price(1250000);
        QTest::newRow("seven places that count") << S("1.0000001") << kBad;
        QTest::newRow("largest") << S("99999999.999999") << Price(99999999999999);
        QTest::newRow("nine digits") << S("100000000") << kBad;
        QTest::newRow("none") << S("") << Price(0);
        QTest::newRow("dashes") << S("--") << Price(0);
        QTest::newRow("comma") << S("1702,30") << kBad;
        QTest::newRow("negative") << S("-1.00") << kBad;
        QTest::newRow("plus") << S("+1.00") << kBad;
        QTest::newRow("exponent") << S("1e3") << kBad;
        QTest::newRow("blank") << S(" 1.00") << kBad;
        QTest::newRow("no digits before the point") << S(".5") << kBad;
        QTest::newRow("no digits behind the point") << S("5.") << kBad;
        QTest::newRow("two points") << S("1.2.3") << kBad;
        QTest::newRow("full width digits") << S("１２") << kBad;
        QTest::newRow("not a number") << S("nan") << kBad;
    }
    void DecimalTextIsReadExactly()
    {
        QFETCH(QString, text);
        QTEST(panelry::ReadPrice(text).value_or(kBad), "price");
    }

    void ChangeIsExact_data()
    {
        QTest::addColumn<QString>("last");
        QTest::addColumn<QString>("prevClose");
        QTest::addColumn<int>("decimals");
        QTest::addColumn<QString>("change");
        QTest::addColumn<QString>("percent");
        QTest::addColumn<int>("trend");
        const auto row = [](const char* name, const char* last, const char* prev, int decimals,
                            const char* change, const char* percent, panelry::Trend trend) {
            QTest::newRow(name) << S(last) << S(prev) << decimals << S(change) << S(percent)
                                << static_cast<int>(trend);
        };
        using panelry::Trend;
        row("rise", "1710.00", "1702.30", 2, "+7.70", "+0.45%", Trend::Rise);
        row("fall, three decimals", "3.982", "3.985", 3, "-0.003", "-0.08%", Trend::Fall);
        row("unchanged", "11.42", "11.420", 2, "0.00", "0.00%", Trend::Flat);
        row("half goes up", "10.0005", "10.00", 4, "+0.0005", "+0.01%", Trend::Rise);
        row("half goes down", "9.9995", "10.00", 4, "-0.0005", "-0.01%", Trend::Fall);
        row("below half of the last place", "10.0004", "10.00", 4, "+0.0004", "+0.00%", Trend::Rise);
        row("more places than announced", "10.005", "10.00", 2, "+0.005", "+0.05%", Trend::Rise);
        row("limit up", "11.00", "10.00", 2, "+1.00", "+10.00%", Trend::Rise);
        row("a thousandfold", "99999999.99", "0.01", 2, "+99999999.98", "+999999999800.00%", Trend::Rise);
        row("no last price", "", "10.00", 2, "--", "--", Trend::Unknown);
        row("no previous close", "10.00", "0.00", 2, "--", "--", Trend::Unknown);
    }
    void ChangeIsExact()
    {
        QFETCH(QString, last);
        QFETCH(QString, prevClose);
        QFETCH(int, decimals);
        const Price from = panelry::ReadPrice(prevClose).value();
        const Price to = panelry::ReadPrice(last).value();
        QTEST(panelry::ChangeText(to, from, decimals), "change");
        QTEST(panelry::ChangePercentText(to, from), "percent");
        QTEST(static_cast<int>(panelry::TrendOf(to, from)), "trend");
    }

    void LotsAreReadableAtAnySize_data()
    {
        QTest::addColumn<QString>("given");
        QTest::addColumn<QString>("shown");
        QTest::newRow("none") << S("") << S("0");
        QTest::newRow("five digits") << S("99999") << S("99999");
        QTest::newRow("from six on") << S("100000") << S("10.00万");
        QTest::newRow("rounded") << S("123456") << S("12.35万");
        QTest::newRow("last of 万") << S("99999949") << S("9999.99万");
        QTest::newRow("rounded into 亿") << S("99999950") << S("1.00亿");
        QTest::newRow("largest") << S("999999999999") << S("10000.00亿");
        QTest::newRow("too long") << S("1000000000000") << S("bad");
        QTest::newRow("fraction") << S("1.5") << S("bad");
    }
    void LotsAreReadableAtAnySize()
    {
        QFETCH(QString, given);
        const std::optional<qint64> lots = panelry::ReadLots(given);
        QTEST(lots ? panelry::LotsText(*lots) : S("bad"), "shown");
    }
};

PANELRY_TEST(PriceTest)
#include "price_test.moc"
