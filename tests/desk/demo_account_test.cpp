// The account of the desk as a client meets it.

#include <map>
#include <mutex>

#include "desk/demo_account.h"
#include "services/trade_observer.h"
#include "support/test.h"
#include "tables/table_form_info.h"

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
    void OnLoginState(int) override { ++m_logins; }

    // The texts of a column, by default the contracts; "none" before there is a table.
    std::string Column(const std::string& name, const char* id = "2135")
    {
        const std::lock_guard guard(m_lock);
        const auto found = m_tables.find(name);
        std::string texts = found == m_tables.end() ? "none" : "";
        for (int row = 0; texts != "none" && row < found->second->RowCount(); ++row) {
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
        form.SetObservers({}, client);
        for (const char* const name : {"auto_refresh_data", "chedan_table", "rzrq_chedan_table",
                                       "weituo_table", "chengjiao_table", "gupiao_table"}) {
            client->SubscribeKey(name, true);
        }
    }
    ~Stage()
    {
        delivery.Stop();
        trade.Stop();
    }

    void Ask(void (DataDealBase::*query)(StringMap&), const char* table)
    {
        StringMap parameters{{"table_name", table}, {"rzrq", "0"}};
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
        QTRY_COMPARE(stage.client->Column("chedan_table"), std::string("1001 1002 1003 1004 "));
        QCOMPARE(stage.client->Column("chengjiao_table"), std::string());
        stage.Ask(&DataDealBase::QueryCancelableOrders, "chedan_table");
        QTRY_COMPARE(stage.client->Column("chedan_table"), std::string("1002 1003 1004 "));
        stage.Ask(&DataDealBase::QueryDeals, "chengjiao_table");
        QTRY_COMPARE(stage.client->Column("chengjiao_table"), std::string("1001 "));
        stage.Ask(&DataDealBase::QueryOrders, "weituo_table");
        QTRY_COMPARE(stage.client->Column("weituo_table"), std::string("1001 1002 1003 1004 "));
        stage.Ask(&DataDealBase::QueryPositions, "gupiao_table");
        QTRY_COMPARE(stage.client->Column("gupiao_table", "2102"), std::string("600000 600519 000001 "));
    }

    void ACancelIsDoneAndTold()
    {
        Stage stage;
        stage.Cancel("2001", true);
        QTRY_COMPARE(stage.client->Map("auto_refresh_data"), (StringMap{{"chedan", "1"}, {"rzrq", "1"}}));
        QCOMPARE(stage.client->Column("rzrq_chedan_table"), std::string("2002 "));
        stage.Cancel("1003", false);
        QTRY_COMPARE(stage.client->Column("chedan_table"), std::string("1001 1002 1004 "));
        QTRY_COMPARE(stage.client->Map("auto_refresh_data")["rzrq"], std::string("0"));
    }
};

PANELRY_TEST(DemoAccountTest)

#include "demo_account_test.moc"
