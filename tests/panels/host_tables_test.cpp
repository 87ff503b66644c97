// The panels of orders, holdings and funds in front of a host that keeps tables.

#include <QApplication>
#include <QClipboard>
#include <QHeaderView>
#include <QLineEdit>
#include <QPushButton>
#include <QTemporaryDir>
#include <thread>

#include "base/host_text.h"
#include "funds/funds_module.h"
#include "holdings/holdings_spec.h"
#include "host_tables/host_table_view.h"
#include "host_tables/tables_module.h"
#include "orders/orders_spec.h"
#include "panels/recording_manager.h"
#include "support/literals.h"
#include "support/test.h"
#include "ticket/stage.h"

using namespace panelry;
using namespace panelry::test;

namespace
{

// Publishes tables and maps on threads of its own, and keeps who follows them.
class PublishingAccount : public FakeAccount
{
public:
    int Attach(int, std::shared_ptr<TradeObserver> client) override
    {
        m_clients.push_back(std::move(client));
        return 0;
    }
    int SubscribeKey(const std::string& name, bool on, std::shared_ptr<TradeObserver> subscriber) override
    {
        if (on && m_loggedIn) {
            m_followers[name].push_back(std::move(subscriber));
        } else if (!on) {
            m_followers.erase(name);
        }
        return on && !m_loggedIn ? -1 : 0;
    }
    int SendTradeRequest(std::shared_ptr<TradeObserver> subscriber,
                         std::shared_ptr<ddsdk::TradeRequestParam> request) override
    {
        const int result = FakeAccount::SendTradeRequest(subscriber, request);
        if (m_answer) {
            m_answer(subscriber, request);
        }
        return result;
    }
    int SetStringMap(const std::string& name, std::shared_ptr<StringMap> map) override
    {
        FakeAccount::SetStringMap(name, map);
        for (const auto& follower : std::vector(m_followers[name])) {
            follower->OnDataPush(name, map);
        }
        return 0;
    }
    std::shared_ptr<HostTable> GetTable(const std::string& name) override
    {
        const std::shared_ptr<HostTable> table = FakeAccount::GetTable(name);
        if (m_lookedUp) {
            m_lookedUp(name);
        }
        return table;
    }

    void Publish(std::shared_ptr<HostTable> table)
    {
        const std::string name = table->Name();
        m_tables[name] = table;
        std::thread([&] {
            for (const auto& follower : std::vector(m_followers[name])) {
                follower->OnTableChanged(name, table);
            }
        }).join();
    }
    // Any but 0 is a loss: nobody follows anything any more.
    void SetLogin(int state)
    {
        m_loggedIn = state == 0;
        if (!m_loggedIn) {
            m_followers.clear();
        }
        std::thread([&] {
            for (const auto& client : m_clients) {
                client->OnLoginState(state);
            }
        }).join();
        QCoreApplication::processEvents();
    }
    // What the requests since the last call want, and from where.
    std::string Asked()
    {
        const auto value = [](const StringMap& map, const char* key) {
            return map.count(key) != 0 ? map.at(key) : "-";
        };
        std::string words;
        for (const auto& request : std::exchange(m_sent, {})) {
            words += (words.empty() ? "" : ", ") + value(request->head, "type") + ' ' +
                     value(request->local, "table_name") + ' ' + value(request->body, "htbh");
        }
        return words;
    }

