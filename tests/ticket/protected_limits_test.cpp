#include <ctime>

#include "support/test.h"
#include "support/text_rows.h"
#include "ticket/data_deal_base.h"
#include "ticket/fields.h"

using panelry::test::Fields;
using panelry::test::Given;
using panelry::test::TextRows;

namespace
{

// The machine's time zone for the length of a test: "hq_time" is read in local time.
class Zone
{
public:
    explicit Zone(const char* name) : m_old(qgetenv("TZ"))
    {
        qputenv("TZ", name);
        tzset();
    }
    ~Zone()
    {
        m_old.isNull() ? qunsetenv("TZ") : qputenv("TZ", m_old);
        tzset();
    }
    Zone(const Zone&) = delete;
    Zone& operator=(const Zone&) = delete;

private:
    const QByteArray m_old;
};

// 2026-01-05, a Monday, at midnight in China.
QByteArray InChina(int hour, int minute, int second)
{
    return QByteArray::number(1767542400LL + hour * 3600 + minute * 60 + second);
}

}  // namespace

class ProtectedLimitsTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void Support()
    {
        const std::map<QByteArray, bool> tickets{{"issupportxj=0 market=17", false},
                                                 {"issupportxj=1 market=49", true},
                                                 {"issupportxj=11 market=17", false},
                                                 {"issupportxj= market=17", true},
                                                 {"market=273", true},
                                                 {"", false}};  // the low byte counts
        for (const auto& [ticket, supported] : tickets) {
            StringMap fields = Fields(ticket);
            QVERIFY2(DataDealBase().IsProtectedLimitSupported(fields) == supported, ticket);
        }
    }

    void SevenMarketsOfferLimits()
    {
        QList<int> offering;
        for (int market = -10; market < 256; ++market) {
            StringMap ticket{{"market", std::to_string(market)}};
            if (DataDealBase().IsProtectedLimitSupported(ticket)) {
                offering << market;
            }
        }
        QCOMPARE(offering, (QList<int>{17, 18, 21, 22, 33, 34, 37}));
    }

    void Phase_data()
    {
        const QByteArray ten = " hq_time=" + InChina(10, 0, 0);
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
                  {"a second before", "hq_time=" + InChina(9, 24, 59), "0"},
                  {"first second", "hq_time=" + InChina(9, 25, 0), "1"},
                  {"last second", "hq_time=" + InChina(14, 57, 0), "1"},
                  {"a second later", "hq_time=" + InChina(14, 57, 1), "0"},
                  {"beyond any calendar", "hq_time=9223372036854775807", "0"},
                  {"nothing", "", "0"}});
    }

    void Phase()
    {
        const Zone china("CST-8");
        StringMap fields = Fields(Given("ticket"));
        QTEST(QByteArray::number(DataDealBase().IsContinuousPhase(fields)), "continuous");
    }

    void TheTimeIsTheMachinesOwn()
    {
        const Zone utc("UTC0");
        StringMap ticket = Fields("hq_time=" + InChina(14, 0, 0));
        QVERIFY(!DataDealBase().IsContinuousPhase(ticket));
    }

    void TheFields_data()
    {
        TextRows(
            "ticket fields",
            {{"in the continuous phase", "benchmarkcode=T", "isshowxj=1 islxjj=1 mrxjg=10.20 mcxjg=9.80"},
             {"in an auction", "cal_xj=11", "isshowxj=1 islxjj=0 mrxjg= mcxjg="},
             {"in an auction, wanted all the same", "cal_xj=1", "isshowxj=1 islxjj=1 mrxjg=10.20 mcxjg=9.80"},
             {"unsupported, whatever is wanted", "market=16 benchmarkcode=T cal_xj=1",
              "isshowxj=0 islxjj=0 mrxjg= mcxjg="},
             {"no price to start from",
              "benchmarkcode=T sell_1_price= buy_1_price=", "isshowxj=1 islxjj=1 mrxjg= mcxjg="}});
    }

    void TheFields()
    {
        StringMap map =
            panelry::test::With(Fields("market=17 benchmarkcode=C mrxjg=old mcxjg=old islxjj=old "
                                       "isshowxj=old price_decimal=2 sell_1_price=10 buy_1_price=9.99"),
                                Given("ticket"));
        DataDealBase().UpdateProtectedLimitFields(map);
        QCOMPARE(panelry::test::Unlike(map, Given("fields")), QString());
    }
};

PANELRY_TEST(ProtectedLimitsTest)
#include "protected_limits_test.moc"
