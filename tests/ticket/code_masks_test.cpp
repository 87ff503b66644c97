#include "ticket/code_masks.h"

#include <QRandomGenerator>
#include <algorithm>
#include <atomic>
#include <regex>
#include <sstream>
#include <thread>

#include "support/test.h"
#include "ticket/stage.h"

using namespace panelry::ticket;
using panelry::test::Fields;

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

bool PlainThreeDecimal(const std::string& code, const std::string& market)
{
    const std::string list = kThreeDecimalMasks;
    static const std::regex entries("([^;]+)");
    static const std::regex scope("([^:;]+):([^:;]+)");
    for (std::sregex_iterator entry(list.begin(), list.end(), entries), end; entry != end; ++entry) {
        const std::string text = entry->str();
        std::smatch parts;
        const bool scoped = std::regex_search(text, parts, scope);
        if (scoped ? parts[1] == market && PlainFullMask(code, parts[2]) : PlainFullMask(code, text)) {
            return true;
        }
    }
    return false;
}

// A number of rounds: ten times as many in the long run, fewer where all were done before.
int Long(int rounds)
{
    if (qEnvironmentVariableIsSet("PANELRY_DECIMAL_POINT")) {
        return std::max(1, rounds / 10);
    }
    return qEnvironmentVariableIsSet("PANELRY_SOAK") ? 10 * rounds : rounds;
}

