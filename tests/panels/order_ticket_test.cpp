#include "order_ticket/order_ticket_module.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>

#include "desk/providers/market_host.h"
#include "panels/recording_manager.h"
#include "support/test.h"
#include "support/text_rows.h"
#include "ticket/stage.h"

using namespace panelry;
using panelry::test::AnswerText;
using panelry::test::Fields;
using panelry::test::Given;
using panelry::test::TextRows;
using panelry::test::Unlike;
using panelry::test::Words;

namespace
{

QString Text(const char* column)
{
    return QString::fromUtf8(Given(column));
}

// The desk's market in the middle of a day on which nobody trades: prices stand as in its file until a test moves them.
desk::MarketHost::Settings QuietMarket()
{
    desk::MarketHost::Settings settings;
    settings.listing = SECURITIES;
    settings.opening = ACCOUNTS;
    settings.changesPerSecond = 0;
    settings.speed = 0;
    settings.startOfDay = std::chrono::hours(10);
    return settings;
}

// The panel in front of that market.
class TicketStage
{
public:
    TicketStage()
    {
        InstanceInfo info;
        info.module_id = kOrderTicketId;
        m_module = std::make_unique<OrderTicketModule>(info);
        m_module->m_manager = &m_manager;
        m_module->SetProviders(m_host.Quotes(), m_host.Trades());
        m_module->Initialize(kOrderTicketId, "", "", "{}");
        Widget().grab();  // lays it out
    }

    OrderTicketWidget& Widget() const { return *static_cast<OrderTicketWidget*>(m_module->GetWidget()); }
    QLineEdit& Field(const char* name) const { return *Widget().findChild<QLineEdit*>(QLatin1String(name)); }
    QString Label(const char* name) const { return Widget().findChild<QLabel*>(QLatin1String(name))->text(); }
    void Press(const char* name) const { Widget().findChild<QPushButton*>(QLatin1String(name))->click(); }
    void Type(const char* name, const QString& text) const
    {
        Field(name).clear();
        QTest::keyClicks(&Field(name), text);
    }
    void TypeCode(const QString& code) const
    {
        Type("stock_code", code);
        QTRY_VERIFY(Widget().StatusText().contains(QStringLiteral("演示")));
    }

    // A lively minute.
    void MoveTheMarket()
    {
        m_host.Market().SetRate(20'000);
        m_host.Market().Step(std::chrono::minutes(1));
    }

    desk::MarketHost m_host{QuietMarket()};
    RecordingManager m_manager;
    std::unique_ptr<OrderTicketModule> m_module;
};

using Request = std::shared_ptr<ddsdk::TradeRequestParam>;

// Keeps the requests and may refuse them.
class OrderHost : public test::LateTradeProvider
{
public:
    int SendTradeRequest(std::shared_ptr<TradeObserver> subscriber, Request request) override
    {
        LateTradeProvider::SendTradeRequest(std::move(subscriber), std::move(request));
        return m_result;
    }
    // Numbers of the orders among the requests.
    std::vector<std::size_t> Orders() const
    {
        std::vector<std::size_t> orders;
        for (std::size_t i = 0; i < m_sent.size(); ++i) {
            if (m_sent[i]->head["type"] == "3") {
                orders.push_back(i);
            }
        }
        return orders;
    }
};

// What the host tells of a stock. That of market 17 has protected limits: an order is asked back.
AnswerText Stock(const QByteArray& market, const QByteArray& code, const QByteArray& more = "")
{
    return {"", "",
            "newprice=10.00 sell_1_price=10.00 buy_1_price=10.00 options=0 codetype=" + market + ' ' + more,
            "wtsl=1234 " + more, "zqmc=x zqdm=" + code};
}

const AnswerText kAsking = Stock("17", "600000");
const AnswerText kBond = Stock("19", "123456");                    // in units of 10
const AnswerText kConnect = Stock("64", "00700", "options=1024");  // in lots of 1000

// The panel in front of a host that answers when the test says so.
class OrderStage
{
public:
    OrderStage()
    {
        m_host.m_strings["account"] = std::make_shared<std::string>("F1");
        m_host.m_maps["scdm_range"] =
            std::make_shared<StringMap>(Fields("0_begin=1 0_end=5 1_begin=6 1_end=9"));
        const QByteArray columns = "2167|2108|2106|2170|2212 ";
        m_host.m_tables["account_table"] = test::TextTable(columns + "1|16|A1|60*;12*|688* 2|64|H1|00*|");
        m_host.m_tables["rzrq_account_table"] = test::TextTable(columns + "6|16|M6|60*|");
        InstanceInfo info;
        info.module_id = kOrderTicketId;
        m_module = std::make_unique<OrderTicketModule>(info);
        m_module->SetProviders(&m_quotes, &m_host);
        Widget().show();
    }

