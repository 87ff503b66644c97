#include "desk/exchange/listing.h"

#include <QTemporaryFile>
#include <algorithm>

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

Listing Read(const QByteArray& text)
{
    QTemporaryFile file;
    file.open();
    file.write(text);
    file.flush();
    return ReadListing(file.fileName().toStdString());
}

// Behind the name of the file.
QString FaultOf(const QByteArray& text)
{
    try {
        return QStringLiteral("read %1").arg(Read(text).securities.size());
    } catch (const std::runtime_error& error) {
        return QString::fromUtf8(error.what()).section(QStringLiteral(": "), 1);
    }
}

}  // namespace

class ListingTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void AnEntryIsRefused_data()
    {
        const Rows<const char*, const char*, const char*> row("key value fault");
        row("an unknown key", "colour", "1", "is no key of it");
        row("no close", "close", "", "is missing");
        row("no market", "market", "", "is missing");
        row("a close as a number", "close", "10.5", "is no text");
        row("a close that is none", "close", R"("0")", "is no price");
        row("a close off the step", "close", R"("10.005")", "is off the step");
        row("a step of more decimals", "step", R"("0.005")", R"(has more decimals than "decimals")");
        row("four decimals", "decimals", "4", "is no whole number from 2 to 3");
        row("a market of no family", "market", "49", "is of no known family");
        row("a market beyond a byte", "market", "273", "is no whole number from 1 to 255");
        row("a lot of nothing", "lot", "0", "is no whole number from 1 to 1000000");
        row("a lot as a fraction", "lot", "1.5", "is no whole number from 1 to 1000000");
        row("a minimum off the lot", "minimum", "150", R"(is no multiple of "lot")");
        row("less at most than at least", "maximum", "50", R"(is less than "minimum")");
        row("a limit of all", "limit_percent", "100", "is no whole number from 0 to 99");
        row("a flag that is none", "suspended", "1", "is neither true nor false");
        row("an unknown kind", "kind", R"("share")", "is none that is known: share");
        row("an empty name", "name", R"("")", "is empty");
    }
    void AnEntryIsRefused()
    {
        QFETCH(QString, key);
        QFETCH(QString, value);
        QFETCH(QString, fault);
        QCOMPARE(FaultOf(FileWith(With(key.toUtf8(), value.toUtf8()))),
                 QStringLiteral("entry 1 (600000): \"%1\" %2").arg(key, fault));
    }

    void AFileIsReadOrRefused_data()
    {
        const Rows<QByteArray, const char*> row("text told");
        const QByteArray good = FileWith(kGood);
        row("a good one", good, "read 1");
        row("the same code on two markets", FileWith(kGood + (", " + With("market", "16"))), "read 2");
        row("the same code twice", FileWith(kGood + (", " + QByteArray(kGood))),
            "entry 2 (600000): stands twice on market 17");
        row("no entry", FileWith(""), "\"securities\" is no list with something in it");
        row("no object", FileWith("7"), "entry 1: is no object");
        row("letters in the code", FileWith(With("code", "\"60000A\"")),
            "entry 1 (60000A): \"code\" isn't five or six digits");
        row("a short code", FileWith(With("code", "\"6000\"")),
            "entry 1 (6000): \"code\" isn't five or six digits");
        row("no date", QByteArray(good).replace("2026-07-01", "2026-02-30"),
            "\"rules_date\" is no date as 2026-07-01 is one");
        row("an unknown key", QByteArray(good).replace("\"rules\"", "\"rule\""), "\"rule\" is no key of it");
    }
    void AFileIsReadOrRefused()
    {
        QFETCH(QByteArray, text);
        QTEST(FaultOf(text), "told");
    }

    void WhatIsNoJsonIsRefused()
    {
        QVERIFY(FaultOf(FileWith(kGood).chopped(1)).startsWith(QStringLiteral("is no JSON")));
        QVERIFY(
            FaultOf(FileWith(kGood).replace("演示", "\xD1\xDD")).startsWith(QStringLiteral("is no JSON")));
        QVERIFY_EXCEPTION_THROWN(ReadListing("/nowhere/securities.json"), std::runtime_error);
    }

    void WhatTheEntryLeavesOutIsFilledIn()
    {
        const Listing listing =
            Read(FileWith(With("lot", "500") + ", " + With("decimals", "3").replace("600000", "510300")));
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
    void TheTicketShowsShippedSecuritiesSensibly()
    {
        DataDealBase ticketRules;
        for (const Security& security : ShippedListing()->securities) {
            const std::string market = std::to_string(security.market);
            const char* const code = security.code.c_str();
            // Its decimals come with the quote alone.
            const bool isConnect = security.kind == SecurityKind::Connect;
            const bool isThree = DataDealBase::IsThreeDecimalCode(security.code, market);
            QVERIFY2(isThree ? security.decimals == 3 : security.decimals == 2 || isConnect, code);

            std::string unit;
            std::string pieces;
            ticketRules.ResolveAmountUnit(market, security.code, std::to_string(security.options), unit,
                                          pieces);
            const int family = security.market & 15;
            const bool isBond =
                security.kind == SecurityKind::Bond || security.kind == SecurityKind::Convertible;
            if (security.kind != SecurityKind::Index) {
                QVERIFY2(unit == (!isBond ? "股" : family == 3 ? "手" : "张"), code);
                QVERIFY2(security.lot == 1 || security.lot % ReadQuantity(pieces).value() == 0, code);
            }
            std::string hand;
            ticketRules.ResolveHandSize(std::to_string(security.options), hand);
            const Quantity handSize = ReadQuantity(hand).value();
            const bool isInHands = isBond || isConnect;
            QVERIFY2(!isInHands || security.lot % handSize == 0, code);
            if (security.kind == SecurityKind::Subscription && security.lot != 10) {
                StringMap ticket{{"IsXGSG", "1"}, {"market", market}};
                QVERIFY2(security.lot == DataDealBase::ReadLotSize(ticket), code);
            }
        }
    }

    void TheShippedFileHasEveryKind()
    {
        const Listing& listing = *ShippedListing();
        const std::tuple<const char*, int, SecurityKind> kinds[] = {
            {"600000", 17, SecurityKind::Stock},       {"688981", 22, SecurityKind::Star},
            {"300750", 37, SecurityKind::ChiNext},     {"000001", 33, SecurityKind::Stock},
            {"000001", 16, SecurityKind::Index},       {"510300", 20, SecurityKind::Fund},
            {"159001", 36, SecurityKind::Fund},        {"019666", 23, SecurityKind::Bond},
            {"113001", 19, SecurityKind::Convertible}, {"00700", 64, SecurityKind::Connect},
            {"900901", 18, SecurityKind::Stock},       {"730999", 17, SecurityKind::Subscription}};
        for (const auto& [code, market, kind] : kinds) {
            const auto found = listing.Find(static_cast<std::uint8_t>(market), code);
            QVERIFY2(found && listing.securities[*found].kind == kind, code);
        }
        QVERIFY(listing.securities.size() >= 200);
        const auto has = [&](auto holds) {
            return std::any_of(listing.securities.begin(), listing.securities.end(), holds);
        };
        QVERIFY(has([](const Security& s) { return s.suspended; }));
        QVERIFY(has([](const Security& s) { return s.limitPercent == 0 && s.kind == SecurityKind::Stock; }));
        QVERIFY(has([](const Security& s) { return s.limitPercent == 5; }));
        QCOMPARE(listing.FindAll("000001").size(), std::size_t{2});
    }

    void ItIsEnlarged()
    {
        const Listing large = Enlarged(*ShippedListing(), 5000);
        QCOMPARE(large.securities.size(), std::size_t{5000});
        QCOMPARE(large.FindAll("600000").size(), std::size_t{1});
        QCOMPARE(large.FindAll(large.securities.back().code).size(), std::size_t{1});
        QCOMPARE(Enlarged(*ShippedListing(), 3).securities.size(), ShippedListing()->securities.size());
    }
};

PANELRY_TEST(ListingTest)
#include "listing_test.moc"
