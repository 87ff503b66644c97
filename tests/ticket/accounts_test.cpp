#include <array>
#include <stdexcept>

#include "support/test.h"
#include "support/text_rows.h"
#include "ticket/stage.h"

using namespace panelry::test;

namespace
{

// What a search ends with.
template <class Search>
QByteArray Outcome(Search search)
{
    try {
        return QByteArray::fromStdString(search());
    } catch (const std::logic_error& error) {
        return error.what();
    }
}

}  // namespace

class AccountsTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void TheTicketsAccount_data()
    {
        const QByteArray shanghai = "1|16|A1|60*;68*||688*";
        const QByteArray shenzhen = "2|32|B1|00*;30*||||300*;301*";
        TextRows(
            "ordinary margin ticket after",
            {{"Shanghai, main board", shanghai + ' ' + shenzhen, "", "", "kcb=0 cyb=0 scdm=1 gdzh=A1"},
             {"Shanghai, STAR", shanghai, "", "stockcode=688001", "kcb=1 !cyb scdm=1 gdzh=A1"},
             {"Shenzhen, ChiNext", shenzhen, "", "stockcode=300750", "!kcb cyb=1 scdm=2 gdzh=B1"},
             {"no row fits", shanghai, "", "stockcode=9 gdzh=old kcb=1", "kcb=0 gdzh=old !scdm"},
             {"the last row wins", "1|16|A1|60* 3|17|A2|60* 4|16|A3|00*", "", "", "scdm=3 gdzh=A2"},
             {"the margin table last", shanghai, "1|16|M1|60*||600*", "", "kcb=1 scdm=1 gdzh=M1"},
             {"the margin table alone", "", shanghai, "", "gdzh=A1"},
             {"out of the range, whose end is text", "6|16|A1|60*||688* 0|32|A2|60* 50|16|A3|60*", "", "",
              "!kcb !cyb !scdm !gdzh"},
             {"the ends belong to it", "1|16|A1|60* 5|17|A5|60*", "", "", "gdzh=A5 kcb=0"},
             {"boards of their markets, which are text", "1|17|A1|60*||60*||60* 1|016|A2|60*||60*||60*", "",
              "", "!kcb !cyb gdzh=A2"},
             {"without column 2212", "2167|2108|2106|2170 1|16|A1|60*", "", "", "!kcb !scdm !gdzh"},
             {"without column 2108", "2167|2212|2106|2170 1|60*|A1|60*", "", "", "!kcb !scdm !gdzh"},
             {"without column 2106", "2167|2108|2170|2212 2|32|60*|", "", "gdzh=old", "cyb=0 scdm=2 gdzh="}});
    }

    void TheTicketsAccount()
    {
        TicketStage stage;
        stage.PublishAccounts("0_begin=1 0_end=5", Given("ordinary"), Given("margin"));
        StringMap fields = With(Fields("stockcode=600000"), Given("ticket"));
        stage.m_rules.ResolveAccountFields(0, fields);
        QCOMPARE(Unlike(fields, Given("after")), QString());
    }

    void WithoutARangeOfItsKindOnlyAnEmptyMarketCodePasses()
    {
        TicketStage stage;
        stage.PublishAccounts("0_begin=1 0_end=5", "1|16|A1|60* |16|A0|60*");
        StringMap ticket = Fields("stockcode=600000");
        stage.m_rules.ResolveAccountFields(1, ticket);
        QCOMPARE(Unlike(ticket, "scdm= gdzh=A0"), QString());
        stage.m_trade.m_maps.clear();  // no range at all
        ticket.erase("scdm");
        stage.m_rules.ResolveAccountFields(1, ticket);
        QVERIFY(!ticket.contains("scdm"));
    }

    void ACodesAccount_data()
    {
        TextRows("kind market code exactFirst found",
                 {{"its own row first", "0", "17", "600000", "1", ": A6"},
                  {"margin has another, out of the range", "1", "17", "600000", "1", "!: M9"},
                  {"by masks: the first row", "0", "17", "600000", "", "1 A1"},
                  {"by masks, in the second table", "0", "17", "510300", "", "3 M1"},
                  {"by masks: the market isn't looked at", "0", "SH", "600000", "", "1 A1"},
                  {"by market: its family", "0", "17", "999999", "", "1 A1"},
                  {"by market: 18 is itself", "0", "18", "999999", "", "5 A5"},
                  {"by market: low byte", "0", "274", "999999", "", "5 A5"},
                  {"by market: the other family", "0", "37", "999999", "", "4 A4"},
                  {"by market: 38 is itself", "0", "38", "999999", "", " "},
                  {"by market: words", "0", "SH", "999999", "", "invalid stoul argument"},
                  {"too much", "0", "99999999999999999999", "999999", "", "stoul argument out of range"}});
    }

    void ACodesAccount()
    {
        TicketStage stage;
        stage.PublishAccounts("0_begin=1 0_end=9 1_begin=1 1_end=9",
                              "0|16|A0|60* 1|272|A1|60* 2|17|A2|60* 4|32|A4| 5|18|A5| :|96|A6|",
                              "3|16|M1|51* !:|16|M9|");
        const int kind = Given("kind").toInt();
        const bool exactFirst = !Given("exactFirst").isEmpty();
        std::string scdm = "old";
        std::string account = "old";
        const auto find = [&](const std::string& market) {
            stage.m_rules.FindAccountForCode(kind, market, Given("code"), scdm, account, exactFirst);
            return scdm + ' ' + account;
        };
        QTEST(Outcome([&] { return find(Given("market")); }), "found");
        stage.m_sides.reset();
        scdm = account = "old";
        QCOMPARE(find("no number"), " ");
    }

    void ARowWithoutAMarketNumberStopsTheSearch()
    {
        TicketStage stage;
        std::string scdm;
        std::string account;
        const auto find = [&] {
            stage.m_rules.FindAccountForCode(0, "17", "1", scdm, account, false);
            return account + '/' + stage.m_rules.QueryMarketOrderTypes(0, "17", "1");
        };
        stage.PublishAccounts("0_begin=1 0_end=9", "A|bad|A0| 1|16|A1||||t1");  // out of the range: unread
        QCOMPARE(Outcome(find), "A1/t1");
        stage.PublishAccounts("0_begin=1 0_end=9", "1|16|A1||||t1 1|bad|A0|");
        QCOMPARE(Outcome(find), "invalid stoul argument");  // by the second: the first has found
        QCOMPARE(account, "A1");
        stage.PublishAccounts("0_begin=1 0_end=9", "1|bad|A0| 1|16|A1|");
        QCOMPARE(Outcome(find), "invalid stoul argument");
        QCOMPARE(account, std::string());
    }

    void AMarketsAccount()
    {
        for (const auto& [ordinary, expected] :
             {std::pair("1||A1||0 1||A2||1", "A2"),  // the main one, last
              std::pair("1||A1||1 1||A2||0", "A1"),  // the main one, first: no later table
              std::pair("1||A1||11 1||A2|", "M1"),   // no main one: the last of the last table
              std::pair("2||A1||1", "M1")}) {        // only elsewhere
            TicketStage stage;
            stage.PublishAccounts("", ordinary, "1||M1| 3||M3|");
            std::string account = "old";
            stage.m_rules.FindAccountByMarket("1", account);
            QCOMPARE(QByteArray(account.c_str()), QByteArray(expected));
            stage.m_sides.reset();
            stage.m_rules.FindAccountByMarket("1", account);
            QCOMPARE(account, std::string());
        }
    }

    void OrderTypes_data()
    {
        TextRows("market code types",
                 {{"by masks: the first row ends it", "33", "600000", "t1"},
                  {"by masks in the second table", "17", "510300", "u1"},
                  {"by market: the last row of the last table", "17", "999999", "u2"},
                  {"by market: the board has its own", "17", "688001", "v2"},
                  {"by market: the second table has none", "33", "999999", "t3"},
                  {"none", "65", "999999", ""},
                  {"words, but masks hit before", "SH", "600000", "t1"},
                  {"words, and the first table's masks miss", "SH", "510300", "invalid stoul argument"}});
    }

    void OrderTypes()
    {
        TicketStage stage;
        stage.PublishAccounts("0_begin=1 0_end=9",
                              "1|272||60*||688*|t1||v1 2|16||60*|||t2 4|32|||||t3 A|16|||||t9",
                              "3|17||51*|||u1 3|16||||68*|u2||v2");
        QTEST(Outcome([&] { return stage.m_rules.QueryMarketOrderTypes(0, Given("market"), Given("code")); }),
              "types");
        stage.m_sides.reset();
        QCOMPARE(stage.m_rules.QueryMarketOrderTypes(0, "no number", Given("code")), std::string());
    }

    void AKindOfOrder()
    {
        // "66" only begins like a declared one, and two blanks are a type.
        const std::vector<std::array<std::string, 3>> kinds{{"6", "", "sbwt"},   {"7", " ", "sbwt"},
                                                            {":", "", "sbwt"},   {"6", "1", "sjwt"},
                                                            {"1", "  ", "sjwt"}, {"66", "", "ptwt"}};
        for (const auto& [scdm, type, expected] : kinds) {
            std::string kind;
            DataDealBase().SelectWeituoKind(scdm, type, kind);
            QCOMPARE(kind, expected);
        }
    }

    void Authority()
    {
        TicketStage stage;
        stage.PublishText("authority_1", "1");
        QVERIFY(stage.m_rules.HasAuthority(2) && !stage.m_rules.HasAuthority(1));
        stage.PublishText("authority_0", "1");
        stage.PublishText("authority_1", "11");
        QVERIFY(!stage.m_rules.HasAuthority(2) && stage.m_rules.HasAuthority(1) &&
                stage.m_rules.HasAuthority(0));
        stage.m_sides.reset();
        QVERIFY(!stage.m_rules.HasAuthority(1));
    }
};

PANELRY_TEST(AccountsTest)
#include "accounts_test.moc"