    OrderTicketWidget& Widget() const { return *static_cast<OrderTicketWidget*>(m_module->GetWidget()); }
    template <class Child>
    Child& Find(const char* name) const
    {
        return *Widget().findChild<Child*>(QLatin1String(name));
    }
    QPushButton& Button() const
    {
        return Find<QPushButton>(Widget().Side() == "B" ? "buy_button" : "sell_button");
    }
    void Press(const char* name) const { Find<QPushButton>(name).click(); }
    void Key(int key) const { QTest::keyClick(Widget().focusWidget(), static_cast<Qt::Key>(key)); }
    void Choose(const char* box, int row) const { Find<QComboBox>(box).setCurrentIndex(row); }
    void Type(const char* name, const QByteArray& text) const
    {
        Find<QLineEdit>(name).clear();
        QTest::keyClicks(&Find<QLineEdit>(name), QString::fromLatin1(text));
    }
    // The last request but `back` is answered.
    void Answer(const AnswerText& answer, std::size_t back = 0)
    {
        AnswerAt(m_host.m_sent.size() - 1 - back, answer);
    }
    void AnswerAt(std::size_t request, const AnswerText& answer)
    {
        m_host.Answer(request, answer);
        QCoreApplication::sendPostedEvents();
    }
    void Open(const AnswerText& stock)
    {
        Type("stock_code", Fields(stock.local).at("zqdm").c_str());
        Find<QLineEdit>("stock_code").setFocus();
        Key(Qt::Key_Return);
        Answer(stock);
    }
    void Enter(const QByteArray& price, const QByteArray& amount) const
    {
        Type("order_price", price);
        Type("order_amount", amount);
    }
    // An order for the bond, which isn't asked back, is on its way. Returns its request's number.
    std::size_t SendOne(const QByteArray& amount = "3")
    {
        Enter("10.00", amount);
        Button().click();
        return m_host.Orders().back();
    }
    bool Asks() const { return Find<QPushButton>("confirm_yes").isVisible(); }
    QString Said() const { return Widget().MessageText(); }

    test::KnowingQuoteProvider m_quotes;
    OrderHost m_host;
    std::unique_ptr<OrderTicketModule> m_module;
};

AnswerText Reply(const QByteArray& body)
{
    return {"", "", "type=3", body, ""};
}

}  // namespace

Q_DECLARE_METATYPE(std::function<void(OrderStage&)>)

class OrderTicketTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void ACodeFillsTheTicket_data()
    {
        TextRows(
            "code status price steps usable",
            {{"main board of Shanghai", "600000", "上海 600000 演示银行", "10.02", "价格 0.01　数量 100",
              "可卖 12500 股"},
             {"STAR", "688981", "上海 688981 演示芯片", "51.20", "价格 0.01　数量 1", "可卖 150 股"},
             {"ChiNext", "300750", "深圳 300750 演示电池", "218.60", "价格 0.01　数量 100", "可卖 500 股"},
             {"fund", "510300", "上海 510300 演示三百基金", "3.952", "价格 0.001　数量 100", "可卖 20000 股"},
             {"bond", "019666", "上海 019666 演示国债2201", "101.235", "价格 0.001　数量 10",
              "可卖 120 张"}});
    }

