// What a pushed table makes of the quotes: subscriptions, directions, limits.

#include "base/host_text.h"
#include "refresh/refresh_stage.h"

using namespace panelry::test;

class WatchTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void AQuoteBeyondTheLimitMarksTheAccount()
    {
        const std::tuple<const char*, const char*, bool> rows[] = {
            {"B 10.50", "10.49", true},
            {"B 10.50", "10.50", false},
            {"S 10.50", "10.51", true},
            {"S 10.50", "10.50", false},
            // The limit is a float: at an equal price it lies a little beside it, above or below.
            {"S 10.49", "10.49", true},
            {"B 10.49", "10.49", false},
            {"B 10.51", "10.51", true},
            {"B 1000000.01", "1000000.00", false},  // a float knows no hundredths up there
            {"S -", "0.01", true},                  // no price counts as 0
            {"S abc", "-1", false},
            {"B 10.50yuan", "10.49x", true},
            {"B 10.50", "none", true},  // a price that is no number reads as 0
            {"B 10.50", "", false}};    // one that isn't there doesn't count
        for (const auto& [order, price, marks] : rows) {
            StartedStage stage;
            stage.PushTable(std::string("600000 16 ") + order + " 1");
            stage.PushQuote(16, "600000", price);
            QVERIFY2(stage.Due() == (marks ? "normal" : ""), (std::string(order) + " at " + price).c_str());
        }
    }

    void TheRowSaysWhoBuys()
    {
        const std::tuple<const char*, const char*, bool> rows[] = {
            {"GB18030", "\xC8\xDA\xD7\xCA\xC2\xF2\xC8\xEB", true},  // financed buy
            {"GB18030", "\xB0\xC2\xF2\xB0", true},                  // bytes, not letters: across two of them
            {"GB18030", "\xC2", false},                             // cut in the middle
            {"GB18030", "买入", false},
            {"UTF-8", "买入", true},
            {"UTF-8", "\xC2\xF2", false},
            {"Big5", "\xB6\x52\xB6\x69", true}};
        for (const auto& [encoding, operation, buys] : rows) {
            QVERIFY(panelry::SetHostEncoding(encoding));
            StartedStage stage;
            stage.PushTable(std::string("600000 16 ") + operation + " 10 1");
            panelry::SetHostEncoding(panelry::kDefaultHostEncoding);
            const std::string what = std::string(encoding) + ": " + operation;
            stage.PushQuote(16, "600000", "11");  // beyond a sell limit
            QVERIFY2(stage.Due() == (buys ? "" : "normal"), what.c_str());
            stage.PushQuote(16, "600000", "9");  // beyond a buy limit
            QVERIFY2(stage.Due() == "normal", what.c_str());
        }
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
        StartedStage stage;
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

    // The host may publish its table as soon as somebody subscribes, when no worker is there yet, and push right back
    // from inside any call: each table has its turn, without a further push.
    void TablesThatComeInBetweenAreRead()
    {
        RefreshStage stage;
        int pushed = 0;
        const auto push = [&](const std::string& code) {
            stage.present->OnTableChanged("chedan_table", Orders("chedan_table", code + " 16 B 10 1"));
        };
        stage.host.m_inside = [&](const std::string& call) {
            if (call == "key+ chedan_table") {
                push("600000");
            } else if (call.rfind("codes+", 0) == 0 && ++pushed < 4) {
                push(std::to_string(pushed));
                push(std::to_string(pushed) + '0');
            }
        };
        stage.Start();
        stage.Settle();
        QCOMPARE(pushed, 7);
        stage.PushQuote(16, "30", "9");
        QCOMPARE(stage.Due(), std::string("normal"));
    }
};

PANELRY_TEST(WatchTest)

#include "watch_test.moc"
