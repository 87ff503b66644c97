#include <stdexcept>

#include "support/test.h"
#include "ticket/stage.h"

using panelry::test::Fields;
using panelry::test::TicketStage;
using panelry::test::Unlike;

namespace
{

// What the search for an account ends with.
QString Outcome(const std::function<QString()>& search)
{
    try {
        return search();
    } catch (const std::invalid_argument& error) {
        return QString::fromLatin1(error.what());
    } catch (const std::out_of_range& error) {
        return QString::fromLatin1(error.what());
    }
}

const QByteArray kColumns = "2167|2108|2106|2170|2176|2212|2213|2214|2306";

}  // namespace

Q_DECLARE_METATYPE(std::vector<QByteArray>)

class AccountsTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void TheTicketsAccount_data()
    {
        QTest::addColumn<std::vector<QByteArray>>("ordinary");
        QTest::addColumn<std::vector<QByteArray>>("margin");
        QTest::addColumn<QByteArray>("ticket");
        QTest::addColumn<QByteArray>("after");
        using Lines = std::vector<QByteArray>;
        const auto row = [](const char* name, const Lines& ordinary, const Lines& margin,
                            const QByteArray& ticket, const QByteArray& after) {
            QTest::newRow(name) << ordinary << margin << ticket << after;
        };
        const QByteArray shanghai = "1|16|A1|60*;68*||688*";
        const QByteArray shenzhen = "2|32|B1|00*;30*||||300*;301*";
        row("Shanghai, main board", {kColumns, shanghai, shenzhen}, {}, "stockcode=600000",
            "kcb=0 cyb=0 scdm=1 gdzh=A1");
        row("Shanghai, STAR", {kColumns, shanghai}, {}, "stockcode=688001", "kcb=1 !cyb scdm=1 gdzh=A1");
        row("Shenzhen, ChiNext", {kColumns, shenzhen}, {}, "stockcode=300750", "!kcb cyb=1 scdm=2 gdzh=B1");
        row("no row fits: the old account stays", {kColumns, shanghai}, {}, "stockcode=9 gdzh=old kcb=1",
            "kcb=0 gdzh=old !scdm");
        row("the last row wins", {kColumns, "1|16|A1|60*", "3|17|A2|60*", "4|16|A3|00*"}, {},
            "stockcode=600000", "scdm=3 gdzh=A2");
        row("the margin table comes last", {kColumns, shanghai}, {kColumns, "1|16|M1|60*||600*"},
            "stockcode=600000", "kcb=1 scdm=1 gdzh=M1");
        row("the margin table alone", {}, {kColumns, shanghai}, "stockcode=600000", "gdzh=A1");
        row("out of the range", {kColumns, "6|16|A1|60*||688*", "0|32|A2|60*"}, {}, "stockcode=600000",
            "!kcb !cyb !scdm !gdzh");
        row("the ends belong to the range", {kColumns, "1|16|A1|60*", "5|17|A5|60*"}, {}, "stockcode=600000",
            "gdzh=A5 kcb=0");
        row("the end is text, its own prefixes included", {kColumns, "1|16|A1|60*", "50|17|A5|60*"}, {},
            "stockcode=600000", "gdzh=A1");
        row("another market sets no board", {kColumns, "1|17|A1|60*||60*||60*"}, {}, "stockcode=600000",
            "!kcb !cyb gdzh=A1");
        row("the market is text", {kColumns, "1|016|A1|60*||60*||60*"}, {}, "stockcode=600000",
            "!kcb !cyb gdzh=A1");
        row("without column 2212 a table is skipped", {"2167|2108|2106|2170", "1|16|A1|60*"}, {},
            "stockcode=600000", "!kcb !scdm !gdzh");
        row("without column 2108 too", {"2167|2212|2106|2170", "1|60*|A1|60*"}, {}, "stockcode=600000",
            "!kcb !scdm !gdzh");
        row("without column 2214 it isn't", {"2167|2108|2106|2170|2212", "2|32|B1|30*|"}, {},
            "stockcode=300750", "cyb=0 gdzh=B1");
        row("without column 2106 the account is empty", {"2167|2108|2170|2212", "2|32|30*|"}, {},
            "stockcode=300750 gdzh=old", "scdm=2 gdzh=");
        row("no tables", {}, {}, "stockcode=600000 gdzh=old", "gdzh=old !kcb");
    }

    void TheTicketsAccount()
    {
        QFETCH(const std::vector<QByteArray>, ordinary);
        QFETCH(const std::vector<QByteArray>, margin);
        QFETCH(const QByteArray, ticket);
        QFETCH(const QByteArray, after);
        TicketStage stage;
        stage.PublishMap("scdm_range", "0_begin=1 0_end=5");
        if (!ordinary.empty()) {
            stage.PublishTable("account_table", ordinary);
        }
        if (!margin.empty()) {
            stage.PublishTable("rzrq_account_table", margin);
        }
        StringMap fields = Fields(ticket);
        stage.m_rules.ResolveAccountFields(0, fields);
        QCOMPARE(Unlike(fields, after), QString());
    }

    void WithoutARangeOfItsKindOnlyAnEmptyMarketCodePasses()
    {
        TicketStage stage;
        StringMap ticket = Fields("stockcode=600000");
        stage.PublishTable("account_table", {kColumns, "1|16|A1|60*", "|16|A0|60*"});
        stage.m_rules.ResolveAccountFields(1, ticket);
        QCOMPARE(ticket.size(), std::size_t{1});  // no range at all
        stage.PublishMap("scdm_range", "0_begin=1 0_end=5");
        stage.m_rules.ResolveAccountFields(1, ticket);
        QCOMPARE(Unlike(ticket, "scdm= gdzh=A0"), QString());
    }

    void ACodesAccount_data()
    {
        QTest::addColumn<int>("kind");
        QTest::addColumn<QByteArray>("market");
        QTest::addColumn<QByteArray>("code");
        QTest::addColumn<bool>("exactFirst");
        QTest::addColumn<QString>("found");
        const auto row = [](const char* name, int kind, const char* market, const char* code, bool exactFirst,
                            const char* found) {
            QTest::newRow(name) << kind << QByteArray(market) << QByteArray(code) << exactFirst
                                << QString::fromLatin1(found);
        };
        row("its own row first", 0, "17", "600000", true, ": A6");
        row("its own row not asked", 0, "17", "600000", false, "1 A1");
        row("margin has another own row, out of the range", 1, "17", "600000", true, "!: M9");
        row("by masks: the first row", 0, "17", "600000", false, "1 A1");
        row("by masks, in the second table", 0, "17", "510300", false, "3 M1");
        row("by masks: the market isn't looked at", 0, "SH", "600000", false, "1 A1");
        row("by market: its family", 0, "17", "999999", false, "1 A1");
        row("by market: the other family", 0, "33", "999999", false, "4 A4");
        row("by market: 18 is itself", 0, "18", "999999", false, "5 A5");
        row("by market: low byte", 0, "274", "999999", false, "5 A5");
        row("by market: a row's number isn't reduced", 0, "37", "999999", false, "4 A4");
        row("by market: 38 is itself, and no row has it", 0, "38", "999999", false, " ");
        row("by market: none", 0, "65", "999999", false, " ");
        row("by market: a sign wraps round, 251 is of class 240", 0, "-5", "999999", false, " ");
        row("by market: words", 0, "SH", "999999", false, "invalid stoul argument");
        row("by market: no market", 0, "", "999999", false, "invalid stoul argument");
        row("by market: too much", 0, "99999999999999999999", "999999", false, "stoul argument out of range");
    }

    void ACodesAccount()
    {
        QFETCH(const int, kind);
        QFETCH(const QByteArray, market);
        QFETCH(const QByteArray, code);
        QFETCH(const bool, exactFirst);
        TicketStage stage;
        stage.PublishMap("scdm_range", "0_begin=1 0_end=9 1_begin=1 1_end=9");
        stage.PublishTable("account_table", {kColumns, "0|16|A0|60*", "1|272|A1|60*", "2|17|A2|60*",
                                             "4|32|A4|", "5|18|A5|", ":|96|A6|"});
        stage.PublishTable("rzrq_account_table", {kColumns, "3|16|M1|51*", "!:|16|M9|"});
        std::string scdm = "old";
        std::string account = "old";
        QTEST(Outcome([&] {
                  stage.m_rules.FindAccountForCode(kind, market.toStdString(), code.toStdString(), scdm,
                                                   account, exactFirst);
                  return QString::fromStdString(scdm + ' ' + account);
              }),
              "found");
        stage.m_sides.reset();
        scdm = account = "old";
        stage.m_rules.FindAccountForCode(kind, "no number", code.toStdString(), scdm, account, exactFirst);
        QCOMPARE(scdm + account, std::string());
    }

    void ARowWithoutAMarketNumberStopsTheSearch()
    {
        TicketStage stage;
        std::string scdm;
        std::string account;
        stage.PublishMap("scdm_range", "0_begin=1 0_end=9");
        stage.PublishTable("account_table", {kColumns, "A|bad|A0|", "1|16|A1|"});  // out of the range: unread
        stage.m_rules.FindAccountForCode(0, "17", "1", scdm, account, false);
        QCOMPARE(account, std::string("A1"));
        stage.PublishTable("account_table", {kColumns, "1|bad|A0|", "1|16|A1|"});
        QVERIFY_EXCEPTION_THROWN(stage.m_rules.FindAccountForCode(0, "17", "1", scdm, account, false),
                                 std::invalid_argument);
        QVERIFY_EXCEPTION_THROWN(stage.m_rules.QueryMarketOrderTypes(0, "17", "1"), std::invalid_argument);
    }

    void AMarketsAccount_data()
    {
        QTest::addColumn<std::vector<QByteArray>>("ordinary");
        QTest::addColumn<QString>("account");
        using Lines = std::vector<QByteArray>;
        const auto row = [](const char* name, const Lines& ordinary, const char* account) {
            QTest::newRow(name) << ordinary << QString::fromLatin1(account);
        };
        row("the main one, last", {kColumns, "1||A1||0", "1||A2||1"}, "A2");
        row("the main one, first: no later table", {kColumns, "1||A1||1", "1||A2||0"}, "A1");
        row("no main one: the last of the last table", {kColumns, "1||A1||11", "1||A2|"}, "M1");
        row("only elsewhere", {kColumns, "2||A1||1"}, "M1");
        row("no column for the flag", {"2167|2106", "1|A1"}, "M1");
    }

    void AMarketsAccount()
    {
        QFETCH(const std::vector<QByteArray>, ordinary);
        TicketStage stage;
        stage.PublishTable("account_table", ordinary);
        stage.PublishTable("rzrq_account_table", {kColumns, "1||M1|", "3||M3|"});
        std::string account = "old";
        stage.m_rules.FindAccountByMarket("1", account);
        QTEST(QString::fromStdString(account), "account");
        stage.m_sides.reset();
        stage.m_rules.FindAccountByMarket("1", account);
        QCOMPARE(account, std::string());
    }

    void OrderTypes_data()
    {
        QTest::addColumn<QByteArray>("market");
        QTest::addColumn<QByteArray>("code");
        QTest::addColumn<QString>("types");
        const auto row = [](const char* name, const char* market, const char* code, const char* types) {
            QTest::newRow(name) << QByteArray(market) << QByteArray(code) << QString::fromLatin1(types);
        };
        row("by masks: the first row ends it", "33", "600000", "t1");
        row("by masks in the second table, after the first's market", "17", "510300", "u1");
        row("by market: the last row of the last table", "17", "999999", "u2");
        row("by market: the board has its own", "17", "688001", "v2");
        row("by market: the second table has none", "33", "999999", "t3");
        row("none", "65", "999999", "");
        row("words, but masks hit before", "SH", "600000", "t1");
        row("words, and the first table's masks miss", "SH", "510300", "invalid stoul argument");
    }

    void OrderTypes()
    {
        QFETCH(const QByteArray, market);
        QFETCH(const QByteArray, code);
        TicketStage stage;
        stage.PublishMap("scdm_range", "0_begin=1 0_end=9");
        stage.PublishTable("account_table", {kColumns, "1|272||60*||688*|t1||v1", "2|16||60*|||t2",
                                             "4|32|||||t3", "A|16|||||t9"});
        stage.PublishTable("rzrq_account_table", {kColumns, "3|17||51*|||u1", "3|16||||68*|u2||v2"});
        QTEST(Outcome([&] {
                  return QString::fromStdString(
                      stage.m_rules.QueryMarketOrderTypes(0, market.toStdString(), code.toStdString()));
              }),
              "types");
        stage.m_sides.reset();
        QCOMPARE(stage.m_rules.QueryMarketOrderTypes(0, "no number", code.toStdString()), std::string());
    }

    void AKindOfOrder_data()
    {
        QTest::addColumn<QByteArray>("scdm");
        QTest::addColumn<QByteArray>("type");
        QTest::addColumn<QByteArray>("kind");
        QTest::newRow("declared market") << QByteArray("6") << QByteArray() << QByteArray("sbwt");
        QTest::newRow("declared market, blank type")
            << QByteArray("7") << QByteArray(" ") << QByteArray("sbwt");
        QTest::newRow("declared market by its sign") << QByteArray(":") << QByteArray() << QByteArray("sbwt");
        QTest::newRow("market order on it") << QByteArray("6") << QByteArray("1") << QByteArray("sjwt");
        QTest::newRow("two blanks are a type") << QByteArray("1") << QByteArray("  ") << QByteArray("sjwt");
        QTest::newRow("plain") << QByteArray("1") << QByteArray() << QByteArray("ptwt");
        QTest::newRow("beginning like a declared one")
            << QByteArray("66") << QByteArray() << QByteArray("ptwt");
    }

    void AKindOfOrder()
    {
        QFETCH(const QByteArray, scdm);
        QFETCH(const QByteArray, type);
        std::string kind;
        DataDealBase().SelectWeituoKind(scdm.toStdString(), type.toStdString(), kind);
        QTEST(QByteArray::fromStdString(kind), "kind");
    }

    void Authority()
    {
        TicketStage stage;
        stage.PublishText("authority_1", "1");
        stage.PublishText("authority_0", "11");
        QVERIFY(stage.m_rules.HasAuthority(2) && !stage.m_rules.HasAuthority(1));
        stage.PublishText("authority_0", "1");
        QVERIFY(stage.m_rules.HasAuthority(1) && stage.m_rules.HasAuthority(0));
        stage.m_trade.m_strings.clear();
        QVERIFY(!stage.m_rules.HasAuthority(2));
        stage.m_sides.reset();
        QVERIFY(!stage.m_rules.HasAuthority(1));
    }
};

PANELRY_TEST(AccountsTest)
#include "accounts_test.moc"
