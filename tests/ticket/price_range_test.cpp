#include <algorithm>

#include "support/test.h"
#include "support/text_rows.h"
#include "ticket/data_deal_base.h"
#include "ticket/fields.h"

using panelry::test::Fields;
using panelry::test::Given;
using panelry::test::TextRows;
using panelry::test::With;

namespace
{

// Prices as whole numbers of ticks: decimal arithmetic without a decimal fraction.
std::string Price(std::int64_t ticks, int decimals)
{
    std::string digits = std::to_string(ticks);
    const auto behind = static_cast<std::size_t>(decimals);
    if (digits.size() <= behind) {
        digits.insert(0, behind + 1 - digits.size(), '0');
    }
    return digits.insert(digits.size() - behind, ".");
}

std::int64_t Ceiling(std::int64_t ticks, bool star)
{
    const std::int64_t percent = ticks * 102 / 100;
    return star ? percent : std::max(percent, ticks + 10);
}

std::int64_t Floor(std::int64_t ticks, bool star)
{
    const std::int64_t percent = (ticks * 98 + 99) / 100;
    return std::max<std::int64_t>(0, star ? percent : std::min(percent, ticks - 10));
}

// One ticket that is used again and again.
class RangeProbe
{
public:
    RangeProbe(int decimals, bool star) : m_decimals(decimals), m_star(star) {}

    // What is wrong with the range from `ticks`; empty if nothing.
    QString Wrong(std::int64_t ticks)
    {
        const std::string price = Price(ticks, m_decimals);
        m_sell = m_buy = price;
        m_rules.ComputeProtectedRange(m_ticket, m_ceiling, m_floor);
        const bool right = m_ceiling == Price(Ceiling(ticks, m_star), m_decimals) &&
                           m_floor == Price(Floor(ticks, m_star), m_decimals);
        return right ? QString() : QString::fromStdString(price + " gave " + m_ceiling + " and " + m_floor);
    }

private:
    const int m_decimals;
    const bool m_star;
    DataDealBase m_rules;
    StringMap m_ticket{{"price_decimal", std::to_string(m_decimals)}, {"kcb", m_star ? "1" : "0"}};
    std::string& m_sell = m_ticket["sell_1_price"];
    std::string& m_buy = m_ticket["buy_1_price"];
    std::string m_ceiling;
    std::string m_floor;
};

}  // namespace

class PriceRangeTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void ARange_data()
    {
        TextRows(
            "ticket ceiling floor",
            {{"2 percent, rounded inward", "", "10.20", "9.80"},
             {"STAR: the same, where 2 percent is the wider", "kcb=1", "10.20", "9.80"},
             {"low price: ten ticks are the wider", "sell_1_price=1.00 buy_1_price=0.99 limit_down=0.50",
              "1.10", "0.89"},
             {"low price on STAR", "kcb=1 sell_1_price=1.00 buy_1_price=0.99 limit_down=0.50", "1.02",
              "0.98"},
             {"bases apart", "sell_1_price=10.09 buy_1_price=9.92 kcb=1", "10.29", "9.73"},
             {"no ask: the bid stands in", "sell_1_price=0", "10.18", "9.80"},
             {"no bid: the ask stands in", "buy_1_price=0.00009", "10.20", "9.80"},
             {"no book: the latest", "sell_1_price= buy_1_price= latest_price=9", "9.18", "9.00"},
             {"no trade: the close", "sell_1_price= buy_1_price= latest_price=0 last_closing_price=10.50",
              "10.71", "10.29"},
             {"ask just a price", "sell_1_price=0.0001 price_decimal=4 kcb=1 limit_down=0", "0.0001",
              "9.7902"},
             {"nothing to start from", "sell_1_price= buy_1_price=", "kept", "kept"},
             {"a negative ask is no base and lets nothing stand in", "sell_1_price=-10", "kept", "kept"},
             {"held at the limits", "raising_limit=10.10 limit_down=9.90", "10.10", "9.90"},
             {"each bound on its own side only", "raising_limit=9.00 limit_down=11.00", "9.00", "11.00"},
             {"no upper limit", "raising_limit=0 sell_1_price=1000.00", "1020.00", "9.80"},
             {"no upper limit holds at 99999 all the same", "raising_limit=0.00009 sell_1_price=99000",
              "99999.00", "9.80"},
             {"an upper limit that just counts", "raising_limit=0.0001 price_decimal=4", "0.0001", "9.7902"},
             {"no lower limit: not below 0", "limit_down= sell_1_price=0.05 buy_1_price=0.05", "0.15",
              "0.00"},
             {"decimals below 0 count as none", "price_decimal=-3 kcb=1", "10", "10"},
             {"decimals beyond what a double has", "price_decimal=2000000000 kcb=1", "10.200001999999998",
              "9.790200000000000"}});
    }

    void ARange()
    {
        StringMap fields = With(
            Fields("price_decimal=2 sell_1_price=10.00 buy_1_price=9.99 raising_limit=11.00 limit_down=9.00"),
            Given("ticket"));
        std::string ceiling = "kept";
        std::string floor = "kept";
        DataDealBase().ComputeProtectedRange(fields, ceiling, floor);
        QTEST(QByteArray::fromStdString(ceiling), "ceiling");
        QTEST(QByteArray::fromStdString(floor), "floor");
    }

    // Up to 98,038: what lies above is held at the limit that stands for none.
    void EveryPriceIsPrintedExactly()
    {
        const bool all = qEnvironmentVariableIsSet("PANELRY_SOAK");
        const qint64 low =
            qEnvironmentVariableIsSet("PANELRY_DECIMAL_POINT") ? 97 : 1;  // all were seen before
        for (const int decimals : {2, 3}) {
            const qint64 stepsFrom = decimals == 2 ? 9'999'99 : 99'999;
            const qint64 high = all ? 1 : decimals == 2 ? 997 : 9973;
            RangeProbe plain(decimals, false);
            RangeProbe star(decimals, true);
            for (qint64 ticks = 1; ticks <= (decimals == 2 ? 98'038'00 : 98'038'000);
                 ticks += ticks < stepsFrom ? low : high) {
                // By their last digits the two share the work, but for low prices, where the ten ticks count.
                const bool both = ticks < 2000;
                const QString wrong = both || ticks % 3 == 0 ? plain.Wrong(ticks) : QString();
                const QString wrongOnStar = both || ticks % 3 != 0 ? star.Wrong(ticks) : QString();
                QCOMPARE(wrong + wrongOnStar, QString());
            }
        }
    }
};

PANELRY_TEST(PriceRangeTest)
#include "price_range_test.moc"
