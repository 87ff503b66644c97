#include "order_ticket/order_ticket_module.h"

#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTemporaryFile>

#include "desk/demo_host.h"
#include "panels/recording_manager.h"
#include "support/test.h"
#include "support/text_rows.h"

using namespace panelry;
using panelry::test::Given;
using panelry::test::TextRows;

namespace
{

QString Text(const char* column)
{
    return QString::fromUtf8(Given(column));
}

// The panel in front of the desk's market; prices stand as in its file until somebody moves them.
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
        Type("code", code);
        QTRY_VERIFY(Widget().StatusText().contains(QStringLiteral("演示")));
    }

    desk::DemoHost m_host{DEMO_MARKET};
    RecordingManager m_manager;
    std::unique_ptr<OrderTicketModule> m_module;
};

}  // namespace

class OrderTicketTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void ACodeFillsTheTicket_data()
    {
        TextRows(
            "code status price steps usable",
            {{"main board of Shanghai", "600000", "上海 600000 演示银行", "10.03", "价格 0.01　数量 100",
              "可卖 12500 股"},
             {"STAR", "688981", "上海 688981 演示芯片", "51.21", "价格 0.01　数量 1", "可卖 150 股"},
             {"ChiNext", "300750", "深圳 300750 演示电池", "218.61", "价格 0.01　数量 100", "可卖 500 股"},
             {"fund", "510300", "上海 510300 演示指数基金", "3.953", "价格 0.001　数量 100", "可卖 20000 股"},
             {"bond", "019666", "上海 019666 演示国债", "101.236", "价格 0.001　数量 100", "可卖 120 张"}});
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
        stage.Type("code", QStringLiteral("000001"));
        auto* const choices = stage.Widget().findChild<QListWidget*>(QStringLiteral("choices"));
        QTRY_COMPARE(choices->count(), 2);
        QVERIFY(choices->item(1)->text().contains(QStringLiteral("演示综合指数")));
        choices->setCurrentRow(0);
        Q_EMIT choices->itemActivated(choices->item(0));
        QTRY_COMPARE(stage.Widget().StatusText(), QStringLiteral("深圳 000001 演示平安"));
    }

    void ACodeThatIsLeftLeavesNoOrderBehind()
    {
        TicketStage stage;
        stage.TypeCode(QStringLiteral("600000"));
        QTest::keyClick(&stage.Field("code"), Qt::Key_Backspace);
        QCOMPARE(stage.Label("latest") + stage.Label("steps") + stage.Widget().Price(), QString());
        stage.Type("price", QStringLiteral("10.05"));
        QTest::keyClick(&stage.Field("price"), Qt::Key_Up);  // there is no step
        QCOMPARE(stage.Widget().Price(), QStringLiteral("10.05"));
        stage.Type("amount", QStringLiteral("100"));
        stage.Press("order");
        QCOMPARE(stage.Widget().NoticeText(), QStringLiteral("请输入代码！"));
        QTest::keyClicks(&stage.Field("code"), QStringLiteral("0"));  // the same once more
        QTRY_VERIFY(stage.Widget().StatusText().contains(QStringLiteral("演示银行")));
    }

    void OnlyWhatIsTypedAndKnownIsToldTheOtherPanels()
    {
        TicketStage stage;
        stage.Type("code", QStringLiteral("999999"));
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
        QTRY_COMPARE(stage.Label("usable"), QStringLiteral("可买 49850 股"));  // at 10.03
        stage.Type("money", QStringLiteral("25000"));
        QCOMPARE(stage.Widget().Amount(), QStringLiteral("2400"));  // at 10.03
        QTest::keyClick(&stage.Field("amount"), Qt::Key_Down);
        QTest::keyClick(&stage.Field("price"), Qt::Key_Up);
        QTest::keyClick(&stage.Field("price"), Qt::Key_Up);
        QCOMPARE(stage.Widget().Amount() + QLatin1Char(' ') + stage.Widget().Price(),
                 QStringLiteral("2300 10.05"));
        QTRY_COMPARE(stage.Label("usable"), QStringLiteral("可买 49751 股"));  // 500000 at 10.05
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
        stage.Type("price", Text("price"));
        stage.Type("amount", Text("amount"));
        QTest::keyClick(&stage.Field("amount"), Qt::Key_Return);
        QVERIFY2(stage.Widget().NoticeText().contains(Text("notice")),
                 qPrintable(stage.Widget().NoticeText()));
        QCOMPARE(!stage.Widget().findChild<QPushButton*>(QStringLiteral("confirm"))->isHidden(), canGoOn);
        const QString passed = QStringLiteral("已通过检查");
        QVERIFY(!stage.Widget().StatusText().contains(passed));
        if (canGoOn) {
            stage.Press("confirm");
            QVERIFY(stage.Widget().StatusText().contains(passed));
        }
    }

    void AQuestionEndsWithTheOrderThatItWasAskedOf()
    {
        TicketStage stage;
        stage.TypeCode(QStringLiteral("600000"));
        stage.Type("amount", QStringLiteral("100"));
        stage.Press("order");
        QVERIFY(!stage.Widget().NoticeText().isEmpty());
        QTest::keyClicks(&stage.Field("amount"), QStringLiteral("0"));
        QVERIFY(stage.Widget().NoticeText().isEmpty());
        stage.Press("order");
        QTest::keyClick(&stage.Widget(), Qt::Key_Escape);
        QVERIFY(stage.Widget().NoticeText().isEmpty());
    }

    void PricesMoveWithTheMarket()
    {
        TicketStage stage;
        stage.TypeCode(QStringLiteral("600000"));
        const QString before = stage.Label("latest");
        QVERIFY(before.startsWith(QLatin1String("10.02")));
        QTRY_VERIFY(stage.Label("latest") != before);  // the market moves by itself
        stage.m_host.Stop();
    }

    void APanelThatIsGoneHearsNothing()
    {
        TicketStage stage;
        stage.Type("code", QStringLiteral("600000"));
        delete stage.m_module->GetWidget();
        QCoreApplication::processEvents();
        stage.m_module.reset();
        static_cast<desk::DemoMarket*>(stage.m_host.Quotes())->Move();
        stage.m_host.Stop();
    }

    void AFileThatIsNoMarketIsNamed()
    {
        QTemporaryFile file;
        QVERIFY(file.open());
        for (const char* text : {"", "{}", R"({"accounts":[],"securities":[{"code":"1"}]})"}) {
            QVERIFY(file.resize(0) && file.seek(0));
            file.write(text);
            QVERIFY(file.flush());
            try {
                desk::ReadDemoMarket(file.fileName().toStdString());
                QFAIL("was read");
            } catch (const std::runtime_error& error) {
                QVERIFY(QString::fromUtf8(error.what()).startsWith(file.fileName()));
            }
        }
    }
};

PANELRY_TEST(OrderTicketTest)
#include "order_ticket_test.moc"
