// The panels of orders, holdings and funds in front of a host that keeps tables.

#include <QApplication>
#include <QClipboard>
#include <QHeaderView>
#include <QLineEdit>
#include <QPushButton>
#include <QTemporaryDir>
#include <mutex>
#include <thread>

#include "base/host_text.h"
#include "funds/funds_module.h"
#include "holdings/holdings_spec.h"
#include "host_tables/host_table_view.h"
#include "host_tables/tables_module.h"
#include "orders/orders_spec.h"
#include "panels/recording_manager.h"
#include "support/test.h"
#include "tables/fake_account.h"

using namespace panelry;
using namespace panelry::test;

namespace
{

// Publishes tables and maps, and keeps who follows them. Any thread.
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
        const std::lock_guard guard(m_followLock);
        if (on && !m_loggedIn) {
            return -1;
        }
        if (on) {
            m_followers[name].push_back(std::move(subscriber));
        } else {
            m_followers.erase(name);
        }
        return 0;
    }
    int SendTradeRequest(std::shared_ptr<TradeObserver> subscriber,
                         std::shared_ptr<ddsdk::TradeRequestParam> request) override
    {
        FakeAccount::SendTradeRequest(subscriber, request);
        if (m_answer) {
            m_answer(subscriber, request);
        }
        return m_result;
    }
    int SetStringMap(const std::string& name, std::shared_ptr<StringMap> map) override
    {
        FakeAccount::SetStringMap(name, map);
        Tell(name, [&](TradeObserver& follower) { follower.OnDataPush(name, map); });
        return 0;
    }
    std::shared_ptr<HostTable> GetTable(const std::string& name) override
    {
        const auto found = m_tables.find(name);
        const std::shared_ptr<HostTable> table = found == m_tables.end() ? nullptr : found->second;
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
            Tell(name, [&](TradeObserver& follower) { follower.OnTableChanged(name, table); });
        }).join();
    }
    // Any but 0 is a loss: nobody follows anything any more.
    void SetLogin(int state)
    {
        {
            const std::lock_guard guard(m_followLock);
            m_loggedIn = state == 0;
            if (!m_loggedIn) {
                m_followers.clear();
            }
        }
        std::thread([&] {
            for (const auto& client : m_clients) {
                client->OnLoginState(state);
            }
        }).join();
        QCoreApplication::processEvents();
    }
    std::size_t Followers()
    {
        const std::lock_guard guard(m_followLock);
        return m_followers.size();
    }

    int m_result = 0;
    std::function<void(std::shared_ptr<TradeObserver>, std::shared_ptr<ddsdk::TradeRequestParam>)> m_answer;
    std::function<void(const std::string&)> m_lookedUp;  // runs before the caller has his answer
    std::map<std::string, std::shared_ptr<HostTable>> m_tables;

private:
    template <class News>
    void Tell(const std::string& name, News news)
    {
        std::unique_lock guard(m_followLock);
        const auto followers = m_followers[name];
        guard.unlock();
        for (const auto& follower : followers) {
            news(*follower);
        }
    }

    std::vector<std::shared_ptr<TradeObserver>> m_clients;
    std::mutex m_followLock;  // guards the next two
    bool m_loggedIn = true;
    std::map<std::string, std::vector<std::shared_ptr<TradeObserver>>> m_followers;
};

const std::vector<std::string> kOrderColumns{"2102", "2103", "2109", "2127", "2126", "2135", "32009"};
constexpr char kBuy[] = "\xC2\xF2\xC8\xEB";
constexpr char kSell[] = "\xC2\xF4\xB3\xF6";
constexpr char kPuFa[] = "\xC6\xD6\xB7\xA2\xD2\xF8\xD0\xD0";  // 浦发银行

std::shared_ptr<HostTable> ThreeOrders(const std::string& name = "chedan_table")
{
    return std::make_shared<FakeTable>(name, kOrderColumns,
                                       FakeTable::Rows{{"600000", kPuFa, kBuy, "9.50", "100", "11", "16"},
                                                       {"000001", "b", kSell, "10.20", "2000", "12", "32"},
                                                       {"600519", "c", kBuy, "1688.00", "300", "13", "16"}});
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
    void Publish(std::shared_ptr<HostTable> table)
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
    void Select(const HostTableView& view, int row) const
    {
        view.selectionModel()->select(view.model()->index(row, 0),
                                      QItemSelectionModel::Select | QItemSelectionModel::Rows);
    }

    QTemporaryDir m_directory;
    PublishingAccount m_account;
    RecordingManager m_manager;
    std::unique_ptr<TablesModule> m_module;
};

