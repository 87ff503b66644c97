#include "order_ticket/order_ticket_module.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>

#include "panels/recording_manager.h"
#include "support/literals.h"
#include "support/test.h"
#include "support/text_rows.h"
#include "ticket/stage.h"

using namespace panelry;
using namespace panelry::test;

namespace
{

// What the host tells of a stock. That of market 17 has protected limits: an order is asked back.
AnswerText Stock(const QByteArray& market, const QByteArray& code, const QByteArray& more = "")
{
    return {"", "",
            "newprice=10.00 sell_1_price=10.00 buy_1_price=10.00 options=0 codetype=" + market + ' ' + more,
            "wtsl=1234 " + more, "zqmc=x zqdm=" + code};
}

const std::map<QByteArray, AnswerText> kStocks{
    {"asking", Stock("17", "600000")},
    {"limited", Stock("17", "600000", "ztprice=11.00 dtprice=9.00")},
    {"STAR", Stock("17", "688981")},
    {"bond", Stock("19", "123456")},                     // in units of 10
    {"connect", Stock("64", "00700", "options=1024")}};  // in lots of 1000

AnswerText Reply(const QByteArray& body)
{
    return {"", "", "type=3", body, ""};
}

// The panel in front of a host that answers when the test says so.
class OrderStage
{
public:
    explicit OrderStage(const QByteArray& stock = "")
    {
        m_host.m_strings["account"] = "F1";
        m_host.m_maps["scdm_range"] = Fields("0_begin=1 0_end=5 1_begin=6 1_end=9");
        const QByteArray columns = "2167|2108|2106|2170|2212 ";
        m_host.m_tables["account_table"] = TextTable(columns + "1|16|A1|60*;12*|688* 2|64|H1|00*|");
        m_host.m_tables["rzrq_account_table"] = TextTable(columns + "6|16|M6|60*|");
        InstanceInfo info;
        m_module = std::make_unique<OrderTicketModule>(info);
        m_module->m_manager = &m_manager;
        m_module->SetProviders(&m_quotes, &m_host);
        Widget().show();
        if (!stock.isEmpty()) {
            Open(kStocks.at(stock));
        }
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
    QLineEdit& Field(const char* name) const { return Find<QLineEdit>(name); }
    QString Label(const char* name) const { return Find<QLabel>(name).text(); }
    bool Asks() const { return Find<QPushButton>("confirm_yes").isVisible(); }
    QString Said() const { return Widget().MessageText(); }
    QString Entered() const { return Widget().Price() + QLatin1Char(' ') + Widget().Amount(); }

    void Key(int key) const { QTest::keyClick(Widget().focusWidget(), static_cast<Qt::Key>(key)); }
    void Type(const char* name, const QByteArray& text) const
    {
        Field(name).clear();
        QTest::keyClicks(&Field(name), QString::fromLatin1(text));
    }
    void Select(const StringMap& stock)
    {
        m_module->OnMessage(kStockSelected, const_cast<StringMap*>(&stock));
    }

    // Steps, parted by blanks: "order" presses the side's button, "held" is Enter held down, "another" another
    // stock from outside, "order_price=1" types, "order_account=1" chooses, "confirm_yes" presses, "F3" is a key.
    void Do(const QByteArray& steps)
    {
        for (const QByteArray& step : steps.simplified().split(' ')) {
            const QByteArray name = step.split('=')[0];
            const QByteArray value = step.mid(name.size() + 1);
            auto* const child = Widget().findChild<QWidget*>(QLatin1String(name));
            if (step == "order") {
                Button().click();
            } else if (step == "held") {
                QKeyEvent held(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier, QString(), true);
                QApplication::sendEvent(Widget().focusWidget(), &held);
            } else if (step == "another") {
                Select(Fields("stockcode=600001 market=17"));
            } else if (auto* const box = qobject_cast<QComboBox*>(child)) {
                box->setCurrentIndex(value.toInt());
            } else if (auto* const button = qobject_cast<QPushButton*>(child)) {
                button->click();
            } else if (child) {
                Type(name, value);
            } else {
                Key(QKeySequence(QLatin1String(step))[0]);
            }
        }
    }

    // The last request is answered.
    void Answer(const AnswerText& answer) { AnswerAt(m_host.m_sent.size() - 1, answer); }
    void AnswerAt(std::size_t request, const AnswerText& answer)
    {
        m_host.Answer(request, answer);
        QCoreApplication::sendPostedEvents();
    }
    void Open(const AnswerText& stock)
    {
        Type("stock_code", Fields(stock.local).at("zqdm").c_str());
        Field("stock_code").setFocus();
        Key(Qt::Key_Return);
        Answer(stock);
    }
    // Numbers of the orders among the requests.
    std::vector<std::size_t> Orders() const
    {
        std::vector<std::size_t> orders;
        for (std::size_t i = 0; i < m_host.m_sent.size(); ++i) {
            if (m_host.m_sent[i]->head["type"] == "3") {
                orders.push_back(i);
            }
        }
        return orders;
    }
    // An order for the bond, which isn't asked back, is on its way. Returns its request's number.
    std::size_t SendOne(const QByteArray& amount = "3")
    {
        Do("order_price=10.00 order_amount=" + amount + " order");
        return Orders().back();
    }

    KnowingQuoteProvider m_quotes;
    LateTradeProvider m_host;
    RecordingManager m_manager;
    std::unique_ptr<OrderTicketModule> m_module;
};

const AnswerText kTwoStocks{"", "", "", "", "dup=2 s1=11,000001,SH,index s2=21,000001,SZ,two"};

}  // namespace

class OrderTicketTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        Test::init();
        ExpectWarning("propagateSizeHints"_q);
    }

    void AKnownCodeOffersItsPriceAndATypedOneIsToldOnce()
    {
        OrderStage stage;
        stage.Type("stock_code", "999999");
        stage.Answer({});
        QCOMPARE(stage.Widget().StatusText(), "没有找到代码 999999"_q);
        stage.Select(Fields("stockcode=000001 market=33"));
        stage.Answer(Stock("33", "000001", "sell_1_price=0"));
        QCOMPARE(stage.Widget().StatusText() + stage.Widget().Price(), "深圳 000001 x10.00"_q);  // the latest
        QVERIFY(stage.m_manager.sent.empty());
        const AnswerText stock = Stock("17", "600000", "sell_1_price=10.02 buy_1_price=10.01");
        stage.Open(stock);
        QCOMPARE(stage.Widget().StatusText() + stage.Widget().Price(), "上海 600000 x10.02"_q);
        QCOMPARE(stage.Label("usable"), "可买 1234 股"_q);
        stage.Do("F3");
        stage.Answer(stock);
        QCOMPARE(stage.Label("usable") + stage.Widget().Price(), "可卖 1234 股10.01"_q);
        QCOMPARE(stage.m_manager.sent.size(), std::size_t{1});  // the other panels follow it already
        QCOMPARE(Words(stage.m_manager.sent[0].stock), "market=17 stockcode=600000 stockname=x"_q);
    }

    void AnAmbiguousCodeIsChosen()
    {
        OrderStage stage;
        stage.Type("stock_code", "000001");
        stage.Answer(kTwoStocks);
        QCOMPARE(stage.Find<QListWidget>("choices").item(0)->text(), "SH  000001  index"_q);
        stage.Do("Down Return");
        stage.Answer(Stock("33", "000001"));
        QCOMPARE(stage.m_host.m_sent.at(1)->head["setcode"], "33");
        QCOMPARE(stage.Widget().StatusText(), "深圳 000001 x"_q);
    }

    void ACodeThatIsLeftLeavesNoOrderBehind()
    {
        OrderStage stage("asking");
        QTest::keyClick(&stage.Field("stock_code"), Qt::Key_Backspace);
        QCOMPARE(stage.Label("latest") + stage.Label("steps") + stage.Widget().Price(), QString());
        stage.Type("order_price", "10.05");
        QTest::keyClick(&stage.Field("order_price"), Qt::Key_Up);  // there is no step
        stage.Do("order_amount=100 order");
        QCOMPARE(stage.Entered(), "10.05 100"_q);
        QCOMPARE(stage.Said(), "请输入代码！"_q);
        QTest::keyClicks(&stage.Field("stock_code"), "0"_q);  // the same once more
        stage.Answer(kStocks.at("asking"));
        QCOMPARE(stage.Widget().StatusText(), "上海 600000 x"_q);
    }

    void AQuantityByMoneyFollowsThePriceUntilItIsChanged()
    {
        OrderStage stage("asking");
        stage.Type("order_money", "25000");
        QCOMPARE(stage.Entered(), "10.00 2500"_q);
        for (const auto& [price, amount] : {std::pair("9.50", "2600"), {"0", "0"}, {"9.99", "2500"}}) {
            stage.Type("order_price", price);
            QCOMPARE(stage.Widget().Amount(), QLatin1String(amount));
        }
        stage.Do("order_amount=300 order_price=5");
        QCOMPARE(stage.Widget().Amount() + stage.Field("order_money").text(), "300"_q);
        stage.Type("order_money", "25000");
        QTest::keyClick(&stage.Field("order_amount"), Qt::Key_Down);
        QTest::keyClick(&stage.Field("order_price"), Qt::Key_Up);
        QTest::keyClick(&stage.Field("order_price"), Qt::Key_Up);
        QCOMPARE(stage.Entered(), "5.02 4900"_q);  // the money doesn't speak any more
        QTRY_COMPARE(Unlike(stage.m_host.m_sent.back()->body, "wt_price=5.02"), QString());
        stage.Answer({"", "", "", "wtsl=77", ""});
        QCOMPARE(stage.Label("usable"), "可买 77 股"_q);
    }

    void NumbersAtTheirEdges()
    {
        // A step of the host's own may be finer than its prices.
        QCOMPARE(Stepped("10.03"_q, "0.005", 1, 2), "10.035"_q);
        QCOMPARE(Stepped("10.03"_q, "0.05", -1, 2), "9.98"_q);
        QCOMPARE(Stepped(QString(), "100", -1, 0), "0"_q);
        QCOMPARE(InPieces("9999999999999999", Fields("amount_chart_volunit=100000")), "9223372036854700000");
    }

    void PricesMoveWithTheMarket()
    {
        OrderStage stage("asking");
        QCOMPARE(stage.Label("latest"), "10.00"_q);
        stage.m_quotes.Push(QByteArray("stockcode=\x11") +
                            "600000 latest_price=10.50 last_closing_price=10.00");
        QCoreApplication::sendPostedEvents();
        QCOMPARE(stage.Label("latest"), "10.50  +5.00%"_q);
    }

    void APanelThatIsGoneHearsNothing()
    {
        OrderStage stage("bond");
        const std::size_t order = stage.SendOne();
        delete stage.m_module->GetWidget();
        stage.AnswerAt(order - 1, kStocks.at("bond"));
        stage.AnswerAt(order, Reply("ret=0 htbh=1001"));
        stage.m_module.reset();
        stage.AnswerAt(order, Reply("ret=0 htbh=1001"));
    }

    void AnOrderIsSentAsItWasEntered_data()
    {
        const QByteArray connect =
            "gdzh=H1 ggt=1 market=64 mmlb=B scdm=2 wtjg=320.2 wtsl=1000 zjzh=F1 zqdm=00700";
        TextRows("stock account side credit price amount asks body",
                 {{"ordinary", "asking", "0", "F2", "0", "10.05", "200", "yes",
                   "gdzh=A1 market=17 mmlb=B scdm=1 wtjg=10.05 wtsl=200 zjzh=F1 zqdm=600000"},
                  {"sale", "asking", "0", "F3", "0", "9.", "7", "yes",
                   "gdzh=A1 market=17 mmlb=S scdm=1 wtjg=9 wtsl=7 zjzh=F1 zqdm=600000"},
                  {"margin, own cash", "asking", "1", "F2", "0", "10.05", "200", "yes",
                   "gdzh=M6 market=17 mmlb=B rzfs= rzrq=1 scdm=6 wtjg=10.05 wtsl=200 zjzh=F1 zqdm=600000"},
                  {"margin, borrowed cash", "asking", "1", "F2", "1", ".5", "200", "yes",
                   "gdzh=M6 market=17 mmlb=B rzfs=rz rzrq=1 scdm=6 wtjg=0.5 wtsl=200 zjzh=F1 zqdm=600000"},
                  {"margin, pays back", "asking", "1", "F3", "1", "10", "200", "yes",
                   "gdzh=M6 market=17 mmlb=S rzfs=hk rzrq=1 scdm=6 wtjg=10 wtsl=200 zjzh=F1 zqdm=600000"},
                  {"in units of ten", "bond", "0", "F2", "0", "101.236", "3", "",
                   "gdzh=A1 market=19 mmlb=B scdm=1 wtjg=101.236 wtsl=30 zjzh=F1 zqdm=123456"},
                  {"Stock Connect", "connect", "2", "F2", "0", "320.2", "1000", "", connect},
                  {"its market finds the account", "connect", "0", "F2", "0", "320.2", "1000", "", connect},
                  {"and takes it off margin", "connect", "1", "F2", "1", "320.2", "1000", "", connect}});
    }

    void AnOrderIsSentAsItWasEntered()
    {
        OrderStage stage;
        const AnswerText& stock = kStocks.at(Given("stock"));
        stage.Do("order_account=" + Given("account") + ' ' + Given("side"));
        stage.Open(stock);
        if (!stage.m_host.m_sent.back()->local.contains("local_cx_wtsl")) {
            stage.Answer(stock);  // it was asked anew, for the account that fits
        }
        stage.Do("order_credit=" + Given("credit") + " order_price=" + Given("price") +
                 " order_amount=" + Given("amount") + " order");
        QCOMPARE(stage.Asks(), !Given("asks").isEmpty());
        QCOMPARE(stage.Orders().size(), Given("asks").isEmpty() ? std::size_t{1} : 0);
        if (stage.Asks()) {
            stage.Key(Qt::Key_Return);
        }
        QCOMPARE(stage.Orders().size(), std::size_t{1});
        QCOMPARE(Words(stage.m_host.m_sent.at(stage.Orders()[0])->body), GivenString("body"));
    }

    void NothingIsSent_data()
    {
        const QByteArray ask = "order_price=10.00 order_amount=100 order ";
        TextRows("stock steps said asks",
                 {{"without a quantity", "bond", "order", "请输入正确的委托数量"},
                  {"too few of STAR", "STAR", ask, "必须大于等于200股"},
                  {"before the stock is known", "", "stock_code=600000 " + ask, "证券尚未确定"},
                  {"one of several not chosen", "several", ask, "证券尚未确定"},
                  {"of an unknown code", "unknown", ask, "请输入代码"},
                  {"asked", "asking", ask + "order", "买入价格上限", "yes"},
                  {"beyond the limits", "limited", "order_price=20 order_amount=100 order",
                   "已超出涨跌停限制：[9.00 - 11.00]", "yes"},
                  {"taken back by key", "asking", ask + "Esc confirm_yes"},
                  {"taken back", "asking", ask + "confirm_no confirm_yes"},
                  {"Enter held down", "asking", ask + "held", "买入价格上限", "yes"},
                  {"price changed", "asking", ask + "order_price=1 confirm_yes"},
                  {"quantity changed", "asking", ask + "order_amount=1000 confirm_yes"},
                  {"account changed", "asking", ask + "order_account=1 confirm_yes"},
                  {"paid otherwise", "margin", ask + "order_credit=1 confirm_yes"},
                  {"another stock comes", "asking", ask + "another confirm_yes"}});
    }

    void NothingIsSent()
    {
        const QByteArray stock = Given("stock");
        OrderStage stage(kStocks.contains(stock) ? stock : "");
        if (stock == "several" || stock == "unknown") {
            stage.Type("stock_code", "000001");
            stage.Answer(stock == "several" ? kTwoStocks : AnswerText());
        } else if (stock == "margin") {
            stage.Do("order_account=1");
            stage.Open(kStocks.at("asking"));
        }
        stage.Do(Given("steps"));
        QVERIFY2(stage.Said().contains(GivenString("said")), qPrintable(stage.Said()));
        QCOMPARE(stage.Said().isEmpty(), Given("said").isEmpty());
        QCOMPARE(stage.Asks(), !Given("asks").isEmpty());
        QCOMPARE(stage.Orders().size(), std::size_t{0});
    }

    void OneConfirmationSendsOnce()
    {
        OrderStage stage("asking");
        stage.Do("order_price=10.00 order_amount=100");
        for (QPushButton* const button : {&stage.Button(), &stage.Find<QPushButton>("confirm_yes")}) {
            QTest::mouseClick(button, Qt::LeftButton);
            QTest::mouseClick(button, Qt::LeftButton);
        }
        QCOMPARE(stage.Orders().size(), std::size_t{1});
        stage.Button().click();
        Q_EMIT stage.Widget().OrderWanted();
        Q_EMIT stage.Widget().OrderConfirmed();
        QCOMPARE(stage.Orders().size(), std::size_t{1});
        QVERIFY(!stage.Button().isEnabled() && stage.Said().contains("等待柜台答复"_q));
        stage.AnswerAt(stage.Orders()[0], Reply("ret=0 htbh=1001"));
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
        OrderStage stage("bond");
        const std::size_t order = stage.SendOne();
        const std::size_t before = stage.m_host.m_sent.size();
        stage.AnswerAt(order, Reply(Given("reply")));
        QCOMPARE(stage.Said(), GivenString("said"));
        QCOMPARE(stage.m_host.m_sent.size(), before + 1);  // how much is left?
        QCOMPARE(Unlike(stage.m_host.m_sent.back()->local, "local_cx_wtsl=1"), QString());
        stage.Type("order_amount", "5");
        QCOMPARE(stage.Said(), GivenString("said"));  // stays to be read
    }

    void AnAnswerFindsItsOrder()
    {
        OrderStage stage("bond");
        const std::size_t first = stage.SendOne("3");
        auto& patience = stage.Find<QTimer>("answer_awaited");
        QVERIFY(patience.isActive() && patience.interval() == 10'000);
        patience.start(0);
        QTRY_VERIFY(stage.Button().isEnabled());
        patience.setInterval(10'000);
        QVERIFY(stage.Said().contains("柜台尚未答复"_q));
        stage.Open(kStocks.at("asking"));  // another ticket
        stage.Open(kStocks.at("bond"));
        const std::size_t second = stage.SendOne("4");
        stage.AnswerAt(first, Reply("ret=0 htbh=1"));
        QCOMPARE(stage.Said(), "买入 123456，10.00 × 30：委托已提交，合同号 1"_q);
        QVERIFY(!stage.Button().isEnabled() && patience.isActive());  // the second is on its way
        stage.Open(kStocks.at("asking"));
        stage.AnswerAt(second, Reply("ret=-1 ret_text=no"));
        QCOMPARE(stage.Said(), "买入 123456，10.00 × 40：委托被拒绝：no"_q);
        QVERIFY(stage.Button().isEnabled() && !patience.isActive());
        QCOMPARE(stage.Widget().Price(), "10.00"_q);  // of the ticket that is open
    }

    void AnOrderThatDoesNotGoOutIsSaidAtOnce()
    {
        OrderStage stage("bond");
        stage.m_host.m_result = -1;
        stage.SendOne();
        QCOMPARE(stage.Said(), "委托未能送出"_q);
        QVERIFY(stage.Button().isEnabled());
        stage.m_host.m_result = 0;
        stage.Button().click();
        QCOMPARE(stage.Orders().size(), std::size_t{2});
    }

    void EnterGoesFromTheCodeToTheOrder()
    {
        OrderStage stage("bond");
        QByteArray way;
        for (const char* typed : {"101", "2", "", "", "", ""}) {
            const QByteArray name = stage.Widget().focusWidget()->objectName().toLatin1();
            way += name + ' ';
            if (*typed) {
                stage.Do(name + '=' + typed);
            }
            stage.Key(Qt::Key_Return);
        }
        QCOMPARE(way.left(36), "order_price order_amount buy_button ");
        QCOMPARE(stage.Orders().size(), std::size_t{1});  // and isn't repeated
    }

    void QuantitiesStandInTheTicketsUnit_data()
    {
        TextRows(
            "market code more usable unit priceStep step bought money",
            {{"shares", "17", "600000", "", "1234", "股", "0.01", "100", "1200"},
             {"bond in units of ten", "19", "123456", "slbc=10", "123", "手", "0.001", "1", "125"},
             {"units that the host sets", "33", "300750", "options=12288", "12", "手", "0.01", "1", "12"},
             {"Connect, lots by hand", "64", "00700", "options=1024", "1234", "股", "0.01", "1000", "1000"},
             {"Connect, the host's lots", "65", "00005", "slbc=400", "1234", "股", "0.01", "400", "1200"},
             {"and for just a lot", "64", "00700", "slbc=400", "1234", "股", "0.01", "400", "400", "4000"}});
    }

    void QuantitiesStandInTheTicketsUnit()
    {
        OrderStage stage;
        stage.Open(Stock(Given("market"), Given("code"), Given("more")));
        QCOMPARE(stage.Label("usable"), "可买 %1 %2"_q.arg(GivenString("usable"), GivenString("unit")));
        QCOMPARE(stage.Label("steps"),
                 "价格 %1　数量 %2"_q.arg(GivenString("priceStep"), GivenString("step")));
        const QList<QLabel*> labels = stage.Widget().findChildren<QLabel*>();
        const QString amount = "数量（%1）"_q.arg(GivenString("unit"));
        QVERIFY(std::any_of(labels.begin(), labels.end(),
                            [&](QLabel* label) { return label->text() == amount; }));
        const QByteArray money = Given("money");
        stage.Type("order_money", money.isEmpty() ? QByteArray("12500") : money);
        QCOMPARE(stage.Widget().Amount(), GivenString("bought"));
        QTest::keyClick(&stage.Field("order_amount"), Qt::Key_Down);
        QVERIFY(stage.Widget().Amount().toInt() < Given("bought").toInt());
    }

    void AnAccountIsAskedForAndHasItsStocks()
    {
        OrderStage stage;
        stage.Do("order_account=1");
        stage.Open(kStocks.at("connect"));  // not on margin: asked again
        QVERIFY(stage.Widget().Account() == OrderAccount::Connect);
        QCOMPARE(stage.m_host.m_sent.at(0)->body["rzrq"] + '/' + stage.m_host.m_sent.at(1)->body["rzrq"],
                 "1/");
        stage.Answer(kStocks.at("connect"));
        stage.Do("order_account=0");  // which has no such stock
        QCOMPARE(stage.Field("stock_code").text() + stage.Widget().Price(), QString());
        stage.Open(kStocks.at("asking"));
        const std::size_t before = stage.m_host.m_sent.size();
        stage.Do("order_account=1");
        QCOMPARE(Unlike(stage.m_host.m_sent.at(before)->body, "rzrq=1 zqdm=600000"), QString());
        stage.Do("order_account=2 stock_code=00700");  // five digits are a code there
        QCOMPARE(Unlike(stage.m_host.m_sent.back()->body, "zqdm=00700"), QString());
    }
};

PANELRY_TEST(OrderTicketTest)
#include "order_ticket_test.moc"
