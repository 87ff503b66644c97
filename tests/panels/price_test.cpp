#include "quote_board/price.h"

#include "support/test.h"
#include "support/text_rows.h"

using panelry::Price;
using panelry::test::Given;
using panelry::test::TextRows;

namespace
{

QString Text(const char* column)
{
    return QString::fromUtf8(Given(column));
}

}  // namespace

class PriceTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void DecimalTextIsReadExactly_data()
    {
        TextRows("text price", {{"two places", "1702.30", "1702300000"},
                                {"whole", "12", "12000000"},
                                {"six places", "0.000001", "1"},
                                {"zeros beyond six places", "1.2500000000", "1250000"},
                                {"seven places that count", "1.0000001", "bad"},
                                {"largest", "99999999.999999", "99999999999999"},
                                {"nine digits", "100000000", "bad"},
                                {"none", "", "0"},
                                {"dashes", "--", "0"},
                                {"comma", "1702,30", "bad"},
                                {"negative", "-1.00", "bad"},
                                {"exponent", "1e3", "bad"},
                                {"blank", " 1.00", "bad"},
                                {"no digits behind the point", "5.", "bad"},
                                {"two points", "1.2.3", "bad"},
                                {"full width digits", "１２", "bad"}});
    }
    void DecimalTextIsReadExactly()
    {
        const std::optional<Price> price = panelry::ReadPrice(Text("text"));
        QTEST(price ? QByteArray::number(qint64{*price}) : QByteArray("bad"), "price");
    }

    void ChangeIsExact_data()
    {
        TextRows("last prevClose decimals change percent",
                 {{"rise", "1710.00", "1702.30", "2", "+7.70", "+0.45%"},
                  {"fall, three decimals", "3.982", "3.985", "3", "-0.003", "-0.08%"},
                  {"unchanged", "11.42", "11.420", "2", "0.00", "0.00%"},
                  {"half goes up", "10.0005", "10.00", "4", "+0.0005", "+0.01%"},
                  {"half goes down", "9.9995", "10.00", "4", "-0.0005", "-0.01%"},
                  {"more places than announced", "10.005", "10.00", "2", "+0.005", "+0.05%"},
                  {"a thousandfold", "99999999.99", "0.01", "2", "+99999999.98", "+999999999800.00%"},
                  {"no last price", "", "10.00", "2", "--", "--"},
                  {"no previous close", "10.00", "0.00", "2", "--", "--"}});
    }
    void ChangeIsExact()
    {
        using panelry::Trend;
        const Price from = panelry::ReadPrice(Text("prevClose")).value();
        const Price to = panelry::ReadPrice(Text("last")).value();
        const QByteArray change = panelry::ChangeText(to, from, Given("decimals").toInt()).toUtf8();
        QTEST(change, "change");
        QTEST(panelry::ChangePercentText(to, from).toUtf8(), "percent");
        const Trend trend = change == "--"           ? Trend::Unknown
                            : change.startsWith('+') ? Trend::Rise
                            : change.startsWith('-') ? Trend::Fall
                                                     : Trend::Flat;
        QVERIFY(panelry::TrendOf(to, from) == trend);
    }

    void LotsAreReadableAtAnySize_data()
    {
        TextRows("given shown", {{"none", "", "0"},
                                 {"five digits", "99999", "99999"},
                                 {"from six on", "100000", "10.00万"},
                                 {"rounded", "123456", "12.35万"},
                                 {"last of 万", "99999949", "9999.99万"},
                                 {"rounded into 亿", "99999950", "1.00亿"},
                                 {"largest", "999999999999", "10000.00亿"},
                                 {"too long", "1000000000000", "bad"},
                                 {"fraction", "1.5", "bad"}});
    }
    void LotsAreReadableAtAnySize()
    {
        const std::optional<qint64> lots = panelry::ReadLots(Text("given"));
        QTEST(lots ? panelry::LotsText(*lots).toUtf8() : QByteArray("bad"), "shown");
    }
};

PANELRY_TEST(PriceTest)
#include "price_test.moc"
