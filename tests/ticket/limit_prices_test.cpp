#include <algorithm>
#include <ctime>

#include "support/test.h"
#include "support/text_rows.h"
#include "ticket/data_deal_base.h"
#include "ticket/fields.h"

using namespace panelry::test;

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

// One ticket that is used again and again.
class RangeProbe
{
public:
    RangeProbe(int decimals, bool star) : m_decimals(decimals), m_star(star) {}

    // What is wrong with the range from `ticks`, under the day's limits for every other one; empty if nothing.
    QString Wrong(std::int64_t ticks)
    {
        const std::string price = Price(ticks, m_decimals);
        const bool limited = ticks % 2 == 0;
        const std::int64_t upper = limited ? ticks + ticks % 13 : m_decimals == 2 ? 99'999'00 : 99'999'000;
        const std::int64_t lower = limited ? std::max<std::int64_t>(1, ticks - ticks % 7) : 0;
        m_sell = m_buy = price;
        m_up = limited ? Price(upper, m_decimals) : "";
        m_down = limited ? Price(lower, m_decimals) : "";
        m_rules.ComputeProtectedRange(m_ticket, m_ceiling, m_floor);
        std::int64_t ceiling = ticks * 102 / 100;
        std::int64_t floor = (ticks * 98 + 99) / 100;
        if (!m_star) {
            ceiling = std::max(ceiling, ticks + 10);
            floor = std::min(floor, ticks - 10);
        }
        const bool right = m_ceiling == Price(std::min(ceiling, upper), m_decimals) &&
                           m_floor == Price(std::max(floor, lower), m_decimals);
        return right ? QString() : QString::fromStdString(price + " gave " + m_ceiling + " and " + m_floor);
    }

    // Is `ticks` printed exactly in the question about a price beyond the day's limits?
    bool IsNamedAsLimit(std::int64_t ticks)
    {
        const std::string limit = Price(ticks, m_decimals);
        m_upper = m_lower = limit;
        m_rules.CheckOrder(m_order, m_result);
        return m_result["other_tip"].find('[' + limit + " - " + limit + ']') != std::string::npos;
    }

private:
    const int m_decimals;
    const bool m_star;
    DataDealBase m_rules;
    StringMap m_ticket{{"price_decimal", std::to_string(m_decimals)}, {"kcb", m_star ? "1" : "0"}};
    std::string& m_sell = m_ticket["sell_1_price"];
    std::string& m_buy = m_ticket["buy_1_price"];
    std::string& m_up = m_ticket["raising_limit"];
    std::string& m_down = m_ticket["limit_down"];
    std::string m_ceiling;
    std::string m_floor;
    StringMap m_order =
        With(Fields("price=100000 amount=100"), "price_decimal=" + QByteArray::number(m_decimals));
    std::string& m_upper = m_order["raising_limit"];
    std::string& m_lower = m_order["limit_down"];
    StringMap m_result;
};

// The machine's time zone, which nothing else in this program reads: "hq_time" is meant in local time.
void SetZone(const char* name)
{
    qputenv("TZ", name);
    tzset();
}

// 2026-01-05, a Monday, at midnight in China.
QByteArray InChina(int hour, int minute, int second)
{
    return "hq_time=" + QByteArray::number(1767542400LL + hour * 3600 + minute * 60 + second);
}

}  // namespace

class LimitPricesTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void ARange_data()
    {
        const QByteArray none = "sell_1_price= buy_1_price=";
        TextRows(
            "ticket range",
            // What is computed below for every price says the rest: ten ticks, both boards, the limits.
            {{"2 percent, rounded inward", "", "10.20 9.80"},
             {"bases apart", "sell_1_price=10.09 buy_1_price=9.92 kcb=1", "10.29 9.73"},
             {"no ask: the bid stands in", "sell_1_price=0", "10.18 9.80"},
             {"no bid: the ask stands in", "buy_1_price=0.00009", "10.20 9.80"},
             {"no book: the latest", none + " latest_price=9", "9.18 9.00"},
             {"no trade: the close", none + " latest_price=0 last_closing_price=10.50", "10.71 10.29"},
             {"ask just a price", "sell_1_price=0.0001 price_decimal=4 kcb=1 limit_down=0", "0.0001 9.7902"},
             {"nothing to start from", none, "kept kept"},
             {"a negative ask is no base and lets nothing stand in", "sell_1_price=-10", "kept kept"},
             {"each bound on its own side only", "raising_limit=9.00 limit_down=11.00", "9.00 11.00"},
             {"no upper limit", "raising_limit=0 sell_1_price=1000.00", "1020.00 9.80"},
             {"none holds at 99999 all the same", "raising_limit=0.00009 sell_1_price=99000",
              "99999.00 9.80"},
             {"an upper limit that just counts", "raising_limit=0.0001 price_decimal=4", "0.0001 9.7902"},
             {"decimals below 0 count as none", "price_decimal=-3 kcb=1", "10 10"},
             {"decimals beyond what a double has", "price_decimal=2000000000 kcb=1",
              "10.200001999999998 9.790200000000000"}});
    }

    void ARange()
    {
        StringMap fields = With(
            Fields("price_decimal=2 sell_1_price=10.00 buy_1_price=9.99 raising_limit=11.00 limit_down=9.00"),
            Given("ticket"));
        std::string ceiling = "kept";
        std::string floor = "kept";
        DataDealBase().ComputeProtectedRange(fields, ceiling, floor);
        QTEST(QByteArray::fromStdString(ceiling + ' ' + floor), "range");
    }

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
            for (qint64 ticks = 1; ticks <= (decimals == 2 ? 99'999'99 : 99'999'990);
                 ticks += ticks < stepsFrom ? low : high) {
                // By their last digits the two share the work, but for low prices, where the ten ticks count.
                const bool both = ticks < 2000;
                const QString wrong = both || ticks % 3 == 0 ? plain.Wrong(ticks) : QString();
                const QString wrongOnStar = both || ticks % 3 != 0 ? star.Wrong(ticks) : QString();
                QCOMPARE(wrong + wrongOnStar, QString());
                QVERIFY2(plain.IsNamedAsLimit(ticks), Price(ticks, decimals).c_str());
            }
        }
    }

    void SevenMarketsOfferLimitsUnlessTheHostSaysOtherwise()
    {
        QByteArray offering;
        for (int market = -10; market <= 273; ++market) {  // the low byte counts
            StringMap ticket{{"market", std::to_string(market)}, {"issupportxj", ""}};
            offering +=
                DataDealBase().IsProtectedLimitSupported(ticket) ? QByteArray::number(market) + ' ' : "";
            for (const char* statement : {"0", "1", "11"}) {
                ticket["issupportxj"] = statement;
                QCOMPARE(DataDealBase().IsProtectedLimitSupported(ticket), statement == QByteArray("1"));
            }
        }
        QCOMPARE(offering, "17 18 21 22 33 34 37 273 ");
    }

    void Phase_data()
    {
        const QByteArray ten = ' ' + InChina(10, 0, 0);
        TextRows("ticket continuous",
                 {{"Shanghai trades", "market=16 benchmarkcode=T", "1"},
                  {"Shanghai calls", "market=17 benchmarkcode=C11" + ten, "0"},
                  {"Shenzhen trades", "market=33 benchmarkcode=T0", "1"},
                  {"Shenzhen, suspended", "market=33 benchmarkcode=T1" + ten, "0"},
                  {"Shenzhen, one letter", "market=33 benchmarkcode=T", "0"},
                  {"both bits: Shanghai's rule", "market=49 benchmarkcode=T1", "1"},
                  {"bit 16 of the whole number", "market=-240 benchmarkcode=T1", "1"},
                  {"no exchange: no time is asked", "market=0 benchmarkcode=T0" + ten, "0"},
                  {"empty phase: the time", "market=17 benchmarkcode=" + ten, "1"},
                  {"a second before", InChina(9, 24, 59), "0"},
                  {"first second", InChina(9, 25, 0), "1"},
                  {"last second", InChina(14, 57, 0), "1"},
                  {"a second later", InChina(14, 57, 1), "0"},
                  {"beyond any calendar", "hq_time=9223372036854775807", "0"},
                  {"nothing", "", "0"}});
    }

    void Phase()
    {
        SetZone("CST-8");
        StringMap fields = Fields(Given("ticket"));
        QTEST(QByteArray::number(DataDealBase().IsContinuousPhase(fields)), "continuous");
        SetZone("UTC0");
        fields = Fields(InChina(14, 0, 0));
        QVERIFY(!DataDealBase().IsContinuousPhase(fields));
    }

    void TheFields_data()
    {
        const QByteArray none = "mrxjg= mcxjg=";
        const QByteArray computed = "isshowxj=1 islxjj=1 mrxjg=10.20 mcxjg=9.80";
        TextRows("ticket fields", {{"in the continuous phase", "benchmarkcode=T", computed},
                                   {"in an auction", "cal_xj=11", "isshowxj=1 islxjj=0 " + none},
                                   {"in an auction, wanted all the same", "cal_xj=1", computed},
                                   {"unsupported, whatever is wanted", "market=16 benchmarkcode=T cal_xj=1",
                                    "isshowxj=0 islxjj=0 " + none},
                                   {"no price to start from",
                                    "cal_xj=1 sell_1_price= buy_1_price=", "isshowxj=1 islxjj=1 " + none}});
    }

    void TheFields()
    {
        StringMap fields =
            With(Fields("market=17 benchmarkcode=C mrxjg=old mcxjg=old islxjj=old isshowxj=old "
                        "price_decimal=2 sell_1_price=10 buy_1_price=9.99"),
                 Given("ticket"));
        DataDealBase().UpdateProtectedLimitFields(fields);
        QCOMPARE(Unlike(fields, Given("fields")), QString());
    }
};

PANELRY_TEST(LimitPricesTest)
#include "limit_prices_test.moc"