    void ACodeFillsTheTicket()
    {
        TicketStage stage;
        stage.TypeCode(Text("code"));
        QCOMPARE(stage.Widget().StatusText(), Text("status"));
        QCOMPARE(stage.Widget().Price(), Text("price"));
        QCOMPARE(stage.Label("steps"), Text("steps"));
        QTRY_COMPARE(stage.m_manager.sent.size(), std::size_t{1});
        QCOMPARE(stage.m_manager.sent[0].stock.at("stockcode"), Given("code").toStdString());
        QTest::keyClick(&stage.Widget(), Qt::Key_F3);
        QTRY_COMPARE(stage.Label("usable"), Text("usable"));
        QCOMPARE(stage.m_manager.sent.size(), std::size_t{1});  // the other panels follow it already
    }

    void AnAmbiguousCodeIsChosen()
    {
        TicketStage stage;
        stage.Type("stock_code", QStringLiteral("000001"));
        auto* const choices = stage.Widget().findChild<QListWidget*>(QStringLiteral("choices"));
        QTRY_COMPARE(choices->count(), 2);
        QVERIFY(choices->item(0)->text().contains(QStringLiteral("演示综合指数")));
        choices->setCurrentRow(1);
        Q_EMIT choices->itemActivated(choices->item(1));
        QTRY_COMPARE(stage.Widget().StatusText(), QStringLiteral("深圳 000001 演示城商行"));
    }

    void ACodeThatIsLeftLeavesNoOrderBehind()
    {
        TicketStage stage;
        stage.TypeCode(QStringLiteral("600000"));
        QTest::keyClick(&stage.Field("stock_code"), Qt::Key_Backspace);
        QCOMPARE(stage.Label("latest") + stage.Label("steps") + stage.Widget().Price(), QString());
        stage.Type("order_price", QStringLiteral("10.05"));
        QTest::keyClick(&stage.Field("order_price"), Qt::Key_Up);  // there is no step
        QCOMPARE(stage.Widget().Price(), QStringLiteral("10.05"));
        stage.Type("order_amount", QStringLiteral("100"));
        stage.Press("buy_button");
        QCOMPARE(stage.Widget().MessageText(), QStringLiteral("请输入代码！"));
        QTest::keyClicks(&stage.Field("stock_code"), QStringLiteral("0"));  // the same once more
        QTRY_VERIFY(stage.Widget().StatusText().contains(QStringLiteral("演示银行")));
    }

    void OnlyWhatIsTypedAndKnownIsToldTheOtherPanels()
    {
        TicketStage stage;
        stage.Type("stock_code", QStringLiteral("999999"));
        QTRY_VERIFY(stage.Widget().StatusText().contains(QStringLiteral("没有找到代码 999999")));
        StringMap stock{{"stockcode", "000001"}, {"market", "17"}, {"stockname", ""}};
        stage.m_module->OnMessage(kStockSelected, &stock);
        QTRY_COMPARE(stage.Widget().StatusText(), QStringLiteral("上海 000001 演示综合指数"));
        QVERIFY(stage.m_manager.sent.empty());
    }

    void MoneyBuysAQuantityAndKeysStep()
    {
        TicketStage stage;
        stage.TypeCode(QStringLiteral("600000"));
        QTRY_COMPARE(stage.Label("usable"), QStringLiteral("可买 49800 股"));  // at 10.02, with fees
        stage.Type("order_money", QStringLiteral("25000"));
        QCOMPARE(stage.Widget().Amount(), QStringLiteral("2400"));  // at 10.02
        QTest::keyClick(&stage.Field("order_amount"), Qt::Key_Down);
        QTest::keyClick(&stage.Field("order_price"), Qt::Key_Up);
        QTest::keyClick(&stage.Field("order_price"), Qt::Key_Up);
        QCOMPARE(stage.Widget().Amount() + QLatin1Char(' ') + stage.Widget().Price(),
                 QStringLiteral("2300 10.04"));  // the money doesn't speak any more
        QTRY_COMPARE(stage.Label("usable"), QStringLiteral("可买 49700 股"));
    }

