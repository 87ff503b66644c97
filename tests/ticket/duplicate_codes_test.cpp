#include "ticket/duplicate_codes.h"

#include <QRandomGenerator>
#include <regex>

#include "support/test.h"
#include "support/text_rows.h"
#include "ticket/stage.h"

using panelry::test::AnswerText;
using panelry::test::Fields;
using panelry::test::Given;
using panelry::test::TextRows;
using panelry::test::TicketStage;
using panelry::ticket::FindCodeChoice;

namespace
{

QByteArray Found(const std::string& text)
{
    QByteArrayList parts;
    if (const auto choice = FindCodeChoice(text)) {
        for (const auto part : {choice->market, choice->code, choice->marketName, choice->stockName}) {
            parts << QByteArray::fromStdString(std::string(part));
        }
    }
    return parts.join('/');
}

QByteArray FoundByExpression(const std::string& text)
{
    static const std::regex expression("([^\r\n'=&, ]+),([^\r\n'=&,]+),([^\r\n'=&, ]+),([^\r\n'=&,]+)");
    std::smatch match;
    QByteArrayList parts;
    std::regex_search(text, match, expression);
    for (std::size_t part = 1; part < match.size(); ++part) {
        parts << QByteArray::fromStdString(match[part].str());
    }
    return parts.join('/');
}

}  // namespace

class DuplicateCodesTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void AnAnswer_data()
    {
        TextRows(
            "local ticket",
            {{"of one stock", "dup=1 s1=21,000001,SZ,x", ""},
             {"without a count", "s1=21,000001,SZ,x", ""},
             {"of two, names in the host's code page",
              "dup=2 s1=11,000001,\xc9\xcf\xba\xa3,\xc9\xcf\xd6\xa4~A s2=21,000001,SZ,\xc6\xbd\xb0\xb2\xff",
              "duplicatecode_count=2 duplicatecode_market0=17 duplicatecode_market1=33 "
              "duplicatecode_marketname0=上海 duplicatecode_marketname1=SZ "
              "duplicatecode_stockcode0=000001 duplicatecode_stockcode1=000001 "
              "duplicatecode_stockname0=上证 A duplicatecode_stockname1=平安\uFFFD"},
             {"a text that doesn't fit leaves a gap", "dup=3 s2=1,2,3 s3=121,a,b,c",
              "duplicatecode_count=3 duplicatecode_market2=289 duplicatecode_marketname2=b "
              "duplicatecode_stockcode2=a duplicatecode_stockname2=c"},
             {"counts that nobody has",
              "dup=2000000000 s0=1,a,b,c s01=1,a,b,c s1x=1,a,b,c s=1,a,b,c s-1=1,a,b,c",
              "duplicatecode_count=2000000000"},
             {"the tenth, and one beyond the count", "dup=10 s10=g,a,b,c s11=1,a,b,c",
              "duplicatecode_count=10 duplicatecode_market9=0 duplicatecode_marketname9=b "
              "duplicatecode_stockcode9=a duplicatecode_stockname9=c"}});
    }

    void AnAnswer()
    {
        AnswerText answer;
        answer.local = Given("local");
        StringMap fields;
        QCOMPARE(DataDealBase().ResolveDuplicateCodes(answer.Make(), fields), !Given("ticket").isEmpty());
        QCOMPARE(panelry::test::Words(fields), QString::fromUtf8(Given("ticket")));
        QVERIFY(!DataDealBase().ResolveDuplicateCodes(std::make_shared<StockInfoAnswer>(), fields));
    }

    void PlacesAreFoundAsByTheExpression()
    {
        QRandomGenerator random(7);
        const std::string letters = "aaab1\xc6,,, \n'";
        int hits = 0;
        for (int i = 0; i < 30'000; ++i) {
            std::string text;
            for (int length = random.bounded(24); length > 0; --length) {
                text += letters[static_cast<std::size_t>(random.bounded(static_cast<int>(letters.size())))];
            }
            const QByteArray expected = FoundByExpression(text);
            QVERIFY2(Found(text) == expected, text.c_str());
            hits += !expected.isEmpty();
        }
        QVERIFY(hits > 300);
    }

    void ATextWithoutEndOverflowsNothing()
    {
        const std::string text(100'000, 'a');
        QCOMPARE(Found(text), "");
        QCOMPARE(Found("1,2,3," + text).size(), 100'006);
    }

    void Candidates()
    {
        TicketStage stage;
        stage.m_quote.m_matches = {{std::string("\x11") + "600000", "浦发", "上海", ""},
                                   {std::string("\x90") + "1", "one", "m", "", "more"},
                                   {std::string("\x11") + "2", "", "no name", ""},
                                   {std::string("\x11") + "3", "three", "too short"},
                                   {"\x21", "no code", "m", ""}};
        std::vector<StringMap> out{Fields("kept=1")};
        stage.m_rules.ListCodeCandidates("60", out);
        QVERIFY(out ==
                (std::vector<StringMap>{Fields("kept=1"),
                                        Fields("market=17 stockcode=600000 stockname=浦发 marketname=上海"),
                                        Fields("market=144 stockcode=1 stockname=one marketname=m"),
                                        Fields("market=33 stockcode= stockname=no~code marketname=m")}));
        QCOMPARE(stage.m_quote.Calls().back(), std::string("ListCodeMatches 0:60"));

        stage.m_quote.m_matches = {{"", "", "", ""}};
        QVERIFY_EXCEPTION_THROWN(stage.m_rules.ListCodeCandidates("60", out), std::out_of_range);
        stage.m_sides.reset();
        stage.m_rules.ListCodeCandidates("60", out);
        QCOMPARE(out.size(), std::size_t{4});
    }
};

PANELRY_TEST(DuplicateCodesTest)
#include "duplicate_codes_test.moc"
