#include "base/number_text.h"

#include <limits>

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
};

PANELRY_TEST(NumberTextTest)
#include "number_text_test.moc"
