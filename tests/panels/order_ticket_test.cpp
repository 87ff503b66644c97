#include "order_ticket/order_ticket_module.h"

#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTemporaryDir>

#include "desk/demo_host.h"
#include "panels/recording_manager.h"
#include "support/test.h"

using namespace panelry;

namespace
{

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
        QTest::addColumn<QString>("code");
        QTest::addColumn<QString>("status");
        QTest::addColumn<QString>("price");
        QTest::addColumn<QString>("steps");
        QTest::addColumn<QString>("usable");
        const auto row = [](const char* name, const char* code, const QString& status, const char* price,
                            const QString& steps, const QString& usable) {
            QTest::newRow(name) << QString::fromLatin1(code) << status << QString::fromLatin1(price) << steps
                                << usable;
        };
        row("main board of Shanghai", "600000", QStringLiteral("上海 600000 演示银行"), "10.03",
            QStringLiteral("价格 0.01　数量 100"), QStringLiteral("可卖 12500 股"));
        row("STAR", "688981", QStringLiteral("上海 688981 演示芯片"), "51.21",
            QStringLiteral("价格 0.01　数量 1"), QStringLiteral("可卖 150 股"));
        row("ChiNext", "300750", QStringLiteral("深圳 300750 演示电池"), "218.61",
            QStringLiteral("价格 0.01　数量 100"), QStringLiteral("可卖 500 股"));
        row("fund", "510300", QStringLiteral("上海 510300 演示指数基金"), "3.953",
            QStringLiteral("价格 0.001　数量 100"), QStringLiteral("可卖 20000 股"));
        row("bond", "019666", QStringLiteral("上海 019666 演示国债"), "101.236",
            QStringLiteral("价格 0.001　数量 100"), QStringLiteral("可卖 120 张"));
    }

    void ACodeFillsTheTicket()
    {
        QFETCH(const QString, code);
        TicketStage stage;
        stage.TypeCode(code);
        QTEST(stage.Widget().StatusText(), "status");
        QTEST(stage.Widget().Price(), "price");
        QTEST(stage.Label("steps"), "steps");
        QTRY_COMPARE(stage.m_manager.sent.size(), std::size_t{1});
        QCOMPARE(stage.m_manager.sent[0].stock.at("stockcode"), code.toStdString());
        QTest::keyClick(&stage.Widget(), Qt::Key_F3);
        QFETCH(const QString, usable);
        QTRY_COMPARE(stage.Label("usable"), usable);
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

    void AnUnknownCodeIsTold()
    {
        TicketStage stage;
        stage.Type("code", QStringLiteral("999999"));
        QTRY_VERIFY(stage.Widget().StatusText().contains(QStringLiteral("没有找到代码 999999")));
        QVERIFY(stage.m_manager.sent.empty());
    }

    void AnotherPanelsStockIsOpened()
    {
        TicketStage stage;
        StringMap stock{{"stockcode", "000001"}, {"market", "17"}, {"stockname", ""}};
        stage.m_module->OnMessage(kStockSelected, &stock);
        QTRY_COMPARE(stage.Widget().StatusText(), QStringLiteral("上海 000001 演示综合指数"));
        QVERIFY(stage.m_manager.sent.empty());
    }

    void MoneyBuysAQuantityAndKeysStep()
    {
        TicketStage stage;
        stage.TypeCode(QStringLiteral("600000"));
        stage.Type("money", QStringLiteral("25000"));
        QCOMPARE(stage.Widget().Amount(), QStringLiteral("2400"));  // at 10.03
        QTest::keyClick(&stage.Field("amount"), Qt::Key_Down);
        QTest::keyClick(&stage.Field("price"), Qt::Key_Up);
        QTest::keyClick(&stage.Field("price"), Qt::Key_Up);
        QCOMPARE(stage.Widget().Amount() + QLatin1Char(' ') + stage.Widget().Price(),
                 QStringLiteral("2300 10.05"));
        QTRY_COMPARE(stage.Label("usable"), QStringLiteral("可买 49751 股"));  // 500000 at 10.05
    }

    void AnOrderIsChecked_data()
    {
        QTest::addColumn<QString>("code");
        QTest::addColumn<QString>("price");
        QTest::addColumn<QString>("amount");
        QTest::addColumn<QString>("notice");
        QTest::addColumn<bool>("canGoOn");
        const auto row = [](const char* name, const char* code, const char* price, const char* amount,
                            const QString& notice, bool canGoOn) {
            QTest::newRow(name) << QString::fromLatin1(code) << QString::fromLatin1(price)
                                << QString::fromLatin1(amount) << notice << canGoOn;
        };
        row("without an amount", "600000", "10.00", "", QStringLiteral("请输入正确的委托数量！"), false);
        row("too few of STAR", "688981", "51.00", "100", QStringLiteral("必须大于等于200股"), false);
        row("with a protected limit", "600000", "10.00", "100", QStringLiteral("买入价格上限"), true);
        row("beyond the limits", "600000", "20.00", "100", QStringLiteral("已超出涨跌停限制：[9.02 - 11.02]"),
            true);
    }

    void AnOrderIsChecked()
    {
        QFETCH(const QString, code);
        QFETCH(const QString, price);
        QFETCH(const QString, amount);
        QFETCH(const QString, notice);
        QFETCH(const bool, canGoOn);
        TicketStage stage;
        stage.TypeCode(code);
        stage.Type("price", price);
        stage.Type("amount", amount);
        QTest::keyClick(&stage.Field("amount"), Qt::Key_Return);
        QVERIFY2(stage.Widget().NoticeText().contains(notice), qPrintable(stage.Widget().NoticeText()));
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
        QTemporaryDir directory;
        const std::string name = directory.filePath(QStringLiteral("m.json")).toStdString();
        for (const char* text : {"", "{}", R"({"accounts":[],"securities":[{"code":"1"}]})"}) {
            QFile file(QString::fromStdString(name));
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write(text);
            file.close();
            try {
                desk::ReadDemoMarket(name);
                QFAIL("was read");
            } catch (const std::runtime_error& error) {
                QVERIFY(std::string(error.what()).find(name) == 0);
            }
        }
    }
};

PANELRY_TEST(OrderTicketTest)
#include "order_ticket_test.moc"
