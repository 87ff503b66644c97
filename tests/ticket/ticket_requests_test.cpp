#include <clocale>
#include <numeric>

#include "support/slot_of.h"
#include "support/test.h"
#include "support/text_rows.h"
#include "ticket/stage.h"

using namespace panelry::test;

class TicketRequestsTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void ARequest_data()
    {
        TextRows(
            "ticket head body local",
            {{"of an empty ticket has the keys that are always there", "",
              "command= pub_3_str= pub_4_int=33 setcode= tab_id= type=1025",
              "NotNotifyParent= czlb= menuid= type= zqdm=", "local_market="},
             {"of a full ticket",
              "market=17 stockcode=600000 pub_4_int=1 tab_id=t menuid=m gdzh=A1 type=B czlb=S "
              "NotNotifyParent=1 "
              "price=10.5 rzrq=1 wtjw=j wtjwname=n scdm=1 passive_flag=p local_request_type=q dd_wtsl=5 "
              "cangwei=3 multiplecode_transparent=x local_cx_wtsl=1 unasked=1",
              "command=m pub_3_str=600000 pub_4_int=1 pub_5_str=A1 setcode=17 tab_id=t type=1025",
              "NotNotifyParent=1 czlb=S gdzh=A1 menuid=m rzrq=1 scdm=1 type=B wt_price=10.5 wtjg=10.5 wtjw=j "
              "wtjwname=n zqdm=600000",
              "cangwei=3 dd_wtsl=5 local_cal_cangwei=1 local_cx_wtsl=1 local_market=17 local_request_type=q "
              "multiplecode_transparent=x passive_flag=p price=10.5 rzrq=1"},
             {"with keys that are there, and empty",
              "gdzh= price= rzrq= wtjw= wtjwname= scdm= passive_flag= local_request_type= dd_wtsl= cangwei= "
              "multiplecode_transparent= local_cx_wtsl= pub_4_int=",
              "command= pub_3_str= pub_4_int=33 pub_5_str= setcode= tab_id= type=1025",
              "NotNotifyParent= czlb= gdzh= menuid= rzrq= scdm= type= wtjw= wtjwname= zqdm=",
              "cangwei= dd_wtsl= local_cal_cangwei=1 local_cx_wtsl= local_market= local_request_type= "
              "multiplecode_transparent= passive_flag= price= rzrq="}});
    }

    void ARequest()
    {
        TicketStage stage;
        StringMap fields = Fields(Given("ticket"));
        stage.m_rules.RequestStockInfo(fields);
        QCOMPARE(stage.m_trade.m_sent.size(), std::size_t{1});
        const ddsdk::TradeRequestParam& sent = *stage.m_trade.m_sent[0];
        QTEST(Words(sent.head).toUtf8(), "head");
        QTEST(Words(sent.body).toUtf8(), "body");
        QTEST(Words(sent.local).toUtf8(), "local");
    }

    void AMarketOnTheWire_data()
    {
        const char* const none = "stranger";  // attached, and nothing more
        TextRows(
            "ticket resolved corrected asked setcode market",
            {{"bare Shanghai", "market=16 stockcode=1", "-1", "0", " 16:1", "26", "16"},
             {"corrected", "market=16 stockcode=1", "0", "33", " 16:1", "33", "33"},
             {"corrected to a bare family", "market=17 stockcode=1", "0", "32", " 17:1", "42", "32"},
             {"a positive answer corrects nothing", "market=17 stockcode=1", "1", "32", " 17:1", "17", "17"},
             {"asked by the low byte, sent whole", "market=272 stockcode=1", "-1", "0", " 16:1", "272",
              "272"},
             {"the low byte comes back", "market=272 stockcode=1", "0", "16", " 16:1", "26", "16"},
             {"no market: nothing to correct", "market= stockcode=1", "0", "33", none, "", ""},
             {"no code: nothing to correct", "market=16 stockcode=", "0", "33", none, "26", "16"},
             {"a number with a rest", "market=16x stockcode=1", "-1", "0", " 16:1", "26", "16x"}});
    }

    void AMarketOnTheWire()
    {
        TicketStage stage;
        stage.m_quote.m_resolved = Given("resolved").toInt();
        stage.m_quote.m_market = static_cast<std::uint8_t>(Given("corrected").toInt());
        StringMap fields = Fields(Given("ticket"));
        stage.m_rules.RequestStockInfo(fields);
        QVERIFY(stage.m_quote.Calls().back().ends_with(Given("asked").toStdString()));
        const ddsdk::TradeRequestParam& sent = *stage.m_trade.m_sent.at(0);
        QTEST(QByteArray::fromStdString(sent.head.at("setcode")), "setcode");
        QCOMPARE(Unlike(sent.local, "local_market=" + Given("market")), QString());
        QCOMPARE(Unlike(fields, "market=" + Given("market")), QString());
    }

    void TheUsableAmountIsAskedWithAMarkThatStays()
    {
        for (const char* account : {"880012", ""}) {  // an empty text is a value
            TicketStage stage;
            stage.PublishText("account", account);
            StringMap ticket = Fields("market=17 stockcode=600000");
            stage.m_rules.RequestUsableAmount(ticket);
            QCOMPARE(Unlike(ticket, "local_cx_wtsl=1 menuid= price="), QString());  // and what was read
            QCOMPARE(Unlike(stage.m_trade.m_sent.at(0)->local, "local_cx_wtsl=1"), QString());
            QCOMPARE(Unlike(stage.m_trade.m_sent.at(0)->body, QByteArray("zjzh=") + account), QString());
        }
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

    void WithoutASide()
    {
        TicketStage stage;
        stage.m_rules.SetObservers({}, stage.m_sides);  // no quote side: uncorrected
        StringMap ticket = Fields("market=17 stockcode=1");
        stage.m_rules.RequestStockInfo(ticket);
        QCOMPARE(stage.m_trade.m_sent.at(0)->head.at("setcode"), "17");

        DataDealBase alone;  // nothing is touched but the mark
        ticket = Fields("market=16 stockcode=1");
        alone.RequestStockInfo(ticket);
        alone.NotifyConfigChange(ticket);
        QCOMPARE(Words(ticket), QStringLiteral("market=16 stockcode=1"));
        alone.RequestUsableAmount(ticket);
        QCOMPARE(Words(ticket), QStringLiteral("local_cx_wtsl=1 market=16 stockcode=1"));
    }

    void OperationsKeepTheirPlaces()
    {
        using D = DataDealBase;
        const std::vector<int> places = SlotsOf(
            &D::ReservedHookA, &D::OnQuotePush, &D::RequestStockInfo, &D::RequestUsableAmount,
            &D::ReservedHookB, &D::ReservedHookC, &D::FillCancelRequest, &D::ReservedHook,
            &D::FillTableRefreshRequest, &D::QueryFunds, &D::QueryPositions, &D::QueryDeals, &D::QueryOrders,
            &D::QueryCancelableOrders, &D::ReservedHookD, &D::NotifyConfigChange, &D::ReservedHookE,
            &D::ReservedHookF, &D::ReservedHookG, &D::OnStockInfo, &D::ReservedHookH, &D::ReservedHookI,
            &D::ReservedHookJ, &D::OnFundsAnswer, &D::OnPositionsTable, &D::OnFundsFields, &D::ReservedHookK,
            &D::CheckOrder, &D::ReservedHookL, &D::ReservedHookM, &D::HasAuthority, &D::MatchCodeMask,
            &D::IsTzmCode, &D::ResolveAccountFields, &D::SelectWeituoKind, &D::FindAccountForCode,
            &D::FindAccountByMarket, &D::ResolveAmountUnit, &D::ResolveHandSize,
            &D::UpdateProtectedLimitFields, &D::IsProtectedLimitSupported, &D::IsContinuousPhase,
            &D::ComputeProtectedRange, &D::FillMaxAmount, &D::QueryMarketOrderTypes, &D::IsBhjgMarket,
            &D::ListCodeCandidates, &D::ResolveDuplicateCodes);
        std::vector<int> expected(48);
        std::iota(expected.begin(), expected.end(), 2);  // behind the destructor, which has the first two
        QCOMPARE(places, expected);
    }

    // The whole program also runs under a locale of its own; see CMakeLists.txt.
    void TheLocaleIsTheOneThatIsMeant()
    {
        const QByteArray point = qgetenv("PANELRY_DECIMAL_POINT");
        QCOMPARE(QByteArray(std::localeconv()->decimal_point), point.isEmpty() ? QByteArray(".") : point);
    }
};

PANELRY_TEST(TicketRequestsTest)
#include "ticket_requests_test.moc"
