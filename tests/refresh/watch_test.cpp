// What a pushed table makes of the quotes: subscriptions, directions, limits.

#include "base/host_text.h"
#include "refresh/refresh_stage.h"

using namespace panelry::test;

Q_DECLARE_METATYPE(std::string)

class WatchTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void AQuoteBeyondTheLimitMarksTheAccount_data()
    {
        QTest::addColumn<QByteArray>("order");  // direction and limit
        QTest::addColumn<QByteArray>("price");
        QTest::addColumn<bool>("marks");
        const auto row = [](const char* order, const char* price, bool marks) {
            QTest::addRow("%s, price %s", order, price) << QByteArray(order) << QByteArray(price) << marks;
        };
        row("B 10.50", "10.49", true);
        row("B 10.50", "10.50", false);
        row("B 10.50", "10.51", false);
        row("S 10.50", "10.51", true);
        row("S 10.50", "10.50", false);
        row("S 10.50", "10.49", false);
        // The limit is a float: at an equal price it lies a little beside it, above or below.
        row("S 10.49", "10.49", true);
        row("B 10.49", "10.49", false);
        row("S 9.99", "9.99", true);
        row("S 0.01", "0.01", true);
        row("S 7.35", "7.35", true);
        row("S 100.10", "100.10", true);
        row("B 10.51", "10.51", true);
        row("S 10.51", "10.51", false);
        row("B 1800.01", "1800.01", true);
        row("B 1000000.01", "1000000.00", false);  // a float knows no hundredths up there
        // No price counts as 0.
        row("S -", "0.01", true);
        row("B -", "0.01", false);
        row("S abc", "-1", false);
        row("B 10.50 yuan", "10.49x", true);
        row("B 10.50", "none", true);  // a price that is no number reads as 0
        row("B 10.50", "", false);     // one that isn't there doesn't count
    }

    void AQuoteBeyondTheLimitMarksTheAccount()
    {
        QFETCH(const QByteArray, order);
        QFETCH(const QByteArray, price);
        QFETCH(const bool, marks);
        for (const bool margin : {false, true}) {
            RefreshStage stage;
            stage.host.m_markets = {{"600000", 16}};
            stage.Start();
            stage.PushTable("600000 16 " + order.toStdString() + " 1",
                            margin ? "rzrq_chedan_table" : "chedan_table");
            stage.PushQuote(16, "600000", price.toStdString());
            QCOMPARE(stage.Due(), std::string(!marks ? "" : margin ? "margin" : "normal"));
        }
    }

    void TheRowSaysWhoBuys_data()
    {
        QTest::addColumn<QByteArray>("encoding");
        QTest::addColumn<QByteArray>("operation");
        QTest::addColumn<bool>("buys");
        const auto row = [](const char* name, const char* encoding, const char* operation, bool buys) {
            QTest::newRow(name) << QByteArray(encoding) << QByteArray(operation) << buys;
        };
        row("buy", "GB18030", "\xC2\xF2\xC8\xEB", true);
        row("sell", "GB18030", "\xC2\xF4\xB3\xF6", false);
        row("financed buy", "GB18030", "\xC8\xDA\xD7\xCA\xC2\xF2\xC8\xEB", true);
        row("bytes, not letters: across two of them", "GB18030", "\xB0\xC2\xF2\xB0", true);
        row("cut in the middle", "GB18030", "\xC2", false);
        row("empty", "GB18030", "", false);
        row("UTF-8 where it isn't set", "GB18030", "买入", false);
        row("UTF-8", "UTF-8", "买入", true);
        row("UTF-8, sell", "UTF-8", "卖出", false);
        row("UTF-8, the other bytes", "UTF-8", "\xC2\xF2", false);
        row("Big5", "Big5", "\xB6\x52\xB6\x69", true);
        row("Big5, sell", "Big5", "\xBD\xE6\xA5\x58", false);
    }

    void TheRowSaysWhoBuys()
    {
        QFETCH(const QByteArray, encoding);
        QFETCH(const QByteArray, operation);
        QFETCH(const bool, buys);
        QVERIFY(panelry::SetHostEncoding(encoding.toStdString()));
        RefreshStage stage;
        stage.Start();
        stage.present->OnTableChanged(
            "chedan_table",
            std::make_shared<FakeTable>(
                "chedan_table", std::vector<std::string>{"2135", "2102", "2109", "2127", "32009"},
                FakeTable::Rows{{"1", "600000", operation.toStdString(), "10", "16"}}));
        stage.Settle();
        stage.PushQuote(16, "600000", "11");  // beyond a sell limit
        QCOMPARE(stage.Due(), std::string(buys ? "" : "normal"));
        stage.PushQuote(16, "600000", "9");  // beyond a buy limit
        QCOMPARE(stage.Due(), std::string("normal"));
        panelry::SetHostEncoding(panelry::kDefaultHostEncoding);
    }

    void SubscriptionsFollowTheTables()
    {
        RefreshStage stage;
        stage.host.m_markets = {{"600000", 17}, {"000001", 32}};
        stage.Start();
        stage.host.TakeLog();
        stage.PushTable("600000 16 B 10.50 1; 999999 273 S 9 2; 000001 32 S 9 3; 000001 33 S 8 4");
        // Corrected where the market is known, else the low byte of what the table says.
        QCOMPARE(stage.host.TakeLog(), std::string("codes+ 17:600000 17:999999 32:000001"));
        stage.PushTable("000001 32 B 1 3; 000002 32 B 1 5", "rzrq_chedan_table");
        QCOMPARE(stage.host.TakeLog(), std::string("codes+ 32:000002, codes- 17:600000 17:999999"));
        stage.PushTable("000002 32 B 1 5; 000001 32 B 1 3");
        QCOMPARE(stage.host.TakeLog(), std::string());
        stage.PushTable("");
        QCOMPARE(stage.host.TakeLog(), std::string("codes- 32:000001 32:000002"));
        stage.PushTable("");
        QCOMPARE(stage.host.TakeLog(), std::string());
    }

    void AMarketOfZeroIsAKeyToo()
    {
        RefreshStage stage;
        stage.Start();
        stage.host.TakeLog();
        stage.PushTable("600000 x B 10 1");
        QCOMPARE(stage.host.TakeLog(), std::string("codes+ 0:600000"));
        stage.PushQuote(0, "600000", "9");
        QCOMPARE(stage.Due(), std::string("normal"));
    }

    void AFailedSubscriptionStaysClaimed()
    {
        RefreshStage stage;
        stage.host.m_markets = {{"1", 16}, {"2", 16}};
        stage.Start();
        stage.host.TakeLog();
        stage.host.m_result = -1;
        stage.PushTable("1 16 B 1 1");
        QCOMPARE(stage.host.TakeLog(), std::string("codes+ 16:1"));
        stage.host.m_result = 0;
        stage.PushTable("1 16 B 1 1; 2 16 B 1 2");
        QCOMPARE(stage.host.TakeLog(), std::string("codes+ 16:2"));
    }

    void TheLastTableDecides()
    {
        RefreshStage stage;
        stage.Start();
        stage.PushTable("600000 16 B 10 1");
        stage.PushTable("000001 32 B 10 2", "rzrq_chedan_table");
        stage.PushQuote(16, "600000", "9");  // its order isn't watched any more
        QCOMPARE(stage.Due(), std::string());
        stage.PushQuote(32, "000001", "9");
        QCOMPARE(stage.Due(), std::string("margin"));
    }

    // The name that counts is the table's own.
    void ATableKnowsItsAccount()
    {
        RefreshStage stage;
        stage.Start();
        stage.present->OnTableChanged("chedan_table", Orders("my_rzrq_table", "600000 16 B 10 1"));
        stage.Settle();
        stage.PushQuote(16, "600000", "9");
        QCOMPARE(stage.Due(), std::string("margin"));
    }

    void ATableWithoutAColumnChangesNothing_data()
    {
        QTest::addColumn<QByteArray>("missing");
        for (const char* const id : {"2102", "2109", "2127", "2135", "32009"}) {
            QTest::newRow(id) << QByteArray(id);
        }
    }

    void ATableWithoutAColumnChangesNothing()
    {
        QFETCH(const QByteArray, missing);
        RefreshStage stage;
        stage.Start();
        stage.PushTable("600000 16 B 10 1");
        stage.PushData({{"htbh", "7"}});
        stage.host.TakeLog();
        std::vector<std::string> columns{"2135", "2102", "2109", "2127", "32009"};
        std::replace(columns.begin(), columns.end(), missing.toStdString(), std::string("9999"));
        stage.present->OnTableChanged(
            "chedan_table",
            std::make_shared<FakeTable>("chedan_table", columns,
                                        FakeTable::Rows{{"7", "000001", kBuyWord, "10", "32"}}));
        stage.Settle();
        stage.PushQuote(16, "600000", "9");
        QCOMPARE(stage.Due(), std::string("normal"));
        QCOMPARE(stage.host.TakeLog(), std::string());
        QCOMPARE(stage.FollowUpLog(), std::string("chedan_table"));
    }

    // Between the providers' calls the host may push right back.
    void ATableThatComesWhileOneIsReadIsReadNext()
    {
        RefreshStage stage;
        int pushed = 0;
        stage.host.m_inside = [&](const std::string& call) {
            if (call.rfind("codes+", 0) == 0 && ++pushed < 4) {
                const std::string code = std::to_string(pushed);
                stage.present->OnTableChanged("chedan_table", Orders("chedan_table", code + " 16 B 10 1"));
                stage.present->OnTableChanged("chedan_table", Orders("chedan_table", code + "0 16 B 10 1"));
            }
        };
        stage.Start();
        stage.PushTable("600000 16 B 10 1");
        QCOMPARE(pushed, 7);  // each one had its turn, without a further push
        stage.PushQuote(16, "30", "9");
        QCOMPARE(stage.Due(), std::string("normal"));
    }

    // The host may publish its table as soon as somebody subscribes, when no worker is there yet.
    void ATableThatComesBeforeTheWorkersIsRead()
    {
        RefreshStage stage;
        stage.host.m_inside = [&](const std::string& call) {
            if (call == "key+ chedan_table") {
                stage.present->OnTableChanged("chedan_table", Orders("chedan_table", "600000 16 B 10 1"));
            }
        };
        stage.Start();
        stage.Settle();
        stage.host.TakeLog();
        stage.PushQuote(16, "600000", "9");
        QCOMPARE(stage.Due(), std::string("normal"));
    }
};

PANELRY_TEST(WatchTest)

#include "watch_test.moc"
