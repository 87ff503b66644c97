// The account of the desk as a client meets it.

#include <map>
#include <mutex>

#include "desk/demo_account.h"
#include "services/trade_observer.h"
#include "support/test.h"
#include "tables/rzrq_zi_jin_info.h"
#include "tables/table_form_info.h"
#include "tables/zi_jin_info.h"

using panelry::desk::Delivery;
using panelry::desk::DemoAccount;
using panelry::desk::DemoTrade;

namespace
{

class Client : public TradeObserver
{
public:
    void* ObserverSelf() override { return this; }
    void OnTableChanged(const std::string& name, std::shared_ptr<HostTable> table) override
    {
        const std::lock_guard guard(m_lock);
        m_tables[name] = table;
    }
    void OnDataPush(const std::string& name, std::shared_ptr<StringMap> map) override
    {
        const std::lock_guard guard(m_lock);
        m_maps[name] = *map;
    }
    void OnFundsPush(std::shared_ptr<StockInfoAnswer> answer) override
    {
        StringMap scratch;
        m_funds.OnFundsAnswer(answer, scratch);
        scratch.clear();
        m_marginFunds.OnFundsAnswer(answer, scratch);
    }
    void OnLoginState(int) override { ++m_logins; }

    // The contracts in a table; "none" before there is one.
    std::string Contracts(const std::string& name) { return Column(name, "2135"); }
    std::string Column(const std::string& name, const char* id)
    {
        const std::lock_guard guard(m_lock);
        const auto found = m_tables.find(name);
        if (found == m_tables.end()) {
            return "none";
        }
        std::string texts;
        for (int row = 0; row < found->second->RowCount(); ++row) {
            texts += found->second->CellText(row, found->second->FindColumn(id)) + std::string(" ");
        }
        return texts;
    }
    StringMap Map(const std::string& name)
    {
        const std::lock_guard guard(m_lock);
        return m_maps[name];
    }

    std::atomic<int> m_logins{0};
    ZiJinInfo m_funds;
    RzrqZiJinInfo m_marginFunds;

private:
    std::mutex m_lock;
    std::map<std::string, std::shared_ptr<HostTable>> m_tables;
    std::map<std::string, StringMap> m_maps;
};

// A client with its rules in front of the account.
struct Stage {
    Stage()
    {
        client->SetProvider(&trade);
        for (DataDealBase* const logic :
             std::initializer_list<DataDealBase*>{&form, &client->m_funds, &client->m_marginFunds}) {
            logic->SetObservers({}, client);
        }
        for (const char* const name :
             {"auto_refresh_data", "chedan_table", "rzrq_chedan_table", "weituo_table", "chengjiao_table",
              "gupiao_table", "zijin_data_proc", "zijin_data_rzrq_0"}) {
            client->SubscribeKey(name, true);
        }
    }
    ~Stage()
    {
        delivery.Stop();
        trade.Stop();
    }

    void Ask(void (DataDealBase::*query)(StringMap&), const char* table, bool margin = false)
    {
        StringMap parameters{{"table_name", table}, {"rzrq", margin ? "1" : "0"}};
        (static_cast<DataDealBase&>(form).*query)(parameters);
    }
    void Cancel(const char* contract, bool margin)
    {
        StringMap row{{"htbh", contract}, {"rzrq", margin ? "1" : "0"}};
        const auto request = std::make_shared<ddsdk::TradeRequestParam>();
        form.FillCancelRequest(request, row);
        client->SendTradeRequest(request);
    }

    Delivery delivery;
    DemoTrade trade{delivery};
    DemoAccount account{trade};
    std::shared_ptr<Client> client = std::make_shared<Client>();
    TableFormInfo form;
};

}  // namespace

class DemoAccountTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void OneOrderIsDealtBetweenTwoQuestions()
    {
        Stage stage;
        QTRY_COMPARE(stage.client->m_logins, 1);
        stage.Ask(&DataDealBase::QueryDeals, "chengjiao_table");
        stage.Ask(&DataDealBase::QueryCancelableOrders, "chedan_table");
        QTRY_COMPARE(stage.client->Contracts("chedan_table"), std::string("1001 1002 1003 1004 "));
        QCOMPARE(stage.client->Contracts("chengjiao_table"), std::string());
        stage.Ask(&DataDealBase::QueryCancelableOrders, "chedan_table");
        QTRY_COMPARE(stage.client->Contracts("chedan_table"), std::string("1002 1003 1004 "));
        stage.Ask(&DataDealBase::QueryDeals, "chengjiao_table");
        QTRY_COMPARE(stage.client->Contracts("chengjiao_table"), std::string("1001 "));
        stage.Ask(&DataDealBase::QueryOrders, "weituo_table");
        QTRY_COMPARE(stage.client->Contracts("weituo_table"), std::string("1001 1002 1003 1004 "));
        stage.Ask(&DataDealBase::QueryPositions, "gupiao_table");
        QTRY_COMPARE(stage.client->Column("gupiao_table", "2102"), std::string("600000 600519 000001 "));
    }

    void ACancelIsDoneAndTold()
    {
        Stage stage;
        stage.Cancel("2001", true);
        QTRY_COMPARE(stage.client->Map("auto_refresh_data"), (StringMap{{"chedan", "1"}, {"rzrq", "1"}}));
        QCOMPARE(stage.client->Contracts("rzrq_chedan_table"), std::string("2002 "));
        stage.Cancel("1003", false);
        QTRY_COMPARE(stage.client->Contracts("chedan_table"), std::string("1001 1002 1004 "));
        QTRY_COMPARE(stage.client->Map("auto_refresh_data")["rzrq"], std::string("0"));
    }

    void FundsFollowTheOrders()
    {
        Stage stage;
        StringMap none;
        stage.client->m_funds.QueryFunds(none);
        stage.client->m_marginFunds.QueryFunds(none);
        // Frozen: 1,000 at 10.60 and 100 at 210.00.
        QTRY_COMPARE(stage.client->Map("zijin_data_proc")["djye"], std::string("31600.00"));
        QCOMPARE(stage.client->Map("zijin_data_proc")["kyye"], std::string("468400.00"));
        QTRY_COMPARE(stage.client->Map("zijin_data_rzrq_0")["djye"], std::string("9600.00"));
        stage.Cancel("1003", false);
        stage.client->m_funds.QueryFunds(none);
        QTRY_COMPARE(stage.client->Map("zijin_data_proc")["djye"], std::string("10600.00"));
    }
};

PANELRY_TEST(DemoAccountTest)

#include "demo_account_test.moc"
