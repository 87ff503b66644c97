#include "desk/exchange/listing.h"

#include <QFile>
#include <QTemporaryDir>
#include <map>

#include "desk/exchange/rules.h"
#include "exchange/stage.h"
#include "support/rows.h"
#include "support/test.h"
#include "ticket/data_deal_base.h"

using namespace panelry::desk;
using panelry::desk::test::ShippedListing;
using panelry::test::Rows;

namespace
{

constexpr const char* kGood =
    R"({"market": 17, "name": "演示", "kind": "stock", "close": "10.00", "code": "600000"})";

QByteArray FileWith(const QByteArray& securities)
{
    return R"({"rules": "r", "rules_date": "2026-07-01", "securities": [)" + securities + "]}";
}

/// The good entry with this key as well, or instead, or (without a value) without it.
QByteArray With(const char* key, const char* value)
{
    QByteArray entry = kGood;
    const int begin = entry.indexOf('"' + QByteArray(key) + "\": ");
    if (begin > 0) {
        const int comma = entry.indexOf(", ", begin);
        entry = comma > 0 ? entry.remove(begin, comma + 2 - begin) : entry.left(begin - 2) + '}';
    }
    return *value == '\0' ? entry : entry.chopped(1) + ", \"" + key + "\": " + value + '}';
}

QString Read(const QByteArray& text)
{
    const QTemporaryDir directory;
    QFile file(directory.filePath(QStringLiteral("securities.json")));
    if (!file.open(QIODevice::WriteOnly)) {
        return QStringLiteral("not written");
    }
    file.write(text);
    file.close();
    const std::string path = file.fileName().toStdString();
    try {
        const Listing listing = ReadListing(path);
        return QStringLiteral("read %1").arg(listing.securities.size());
    } catch (const std::runtime_error& error) {
        return QString::fromUtf8(error.what()).remove(QString::fromStdString(path + ": "));
    }
}

}  // namespace

class ListingTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void Refuses_data();
    void Refuses();
    void FillsInWhatTheEntryLeavesOut();
    void TheTicketShowsShippedSecuritiesSensibly();
    void TheShippedFileHasEveryKind_data();
    void TheShippedFileHasEveryKind();
    void Enlarges();
};

void ListingTest::Refuses_data()
{
    const Rows<QByteArray, const char*> row("securities told");
    const QByteArray good = kGood;
    row("a good one", good, "read 1");
    row("the same code on two markets", good + ", " + With("market", "16"), "read 2");
    row("the same code twice", good + ", " + good, "entry 2 (600000): stands twice on market 17");
    row("none", "", "\"securities\" is no list with something in it");
    row("no object", "7", "entry 1: is no object");
    row("an unknown key", With("colour", "1"), "entry 1 (600000): \"colour\" is no key of it");
    row("no close", With("close", ""), "entry 1 (600000): \"close\" is missing");
    row("no market", With("market", ""), "entry 1 (600000): \"market\" is missing");
    row("a close as a number", With("close", "10.5"), "entry 1 (600000): \"close\" is no text");
    row("a close that is none", With("close", "\"0\""), "entry 1 (600000): \"close\" is no price");
    row("a close off the step", With("close", "\"10.005\""), "entry 1 (600000): \"close\" is off the step");
    row("a step of more decimals", With("step", "\"0.005\""),
        "entry 1 (600000): \"step\" has more decimals than \"decimals\"");
    row("four decimals", With("decimals", "4"),
        "entry 1 (600000): \"decimals\" is no whole number from 2 to 3");
    row("a market of no family", With("market", "49"), "entry 1 (600000): \"market\" is of no known family");
    row("a market beyond a byte", With("market", "273"),
        "entry 1 (600000): \"market\" is no whole number from 1 to 255");
    row("a lot of nothing", With("lot", "0"),
        "entry 1 (600000): \"lot\" is no whole number from 1 to 1000000");
    row("a lot as a fraction", With("lot", "1.5"),
        "entry 1 (600000): \"lot\" is no whole number from 1 to 1000000");
    row("a minimum off the lot", With("minimum", "150"),
        "entry 1 (600000): \"minimum\" is no multiple of \"lot\"");
    row("less at most than at least", With("maximum", "50"),
        "entry 1 (600000): \"maximum\" is less than \"minimum\"");
    row("a limit of all", With("limit_percent", "100"),
        "entry 1 (600000): \"limit_percent\" is no whole number from 0 to 99");
    row("a flag that is none", With("suspended", "1"),
        "entry 1 (600000): \"suspended\" is neither true nor false");
    row("an unknown kind", With("kind", "\"share\""),
        "entry 1 (600000): \"kind\" is none that is known: share");
    row("letters in the code", With("code", "\"60000A\""),
        "entry 1 (60000A): \"code\" isn't five or six digits");
    row("a short code", With("code", "\"6000\""), "entry 1 (6000): \"code\" isn't five or six digits");
    row("an empty name", With("name", "\"\""), "entry 1 (600000): \"name\" is empty");
}

void ListingTest::Refuses()
{
    QFETCH(QByteArray, securities);
    QTEST(Read(FileWith(securities)), "told");
    const QByteArray good = kGood;
    QCOMPARE(Read(FileWith(good).replace("2026-07-01", "2026-02-30")),
             QStringLiteral("\"rules_date\" is no date as 2026-07-01 is one"));
    QCOMPARE(Read(FileWith(good).replace("\"rules\"", "\"rule\"")),
             QStringLiteral("\"rule\" is no key of it"));
    QVERIFY(Read(FileWith(good).chopped(1)).startsWith(QStringLiteral("is no JSON")));
    QVERIFY(Read(FileWith(good).replace("演示", "\xD1\xDD")).startsWith(QStringLiteral("is no JSON")));
    QVERIFY_EXCEPTION_THROWN(ReadListing("/nowhere/securities.json"), std::runtime_error);
}

