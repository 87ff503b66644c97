#include "support/test.h"
#include "ticket/stage.h"

using panelry::test::Fields;
using panelry::test::TicketStage;
using panelry::test::Unlike;
using panelry::test::Words;

class TicketRequestsTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void ARequest_data()
    {
        QTest::addColumn<QByteArray>("ticket");
        QTest::addColumn<QString>("head");
        QTest::addColumn<QString>("body");
        QTest::addColumn<QString>("local");
        const auto row = [](const char* name, const QByteArray& ticket, const char* head, const char* body,
                            const char* local) {
            QTest::newRow(name) << ticket << QString::fromLatin1(head) << QString::fromLatin1(body)
                                << QString::fromLatin1(local);
        };
        row("of an empty ticket has the keys that are always there", "",
            "command= pub_3_str= pub_4_int=33 setcode= tab_id= type=1025",
            "NotNotifyParent= czlb= menuid= type= zqdm=", "local_market=");
        row("of a full ticket",
            "market=17 stockcode=600000 pub_4_int=1 tab_id=t menuid=m gdzh=A1 type=B czlb=S "
            "NotNotifyParent=1 "
            "price=10.5 rzrq=1 wtjw=j wtjwname=n scdm=1 passive_flag=p local_request_type=q dd_wtsl=5 "
            "cangwei=3 "
            "multiplecode_transparent=x local_cx_wtsl=1 unasked=1",
            "command=m pub_3_str=600000 pub_4_int=1 pub_5_str=A1 setcode=17 tab_id=t type=1025",
            "NotNotifyParent=1 czlb=S gdzh=A1 menuid=m rzrq=1 scdm=1 type=B wt_price=10.5 wtjg=10.5 wtjw=j "
            "wtjwname=n zqdm=600000",
            "cangwei=3 dd_wtsl=5 local_cal_cangwei=1 local_cx_wtsl=1 local_market=17 local_request_type=q "
            "multiplecode_transparent=x passive_flag=p price=10.5 rzrq=1");
        row("with keys that are there, and empty",
            "gdzh= price= rzrq= wtjw= wtjwname= scdm= passive_flag= local_request_type= dd_wtsl= cangwei= "
            "multiplecode_transparent= local_cx_wtsl= pub_4_int=",
            "command= pub_3_str= pub_4_int=33 pub_5_str= setcode= tab_id= type=1025",
            "NotNotifyParent= czlb= gdzh= menuid= rzrq= scdm= type= wtjw= wtjwname= zqdm=",
            "cangwei= dd_wtsl= local_cal_cangwei=1 local_cx_wtsl= local_market= local_request_type= "
            "multiplecode_transparent= passive_flag= price= rzrq=");
    }

    void ARequest()
    {
        QFETCH(const QByteArray, ticket);
        TicketStage stage;
        StringMap fields = Fields(ticket);
        stage.m_rules.RequestStockInfo(fields);
        QCOMPARE(stage.m_trade.m_sent.size(), std::size_t{1});
        const ddsdk::TradeRequestParam& sent = *stage.m_trade.m_sent[0];
        QTEST(Words(sent.head), "head");
        QTEST(Words(sent.body), "body");
        QTEST(Words(sent.local), "local");
    }

    void AMarketOnTheWire_data()
    {
        QTest::addColumn<QByteArray>("ticket");
        QTest::addColumn<int>("resolved");
        QTest::addColumn<int>("corrected");
        QTest::addColumn<QByteArray>("asked");
        QTest::addColumn<QByteArray>("setcode");
        QTest::addColumn<QByteArray>("market");
        const auto row = [](const char* name, const QByteArray& ticket, int resolved, int corrected,
                            const char* asked, const char* setcode, const char* market) {
            QTest::newRow(name) << ticket << resolved << corrected << QByteArray(asked) << QByteArray(setcode)
                                << QByteArray(market);
        };
        const char* const none = "Attach 1 stranger";
        row("bare Shanghai", "market=16 stockcode=1", -1, 0, "ResolveCodeMarkets 16:1", "26", "16");
        row("bare Shenzhen", "market=32 stockcode=1", -1, 0, "ResolveCodeMarkets 32:1", "42", "32");
        row("a class of Shanghai", "market=17 stockcode=1", -1, 0, "ResolveCodeMarkets 17:1", "17", "17");
        row("corrected", "market=16 stockcode=1", 0, 33, "ResolveCodeMarkets 16:1", "33", "33");
        row("corrected to a bare family", "market=17 stockcode=1", 0, 32, "ResolveCodeMarkets 17:1", "42",
            "32");
        row("a positive answer corrects nothing", "market=17 stockcode=1", 1, 32, "ResolveCodeMarkets 17:1",
            "17", "17");
        row("asked by the low byte, sent whole", "market=272 stockcode=1", -1, 0, "ResolveCodeMarkets 16:1",
            "272", "272");
        row("the low byte comes back", "market=272 stockcode=1", 0, 16, "ResolveCodeMarkets 16:1", "26",
            "16");
        row("no market: nothing to correct", "market= stockcode=1", 0, 33, none, "", "");
        row("no code: nothing to correct", "market=16 stockcode=", 0, 33, none, "26", "16");
        row("words", "market=SH stockcode=1", -1, 0, "ResolveCodeMarkets 0:1", "SH", "SH");
        row("a number with a rest", "market=16x stockcode=1", -1, 0, "ResolveCodeMarkets 16:1", "26", "16x");
    }

    void AMarketOnTheWire()
    {
        QFETCH(const QByteArray, ticket);
        QFETCH(const int, resolved);
        QFETCH(const int, corrected);
        QFETCH(const QByteArray, market);
        TicketStage stage;
        stage.m_quote.m_resolved = resolved;
        stage.m_quote.m_market = static_cast<std::uint8_t>(corrected);
        StringMap fields = Fields(ticket);
        stage.m_rules.RequestStockInfo(fields);
        QTEST(QByteArray::fromStdString(stage.m_quote.Calls().back()), "asked");
        const ddsdk::TradeRequestParam& sent = *stage.m_trade.m_sent.at(0);
        QTEST(QByteArray::fromStdString(sent.head.at("setcode")), "setcode");
        QCOMPARE(Unlike(sent.local, "local_market=" + market) + Unlike(fields, "market=" + market),
                 QString());
    }

    void TheAccountGoesAlong_data()
    {
        QTest::addColumn<QByteArray>("account");
        QTest::newRow("a number") << QByteArray("880012");
        QTest::newRow("an empty text is a value") << QByteArray("");
    }

    void TheAccountGoesAlong()
    {
        QFETCH(const QByteArray, account);
        TicketStage stage;
        stage.PublishText("account", account.toStdString());
        StringMap ticket;
        stage.m_rules.RequestStockInfo(ticket);
        QCOMPARE(Unlike(stage.m_trade.m_sent.at(0)->body, "zjzh=" + account), QString());
    }

    void TheUsableAmountIsAskedWithAMarkThatStays()
    {
        TicketStage stage;
        StringMap ticket = Fields("market=17 stockcode=600000");
        stage.m_rules.RequestUsableAmount(ticket);
        QCOMPARE(Unlike(ticket, "local_cx_wtsl=1 menuid= price="), QString());  // and what was read
        QCOMPARE(Unlike(stage.m_trade.m_sent.at(0)->local, "local_cx_wtsl=1"), QString());
    }

    void AChangedSetting()
    {
        TicketStage stage;
        StringMap fields = Fields("module=m");
        stage.m_rules.NotifyConfigChange(fields);
        const ddsdk::TradeRequestParam& sent = *stage.m_trade.m_sent.at(0);
        QCOMPARE(Words(sent.head), QStringLiteral("type=2304"));
        QCOMPARE(Words(sent.body),
                 QStringLiteral("cmd=chg_peizhi_notify module=m notify_wtzz= topmost=1 type=sys_set"));
        QCOMPARE(Words(sent.local), QString());
        QCOMPARE(Words(fields), QStringLiteral("module=m notify_wtzz="));
    }

    void WithoutATradeSideNothingIsTouchedButTheMark()
    {
        TicketStage stage;
        stage.m_sides.reset();
        StringMap ticket = Fields("market=16 stockcode=1");
        stage.m_rules.RequestStockInfo(ticket);
        stage.m_rules.NotifyConfigChange(ticket);
        QCOMPARE(Words(ticket), QStringLiteral("market=16 stockcode=1"));
        stage.m_rules.RequestUsableAmount(ticket);
        QCOMPARE(Words(ticket), QStringLiteral("local_cx_wtsl=1 market=16 stockcode=1"));
    }

    void WithoutAQuoteSideTheRequestGoesUncorrected()
    {
        TicketStage stage;
        DataDealBase rules;
        rules.SetObservers({}, stage.m_sides);
        StringMap ticket = Fields("market=17 stockcode=1");
        rules.RequestStockInfo(ticket);
        QCOMPARE(stage.m_trade.m_sent.at(0)->head.at("setcode"), std::string("17"));
    }
};

PANELRY_TEST(TicketRequestsTest)
#include "ticket_requests_test.moc"