    std::function<void(std::shared_ptr<TradeObserver>, std::shared_ptr<ddsdk::TradeRequestParam>)> m_answer;
    std::function<void(const std::string&)> m_lookedUp;  // runs before the caller has his answer
    std::vector<std::shared_ptr<TradeObserver>> m_clients;
    bool m_loggedIn = true;
    std::map<std::string, std::vector<std::shared_ptr<TradeObserver>>> m_followers;
};

// Three orders: 浦发银行 bought, two shorter names sold and bought.
const QByteArray kThreeOrders =
    "600000|\xC6\xD6\xB7\xA2\xD2\xF8\xD0\xD0|\xC2\xF2\xC8\xEB|9.50|100|11|16 "
    "000001|b|\xC2\xF4\xB3\xF6|10.20|2000|12|32 600519|c|\xC2\xF2\xC8\xEB|1688.00|300|13|16";

std::shared_ptr<HostTable> Orders(const std::string& name = "chedan_table",
                                  const QByteArray& rows = kThreeOrders)
{
    return TextTable("2102|2103|2109|2127|2126|2135|32009 " + rows, name);
}

// A panel of tables, started as the library does it.
class PanelStage
{
public:
    explicit PanelStage(TablesSpec spec = OrdersSpec(), const char* initData = "{}")
    {
        QDir::setCurrent(m_directory.path());
        InstanceInfo info;
        info.module_id = kOrdersPanelId;
        m_module = std::make_unique<TablesModule>(info, std::move(spec));
        m_module->m_manager = &m_manager;
        m_module->SetProviders(nullptr, static_cast<TradeProvider*>(&m_account));
        m_module->SetColorTable(nullptr);
        Start(initData);
    }
    ~PanelStage()
    {
        m_module.reset();
        QDir::setCurrent(QDir::rootPath());
    }

    void Start(const char* initData)
    {
        const std::string text = std::string(R"({"init_data":)") + initData + "}";
        m_module->Initialize(kOrdersPanelId, "", "", text.c_str());
        QCoreApplication::processEvents();
        Widget().grab();  // lays it out
    }
    void Publish(std::shared_ptr<HostTable> table = Orders())
    {
        m_account.Publish(std::move(table));
        QCoreApplication::processEvents();
    }

    TablesWidget& Widget() const { return *static_cast<TablesWidget*>(m_module->GetWidget()); }
    HostTableView& View(int page = 0, bool margin = false) const { return *Widget().View(page, margin); }

    int ColumnOf(const char* title, int page = 0, bool margin = false) const
    {
        const QAbstractItemModel& model = *View(page, margin).model();
        int column = model.columnCount() - 1;
        while (column >= 0 &&
               model.headerData(column, Qt::Horizontal).toString() != QString::fromUtf8(title)) {
            --column;
        }
        return column;
    }
    // The contracts in the order shown.
    QString Shown(int page = 0, bool margin = false) const
    {
        QStringList keys;
        const QAbstractItemModel& model = *View(page, margin).model();
        for (int row = 0; row < model.rowCount(); ++row) {
            keys.append(model.index(row, ColumnOf("合同编号", page, margin)).data().toString());
        }
        return keys.join(QLatin1Char(' '));
    }
    QVariant Cell(int row, const char* title, int role = Qt::DisplayRole) const
    {
        return View().model()->index(row, ColumnOf(title)).data(role);
    }
    // By the colour of the text: "rise", "fall", or nothing of the kind.
    QByteArray Trend(int row, const char* title) const
    {
        const QVariant color = Cell(row, title, Qt::ForegroundRole);
        return !color.isValid()                              ? ""
               : color.value<QColor>() == TableColors().rise ? "rise"
               : color.value<QColor>() == TableColors().fall ? "fall"
                                                             : "other";
    }
    void Select(const HostTableView& view, int row) const
    {
        view.selectionModel()->select(view.model()->index(row, 0),
                                      QItemSelectionModel::Select | QItemSelectionModel::Rows);
    }
    QString Status() const { return Widget().StatusText(); }
    QLineEdit& Filter() const { return *Widget().findChild<QLineEdit*>("filter"_q); }
    // What was asked for since the last call.
    std::string Asked() { return m_account.Asked(); }

    QTemporaryDir m_directory;
    PublishingAccount m_account;
    RecordingManager m_manager;
    std::unique_ptr<TablesModule> m_module;
};

// With three orders in it.
struct OrdersStage : PanelStage {
    OrdersStage()
    {
        Publish();
        Asked();
    }
};

}  // namespace

class HostTablesTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void TablesAreAskedForAndShown()
    {
        PanelStage stage;
        QCOMPARE(stage.Asked(), "1539 chedan_table -");
        QCOMPARE(stage.Status(), "等待数据"_q);
        stage.Publish();
        QCOMPARE(stage.Shown(), "11 12 13"_q);
        QCOMPARE(stage.Cell(0, "证券名称").toString(), "浦发银行"_q);
        QCOMPARE(stage.Trend(0, "操作") + stage.Trend(1, "操作") + stage.Trend(1, "委托价格"), "risefall");
        QCOMPARE(stage.Status(), "共 3 行"_q);
        // What the host didn't send isn't shown; another account has tables of its own.
        QVERIFY(stage.View().isColumnHidden(stage.ColumnOf("委托时间")));
        QVERIFY(!stage.View().isColumnHidden(stage.ColumnOf("委托价格")));
        stage.Widget().show();
        stage.Widget().activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&stage.Widget()));
        QTest::keyClick(&stage.Widget(), Qt::Key_F5);
        stage.Widget().ShowPage(2, true);
        QCOMPARE(stage.Asked(), "1539 chedan_table -, 2314 rzrq_chengjiao_table -");
        stage.Publish(Orders("rzrq_weituo_table"));
        QCOMPARE(stage.Shown(1, true), "11 12 13"_q);
        QCOMPARE(stage.Shown(1, false), QString());
    }

    void WhatTheHostHasAlreadyIsShownAtOnce()
    {
        PanelStage stage;
        stage.m_account.m_tables["weituo_table"] = Orders("weituo_table");
        for (const char* const shown : {"11 12 13", ""}) {
            stage.m_module->SetProviders(nullptr, static_cast<TradeProvider*>(&stage.m_account));
            stage.Start(R"({"page":"1"})");
            QCOMPARE(stage.Shown(1), QLatin1String(shown));
            // What comes while the panel looks is newer than what it sees.
            stage.m_account.m_lookedUp = [&stage](const std::string& name) {
                if (name == "weituo_table") {
                    stage.m_account.Publish(Orders(name, ""));
                }
            };
        }
    }

    void AfterALogInAllIsFollowedAndAskedForAnew()
    {
        OrdersStage stage;
        const std::size_t followed = stage.m_account.m_followers.size();
        for (const int state : {2, 1}) {
            stage.m_account.SetLogin(state);
            QCOMPARE(stage.m_account.m_followers.size(), std::size_t{0});
        }
        stage.m_account.SetLogin(0);
        QCOMPARE(stage.m_account.m_followers.size(), followed);
        QCOMPARE(stage.Asked(), "1539 chedan_table -");
        stage.Publish(Orders("chedan_table", ""));
        QCOMPARE(stage.Shown(), QString());
        // What was opened meanwhile has never followed anything.
        PublishingAccount account;
        account.SetLogin(2);
        FundsModule funds{InstanceInfo()};
        funds.SetProviders(nullptr, static_cast<TradeProvider*>(&account));
        funds.Initialize(kFundsPanelId, "", "", "{}");
        account.Asked();
        account.SetLogin(0);
        QCOMPARE(account.m_followers.size(), std::size_t{6});
        QCOMPARE(account.Asked(), "1537 gupiao_table -, 5 - -, 2314 - -");
    }

    // But the table of cancellable orders comes by itself.
    void NewsOfAnOrderMakeThePanelsAskAnew()
    {
        OrdersStage stage;
        stage.m_account.m_tables["gupiao_table"] = Orders("gupiao_table", "");
        FundsModule funds{InstanceInfo()};
        funds.SetProviders(nullptr, static_cast<TradeProvider*>(&stage.m_account));
        funds.Initialize(kFundsPanelId, "", "", "{}");
        stage.Publish(Orders("weituo_table"));
        stage.Publish(Orders("rzrq_chedan_table"));
        stage.Asked();
        const auto order = [&] {
            stage.m_account.SetStringMap("auto_refresh_data",
                                         std::make_shared<StringMap>(StringMap{{"htbh", "1"}}));
        };
        order();
        order();
        std::string asked;
        QTRY_COMPARE(asked += stage.Asked(), "5 - -, 2314 - -, 1537 gupiao_table -");
        // The page that is shown is asked for at once, another when it is looked at.
        stage.Widget().ShowPage(1, false);
        QCOMPARE(stage.Asked(), "1539 weituo_table -");
        stage.Publish(Orders("weituo_table"));
        stage.Widget().ShowPage(0, true);
        stage.Widget().ShowPage(1, false);
        QCOMPARE(stage.Asked(), "");
        order();
        asked.clear();
        QTRY_VERIFY((asked += stage.Asked()).find("1539 weituo_table -") != std::string::npos);
        QCOMPARE(asked.find("chedan"), std::string::npos);
    }

    void DirectionsAreReadInTheHostsCodePage()
    {
        QVERIFY(SetHostEncoding("Big5"));
        PanelStage stage;
        stage.Publish(TextTable("2109|2135 \xB6\x52\xB6\x69|1 \xBD\xE6\xA5\x58|2", "chedan_table"));
        SetHostEncoding(kDefaultHostEncoding);
        QCOMPARE(stage.Trend(0, "操作") + stage.Trend(1, "操作"), "risefall");
    }

    void RowsAreSortedByWhatTheyMean()
    {
        OrdersStage stage;
        for (const auto& [title, rising] :
             {std::pair("委托价格", "11 12 13"), {"委托数量", "11 13 12"}, {"证券代码", "12 11 13"}}) {
            stage.View().sortByColumn(stage.ColumnOf(title), Qt::AscendingOrder);
            QCOMPARE(stage.Shown(), QLatin1String(rising));
            stage.Publish();  // news keep the order
            QCOMPARE(stage.Shown(), QLatin1String(rising));
        }
    }

    void AFilterLooksIntoEveryColumn()
    {
        OrdersStage stage;
        // By code, by name, in either case; a point is no pattern.
        for (const auto& [typed, shown] :
             {std::pair("6005", "13"), {"浦发", "11"}, {"C", "13"}, {".", "11 12 13"}, {"zz", ""}}) {
            stage.Filter().setText(QString::fromUtf8(typed));
            QCOMPARE(stage.Shown(), QLatin1String(shown));
            stage.Publish();
            QCOMPARE(stage.Shown(), QLatin1String(shown));
        }
    }

    void SelectedOrdersAreCancelled()
    {
        for (const bool margin : {false, true}) {
            PanelStage stage;
            stage.Widget().ShowPage(0, margin);
            stage.Publish(Orders(margin ? "rzrq_chedan_table" : "chedan_table"));
            HostTableView& view = stage.View(0, margin);
            view.sortByColumn(stage.ColumnOf("委托价格"), Qt::DescendingOrder);
            stage.Asked();
            auto* const button = stage.Widget().findChild<QPushButton*>("cancel"_q);
            QVERIFY(!button->isEnabled());
            QTest::keyClick(&view, Qt::Key_Delete);
            QCOMPARE(stage.Asked(), "");
            stage.Select(view, 0);
            stage.Select(view, 1);
            margin ? button->click() : QTest::keyClick(&view, Qt::Key_Delete);
            QCOMPARE(stage.Asked(), margin ? "2314 - 13, 2314 - 12" : "4 - 13, 4 - 12");
            QVERIFY(stage.Status().contains("已提交撤单 2 笔"_q));
            QCOMPARE(stage.Shown(0, margin), "13 12 11"_q);  // until the host brings it anew
        }
    }

    void ARefusedCancelIsToldAndWhatIsNoOpenOrderIsNotCancelled()
    {
        OrdersStage stage;
        stage.View().selectRow(1);
        stage.m_account.m_result = -1;
        QTest::keyClick(&stage.View(), Qt::Key_Delete);
        QVERIFY(stage.Status().contains("合同 12 未能提交撤单"_q));
        stage.Publish(Orders("weituo_table"));
        stage.Widget().ShowPage(1, false);
        stage.View(1).selectAll();
        stage.Asked();
        QTest::keyClick(&stage.View(1), Qt::Key_Delete);
        QCOMPARE(stage.Asked(), "");
    }

    void NewsKeepTheSelection()
    {
        OrdersStage stage;
        stage.View().selectRow(2);
        stage.Publish(Orders("chedan_table", "600519|c|?|1688.00|200|13|16 600000|a|?|9.50|100|11|16"));
        QCOMPARE(stage.Shown(), "13 11"_q);
        QCOMPARE(stage.View().SelectedRows(), std::vector<int>{0});
        stage.Publish(Orders("chedan_table", ""));
        QVERIFY(stage.View().SelectedRows().empty());
    }

    void RowsAreCopiedAsTheyAreShown()
    {
        OrdersStage stage;
        HostTableView& view = stage.View();
        QCOMPARE(view.SelectionAsText(), QString());
        QHeaderView& header = *view.horizontalHeader();
        header.moveSection(header.visualIndex(stage.ColumnOf("合同编号")), 0);
        view.sortByColumn(stage.ColumnOf("委托数量"), Qt::DescendingOrder);
        stage.Select(view, 0);
        stage.Select(view, 2);
        QTest::keyClick(&view, Qt::Key_C, Qt::ControlModifier);
        QCOMPARE(QApplication::clipboard()->text(),
                 QStringLiteral("合同编号\t证券代码\t证券名称\t操作\t委托价格\t委托数量\n"
                                "12\t000001\tb\t卖出\t10.20\t2000\n"
                                "11\t600000\t浦发银行\t买入\t9.50\t100\n"));
    }

    void ColumnsAreRemembered()
    {
        QTemporaryDir directory;
        QDir::setCurrent(directory.path());
        HostTableModel model({{"2102"}, {"2103"}, {"2127", ColumnKind::Number}}, "2102");
        {
            HostTableView view(&model, "orders/a"_q);
            view.setColumnWidth(1, 222);
            view.horizontalHeader()->moveSection(2, 0);
            view.sortByColumn(2, Qt::DescendingOrder);
        }
        const HostTableView again(&model, "orders/a"_q);
        QCOMPARE(again.columnWidth(1), 222);
        QCOMPARE(again.horizontalHeader()->visualIndex(2), 0);
        model.SetTable(TextTable("2102|2103|2127 a||2 b||10"));
        QCOMPARE(again.model()->index(0, 0).data().toString(), "b"_q);
        const HostTableView other(&model, "orders/b"_q);
        QVERIFY(other.columnWidth(1) != 222);
        QCOMPARE(other.model()->index(0, 0).data().toString(), "a"_q);
        QDir::setCurrent(QDir::rootPath());
    }

    void APickTellsTheOtherPanels()
    {
        PanelStage stage(HoldingsSpec());
        stage.Publish(
            TextTable("2102|2103|2147|32009 600000|\xC6\xD6|-1.50|16 000001|b|2.00|32", "gupiao_table"));
        QCOMPARE(stage.Trend(0, "盈亏") + stage.Trend(1, "盈亏"), "fallrise");
        stage.View().selectRow(0);
        QTest::keyClick(&stage.View(), Qt::Key_Return);
        QCOMPARE(stage.m_manager.sent.size(), std::size_t{1});
        QCOMPARE(stage.m_manager.sent[0].msgId, int{kStockSelected});
        QCOMPARE(stage.m_manager.sent[0].stock,
                 (StringMap{{"market", "16"}, {"stockcode", "600000"}, {"stockname", "浦"}}));
    }

    void ACloneStartsWhereItsSourceStands()
    {
        PanelStage stage;
        stage.Widget().ShowPage(2, true);
        stage.Filter().setText("x"_q);
        const QVariantMap data = stage.Widget().property("module_data").toMap();
        QCOMPARE(data, (QVariantMap{{"page"_q, "2"_q}, {"margin"_q, "1"_q}, {"filter"_q, "x"_q}}));
        PanelStage clone(OrdersSpec(), R"({"page":"2","margin":"1","filter":"x"})");
        QCOMPARE(clone.Widget().ModuleData(), data);
        PanelStage odd(OrdersSpec(), R"({"page":"9"})");
        QCOMPARE(odd.Widget().Page(), 0);
    }

    void APanelThatIsGoneHearsNothing()
    {
        PublishingAccount account;
        for (const bool widgetFirst : {false, true}) {
            auto module = std::make_unique<TablesModule>(InstanceInfo(), OrdersSpec());
            module->SetProviders(nullptr, static_cast<TradeProvider*>(&account));
            module->Initialize(1, "", "", "{}");
            account.Publish(Orders());  // still under way when the panel goes
            if (widgetFirst) {
                delete module->GetWidget();
                module->OnMessage(9001, nullptr);
            }
            module.reset();
            QCOMPARE(account.m_followers.size(), std::size_t{0});
            account.Publish(Orders());
            QCoreApplication::processEvents();
        }
    }

    void WithoutAHostThereIsAnEmptyPanel()
    {
        TablesModule module(InstanceInfo(), HoldingsSpec());
        module.SetProviders(nullptr, nullptr);
        module.Initialize(1, "", "", "{}");
        QTest::keyClick(module.GetWidget(), Qt::Key_F5);
        FundsModule funds{InstanceInfo()};
        funds.SetProviders(nullptr, nullptr);
        funds.Initialize(1, "", "", "{}");
        QCOMPARE(static_cast<FundsWidget*>(funds.GetWidget())->StatusText(), "等待数据"_q);
    }

    void FundsOfAllAccountsStandSideBySide()
    {
        PublishingAccount account;
        account.m_maps["zijin_data_rzrq_0"] = {{"zcc", "7"}, {"rzkyed", "8"}};
        account.m_answer = [](const auto& subscriber, const auto& request) {
            if (request->head.at("type") != "5") {
                return;
            }
            const auto answer = AnswerText{"", "", "zcc=100.00 kyye=40.00", "gpsz=60.00", ""}.Make();
            answer->request = request;
            std::thread([&] { subscriber->OnFundsPush(answer); }).join();
        };
        FundsModule module{InstanceInfo()};
        module.SetProviders(nullptr, static_cast<TradeProvider*>(&account));
        module.Initialize(kFundsPanelId, "", "", "{}");
        auto& widget = *static_cast<FundsWidget*>(module.GetWidget());
        const auto shown = [&widget](const QString& what, bool margin = false) {
            return widget.Shown(what, margin ? "信用账户 · 币种 0"_q : "普通账户"_q);
        };
        QTRY_COMPARE(shown("可用余额"_q), "40.00"_q);
        QCOMPARE(shown("证券市值"_q), "60.00"_q);
        QCOMPARE(shown("融资可用额度"_q, true), "8"_q);
        QCOMPARE(shown("总资产"_q, true), "7"_q);
        // The holdings bring the profit.
        account.Publish(TextTable("2147 1.5 -4", "gupiao_table"));
        QTRY_COMPARE(shown("持仓盈亏"_q), "-2.50"_q);
        QVERIFY(widget.AsText().contains("总资产\t100.00\t7\n"_q));
    }
};

PANELRY_TEST(HostTablesTest)

#include "host_tables_test.moc"
