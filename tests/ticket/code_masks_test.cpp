#include "ticket/code_masks.h"

#include <QRandomGenerator>
#include <atomic>
#include <regex>
#include <sstream>
#include <thread>

#include "support/test.h"
#include "support/text_rows.h"
#include "ticket/stage.h"

using namespace panelry::ticket;
using panelry::test::Fields;
using panelry::test::Given;
using panelry::test::TextRows;

namespace
{

// The plain way: an expression compiled for each mask.
bool PlainMaskList(const std::string& masks, const std::string& code)
{
    std::istringstream list(masks);
    for (std::string mask; std::getline(list, mask, ';');) {
        std::erase(mask, '*');
        if (std::regex_search(code, std::regex("^" + mask + "\\d+"))) {
            return true;
        }
    }
    return false;
}

bool PlainFullMask(const std::string& code, std::string mask)
{
    if (const std::size_t star = mask.find('*'); star != std::string::npos) {
        mask.replace(star, 1, ".*");
    }
    return std::regex_match(code, std::regex(mask));
}

template <class Match>
QByteArray Outcome(Match match)
{
    try {
        return match() ? "yes" : "no";
    } catch (const std::regex_error&) {
        return "malformed";
    }
}

std::string RandomText(QRandomGenerator& random, const std::string& letters, int most)
{
    std::string text;
    for (int length = random.bounded(most + 1); length > 0; --length) {
        text += letters[static_cast<std::size_t>(random.bounded(static_cast<int>(letters.size())))];
    }
    return text;
}

// A code that begins as a mask does, so that hits are frequent.
std::string CodeLike(QRandomGenerator& random, const std::string& masks)
{
    std::string code = masks.substr(0, masks.find_first_of("*;"));
    return code + RandomText(random, "0123456789", 3) + RandomText(random, "0Xx;*\n\r\xc6 .", 1);
}

}  // namespace

class CodeMasksTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void AMaskList_data()
    {
        // What is generated below says the rest, but hardly these.
        TextRows("masks code outcome", {{"the whole code: a digit must follow", "600000*", "600000", "no"},
                                        {"what stands behind the digits is ignored", "60*", "600000X", "yes"},
                                        {"two semicolons add an empty mask", "60*;;", "300001", "yes"},
                                        {"letters of another case", "SH60*", "sh600000", "no"},
                                        {"malformed behind a hit", "60*;(", "600000", "yes"},
                                        {"malformed before one", "(;60*", "600000", "malformed"}});
    }

    void AMaskList()
    {
        DataDealBase rules;
        QTEST(Outcome([&] { return rules.MatchCodeMask(Given("masks"), Given("code")); }), "outcome");
    }

    void GeneratedMasksMatchAsThePlainWay()
    {
        QRandomGenerator random(5);
        int hits = 0;
        int fullHits = 0;
        int malformed = 0;
        const int rounds = qEnvironmentVariableIsSet("PANELRY_DECIMAL_POINT") ? 1000  // all were done before
                           : qEnvironmentVariableIsSet("PANELRY_SOAK")        ? 100'000
                                                                              : 10'000;
        for (int i = 0; i < rounds; ++i) {
            const bool odd = random.bounded(8) == 0;
            const std::string list =
                RandomText(random, odd ? "0169*;.\\[](|?+{}^$dSx\xc6\xff," : "00166*;39", odd ? 8 : 20);
            const std::string code = CodeLike(random, list);
            const QByteArray plain = Outcome([&] { return PlainMaskList(list, code); });
            QVERIFY2(Outcome([&] { return MatchesMaskList(list, code); }) == plain,
                     (list + " on " + code).c_str());
            hits += plain == "yes";
            malformed += plain == "malformed";

            const std::string mask = RandomText(random, odd ? "01*.[]+\\(|?{x\xc6" : "0011**58", 5);
            const std::string full =
                CodeLike(random, mask) + (random.bounded(2) == 0 ? mask.substr(mask.size() / 2) : "");
            const QByteArray plainFull = Outcome([&] { return PlainFullMask(full, mask); });
            QVERIFY2(Outcome([&] { return MatchesFullMask(full, mask); }) == plainFull,
                     (mask + " on " + full).c_str());
            fullHits += plainFull == "yes";
        }
        QVERIFY(hits > rounds / 100 && malformed > rounds / 1000 && fullHits > rounds / 100);
    }

    // Which codes of six digits have three decimals, by their first three; the whole list in another form.
    void HeadsOfThreeDecimals()
    {
        const auto heads = [](const std::string& market) {
            QByteArray ranges;
            for (int head = 0, first = -1; head <= 1000; ++head) {
                const std::string code = std::to_string(1000 + head).substr(1) + "123";
                const bool hit = head < 1000 && IsThreeDecimalCode(code, market);
                if (!hit && first >= 0) {
                    ranges += QByteArray::number(first) + '-' + QByteArray::number(head - 1) + ' ';
                }
                first = !hit ? -1 : first < 0 ? head : first;
            }
            return ranges;
        };
        const QByteArray rest = "201-204 420-429 500-519 560-569 580-589 810-819 821-821 ";
        QCOMPARE(heads("17"), "9-39 90-99 101-199 " + rest);
        QCOMPARE(heads("18"), "9-39 90-99 101-199 " + rest + "900-999 ");
        QCOMPARE(heads("35"), "9-39 90-199 " + rest);
    }

    void ThreeDecimals_data()
    {
        TextRows("code market outcome", {{"the market is text", "900901", "018", "no"},
                                         {"one code exactly", "706080", "17", "yes"},
                                         {"one code exactly, and more", "7060801", "17", "no"},
                                         {"the head alone", "50", "17", "yes"},
                                         {"a line end stands for nothing", "50\n1", "17", "no"}});
    }

    void ThreeDecimals()
    {
        QTEST(Outcome([] { return DataDealBase::IsThreeDecimalCode(Given("code"), Given("market")); }),
              "outcome");
    }

    // Where the engine would recurse over each letter.
    void TextsWithoutEndOverflowNothing()
    {
        const std::string digits(100'000, '1');
        QVERIFY(MatchesMaskList("1+", digits));
        QVERIFY(!MatchesFullMask(digits, "1+2*"));
        QVERIFY(MatchesMaskList("1", digits) && MatchesFullMask(digits, "1*"));
        QVERIFY_EXCEPTION_THROWN(MatchesMaskList("." + digits, "1"), std::regex_error);
        QVERIFY_EXCEPTION_THROWN(MatchesFullMask("1", std::string(100'000, '(')), std::regex_error);
    }

    void ThreadsShareTheExpressions()
    {
        std::atomic<int> wrong{0};
        {
            std::vector<std::jthread> threads;
            for (int t = 0; t < 4; ++t) {
                threads.emplace_back([&wrong, t] {
                    for (int i = 0; i < 1200; ++i) {  // more masks than are kept
                        const std::string mask = std::to_string((i * (t + 1)) % 700) + '.';
                        wrong += !MatchesMaskList(mask, mask + '1') || MatchesMaskList(mask, 'X' + mask);
                    }
                });
            }
        }
        QCOMPARE(wrong.load(), 0);
    }

    void AMarketOrACode_data()
    {
        TextRows("ticket bhjgZhangLot",
                 {{"below Shanghai", "market=15 stockcode=010101", "no no 100"},
                  {"Shanghai bond", "market=16 stockcode=010101", "yes yes 10"},
                  {"Shanghai stock", "market=23 stockcode=600000", "yes no 100"},
                  {"above the eight", "market=24 stockcode=010101", "no yes 10"},
                  {"the number is masked, not cut", "market=272 stockcode=010101", "yes yes 10"},
                  {"the formula has no upper end", "market=65552 stockcode=1", "yes no 100"},
                  {"Shenzhen bond", "market=33 stockcode=100001", "no yes 10"},
                  {"a listed head that isn't applied", "market=33 stockcode=110001", "no no 100"},
                  {"the host's word", "market=33 stockcode=1 iszhangmask=1", "no yes 10"},
                  {"the host's word on no code", "market=33 stockcode= iszhangmask=1", "no no 100"},
                  {"new shares, bit 16", "IsXGSG=1 market=17", "yes no 500"},
                  {"new shares, bit 32 of the low byte", "IsXGSG=1 market=288", "no no 500"},
                  {"new shares, no bit", "IsXGSG=1 market=0 iszhangmask=1 stockcode=1", "no yes 1000"}});
    }

    void AMarketOrACode()
    {
        StringMap fields = Fields(Given("ticket"));
        QTEST(Outcome([&] { return DataDealBase().IsBhjgMarket(fields); }) + ' ' +
                  Outcome([&] { return DataDealBase::IsZhangCode(fields); }) + ' ' +
                  QByteArray::number(DataDealBase::ReadLotSize(fields)),
              "bhjgZhangLot");
    }

    void ATzmCode_data()
    {
        TextRows("first second outcome", {{"first list", "head|60*", "", "yes"},
                                          {"second list", "head|30*", "head|60*", "yes"},
                                          {"neither, and no head is searched", "60*|30*", "head|00*", "no"},
                                          {"no head", "60*", "", "yes"},
                                          {"the first bar parts", "a|60|x", "|", "yes"}});
    }

    void ATzmCode()
    {
        panelry::test::TicketStage stage;
        stage.PublishText("Json_TZM_SBA", Given("first"));
        stage.PublishText("Json_TZM_SBB", Given("second"));
        QTEST(Outcome([&] { return stage.m_rules.IsTzmCode("600000"); }), "outcome");
        stage.m_sides.reset();
        QVERIFY(!stage.m_rules.IsTzmCode("600000"));
    }
};

PANELRY_TEST(CodeMasksTest)
#include "code_masks_test.moc"