    void AQuantityByMoneyFollowsThePrice()
    {
        TicketStage stage;
        stage.TypeCode(QStringLiteral("600000"));
        stage.Type("order_money", QStringLiteral("25000"));
        stage.Type("order_price", QStringLiteral("9.50"));
        QCOMPARE(stage.Widget().Amount(), QStringLiteral("2600"));
        QTest::keyClick(&stage.Field("order_price"), Qt::Key_Down);
        stage.Type("order_price", QStringLiteral("0"));
        QCOMPARE(stage.Widget().Amount(), QStringLiteral("0"));
        stage.Type("order_price", QStringLiteral("9.99"));
        QCOMPARE(stage.Widget().Amount(), QStringLiteral("2500"));
        stage.Type("order_amount", QStringLiteral("300"));
        stage.Type("order_price", QStringLiteral("5"));
        QCOMPARE(stage.Widget().Amount() + stage.Field("order_money").text(), QStringLiteral("300"));
    }

    void AStepOfTheHostsOwnMayBeFinerThanItsPrices()
    {
        QCOMPARE(Stepped(QStringLiteral("10.03"), "0.005", 1, 2), QStringLiteral("10.035"));
        QCOMPARE(Stepped(QStringLiteral("10.03"), "0.05", -1, 2), QStringLiteral("9.98"));
        QCOMPARE(Stepped(QString(), "100", -1, 0), QStringLiteral("0"));
    }

    void AnOrderIsChecked_data()
    {
        TextRows(
            "code price amount notice canGoOn",
            {{"without an amount", "600000", "10.00", "", "请输入正确的委托数量！", ""},
             {"too few of STAR", "688981", "51.00", "100", "必须大于等于200股", ""},
             {"with a protected limit", "600000", "10.00", "100", "买入价格上限", "yes"},
             {"beyond the limits", "600000", "20.00", "100", "已超出涨跌停限制：[9.02 - 11.02]", "yes"}});
    }

    void AnOrderIsChecked()
    {
        const bool canGoOn = !Given("canGoOn").isEmpty();
        TicketStage stage;
        stage.TypeCode(Text("code"));
        stage.Type("order_price", Text("price"));
        stage.Type("order_amount", Text("amount"));
        stage.Press("buy_button");
        QVERIFY2(stage.Widget().MessageText().contains(Text("notice")),
                 qPrintable(stage.Widget().MessageText()));
        QCOMPARE(!stage.Widget().findChild<QPushButton*>(QStringLiteral("confirm_yes"))->isHidden(), canGoOn);
    }

    void AQuestionEndsWithTheOrderThatItWasAskedOf()
    {
        TicketStage stage;
        stage.TypeCode(QStringLiteral("600000"));
        stage.Type("order_amount", QStringLiteral("100"));
        stage.Press("buy_button");
        QVERIFY(!stage.Widget().MessageText().isEmpty());
        QTest::keyClicks(&stage.Field("order_amount"), QStringLiteral("0"));
        QVERIFY(stage.Widget().MessageText().isEmpty());
        stage.Press("buy_button");
        QTest::keyClick(&stage.Widget(), Qt::Key_Escape);
        QVERIFY(stage.Widget().MessageText().isEmpty());
    }

    void PricesMoveWithTheMarket()
    {
        TicketStage stage;
        stage.TypeCode(QStringLiteral("600000"));
        const QString before = stage.Label("latest");
        QVERIFY(before.startsWith(QLatin1String("10.02")));
        stage.MoveTheMarket();
        QTRY_VERIFY(stage.Label("latest") != before);
    }

    void APanelThatIsGoneHearsNothing()
    {
        TicketStage stage;
        stage.Type("stock_code", QStringLiteral("600000"));
        delete stage.m_module->GetWidget();
        QCoreApplication::processEvents();
        stage.m_module.reset();
        stage.MoveTheMarket();
    }
};

PANELRY_TEST(OrderTicketTest)

class OrderSendingTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        Test::init();
        ExpectWarning(QStringLiteral("propagateSizeHints"));
    }

    void AnOrderIsSentAsItWasEntered_data()
    {
        TextRows("stock account side credit price amount asks body",
                 {{"ordinary", "asking", "0", "B", "0", "10.05", "200", "yes",
                   "gdzh=A1 market=17 mmlb=B scdm=1 wtjg=10.05 wtsl=200 zjzh=F1 zqdm=600000"},
                  {"sale", "asking", "0", "S", "0", "9.", "7", "yes",
                   "gdzh=A1 market=17 mmlb=S scdm=1 wtjg=9 wtsl=7 zjzh=F1 zqdm=600000"},
                  {"margin, own cash", "asking", "1", "B", "0", "10.05", "200", "yes",
                   "gdzh=M6 market=17 mmlb=B rzfs= rzrq=1 scdm=6 wtjg=10.05 wtsl=200 zjzh=F1 zqdm=600000"},
                  {"margin, borrowed cash", "asking", "1", "B", "1", ".5", "200", "yes",
                   "gdzh=M6 market=17 mmlb=B rzfs=rz rzrq=1 scdm=6 wtjg=0.5 wtsl=200 zjzh=F1 zqdm=600000"},
                  {"margin, pays back", "asking", "1", "S", "1", "10", "200", "yes",
                   "gdzh=M6 market=17 mmlb=S rzfs=hk rzrq=1 scdm=6 wtjg=10 wtsl=200 zjzh=F1 zqdm=600000"},
                  {"in units of ten", "bond", "0", "B", "0", "101.236", "3", "",
                   "gdzh=A1 market=19 mmlb=B scdm=1 wtjg=101.236 wtsl=30 zjzh=F1 zqdm=123456"},
                  {"Stock Connect", "connect", "2", "B", "0", "320.2", "2000", "",
                   "gdzh=H1 ggt=1 market=64 mmlb=B scdm=2 wtjg=320.2 wtsl=2000 zjzh=F1 zqdm=00700"},
                  {"Stock Connect, found by its market", "connect", "0", "B", "0", "320.2", "1000", "",
                   "gdzh=H1 ggt=1 market=64 mmlb=B scdm=2 wtjg=320.2 wtsl=1000 zjzh=F1 zqdm=00700"},
                  {"Stock Connect, not on margin", "connect", "1", "B", "1", "320.2", "1000", "",
                   "gdzh=H1 ggt=1 market=64 mmlb=B scdm=2 wtjg=320.2 wtsl=1000 zjzh=F1 zqdm=00700"}});
    }

    void AnOrderIsSentAsItWasEntered()
    {
        OrderStage stage;
        const AnswerText stock = Given("stock") == "asking" ? kAsking
                                 : Given("stock") == "bond" ? kBond
                                                            : kConnect;
        stage.Choose("order_account", Given("account").toInt());
        QTest::keyClick(&stage.Widget(), Given("side") == "B" ? Qt::Key_F2 : Qt::Key_F3);
        stage.Open(stock);
        if (!stage.m_host.m_sent.back()->local.contains("local_cx_wtsl")) {
            stage.Answer(stock);  // it was asked anew, for the account that fits
        }
        stage.Choose("order_credit", Given("credit").toInt());
        stage.Enter(Given("price"), Given("amount"));
        stage.Button().click();
        QCOMPARE(stage.Asks(), !Given("asks").isEmpty());
        QCOMPARE(stage.m_host.Orders().size(), Given("asks").isEmpty() ? std::size_t{1} : 0);
        if (stage.Asks()) {
            stage.Key(Qt::Key_Return);
        }
        QCOMPARE(stage.m_host.Orders().size(), std::size_t{1});
        QCOMPARE(Words(stage.m_host.m_sent.at(stage.m_host.Orders()[0])->body), Text("body"));
    }

    void NothingIsSent_data()
    {
        QTest::addColumn<std::function<void(OrderStage&)>>("act");
        QTest::addColumn<QString>("said");
        const auto row = [](const char* name, const std::function<void(OrderStage&)>& act, const char* said) {
            QTest::newRow(name) << act << QString::fromUtf8(said);
        };
        const auto ask = [](OrderStage& stage, const AnswerText& stock = kAsking) {
            stage.Open(stock);
            stage.Enter("10.00", "100");
            stage.Button().click();
        };
        row(
            "without a quantity",
            [](auto& s) {
                s.Open(kBond);
                s.Button().click();
            },
            "请输入正确的委托数量");
        row(
            "too few of STAR", [=](auto& s) { ask(s, Stock("17", "688981")); }, "必须大于等于200股");
        row(
            "before the stock is known",
            [](auto& s) {
                s.Type("stock_code", "600000");
                s.Enter("1", "100");
                s.Button().click();
            },
            "证券尚未确定");
        row(
            "one of several not chosen",
            [](auto& s) {
                s.Type("stock_code", "000001");
                s.Answer({"", "", "", "", "dup=2 s1=11,000001,SH,index s2=21,000001,SZ,two"});
                s.Enter("1", "100");
                s.Button().click();
            },
            "证券尚未确定");
        row(
            "of an unknown code",
            [](auto& s) {
                s.Type("stock_code", "600009");
                s.Answer({});
                s.Enter("1", "100");
                s.Button().click();
            },
            "请输入代码");
        row(
            "asked",
            [=](auto& s) {
                ask(s);
                s.Button().click();
            },
            "买入价格上限");
        row(
            "taken back by key",
            [=](auto& s) {
                ask(s);
                s.Key(Qt::Key_Escape);
                s.Press("confirm_yes");
            },
            "");
        row(
            "taken back",
            [=](auto& s) {
                ask(s);
                s.Press("confirm_no");
                s.Press("confirm_yes");
            },
            "");
        row(
            "Enter held down",
            [=](auto& s) {
                ask(s);
                QKeyEvent held(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier, QString(), true);
                QApplication::sendEvent(s.Widget().focusWidget(), &held);
            },
            "买入价格上限");
        row(
            "price changed",
            [=](auto& s) {
                ask(s);
                s.Type("order_price", "1");
                s.Press("confirm_yes");
            },
            "");
        row(
            "account changed",
            [=](auto& s) {
                ask(s);
                s.Choose("order_account", 1);
                s.Press("confirm_yes");
            },
            "");
        row(
            "paid otherwise",
            [=](auto& s) {
                s.Choose("order_account", 1);
                ask(s);
                s.Choose("order_credit", 1);
                s.Press("confirm_yes");
            },
            "");
        row(
            "another stock comes",
            [=](auto& s) {
                ask(s);
                StringMap stock{{"stockcode", "600001"}, {"market", "17"}};
                s.m_module->OnMessage(kStockSelected, &stock);
                s.Press("confirm_yes");
            },
            "");
    }

    void NothingIsSent()
    {
        QFETCH(std::function<void(OrderStage&)>, act);
        QFETCH(QString, said);
        OrderStage stage;
        act(stage);
        QVERIFY2(stage.Said().contains(said) && stage.Said().isEmpty() == said.isEmpty(),
                 qPrintable(stage.Said()));
        QCOMPARE(stage.m_host.Orders().size(), std::size_t{0});
    }

    void OneConfirmationSendsOnce()
    {
        OrderStage stage;
        stage.Open(kAsking);
        stage.Enter("10.00", "100");
        for (QPushButton* const button : {&stage.Button(), &stage.Find<QPushButton>("confirm_yes")}) {
            QTest::mouseClick(button, Qt::LeftButton);
            QTest::mouseClick(button, Qt::LeftButton);
        }
        QCOMPARE(stage.m_host.Orders().size(), std::size_t{1});
        stage.Button().click();
        Q_EMIT stage.Widget().OrderWanted();
        Q_EMIT stage.Widget().OrderConfirmed();
        QCOMPARE(stage.m_host.Orders().size(), std::size_t{1});
        QVERIFY(!stage.Button().isEnabled() && stage.Said().contains(QStringLiteral("等待柜台答复")));
        stage.AnswerAt(stage.m_host.Orders()[0], Reply("ret=0 htbh=1001"));
        QVERIFY(stage.Button().isEnabled());
    }

    void AnAnswerIsSaid_data()
    {
        TextRows(
            "reply said",
            {{"taken", "ret=0 htbh=1001", "委托已提交，合同号 1001"},
             {"refused", "ret=-1 ret_text=\xd7\xca\xbd\xf0\xb2\xbb\xd7\xe3", "委托被拒绝：资金不足"},
             {"refused and kept", "ret=-1 htbh=7 ret_text=no", "委托被拒绝：no（合同号 7）"},
             {"broken text", "ret=-1 ret_text=\xd7\xca\xff\xd7", "委托被拒绝：资\xef\xbf\xbd\xef\xbf\xbd"},
             {"without a reason", "ret=-1", "委托被拒绝：柜台没有说明原因"},
             {"neither", "htbh=1001", "柜台的答复不完整，请查询委托"}});
    }

    void AnAnswerIsSaid()
    {
        OrderStage stage;
        stage.Open(kBond);
        const std::size_t order = stage.SendOne();
        const std::size_t before = stage.m_host.m_sent.size();
        stage.AnswerAt(order, Reply(Given("reply")));
        QCOMPARE(stage.Said(), Text("said"));
        QCOMPARE(stage.m_host.m_sent.size(), before + 1);  // how much is left?
        QCOMPARE(Unlike(stage.m_host.m_sent.back()->local, "local_cx_wtsl=1"), QString());
        stage.Type("order_amount", "5");
        QCOMPARE(stage.Said(), Text("said"));  // stays to be read
    }

    void AnAnswerFindsItsOrder()
    {
        OrderStage stage;
        stage.Open(kBond);
        const std::size_t first = stage.SendOne("3");
        auto& patience = stage.Find<QTimer>("answer_awaited");
        QVERIFY(patience.isActive() && patience.interval() == 10'000);
        patience.start(0);
        QTRY_VERIFY(stage.Button().isEnabled());
        patience.setInterval(10'000);
        QVERIFY(stage.Said().contains(QStringLiteral("柜台尚未答复")));
        stage.Open(kAsking);  // another ticket
        stage.Open(kBond);
        const std::size_t second = stage.SendOne("4");
        stage.AnswerAt(first, Reply("ret=0 htbh=1"));
        QCOMPARE(stage.Said(), QStringLiteral("买入 123456，10.00 × 30：委托已提交，合同号 1"));
        QVERIFY(!stage.Button().isEnabled() && patience.isActive());  // the second is on its way
        stage.Open(kAsking);
        stage.AnswerAt(second, Reply("ret=-1 ret_text=no"));
        QCOMPARE(stage.Said(), QStringLiteral("买入 123456，10.00 × 40：委托被拒绝：no"));
        QVERIFY(stage.Button().isEnabled() && !patience.isActive());
        QCOMPARE(stage.Widget().Price(), QStringLiteral("10.00"));  // of the ticket that is open
    }

    void AnOrderThatDoesNotGoOutIsSaidAtOnce()
    {
        OrderStage stage;
        stage.Open(kBond);
        stage.m_host.m_result = -1;
        stage.SendOne();
        QCOMPARE(stage.Said(), QStringLiteral("委托未能送出"));
        QVERIFY(stage.Button().isEnabled());
        stage.m_host.m_result = 0;
        stage.Button().click();
        QCOMPARE(stage.m_host.Orders().size(), std::size_t{2});
    }

    void EnterGoesFromTheCodeToTheOrder()
    {
        OrderStage stage;
        stage.Open(kBond);
        QByteArray way;
        for (const char* typed : {"101", "2", ""}) {
            way += stage.Widget().focusWidget()->objectName().toLatin1() + ' ';
            if (*typed) {
                stage.Type(stage.Widget().focusWidget()->objectName().toLatin1(), typed);
            }
            stage.Key(Qt::Key_Return);
        }
        QCOMPARE(way, QByteArray("order_price order_amount buy_button "));
        QCOMPARE(stage.m_host.Orders().size(), std::size_t{1});
        for (int i = 0; i < 3; ++i) {
            stage.Key(Qt::Key_Return);  // the order isn't repeated
        }
        QCOMPARE(stage.m_host.Orders().size(), std::size_t{1});
    }

    void QuantitiesStandInTheTicketsUnit_data()
    {
        TextRows("market code more usable steps label bought money",
                 {{"shares", "17", "600000", "", "可买 1234 股", "价格 0.01　数量 100", "数量（股）", "1200",
                   "12500"},
                  {"bond in units of ten", "19", "123456", "slbc=10", "可买 123 手", "价格 0.001　数量 1",
                   "数量（手）", "125", "12500"},
                  {"units that the host sets", "33", "300750", "options=12288", "可买 12 手",
                   "价格 0.01　数量 1", "数量（手）", "12", "12500"},
                  {"Connect, lots by hand", "64", "00700", "options=1024", "可买 1234 股",
                   "价格 0.01　数量 1000", "数量（股）", "1000", "12500"},
                  {"Connect, lots of the host's", "65", "00005", "options=1024 slbc=400", "可买 1234 股",
                   "价格 0.01　数量 400", "数量（股）", "1200", "12500"},
                  {"Connect, for exactly a lot", "64", "00700", "slbc=400", "可买 1234 股",
                   "价格 0.01　数量 400", "数量（股）", "400", "4000"}});
    }

    void QuantitiesStandInTheTicketsUnit()
    {
        OrderStage stage;
        const AnswerText stock = Stock(Given("market"), Given("code"), Given("more"));
        stage.Open(stock);
        QCOMPARE(stage.Find<QLabel>("usable").text(), Text("usable"));
        QCOMPARE(stage.Find<QLabel>("steps").text(), Text("steps"));
        const QList<QLabel*> labels = stage.Widget().findChildren<QLabel*>();
        QVERIFY(std::any_of(labels.begin(), labels.end(),
                            [](QLabel* label) { return label->text() == Text("label"); }));
        stage.Type("order_money", Given("money"));
        QCOMPARE(stage.Widget().Amount(), Text("bought"));
        QTest::keyClick(&stage.Find<QLineEdit>("order_amount"), Qt::Key_Down);
        QVERIFY(stage.Widget().Amount().toInt() < Given("bought").toInt());
    }

    void AQuantityBeyondAllNumbersIsTheLargest()
    {
        QCOMPARE(InPieces("9999999999999999", Fields("amount_chart_volunit=100000")),
                 std::string("9223372036854700000"));
    }

    void AnAccountIsAskedForAndHasItsStocks()
    {
        OrderStage stage;
        stage.Choose("order_account", 1);
        stage.Open(kConnect);  // not on margin: asked again
        QVERIFY(stage.Widget().Account() == OrderAccount::Connect);
        QCOMPARE(stage.m_host.m_sent.at(0)->body["rzrq"] + '/' + stage.m_host.m_sent.at(1)->body["rzrq"],
                 std::string("1/"));
        stage.Answer(kConnect);
        stage.Choose("order_account", 0);  // which has no such stock
        QCOMPARE(stage.Find<QLineEdit>("stock_code").text() + stage.Widget().Price(), QString());
        stage.Open(kAsking);
        const std::size_t before = stage.m_host.m_sent.size();
        stage.Choose("order_account", 1);
        QCOMPARE(Unlike(stage.m_host.m_sent.at(before)->body, "rzrq=1 zqdm=600000"), QString());
        stage.Choose("order_account", 2);
        stage.Type("stock_code", "00700");  // five digits are a code there
        QCOMPARE(Unlike(stage.m_host.m_sent.back()->body, "zqdm=00700"), QString());
    }
};

PANELRY_TEST(OrderSendingTest)
#include "order_ticket_test.moc"
