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
        QTest::addColumn<std::string>("order");  // direction and limit
        QTest::addColumn<std::string>("price");
        QTest::addColumn<bool>("marks");
        const auto row = [](const char* order, const char* price, bool marks) {
            QTest::addRow("%s, price %s", order, price) << std::string(order) << std::string(price) << marks;
        };
        row("B 10.50", "10.49", true);
        row("B 10.50", "10.50", false);
        row("S 10.50", "10.51", true);
        row("S 10.50", "10.50", false);
        // The limit is a float: at an equal price it lies a little beside it, above or below.
        row("S 10.49", "10.49", true);
        row("B 10.49", "10.49", false);
        row("S 0.01", "0.01", true);
        row("B 10.51", "10.51", true);
        row("S 10.51", "10.51", false);
        row("B 1000000.01", "1000000.00", false);  // a float knows no hundredths up there
        // No price counts as 0.
        row("S -", "0.01", true);
        row("B -", "0.01", false);
        row("S abc", "-1", false);
        row("B 10.50yuan", "10.49x", true);
        row("B 10.50", "none", true);  // a price that is no number reads as 0
        row("B 10.50", "", false);     // one that isn't there doesn't count
    }

    void AQuoteBeyondTheLimitMarksTheAccount()
    {
        QFETCH(const std::string, order);
        QFETCH(const std::string, price);
        QFETCH(const bool, marks);
        StartedStage stage;
        stage.PushTable("600000 16 " + order + " 1");
        stage.PushQuote(16, "600000", price);
        QCOMPARE(stage.Due(), std::string(marks ? "normal" : ""));
    }

    void TheRowSaysWhoBuys_data()
    {
        QTest::addColumn<std::string>("encoding");
        QTest::addColumn<std::string>("operation");
        QTest::addColumn<bool>("buys");
        const auto row = [](const char* name, const char* encoding, const char* operation, bool buys) {
            QTest::newRow(name) << std::string(encoding) << std::string(operation) << buys;
        };
        row("financed buy", "GB18030", "\xC8\xDA\xD7\xCA\xC2\xF2\xC8\xEB", true);
        row("bytes, not letters: across two of them", "GB18030", "\xB0\xC2\xF2\xB0", true);
        row("cut in the middle", "GB18030", "\xC2", false);
        row("UTF-8 where it isn't set", "GB18030", "买入", false);
        row("UTF-8", "UTF-8", "买入", true);
        row("UTF-8, the other bytes", "UTF-8", "\xC2\xF2", false);
        row("Big5", "Big5", "\xB6\x52\xB6\x69", true);
    }

    void TheRowSaysWhoBuys()
    {
        QFETCH(const std::string, encoding);
        QFETCH(const std::string, operation);
        QFETCH(const bool, buys);
        QVERIFY(panelry::SetHostEncoding(encoding));
        StartedStage stage;
        stage.PushTable("600000 16 " + operation + " 10 1");
        stage.PushQuote(16, "600000", "11");  // beyond a sell limit
        QCOMPARE(stage.Due(), std::string(buys ? "" : "normal"));
        stage.PushQuote(16, "600000", "9");  // beyond a buy limit
        QCOMPARE(stage.Due(), std::string("normal"));
        panelry::SetHostEncoding(panelry::kDefaultHostEncoding);
    }

    // Corrected where the market is known, else the low byte of what the table says.
    void UnknownMarketsAreKeysToo()
    {
        RefreshStage stage;
        stage.host.m_markets = {{"600000", 17}};
        stage.Start();
        stage.host.TakeLog();
        stage.PushTable("600000 16 B 10 1; 999999 273 S 9 2; 000001 x B 10 3");
        QCOMPARE(stage.host.TakeLog(), std::string("codes+ 0:000001 17:600000 17:999999"));
        stage.PushQuote(0, "000001", "9");
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

    // The name that counts is the table's own.
    void ATableKnowsItsAccount()
    {
        StartedStage stage;
        stage.present->OnTableChanged("chedan_table", Orders("my_rzrq_table", "600000 16 B 10 1"));
        stage.Settle();
        stage.PushQuote(16, "600000", "9");
        QCOMPARE(stage.Due(), std::string("margin"));
    }

    void ATableWithoutAColumnChangesNothing()
    {
        const std::vector<std::string> columns{"2135", "2102", "2109", "2127", "32009"};
        for (std::size_t missing = 0; missing < columns.size(); ++missing) {
            StartedStage stage;
            stage.PushTable("600000 16 B 10 1");
            stage.PushData({{"htbh", "7"}});
            stage.host.TakeLog();
            std::vector<std::string> others = columns;
            others[missing] = "9999";
            stage.present->OnTableChanged("chedan_table",
                                          Orders("chedan_table", "000001 32 B 10 7", std::move(others)));
            stage.Settle();
            stage.PushQuote(16, "600000", "9");
            QCOMPARE(stage.Due(), std::string("normal"));
            QCOMPARE(stage.host.TakeLog(), std::string());
            QCOMPARE(stage.FollowUpLog(), std::string("chedan_table"));
        }
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
