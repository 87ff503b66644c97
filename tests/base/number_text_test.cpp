#include "base/number_text.h"

#include <cstdio>
#include <limits>
#include <stdexcept>

#include "support/test.h"

class NumberTextTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void NumberAtTheHeadOfAText()
    {
        constexpr int kMost = std::numeric_limits<int>::max();
        constexpr int kLeast = std::numeric_limits<int>::min();
        const std::pair<int, std::vector<std::string>> readings[] = {
            // The last two are a blank and a digit of other alphabets.
            {0, {"", "-", "- 7", "+-7", "0x10", "\xc2\xa0 7", "\xd9\xa3"}},
            {7, {" \t\n\v\f\r7", "7x", std::string("7\0008", 3)}},
            {42, {"+42"}},
            {-42, {"-42"}},
            {10, {"010"}},
            {1, {"1e3"}},
            {3, {"3.9"}},
            {kMost, {"2147483647", "2147483648", "+99999999999999999999x"}},
            {kLeast, {"-2147483648", "-2147483649"}}};
        for (const auto& [number, texts] : readings) {
            for (const std::string& text : texts) {
                QVERIFY2(panelry::TextToInt(text) == number, text.c_str());
            }
        }
    }

    void LongNumbers()
    {
        QCOMPARE(panelry::TextToInt64("4294967297x"), 4294967297);
        QCOMPARE(panelry::TextToInt64(" -99999999999999999999"), std::numeric_limits<std::int64_t>::min());
        QCOMPARE(panelry::IntText(std::numeric_limits<std::int64_t>::min()),
                 std::string("-9223372036854775808"));
    }

    // Against the compiler's own reading of the number.
    void DecimalNumbers()
    {
        constexpr double kMost = std::numeric_limits<double>::max();
        const std::string nines = std::string(400, '9') + ".5";
        const std::string small = std::string(50, '9') + "e-999";
        const std::string zeros = "0." + std::string(400, '0');
        const std::vector<std::pair<std::string, double>> texts{
            {"", 0},          {"10.25", 10.25},     {"0.1", 0.1},     {" \t-1.5", -1.5}, {"+1.5", 1.5},
            {"+-1.5", 0},     {"- 1", 0},           {"-.5", -0.5},    {"5.", 5},         {".", 0},
            {"1.2.3", 1.2},   {"1,5", 1},           {"1.5e3x", 1500}, {"1.5e+", 1.5},    {"0x10", 0},
            {"-infinity", 0}, {"nan", 0},           {"abc1", 0},      {"1e999", kMost},  {"-1e999", -kMost},
            {"1e-999", 0},    {"0.001e999", kMost}, {nines, kMost},   {zeros + '1', 0},  {small, 0}};
        for (const auto& [text, number] : texts) {
            QVERIFY2(panelry::TextToDouble(text) == number, text.c_str());
        }
    }

    void HexadecimalNumbers()
    {
        const std::vector<std::pair<std::string, std::uint64_t>> texts{
            {"21", 33},   {"aF", 0xAF}, {"121", 0x121},
            {"0x21", 33}, {"0x", 0},    {"2g", 2},
            {"SH", 0},    {"-1", 0},    {"fffffffffffffffff", std::numeric_limits<std::uint64_t>::max()}};
        for (const auto& [text, number] : texts) {
            QVERIFY2(panelry::HexTextToInt(text) == number, text.c_str());
        }
    }

    void NumbersThatMustBeThere()
    {
        using panelry::TextToUnsignedOrThrow;
        QCOMPARE(TextToUnsignedOrThrow(" +17x"), std::uint64_t{17});
        QCOMPARE(TextToUnsignedOrThrow("18446744073709551615"), std::numeric_limits<std::uint64_t>::max());
        QCOMPARE(TextToUnsignedOrThrow("-5") & 0xFF, std::uint64_t{251});
        for (const char* none : {"", " ", "x17", "-", "+-1"}) {
            QVERIFY_EXCEPTION_THROWN(TextToUnsignedOrThrow(none), std::invalid_argument);
        }
        QVERIFY_EXCEPTION_THROWN(TextToUnsignedOrThrow("18446744073709551616"), std::out_of_range);
    }

    // Against the C library's way in the C locale, in which this program runs.
    void FixedTextIsThatOfTheCLocale()
    {
        for (const double number : {0.0, -0.0, 0.5, 1.5, 2.5, 0.125, 10.005, 1.005, -3.14159, 99999.995, 1e-7,
                                    1e22, std::numeric_limits<double>::max()}) {
            for (const int decimals : {0, 1, 2, 3, 6, 15}) {
                char letters[400];
                std::snprintf(letters, sizeof letters, "%.*f", decimals, number);
                QCOMPARE(QByteArray(panelry::FixedText(number, decimals).c_str()), QByteArray(letters));
            }
        }
        QCOMPARE(panelry::FixedText(2.75, -1), std::string("3"));  // decimals are held within bounds
        QCOMPARE(panelry::FixedText(0.5, 2'000'000'000), std::string("0.500000000000000"));
    }
};

PANELRY_TEST(NumberTextTest)
#include "number_text_test.moc"
