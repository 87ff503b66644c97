#include <ctime>

#include "support/test.h"
#include "ticket/data_deal_base.h"
#include "ticket/fields.h"

using panelry::test::Fields;

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
    void Support_data()
    {
        QTest::addColumn<QByteArray>("ticket");
        QTest::addColumn<bool>("supported");
        const auto row = [](const char* name, const QByteArray& ticket, bool supported) {
            QTest::newRow(name) << ticket << supported;
        };
        row("the host says no", "issupportxj=0 market=17", false);
        row("the host says yes", "issupportxj=1 market=49", true);
        row("the host says it at length", "issupportxj=11 market=17", false);
        row("the host says nothing", "issupportxj= market=17", true);
        row("the low byte counts", "market=273", true);
        row("no market", "", false);
        row("market in words", "market=SH", false);
    }

    void Support()
    {
        QFETCH(const QByteArray, ticket);
        StringMap fields = Fields(ticket);
        QTEST(DataDealBase().IsProtectedLimitSupported(fields), "supported");
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
        QTest::addColumn<QByteArray>("ticket");
        QTest::addColumn<bool>("continuous");
        const auto row = [](const char* name, const QByteArray& ticket, bool continuous) {
            QTest::newRow(name) << ticket << continuous;
        };
        const QByteArray ten = " hq_time=" + InChina(10, 0, 0);
        row("Shanghai trades", "market=17 benchmarkcode=T1", true);
        row("Shanghai, one letter", "market=16 benchmarkcode=T", true);
        row("Shanghai calls", "market=17 benchmarkcode=C11" + ten, false);
        row("Shenzhen trades", "market=33 benchmarkcode=T0", true);
        row("Shenzhen, suspended", "market=33 benchmarkcode=T1" + ten, false);
        row("Shenzhen, one letter", "market=33 benchmarkcode=T", false);
        row("both bits: Shanghai's rule", "market=49 benchmarkcode=T1", true);
        row("bit 16 of the whole number", "market=-240 benchmarkcode=T1", true);
        row("no exchange: the time is not asked", "market=0 benchmarkcode=T0" + ten, false);
        row("no market but a time", ten, true);
        row("empty phase: the time", "market=17 benchmarkcode=" + ten, true);
        row("a second before", "hq_time=" + InChina(9, 24, 59), false);
        row("first second", "hq_time=" + InChina(9, 25, 0), true);
        row("at lunch", "hq_time=" + InChina(12, 30, 59), true);
        row("last second", "hq_time=" + InChina(14, 57, 0), true);
        row("a second later", "hq_time=" + InChina(14, 57, 1), false);
        row("beyond any calendar", "hq_time=9223372036854775807", false);
        row("nothing", "", false);
    }

    void Phase()
    {
        QFETCH(const QByteArray, ticket);
        const Zone china("CST-8");
        StringMap fields = Fields(ticket);
        QTEST(DataDealBase().IsContinuousPhase(fields), "continuous");
    }

    void TheTimeIsTheMachinesOwn()
    {
        const Zone utc("UTC0");
        StringMap ticket = Fields("hq_time=" + InChina(14, 0, 0));
        QVERIFY(!DataDealBase().IsContinuousPhase(ticket));
    }

    void TheFields_data()
    {
        QTest::addColumn<QByteArray>("ticket");
        QTest::addColumn<QByteArray>("fields");
        const auto row = [](const char* name, const QByteArray& ticket, const QByteArray& fields) {
            QTest::newRow(name) << ticket << fields;
        };
        row("in the continuous phase", "market=17 benchmarkcode=T",
            "isshowxj=1 islxjj=1 mrxjg=10.20 mcxjg=9.80");
        row("in an auction", "market=17 benchmarkcode=C", "isshowxj=1 islxjj=0 mrxjg= mcxjg=");
        row("in an auction, wanted all the same", "market=17 benchmarkcode=C cal_xj=1",
            "isshowxj=1 islxjj=1 mrxjg=10.20 mcxjg=9.80");
        row("wanted at length", "market=17 benchmarkcode=C cal_xj=11", "isshowxj=1 islxjj=0 mrxjg= mcxjg=");
        row("unsupported, whatever is wanted", "market=16 benchmarkcode=T cal_xj=1",
            "isshowxj=0 islxjj=0 mrxjg= mcxjg=");
        row("no price to start from",
            "market=17 benchmarkcode=T sell_1_price= buy_1_price=", "isshowxj=1 islxjj=1 mrxjg= mcxjg=");
    }

    void TheFields()
    {
        QFETCH(const QByteArray, ticket);
        QFETCH(const QByteArray, fields);
        StringMap map = panelry::test::With(Fields("mrxjg=old mcxjg=old islxjj=old isshowxj=old "
                                                   "price_decimal=2 sell_1_price=10 buy_1_price=9.99"),
                                            ticket);
        DataDealBase().UpdateProtectedLimitFields(map);
        QCOMPARE(panelry::test::Unlike(map, fields), QString());
    }
};

PANELRY_TEST(ProtectedLimitsTest)
#include "protected_limits_test.moc"
