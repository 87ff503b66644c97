#include "quote_board/quote_book.h"

#include "push_texts.h"
#include "quote_board/price.h"
#include "quote_board/quote_colors.h"
#include "quote_board/quote_face.h"
#include "support/literals.h"
#include "support/test.h"
#include "support/text_rows.h"

using namespace panelry;
using namespace panelry::test;

class QuoteBookTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void BadPartsOfAPushChangeNothing_data()
    {
        const auto entry = [](const char* fields) {
            return Json(QByteArray("{'quotes':[{'code':'600519',") + fields + "}]}");
        };
        // A part of the first message; empty: no message.
        TextRows("push problem",
                 {{"empty", "", "JSON"},
                  {"cut off", Json("{'quotes':["), "第 11 字节"},
                  {"not UTF-8", "{\"quotes\":[{\"code\":\"\xff\"}]}", "JSON"},
                  {"too deep", QByteArray(5000, '['), "JSON"},
                  {"somebody else's", Json("{'notice':'x'}"), ""},
                  {"quotes no list", Json("{'quotes':{'code':'600519'}}"), "应为列表"},
                  {"element no object", Json("{'quotes':[7]}"), "第 1 项：没有有效的证券代码"},
                  {"code a number", Json("{'quotes':[{'code':600519}]}"), "没有有效的证券代码"},
                  {"price no number", entry("'last':'abc'"), "600519 最新价“abc”不是有效数字"},
                  {"price a JSON number", entry("'last':1710.5"), "最新价应为文本"},
                  {"volume with a fraction", entry("'volume':'1.5'"), "成交量“1.5”"},
                  {"decimals too many", entry("'decimals':7"), "小数位数"},
                  {"bids no list", entry("'bids':'x'"), "买盘应为列表"},
                  {"level no pair", entry("'last':'9.99','asks':[['1.00']]"), "卖盘应为[价格,数量]"},
                  {"level's lots bad", entry("'bids':[['1.00','1'],['0.99','x']]"), "买盘量“x”"},
                  {"name no text", entry("'name':1"), "名称"}});
    }
    void BadPartsOfAPushChangeNothing()
    {
        const QString problem = GivenString("problem");
        QuoteBook book;
        QCOMPARE(book.Apply(ThreeStocks()).problems, QStringList());
        const std::vector<Quote> before = book.Quotes();
        const QuoteBook::Result result = book.Apply(Given("push"));
        QCOMPARE(result.problems.isEmpty(), problem.isEmpty());
        QVERIFY2(result.problems.value(0).contains(problem), qPrintable(result.problems.value(0)));
        QVERIFY(result.changed.empty());
        QVERIFY(book.Quotes() == before);
    }

    void GoodPartsCountBesideBadOnes()
    {
        QuoteBook book;
        book.Apply(ThreeStocks());
        const auto result = book.Apply(Json(
            "{'init_param':{'quotes':["
            "{'code':'000001','last':'11.50'},{'code':'600519','last':'?'},{'code':'300750','last':'218.60'},"
            "{'code':'000001','volume':'9'},{'code':'510300','name':'乙基金'}]}}"));
        QVERIFY(result.quotes);
        QCOMPARE(result.problems.size(), 1);
        QCOMPARE(result.changed, (std::vector<int>{2, 3}));  // once each; the unchanged one isn't named
        const Quote& kept = book.Quotes()[2];
        QCOMPARE(kept.last, Price(11500000));
        QCOMPARE(kept.volume, 9);
        QCOMPARE(kept.prevClose, Price(11420000));  // keys that didn't come stay
        QCOMPARE(book.RowOf("300750"_q), 3);
        QCOMPARE(book.RowOf("999999"_q), -1);
    }

    void ASideIsReplacedAsAWholeAndTextMakesTheSameBook()
    {
        QuoteBook book;
        book.Apply(ThreeStocks());
        book.Apply(
            Json("{'quotes':[{'code':'600519','last':'','bids':[['1.00','1']],'asks':"
                 "[['2.00','1'],['2.01','2'],['2.02','3'],['2.03','4'],['2.04','5'],['2.05','6']]},"
                 "{'code':'1\\'2','name':'引\\'号\\\\','decimals':0,'last':'0.000001','asks':[['','3']]}]}"));
        const Quote& quote = book.Quotes()[0];
        QCOMPARE(quote.last, Price(0));
        QCOMPARE(quote.bids[1], PriceLevel());
        QCOMPARE(quote.asks[4].lots, 5);
        QuoteBook copy;
        QCOMPARE(copy.Apply(book.Text().toUtf8()).problems, QStringList());
        QVERIFY(copy.Quotes().size() == 4 && copy.Quotes() == book.Quotes());
    }

    void StocksAreBounded()
    {
        QByteArray push = Json("{'quotes':[");
        for (int i = 0; i <= 10'000; ++i) {
            push += Json("{'code':'") + QByteArray::number(i) + Json("'},");
        }
        push += Json("{'code':'0','volume':'5'}]}");
        QuoteBook book;
        const auto result = book.Apply(push);
        QCOMPARE(book.Quotes().size(), std::size_t(10'000));
        QCOMPARE(result.problems.size(), 1);
        QCOMPARE(book.Quotes()[0].volume, 5);  // known ones still get their quotes
    }

    void FaceShowsPricesByTheirWay()
    {
        QuoteBook book;
        book.Apply(ThreeStocks());
        const QuoteFace face = FaceOf(book.Quotes()[0]);
        const auto tone = [&face](FaceField field) { return face.fields[field].tone; };
        QCOMPARE(face.fields[kFaceChange].text, "+7.70"_q);
        QCOMPARE(face.fields[kFaceAmplitude].text, "0.79%"_q);
        QCOMPARE(tone(kFaceLast), Tone::Rise);
        QCOMPARE(tone(kFacePercent), Tone::Rise);
        QCOMPARE(tone(kFaceLow), Tone::Fall);
        QCOMPARE(tone(kFacePrevClose), Tone::Plain);
        // Top to bottom: fifth ask ... first ask, first bid ... fifth bid.
        QCOMPARE(face.prices[0].text, "1715.00"_q);
        QCOMPARE(face.prices[4].text, "1710.00"_q);
        QCOMPARE(face.prices[5].text, "1709.99"_q);
        QCOMPARE(face.prices[7].tone, Tone::Flat);
        QCOMPARE(face.prices[9].tone, Tone::Fall);
        QCOMPARE(face.lots[7].barPermille, 1000);
        QCOMPARE(face.lots[3].barPermille, 500);

        Quote unknown;
        unknown.code = "000003"_q;
        const QuoteFace bare = FaceOf(unknown);
        QCOMPARE(bare.fields[kFaceName].text, "000003"_q);
        QCOMPARE(bare.fields[kFaceLast], (FaceCell{"--"_q, Tone::Muted}));
        QCOMPARE(bare.lots[0].text, QString());
    }

    void ColorsComeFromTheTableWhereItHasThem()
    {
        const ConfigTable table{{"quote", {{"rise", "#102030"}, {"fall", "no colour"}}}};
        const QuoteColors standard;
        const QuoteColors colors = ReadQuoteColors(&table);
        QCOMPARE(colors.Of(Tone::Rise), QColor(0x10, 0x20, 0x30));
        QCOMPARE(colors.Of(Tone::Fall), standard.fall);
        QCOMPARE(ReadQuoteColors(nullptr).rise, standard.rise);
    }

    void DecimalTextIsReadExactly()
    {
        for (const auto& [text, price] : {std::pair("1702.30", "1702300000"),
                                          {"12", "12000000"},
                                          {"0.000001", "1"},
                                          {"1.2500000000", "1250000"},
                                          {"1.0000001", "bad"},
                                          {"99999999.999999", "99999999999999"},
                                          {"100000000", "bad"},
                                          {"", "0"},
                                          {"--", "0"},
                                          {"1702,30", "bad"},
                                          {"-1.00", "bad"},
                                          {"1e3", "bad"},
                                          {" 1.00", "bad"},
                                          {"5.", "bad"},
                                          {"1.2.3", "bad"},
                                          {"１２", "bad"}}) {
            const std::optional<Price> read = ReadPrice(QString::fromUtf8(text));
            QVERIFY2((read ? QByteArray::number(qint64{*read}) : QByteArray("bad")) == price, text);
        }
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
        const Price from = ReadPrice(GivenString("prevClose")).value();
        const Price to = ReadPrice(GivenString("last")).value();
        const QByteArray change = ChangeText(to, from, Given("decimals").toInt()).toUtf8();
        QTEST(change, "change");
        QTEST(ChangePercentText(to, from).toUtf8(), "percent");
        const Trend trend = change == "--"           ? Trend::Unknown
                            : change.startsWith('+') ? Trend::Rise
                            : change.startsWith('-') ? Trend::Fall
                                                     : Trend::Flat;
        QVERIFY(TrendOf(to, from) == trend);
    }

    void LotsAreReadableAtAnySize()
    {
        for (const auto& [given, shown] : {std::pair("", "0"),
                                           {"99999", "99999"},
                                           {"100000", "10.00万"},
                                           {"123456", "12.35万"},
                                           {"99999949", "9999.99万"},
                                           {"99999950", "1.00亿"},
                                           {"999999999999", "10000.00亿"},
                                           {"1000000000000", "bad"},
                                           {"1.5", "bad"}}) {
            const std::optional<qint64> lots = ReadLots(QString::fromUtf8(given));
            QVERIFY2((lots ? LotsText(*lots) : "bad"_q) == QString::fromUtf8(shown), given);
        }
    }
};

PANELRY_TEST(QuoteBookTest)
#include "quote_book_test.moc"
