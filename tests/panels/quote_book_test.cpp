#include "quote_board/quote_book.h"

#include "push_texts.h"
#include "quote_board/quote_colors.h"
#include "quote_board/quote_face.h"
#include "support/test.h"
#include "support/text_rows.h"

using panelry::QuoteBook;
using panelry::Tone;
using panelry::test::Given;
using panelry::test::TextRows;

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
        const QString problem = QString::fromUtf8(Given("problem"));
        QuoteBook book;
        QCOMPARE(book.Apply(ThreeStocks()).problems, QStringList());
        const std::vector<panelry::Quote> before = book.Quotes();
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
        const panelry::Quote& kept = book.Quotes()[2];
        QCOMPARE(kept.last, panelry::Price(11500000));
        QCOMPARE(kept.volume, 9);
        QCOMPARE(kept.prevClose, panelry::Price(11420000));  // keys that didn't come stay
        QCOMPARE(book.RowOf(QStringLiteral("300750")), 3);
        QCOMPARE(book.RowOf(QStringLiteral("999999")), -1);
    }

    void ASideIsReplacedAsAWholeAndTextMakesTheSameBook()
    {
        QuoteBook book;
        book.Apply(ThreeStocks());
        book.Apply(
            Json("{'quotes':[{'code':'600519','last':'','bids':[['1.00','1']],'asks':"
                 "[['2.00','1'],['2.01','2'],['2.02','3'],['2.03','4'],['2.04','5'],['2.05','6']]},"
                 "{'code':'1\\'2','name':'引\\'号\\\\','decimals':0,'last':'0.000001','asks':[['','3']]}]}"));
        const panelry::Quote& quote = book.Quotes()[0];
        QCOMPARE(quote.last, panelry::Price(0));
        QCOMPARE(quote.bids[1], panelry::PriceLevel());
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
        const panelry::QuoteFace face = panelry::FaceOf(book.Quotes()[0]);
        const auto tone = [&face](panelry::FaceField field) { return face.fields[field].tone; };
        QCOMPARE(face.fields[panelry::kFaceChange].text, QStringLiteral("+7.70"));
        QCOMPARE(face.fields[panelry::kFaceAmplitude].text, QStringLiteral("0.79%"));
        QCOMPARE(tone(panelry::kFaceLast), Tone::Rise);
        QCOMPARE(tone(panelry::kFacePercent), Tone::Rise);
        QCOMPARE(tone(panelry::kFaceLow), Tone::Fall);
        QCOMPARE(tone(panelry::kFacePrevClose), Tone::Plain);
        // Top to bottom: fifth ask ... first ask, first bid ... fifth bid.
        QCOMPARE(face.prices[0].text, QStringLiteral("1715.00"));
        QCOMPARE(face.prices[4].text, QStringLiteral("1710.00"));
        QCOMPARE(face.prices[5].text, QStringLiteral("1709.99"));
        QCOMPARE(face.prices[7].tone, Tone::Flat);
        QCOMPARE(face.prices[9].tone, Tone::Fall);
        QCOMPARE(face.lots[7].barPermille, 1000);
        QCOMPARE(face.lots[3].barPermille, 500);

        panelry::Quote unknown;
        unknown.code = QStringLiteral("000003");
        const panelry::QuoteFace bare = panelry::FaceOf(unknown);
        QCOMPARE(bare.fields[panelry::kFaceName].text, QStringLiteral("000003"));
        QCOMPARE(bare.fields[panelry::kFaceLast], (panelry::FaceCell{QStringLiteral("--"), Tone::Muted}));
        QCOMPARE(bare.lots[0].text, QString());
    }

    void ColorsComeFromTheTableWhereItHasThem()
    {
        const ConfigTable table{{"quote", {{"rise", "#102030"}, {"fall", "no colour"}}}};
        const panelry::QuoteColors standard;
        const panelry::QuoteColors colors = panelry::ReadQuoteColors(&table);
        QCOMPARE(colors.Of(Tone::Rise), QColor(0x10, 0x20, 0x30));
        QCOMPARE(colors.Of(Tone::Fall), standard.fall);
        QCOMPARE(panelry::ReadQuoteColors(nullptr).rise, standard.rise);
    }
};

PANELRY_TEST(QuoteBookTest)
#include "quote_book_test.moc"
