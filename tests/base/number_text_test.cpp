#include "base/number_text.h"

#include <cstdio>
#include <limits>
#include <stdexcept>

#include "support/test.h"

class NumberTextTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void NumberAtTheHeadOfAText_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<int>("number");
        const auto row = [](const char* name, const QByteArray& text, int number) {
            QTest::newRow(name) << text << number;
        };
        constexpr int kMost = std::numeric_limits<int>::max();
        constexpr int kLeast = std::numeric_limits<int>::min();
        row("empty", "", 0);
        row("blanks alone", " \t ", 0);
        row("plain", "42", 42);
        row("minus", "-42", -42);
        row("plus", "+42", 42);
        row("all six blanks", " \t\n\v\f\r7", 7);
        row("a blank of another alphabet",
            "\xc2\xa0"
            "7",
            0);
        row("blank behind the sign", "- 7", 0);
        row("plus alone", "+", 0);
        row("minus alone", "-", 0);
        row("two signs", "+-7", 0);
        row("two signs, reversed", "-+7", 0);
        row("two plus signs", "++7", 0);
        row("rest ignored", "7x", 7);
        row("word", "x7", 0);
        row("not hexadecimal", "0x10", 0);
        row("not octal", "010", 10);
        row("no exponent", "1e3", 1);
        row("no fraction", "3.9", 3);
        row("no thousands", "1,000", 1);
        row("NUL ends it",
            QByteArray("7\0"
                       "8",
                       3),
            7);
        row("other digits", "\xd9\xa3", 0);
        row("largest", "2147483647", kMost);
        row("one more", "2147483648", kMost);
        row("far more, with a sign and a rest", "+99999999999999999999x", kMost);
        row("smallest", "-2147483648", kLeast);
        row("one less", "-2147483649", kLeast);
    }

    void NumberAtTheHeadOfAText()
    {
        QFETCH(const QByteArray, text);
        QTEST(panelry::TextToInt({text.data(), static_cast<std::size_t>(text.size())}), "number");
    }

    void LongNumbers()
    {
        QCOMPARE(panelry::TextToInt64("4294967297x"), 4294967297);
        QCOMPARE(panelry::TextToInt64(" -99999999999999999999"), std::numeric_limits<std::int64_t>::min());
        QCOMPARE(panelry::IntText(std::numeric_limits<std::int64_t>::min()),
                 std::string("-9223372036854775808"));
    }

    void DecimalNumbers_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<double>("number");
        const auto row = [](const char* name, const QByteArray& text, double number) {
            QTest::newRow(name) << text << number;
        };
        constexpr double kMost = std::numeric_limits<double>::max();
        row("empty", "", 0);
        row("plain", "10.25", 10.25);
        row("nearest double", "0.1", 0.1);
        row("signs and blanks", " \t-1.5", -1.5);
        row("plus", "+1.5", 1.5);
        row("two signs", "+-1.5", 0);
        row("a blank behind the sign", "- 1", 0);
        row("point first", "-.5", -0.5);
        row("point last", "5.", 5);
        row("point alone", ".", 0);
        row("two points", "1.2.3", 1.2);
        row("a comma ends it", "1,5", 1);
        row("exponent", "1.5e3x", 1500);
        row("exponent without digits", "1.5e+", 1.5);
        row("hexadecimal", "0x10", 0);
        row("infinite", "inf", 0);
        row("infinite, with a sign", "-infinity", 0);
        row("no number by name", "nan", 0);
        row("words", "abc1", 0);
        row("too large", "1e999", kMost);
        row("too large, by its digits", QByteArray(400, '9') + ".5", kMost);
        row("too large below 0", "-1e999", -kMost);
        row("too small", "1e-999", 0);
        row("too small, by its digits", "0." + QByteArray(400, '0') + "1", 0);
        row("small digits, large exponent", "0.001e999", kMost);
        row("large digits, small exponent", QByteArray(50, '9') + "e-999", 0);
    }

    void DecimalNumbers()
    {
        QFETCH(const QByteArray, text);
        QTEST(panelry::TextToDouble({text.data(), static_cast<std::size_t>(text.size())}), "number");
    }

    void HexadecimalNumbers_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<qulonglong>("number");
        QTest::newRow("two digits") << QByteArray("21") << qulonglong{33};
        QTest::newRow("letters of both cases") << QByteArray("aF") << qulonglong{0xAF};
        QTest::newRow("more digits") << QByteArray("121") << qulonglong{0x121};
        QTest::newRow("marked") << QByteArray("0x21") << qulonglong{33};
        QTest::newRow("the mark alone") << QByteArray("0x") << qulonglong{0};
        QTest::newRow("rest ignored") << QByteArray("2g") << qulonglong{2};
        QTest::newRow("words") << QByteArray("SH") << qulonglong{0};
        QTest::newRow("a sign") << QByteArray("-1") << qulonglong{0};
        QTest::newRow("too large") << QByteArray(17, 'f')
                                   << qulonglong{std::numeric_limits<std::uint64_t>::max()};
    }

    void HexadecimalNumbers()
    {
        QFETCH(const QByteArray, text);
        QTEST(qulonglong{panelry::HexTextToInt(text.toStdString())}, "number");
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
    void FixedTextIsThatOfTheCLocale_data()
    {
        QTest::addColumn<double>("number");
        QTest::addColumn<int>("decimals");
        for (const double number : {0.0, -0.0, 0.5, 1.5, 2.5, 0.125, 10.005, 1.005, -3.14159, 99999.995, 1e-7,
                                    1e22, std::numeric_limits<double>::max()}) {
            for (const int decimals : {0, 1, 2, 3, 6, 15}) {
                QTest::addRow("%g, %d", number, decimals) << number << decimals;
            }
        }
    }

    void FixedTextIsThatOfTheCLocale()
    {
        QFETCH(const double, number);
        QFETCH(const int, decimals);
        char letters[400];
        std::snprintf(letters, sizeof letters, "%.*f", decimals, number);
        QCOMPARE(panelry::FixedText(number, decimals), std::string(letters));
    }

    void DecimalsAreHeldWithinBounds()
    {
        QCOMPARE(panelry::FixedText(2.75, -1), std::string("3"));
        QCOMPARE(panelry::FixedText(0.5, 2'000'000'000), std::string("0.500000000000000"));
    }
};

PANELRY_TEST(NumberTextTest)
#include "number_text_test.moc"