// "yes", "no", or "malformed".
template <class Match>
QString Outcome(Match match)
{
    try {
        return match() ? QStringLiteral("yes") : QStringLiteral("no");
    } catch (const std::regex_error&) {
        return QStringLiteral("malformed");
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
        QTest::addColumn<QByteArray>("masks");
        QTest::addColumn<QByteArray>("code");
        QTest::addColumn<QString>("outcome");
        const auto row = [](const char* name, const char* masks, const char* code, const char* outcome) {
            QTest::newRow(name) << QByteArray(masks) << QByteArray(code) << QString::fromLatin1(outcome);
        };
        row("head", "60*", "600000", "yes");
        row("the whole code: a digit must follow", "600000", "600000", "no");
        row("the whole code with a star", "600000*", "600000", "no");
        row("nothing behind the head", "60*", "60", "no");
        row("what stands behind the digits is ignored", "60*", "600000X", "yes");
        row("a letter behind the head", "60*", "60X000", "no");
        row("not within", "00*", "600000", "no");
        row("a star within is taken out", "6*0*0", "6001", "yes");
        row("the second mask", "60*;30*", "300001", "yes");
        row("a semicolon at the end adds nothing", "60*;", "300001", "no");
        row("two of them add an empty mask", "60*;;", "300001", "yes");
        row("one at the beginning too", ";60*", "300001", "yes");
        row("an empty mask wants a digit", "60*;;", "X", "no");
        row("no masks", "", "300001", "no");
        row("no code", "60*", "", "no");
        row("an expression", "6.", "6X1", "yes");
        row("a choice binds loosely", "6|3", "6X", "yes");
        row("letters", "SH60*", "SH600000", "yes");
        row("letters of another case", "SH60*", "sh600000", "no");
        row("malformed", "(", "600000", "malformed");
        row("malformed behind a hit", "60*;(", "600000", "yes");
        row("malformed before one", "(;60*", "600000", "malformed");
        row("an escape at the end escapes what is added", "60\\", "60\\d", "yes");
    }

    void AMaskList()
    {
        QFETCH(const QByteArray, masks);
        QFETCH(const QByteArray, code);
        DataDealBase rules;
        QTEST(Outcome([&] { return rules.MatchCodeMask(masks.toStdString(), code.toStdString()); }),
              "outcome");
    }

    void GeneratedMaskListsMatchAsThePlainWay()
    {
        QRandomGenerator random(5);
        int hits = 0;
        int malformed = 0;
        for (int i = 0; i < Long(10'000); ++i) {
            const bool odd = random.bounded(8) == 0;
            const std::string letters = odd ? "0169*;.\\[](|?+{}^$dSx\xc6\xff," : "00166*;39";
            const std::string masks = RandomText(random, letters, odd ? 8 : 20);
            const std::string code = CodeLike(random, masks);
            const QString plain = Outcome([&] { return PlainMaskList(masks, code); });
            QVERIFY2(Outcome([&] { return MatchesMaskList(masks, code); }) == plain,
                     (masks + " on " + code).c_str());
            hits += plain == QLatin1String("yes");
            malformed += plain == QLatin1String("malformed");
        }
        QVERIFY(hits > 100 && malformed > 10);
    }

    void GeneratedFullMasksMatchAsThePlainWay()
    {
        QRandomGenerator random(6);
        int hits = 0;
        for (int i = 0; i < Long(10'000); ++i) {
            const std::string mask =
                RandomText(random, random.bounded(8) == 0 ? "01*.[]+\\(|?{x\xc6" : "0011**58", 5);
            const std::string code =
                CodeLike(random, mask) + (random.bounded(2) == 0 ? mask.substr(mask.size() / 2) : "");
            const QString plain = Outcome([&] { return PlainFullMask(code, mask); });
            QVERIFY2(Outcome([&] { return MatchesFullMask(code, mask); }) == plain,
                     (mask + " on " + code).c_str());
            hits += plain == QLatin1String("yes");
        }
        QVERIFY(hits > 100);
    }

    void ThreeDecimals_data()
    {
        QTest::addColumn<QByteArray>("code");
        QTest::addColumn<QByteArray>("market");
        QTest::addColumn<bool>("three");
        const auto row = [](const char* name, const char* code, const char* market, bool three) {
            QTest::newRow(name) << QByteArray(code) << QByteArray(market) << three;
        };
        row("Shanghai fund", "510300", "17", true);
        row("Shenzhen fund", "159001", "33", true);
        row("Shanghai stock", "600000", "17", false);
        row("Shenzhen stock", "000001", "33", false);
        row("STAR", "688001", "17", false);
        row("ChiNext", "300750", "33", false);
        row("B share on its market", "900901", "18", true);
        row("B share elsewhere", "900901", "17", false);
        row("10 on 35", "100001", "35", true);
        row("10 elsewhere", "100001", "33", false);
        row("the market is text", "900901", "018", false);
        row("one code exactly", "706080", "17", true);
        row("one code exactly, and more", "7060801", "17", false);
        row("the head alone", "50", "17", true);
        row("a line end stands for nothing", "50\n1", "17", false);
    }

    void ThreeDecimals()
    {
        QFETCH(const QByteArray, code);
        QFETCH(const QByteArray, market);
        QTEST(DataDealBase::IsThreeDecimalCode(code.toStdString(), market.toStdString()), "three");
    }

    void ThreeDecimalsMatchAsThePlainWay()
    {
        for (int head = 0; head<10'000; head += Long(1)> 1 ? 1 : 37) {
            const std::string code = QString::asprintf("%04d%02d", head, head % 89).toStdString();
            const std::string market = head % 3 == 0 ? "18" : head % 3 == 1 ? "35" : "17";
            QVERIFY2(IsThreeDecimalCode(code, market) == PlainThreeDecimal(code, market), code.c_str());
        }
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
        std::vector<std::thread> threads;
        for (int t = 0; t < 4; ++t) {
            threads.emplace_back([&wrong, t] {
                for (int i = 0; i < 1200; ++i) {  // more masks than are kept
                    const std::string head = std::to_string((i * (t + 1)) % 700);
                    wrong +=
                        !MatchesMaskList(head + ".", head + "X1") || MatchesMaskList(head + ".", "X" + head);
                }
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
        QCOMPARE(wrong.load(), 0);
    }

    void AMarketOrACode_data()
    {
        QTest::addColumn<QByteArray>("ticket");
        QTest::addColumn<bool>("bhjg");
        QTest::addColumn<bool>("zhang");
        QTest::addColumn<int>("lot");
        const auto row = [](const char* name, const QByteArray& ticket, bool bhjg, bool zhang, int lot) {
            QTest::newRow(name) << ticket << bhjg << zhang << lot;
        };
        row("nothing", "", false, false, 100);
        row("below Shanghai", "market=15 stockcode=010101", false, false, 100);
        row("Shanghai bond", "market=16 stockcode=010101", true, true, 10);
        row("Shanghai stock", "market=23 stockcode=600000", true, false, 100);
        row("above the eight", "market=24 stockcode=010101", false, true, 10);
        row("the number is masked, not cut", "market=272 stockcode=010101", true, true, 10);
        row("the formula has no upper end", "market=65552 stockcode=1", true, false, 100);
        row("Shenzhen bond", "market=33 stockcode=100001", false, true, 10);
        row("a listed head that isn't applied", "market=33 stockcode=110001", false, false, 100);
        row("the host's word", "market=33 stockcode=1 iszhangmask=1", false, true, 10);
        row("the host's word on no code", "market=33 stockcode= iszhangmask=1", false, false, 100);
        row("new shares, bit 16", "IsXGSG=1 market=17", true, false, 500);
        row("new shares, bit 32 of the low byte", "IsXGSG=1 market=288", false, false, 500);
        row("new shares, no bit", "IsXGSG=1 market=0 iszhangmask=1 stockcode=1", false, true, 1000);
    }

    void AMarketOrACode()
    {
        QFETCH(const QByteArray, ticket);
        StringMap fields = Fields(ticket);
        QTEST(DataDealBase().IsBhjgMarket(fields), "bhjg");
        QTEST(DataDealBase::IsZhangCode(fields), "zhang");
        QTEST(DataDealBase::ReadLotSize(fields), "lot");
    }

    void ATzmCode_data()
    {
        QTest::addColumn<QByteArray>("first");
        QTest::addColumn<QByteArray>("second");
        QTest::addColumn<bool>("is");
        const auto row = [](const char* name, const char* first, const char* second, bool is) {
            QTest::newRow(name) << QByteArray(first) << QByteArray(second) << is;
        };
        row("first list", "head|60*", "", true);
        row("second list", "head|30*", "head|60*", true);
        row("neither", "head|30*", "head|00*", false);
        row("no head", "60*", "", true);
        row("the head isn't searched", "60*|30*", "", false);
        row("the first bar parts, a second is the list's own", "a|60|x", "|", true);
        row("none published", "", "", false);
    }

    void ATzmCode()
    {
        QFETCH(const QByteArray, first);
        QFETCH(const QByteArray, second);
        panelry::test::TicketStage stage;
        if (!first.isEmpty()) {
            stage.PublishText("Json_TZM_SBA", first.toStdString());
        }
        if (!second.isEmpty()) {
            stage.PublishText("Json_TZM_SBB", second.toStdString());
        }
        QTEST(stage.m_rules.IsTzmCode("600000"), "is");
        stage.m_sides.reset();
        QVERIFY(!stage.m_rules.IsTzmCode("600000"));
    }
};

PANELRY_TEST(CodeMasksTest)
#include "code_masks_test.moc"