// With three orders in it.
struct OrdersStage : PanelStage {
    OrdersStage() { Publish(ThreeOrders()); }
};

// What the requests want, and from where.
std::string Words(const std::vector<ddsdk::TradeRequestParam>& requests)
{
    const auto value = [](StringMap map, const char* key) { return map.count(key) ? map[key] : "-"; };
    std::string words;
    for (const auto& request : requests) {
        words += (words.empty() ? "" : ", ") + value(request.head, "type") + ' ' +
                 value(request.local, "table_name") + ' ' + value(request.body, "htbh");
    }
    return words;
}

}  // namespace

class HostTablesTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void TablesAreAskedForAndShown()
    {
        PanelStage stage;
        QCOMPARE(Words(stage.m_account.m_requests), std::string("1539 chedan_table -"));
        QCOMPARE(stage.Widget().StatusText(), QStringLiteral("等待数据"));
        stage.Publish(ThreeOrders());
        QCOMPARE(stage.Shown(), QStringLiteral("11 12 13"));
        QCOMPARE(stage.Cell(0, "证券名称").toString(), QStringLiteral("浦发银行"));
        QCOMPARE(stage.Cell(0, "操作", Qt::ForegroundRole).value<QColor>(), TableColors().rise);
        QCOMPARE(stage.Cell(1, "操作", Qt::ForegroundRole).value<QColor>(), TableColors().fall);
        QVERIFY(!stage.Cell(1, "委托价格", Qt::ForegroundRole).isValid());
        QCOMPARE(stage.Widget().StatusText(), QStringLiteral("共 3 行"));
        // What the host didn't send isn't shown; another account has tables of its own.
        QVERIFY(stage.View().isColumnHidden(stage.ColumnOf("委托时间")));
        QVERIFY(!stage.View().isColumnHidden(stage.ColumnOf("委托价格")));
        stage.m_account.m_requests.clear();
        stage.Widget().show();
        stage.Widget().activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&stage.Widget()));
        QTest::keyClick(&stage.Widget(), Qt::Key_F5);
        stage.Widget().ShowPage(2, true);
        QCOMPARE(Words(stage.m_account.m_requests),
                 std::string("1539 chedan_table -, 2314 rzrq_chengjiao_table -"));
        stage.Publish(ThreeOrders("rzrq_weituo_table"));
        QCOMPARE(stage.Shown(1, true), QStringLiteral("11 12 13"));
        QCOMPARE(stage.Shown(1, false), QString());
    }

    void WhatTheHostHasAlreadyIsShownAtOnce()
    {
        PanelStage stage;
        stage.m_account.m_tables["weituo_table"] = ThreeOrders("weituo_table");
        stage.m_module->SetProviders(nullptr, static_cast<TradeProvider*>(&stage.m_account));
        stage.Start(R"({"page":"1"})");
        QCOMPARE(stage.Shown(1), QStringLiteral("11 12 13"));
        // What comes while the panel looks is newer than what it sees.
        stage.m_account.m_lookedUp = [&stage](const std::string& name) {
            if (name == "weituo_table") {
                stage.m_account.Publish(std::make_shared<FakeTable>(name, kOrderColumns, FakeTable::Rows{}));
            }
        };
        stage.m_module->SetProviders(nullptr, static_cast<TradeProvider*>(&stage.m_account));
        stage.Start(R"({"page":"1"})");
        QCOMPARE(stage.Shown(1), QString());
    }

    void AfterALogInAllIsFollowedAndAskedForAnew()
    {
        OrdersStage stage;
        const std::size_t followed = stage.m_account.Followers();
        stage.m_account.m_requests.clear();
        for (const int state : {2, 1}) {
            stage.m_account.SetLogin(state);
            QCOMPARE(stage.m_account.Followers(), std::size_t{0});
        }
        stage.m_account.SetLogin(0);
        QCOMPARE(stage.m_account.Followers(), followed);
        QCOMPARE(Words(stage.m_account.m_requests), std::string("1539 chedan_table -"));
        stage.Publish(std::make_shared<FakeTable>("chedan_table", kOrderColumns, FakeTable::Rows{}));
        QCOMPARE(stage.Shown(), QString());
        // What was opened meanwhile has never followed anything.
        PublishingAccount account;
        account.SetLogin(2);
        InstanceInfo info;
        FundsModule funds(info);
        funds.SetProviders(nullptr, static_cast<TradeProvider*>(&account));
        funds.Initialize(kFundsPanelId, "", "", "{}");
        account.m_requests.clear();
        account.SetLogin(0);
        QCOMPARE(account.Followers(), std::size_t{5});
        QCOMPARE(Words(account.m_requests), std::string("1537 gupiao_table -, 5 - -, 2314 - -"));
    }

    void DirectionsAreReadInTheHostsCodePage()
    {
        QVERIFY(SetHostEncoding("Big5"));
        PanelStage stage;
        stage.Publish(std::make_shared<FakeTable>(
            "chedan_table", std::vector<std::string>{"2109", "2135"},
            FakeTable::Rows{{"\xB6\x52\xB6\x69", "1"}, {"\xBD\xE6\xA5\x58", "2"}}));
        SetHostEncoding(kDefaultHostEncoding);
        QCOMPARE(stage.Cell(0, "操作", Qt::ForegroundRole).value<QColor>(), TableColors().rise);
        QCOMPARE(stage.Cell(1, "操作", Qt::ForegroundRole).value<QColor>(), TableColors().fall);
    }

    void RowsAreSortedByWhatTheyMean()
    {
        OrdersStage stage;
        for (const auto& [title, rising] :
             {std::pair("委托价格", "11 12 13"), std::pair("委托数量", "11 13 12"),
              std::pair("证券代码", "12 11 13")}) {
            stage.View().sortByColumn(stage.ColumnOf(title), Qt::AscendingOrder);
            QCOMPARE(stage.Shown(), QLatin1String(rising));
            stage.Publish(ThreeOrders());  // news keep the order
            QCOMPARE(stage.Shown(), QLatin1String(rising));
        }
    }

    void AFilterLooksIntoEveryColumn()
    {
        OrdersStage stage;
        auto* const filter = stage.Widget().findChild<QLineEdit*>(QStringLiteral("filter"));
        // By code, by name, in either case; a point is no pattern.
        for (const auto& [typed, shown] :
             {std::pair("6005", "13"), std::pair("浦发", "11"), std::pair("C", "13"),
              std::pair(".", "11 12 13"), std::pair("zz", "")}) {
            filter->setText(QString::fromUtf8(typed));
            QCOMPARE(stage.Shown(), QLatin1String(shown));
            stage.Publish(ThreeOrders());
            QCOMPARE(stage.Shown(), QLatin1String(shown));
        }
    }

    void SelectedOrdersAreCancelled()
    {
        for (const bool margin : {false, true}) {
            PanelStage stage;
            stage.Widget().ShowPage(0, margin);
            stage.Publish(ThreeOrders(margin ? "rzrq_chedan_table" : "chedan_table"));
            HostTableView& view = stage.View(0, margin);
            view.sortByColumn(stage.ColumnOf("委托价格"), Qt::DescendingOrder);
            stage.m_account.m_requests.clear();
            auto* const button = stage.Widget().findChild<QPushButton*>(QStringLiteral("cancel"));
            QVERIFY(!button->isEnabled());
            QTest::keyClick(&view, Qt::Key_Delete);
            QCOMPARE(Words(stage.m_account.m_requests), std::string());
            stage.Select(view, 0);
            stage.Select(view, 1);
            margin ? button->click() : QTest::keyClick(&view, Qt::Key_Delete);
            QCOMPARE(Words(stage.m_account.m_requests),
                     std::string(margin ? "2314 - 13, 2314 - 12" : "4 - 13, 4 - 12"));
            QVERIFY(stage.Widget().StatusText().contains(QStringLiteral("已提交撤单 2 笔")));
            QCOMPARE(stage.Shown(0, margin), QStringLiteral("13 12 11"));  // until the host brings it anew
        }
    }

    void ARefusedCancelIsToldAndWhatIsNoOpenOrderIsNotCancelled()
    {
        OrdersStage stage;
        stage.View().selectRow(1);
        stage.m_account.m_result = -1;
        QTest::keyClick(&stage.View(), Qt::Key_Delete);
        QVERIFY(stage.Widget().StatusText().contains(QStringLiteral("合同 12 未能提交撤单")));
        stage.Publish(ThreeOrders("weituo_table"));
        stage.Widget().ShowPage(1, false);
        stage.View(1).selectAll();
        stage.m_account.m_requests.clear();
        QTest::keyClick(&stage.View(1), Qt::Key_Delete);
        QVERIFY(stage.m_account.m_requests.empty());
    }

    void NewsKeepTheSelection()
    {
        OrdersStage stage;
        stage.View().selectRow(2);
        stage.Publish(
            std::make_shared<FakeTable>("chedan_table", kOrderColumns,
                                        FakeTable::Rows{{"600519", "c", kBuy, "1688.00", "200", "13", "16"},
                                                        {"600000", "a", kBuy, "9.50", "100", "11", "16"}}));
        QCOMPARE(stage.Shown(), QStringLiteral("13 11"));
        QCOMPARE(stage.View().SelectedRows(), std::vector<int>{0});
        stage.Publish(std::make_shared<FakeTable>("chedan_table", kOrderColumns, FakeTable::Rows{}));
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
            HostTableView view(&model, QStringLiteral("orders/a"));
            view.setColumnWidth(1, 222);
            view.horizontalHeader()->moveSection(2, 0);
            view.sortByColumn(2, Qt::DescendingOrder);
        }
        const HostTableView again(&model, QStringLiteral("orders/a"));
        QCOMPARE(again.columnWidth(1), 222);
        QCOMPARE(again.horizontalHeader()->visualIndex(2), 0);
        model.SetTable(std::make_shared<FakeTable>("t", std::vector<std::string>{"2102", "2103", "2127"},
                                                   FakeTable::Rows{{"a", "", "2"}, {"b", "", "10"}}));
        QCOMPARE(again.model()->index(0, 0).data().toString(), QStringLiteral("b"));
        const HostTableView other(&model, QStringLiteral("orders/b"));
        QVERIFY(other.columnWidth(1) != 222);
        QCOMPARE(other.model()->index(0, 0).data().toString(), QStringLiteral("a"));
        QDir::setCurrent(QDir::rootPath());
    }

    void APickTellsTheOtherPanels()
    {
        PanelStage stage(HoldingsSpec());
        stage.Publish(std::make_shared<FakeTable>(
            "gupiao_table", std::vector<std::string>{"2102", "2103", "2147", "32009"},
            FakeTable::Rows{{"600000", kPuFa, "-1.50", "16"}, {"000001", "b", "2.00", "32"}}));
        QCOMPARE(stage.Cell(0, "盈亏", Qt::ForegroundRole).value<QColor>(), TableColors().fall);
        QCOMPARE(stage.Cell(1, "盈亏", Qt::ForegroundRole).value<QColor>(), TableColors().rise);
        stage.View().selectRow(0);
        QTest::keyClick(&stage.View(), Qt::Key_Return);
        QCOMPARE(stage.m_manager.sent.size(), std::size_t{1});
        QCOMPARE(stage.m_manager.sent[0].msgId, int{kStockSelected});
        QCOMPARE(stage.m_manager.sent[0].stock,
                 (StringMap{{"market", "16"}, {"stockcode", "600000"}, {"stockname", "浦发银行"}}));
    }

    void ACloneStartsWhereItsSourceStands()
    {
        PanelStage stage;
        stage.Widget().ShowPage(2, true);
        stage.Widget().findChild<QLineEdit*>(QStringLiteral("filter"))->setText(QStringLiteral("x"));
        const QVariantMap data = stage.Widget().property("module_data").toMap();
        QCOMPARE(data, (QVariantMap{{QStringLiteral("page"), QStringLiteral("2")},
                                    {QStringLiteral("margin"), QStringLiteral("1")},
                                    {QStringLiteral("filter"), QStringLiteral("x")}}));
        PanelStage clone(OrdersSpec(), R"({"page":"2","margin":"1","filter":"x"})");
        QCOMPARE(clone.Widget().ModuleData(), data);
        PanelStage odd(OrdersSpec(), R"({"page":"9"})");
        QCOMPARE(odd.Widget().Page(), 0);
    }

    void APanelThatIsGoneHearsNothing()
    {
        PublishingAccount account;
        for (const bool widgetFirst : {false, true}) {
            InstanceInfo info;
            auto module = std::make_unique<TablesModule>(info, OrdersSpec());
            module->SetProviders(nullptr, static_cast<TradeProvider*>(&account));
            module->Initialize(1, "", "", "{}");
            account.Publish(ThreeOrders());  // still under way when the panel goes
            if (widgetFirst) {
                delete module->GetWidget();
                module->OnMessage(9001, nullptr);
            }
            module.reset();
            QCOMPARE(account.Followers(), std::size_t{0});
            account.Publish(ThreeOrders());
            QCoreApplication::processEvents();
        }
    }

    void WithoutAHostThereIsAnEmptyPanel()
    {
        InstanceInfo info;
        TablesModule module(info, HoldingsSpec());
        module.SetProviders(nullptr, nullptr);
        module.Initialize(1, "", "", "{}");
        QTest::keyClick(module.GetWidget(), Qt::Key_F5);
        FundsModule funds(info);
        funds.SetProviders(nullptr, nullptr);
        funds.Initialize(1, "", "", "{}");
        QCOMPARE(static_cast<FundsWidget*>(funds.GetWidget())->StatusText(), QStringLiteral("等待数据"));
    }

    void FundsOfAllAccountsStandSideBySide()
    {
        PublishingAccount account;
        account.m_maps["zijin_data_rzrq_0"] = {{"zcc", "7"}, {"rzkyed", "8"}};
        account.m_answer = [](const auto& subscriber, const auto& request) {
            if (request->head.at("type") != "5") {
                return;
            }
            auto answer = std::make_shared<StockInfoAnswer>();
            answer->request = request;
            answer->reply = std::make_shared<ddsdk::TradeRequestParam>();
            answer->reply->head = {{"zcc", "100.00"}, {"kyye", "40.00"}};
            answer->reply->body = {{"gpsz", "60.00"}};
            std::thread([&] { subscriber->OnFundsPush(answer); }).join();
        };
        InstanceInfo info;
        FundsModule module(info);
        module.SetProviders(nullptr, static_cast<TradeProvider*>(&account));
        module.Initialize(kFundsPanelId, "", "", "{}");
        auto& widget = *static_cast<FundsWidget*>(module.GetWidget());
        const QString normal = QStringLiteral("普通账户");
        const QString margin = QStringLiteral("信用账户 · 币种 0");
        QTRY_COMPARE(widget.Shown(QStringLiteral("可用余额"), normal), QStringLiteral("40.00"));
        QCOMPARE(widget.Shown(QStringLiteral("证券市值"), normal), QStringLiteral("60.00"));
        QCOMPARE(widget.Shown(QStringLiteral("融资可用额度"), margin), QStringLiteral("8"));
        QCOMPARE(widget.Shown(QStringLiteral("总资产"), margin), QStringLiteral("7"));
        // The holdings bring the profit.
        account.Publish(std::make_shared<FakeTable>("gupiao_table", std::vector<std::string>{"2147"},
                                                    FakeTable::Rows{{"1.5"}, {"-4"}}));
        QTRY_COMPARE(widget.Shown(QStringLiteral("持仓盈亏"), normal), QStringLiteral("-2.50"));
        QCOMPARE(widget.Shown(QStringLiteral("总资产"), normal), QStringLiteral("100.00"));
        QVERIFY(widget.AsText().contains(QStringLiteral("总资产\t100.00\t7\n")));
    }
};

PANELRY_TEST(HostTablesTest)

#include "host_tables_test.moc"