void ListingTest::FillsInWhatTheEntryLeavesOut()
{
    const QTemporaryDir directory;
    QFile file(directory.filePath(QStringLiteral("securities.json")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(FileWith(With("lot", "500") + ", " + With("decimals", "3").replace("600000", "510300")));
    file.close();
    const Listing listing = ReadListing(file.fileName().toStdString());
    const Security& stock = listing.securities[0];
    QCOMPARE(stock.minimum, 500);
    QCOMPARE(stock.maximum, 1'000'000);
    QCOMPARE(stock.step, 10);
    QCOMPARE(stock.limitPercent, 10);
    QVERIFY(!stock.suspended && !stock.sameDay && stock.options == 0 && stock.close == 10'000);
    QCOMPARE(listing.securities[1].step, 1);
    QVERIFY(listing.Find(17, "510300") == 1U && !listing.Find(16, "510300"));
}

// The library's ticket works out decimals, unit and lot by itself; the file must agree with what it comes to.
void ListingTest::TheTicketShowsShippedSecuritiesSensibly()
{
    DataDealBase ticketRules;
    for (const Security& security : ShippedListing()->securities) {
        const std::string market = std::to_string(security.market);
        const auto expect = [&](bool holds, const char* what) {
            return QTest::qVerify(holds, what, security.code.c_str(), __FILE__, __LINE__);
        };
        const bool isConnect =
            security.kind == SecurityKind::Connect;  // its decimals come with the quote alone
        const bool isThree = DataDealBase::IsThreeDecimalCode(security.code, market);
        QVERIFY(expect(isThree ? security.decimals == 3 : security.decimals == 2 || isConnect, "decimals"));

        std::string unit;
        std::string pieces;
        ticketRules.ResolveAmountUnit(market, security.code, std::to_string(security.options), unit, pieces);
        const int family = security.market & 15;
        const bool isBond = security.kind == SecurityKind::Bond || security.kind == SecurityKind::Convertible;
        if (security.kind != SecurityKind::Index) {
            QVERIFY(expect(unit == (!isBond ? "股" : family == 3 ? "手" : "张"), "unit"));
            QVERIFY(expect(security.lot == 1 || security.lot % ReadQuantity(pieces).value() == 0, "pieces"));
        }
        std::string hand;
        ticketRules.ResolveHandSize(std::to_string(security.options), hand);
        const Quantity handSize = ReadQuantity(hand).value();
        const bool isInHands = isBond || isConnect;
        QVERIFY(expect(!isInHands || security.lot % handSize == 0, "hand"));
        if (security.kind == SecurityKind::Subscription && security.lot != 10) {
            StringMap ticket{{"IsXGSG", "1"}, {"market", market}};
            QVERIFY(expect(security.lot == DataDealBase::ReadLotSize(ticket), "lot of a subscription"));
        }
    }
}

void ListingTest::TheShippedFileHasEveryKind_data()
{
    const Rows<const char*, int, int> row("code market kind");
    const auto number = [](SecurityKind kind) { return static_cast<int>(kind); };
    row("main board", "600000", 17, number(SecurityKind::Stock));
    row("dear", "600519", 17, number(SecurityKind::Stock));
    row("STAR", "688981", 22, number(SecurityKind::Star));
    row("ChiNext", "300750", 37, number(SecurityKind::ChiNext));
    row("one code, a stock", "000001", 33, number(SecurityKind::Stock));
    row("and an index", "000001", 16, number(SecurityKind::Index));
    row("fund", "510300", 20, number(SecurityKind::Fund));
    row("fund of the other exchange", "159001", 36, number(SecurityKind::Fund));
    row("bond in pieces", "019666", 23, number(SecurityKind::Bond));
    row("convertible in hands", "113001", 19, number(SecurityKind::Convertible));
    row("Stock Connect", "00700", 64, number(SecurityKind::Connect));
    row("B share", "900901", 18, number(SecurityKind::Stock));
    row("subscription", "730999", 17, number(SecurityKind::Subscription));
}

void ListingTest::TheShippedFileHasEveryKind()
{
    QFETCH(QString, code);
    QFETCH(int, market);
    const Listing& listing = *ShippedListing();
    const auto found = listing.Find(static_cast<std::uint8_t>(market), code.toStdString());
    QVERIFY(found.has_value());
    QTEST(static_cast<int>(listing.securities[*found].kind), "kind");
    QVERIFY(listing.securities.size() >= 200);
    const auto count = [&](auto holds) {
        return std::count_if(listing.securities.begin(), listing.securities.end(), holds);
    };
    QVERIFY(count([](const Security& s) { return s.suspended; }) > 0);
    QVERIFY(count([](const Security& s) { return s.limitPercent == 0 && s.kind == SecurityKind::Stock; }) >
            0);
    QVERIFY(count([](const Security& s) { return s.limitPercent == 5; }) > 0);
    QVERIFY(listing.FindAll("000001").size() == 2);
}

void ListingTest::Enlarges()
{
    const Listing large = Enlarged(*ShippedListing(), 5000);
    QCOMPARE(large.securities.size(), std::size_t{5000});
    QVERIFY(large.FindAll("600000").size() == 1);
    QCOMPARE(large.FindAll(large.securities.back().code).size(), std::size_t{1});
    QCOMPARE(Enlarged(*ShippedListing(), 3).securities.size(), ShippedListing()->securities.size());
}

PANELRY_TEST(ListingTest)
#include "listing_test.moc"
