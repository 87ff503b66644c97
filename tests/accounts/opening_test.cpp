#include <nlohmann/json.hpp>
#include <set>

#include "accounts/made_accounts.h"
#include "support/rows.h"
#include "support/test.h"
#include "ticket/code_masks.h"

using namespace panelry;
using namespace panelry::desk;
using namespace panelry::test;

namespace
{

QString FaultOf(const std::string& text)
{
    try {
        ParseOpening(text, "file", *MadeListing());
    } catch (const std::runtime_error& error) {
        return QString::fromUtf8(error.what());
    }
    return QStringLiteral("taken");
}

}  // namespace

class OpeningTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void BadFilesAreRefusedWithTheirFault_data()
    {
        const Rows<const char*, const char*, const char*> row("place value fault");
        row("as it is", "", "", "taken");
        row("a text for people", "/about", R"("for people")", "taken");
        row("unknown key", "/normal/colour", "1", R"(file, "normal" has an unknown key "colour")");
        row("credit outside margin", "/normal/credit_line", R"("1.00")",
            R"(file, "normal" has an unknown key "credit_line")");
        row("missing", "/rates/bond", "-", R"(file, "rates" lacks "bond")");
        row("money as a number", "/margin/cash", "100.5", R"(file, "margin" has a "cash" that is no text)");
        row("half a fen", "/margin/cash", R"("0.005")",
            R"(file, "margin" has a "cash" that is no amount of money like "1234.50")");
        row("a rate above the worth", "/rates/fund/commission", "1000001",
            R"(file, "rates", "fund" has a "commission" that is no whole number from 0 to 1000000)");
        row("a rate beyond all numbers", "/hong_kong_rate", "18446744073709551615",
            R"(file has a "hong_kong_rate" that is no whole number from 1 to 10000000)");
        row("a half share", "/normal/holdings/1/quantity", "1.5",
            R"(file, "normal", "holdings" entry 2 has a "quantity" that is no whole number from 1 to 1000000000)");
        row("not listed", "/normal/holdings/0/code", R"("600001")",
            R"(file, "normal", "holdings" entry 1 is of 600001 on market 17, which isn't listed)");
        row("not for this account", "/normal/holdings/0",
            R"({"code":"00700","market":64,"quantity":100,"cost":"1.00"})",
            R"(file, "normal", "holdings" entry 1 is of 00700, which this account can't hold)");
        row("twice", "/normal/holdings/1", R"({"code":"600000","market":17,"quantity":100,"cost":"1.00"})",
            R"(file, "normal", "holdings" entry 2 is of a security that an earlier entry is of)");
        row("a list that is none", "/shareholders", "{}", R"(file has a "shareholders" that is no list)");
        row("unknown account", "/shareholders/0", R"({"account":"gold"})",
            R"(file, "shareholders" entry 1 is of an unknown account "gold")");
        row("no object", "/connect", "[]", R"(file, "connect" is no object)");
    }
    void BadFilesAreRefusedWithTheirFault()
    {
        QFETCH(QString, place);
        QFETCH(QString, value);
        auto json = nlohmann::json::parse(OpeningText(MadeOpening(), *MadeListing()));
        const nlohmann::json::json_pointer pointer(place.toStdString());
        if (value == QLatin1String("-")) {
            json[pointer.parent_pointer()].erase(pointer.back());
        } else if (!place.isEmpty()) {
            json[pointer] = nlohmann::json::parse(value.toStdString());
        }
        QTEST(FaultOf(json.dump()), "fault");
    }

    void WhatIsNoFileIsToldAsSuch()
    {
        QCOMPARE(FaultOf("{"), QStringLiteral("file is no JSON"));
        QVERIFY_EXCEPTION_THROWN(ReadOpening("/nowhere/accounts.json", *MadeListing()), std::runtime_error);
    }

    // The shipped files together: each security that is traded here belongs to one row of its account and
    // family, and the text ranges of the market codes part the accounts.
    void EveryListedSecurityHasItsShareholder()
    {
        const Listing listing = ReadListing(SECURITIES_FILE);
        const Opening opening = ReadOpening(ACCOUNTS_FILE, listing);
        QCOMPARE(ParseOpening(OpeningText(opening, listing), "again", listing).normal.holdings.size(),
                 std::size_t{8});
        std::set<std::string> codes[2];
        for (const Shareholder& row : opening.shareholders) {
            codes[row.account == AccountKind::Margin ? 1 : 0].insert(row.marketCode);
        }
        QVERIFY(*codes[1].rbegin() < *codes[0].begin());
        int matched = 0;
        for (const Security& security : listing.securities) {
            if (security.kind == SecurityKind::Index || security.market == 18 || security.market == 34) {
                continue;
            }
            // Markets 16 to 31 are one, 32 to 63 the other.
            const auto family = security.market >= 64 ? "64" : security.market >= 32 ? "32" : "16";
            for (const Shareholder& row : opening.shareholders) {
                const bool own = row.market == family;
                const bool fits = ticket::MatchesMaskList(row.masks, security.code);
                QVERIFY2(own == fits, (security.code + " and " + row.number).c_str());
                matched += fits ? 1 : 0;
                const bool star = ticket::MatchesMaskList(row.starMask, security.code);
                QCOMPARE(star, row.market == "16" && security.kind == SecurityKind::Star);
                // A subscription may go by a code of its board.
                const bool chiNext = ticket::MatchesMaskList(row.chiNextMask, security.code);
                QVERIFY(security.kind == SecurityKind::Subscription ||
                        chiNext == (row.market == "32" && security.kind == SecurityKind::ChiNext));
            }
        }
        QVERIFY(matched > 300);
    }
};

PANELRY_TEST(OpeningTest)
#include "opening_test.moc"
