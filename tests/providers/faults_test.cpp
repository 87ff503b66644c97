// What the desk does wrong when it is told to, and that it ends.

#include <atomic>
#include <thread>

#include "providers/stage.h"
#include "support/rows.h"
#include "support/test.h"

using namespace panelry::test;
using panelry::desk::Fault;
using panelry::desk::Faults;

namespace
{

// Knows that a notice of a setting was read, and so all that was asked before it.
struct SettingSeen : panelry::desk::MarketListener {
    void OnMarketEvent(const std::string& event, const nlohmann::ordered_json&) override
    {
        seen = seen || event == "setting";
    }
    std::atomic<bool> seen{false};
};

// What came of two questions, in order: for each answer the "mine" of its request.
std::string Asked(Stage& stage, int answers)
{
    const std::size_t before = stage.client->Answers().size();
    for (const char* const mine : {"1", "2"}) {
        stage.Send({{"type", "5"}}, {}, {{"mine", mine}});
    }
    std::string order;
    const auto areThere = [&] {
        const auto all = stage.client->Answers();
        order.clear();
        for (std::size_t i = before; i < all.size(); ++i) {
            order += all[i]->request->local["mine"];
        }
        return order.size() >= static_cast<std::size_t>(answers);
    };
    return QTest::qWaitFor(areThere) ? order : "no answer";
}

}  // namespace

class FaultsTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void AnswersGoWrongUntilItIsSwitchedOff_data()
    {
        const Rows<const char*, const char*> row("fault order");
        row("none", "", "12");
        row("doubled", "doubled", "1122");
        row("reordered", "reordered", "21");
        row("late", "late", "12");
        row("failed", "failed", "12");
    }

    void AnswersGoWrongUntilItIsSwitchedOff()
    {
        QFETCH(const QString, fault);
        QFETCH(const QString, order);
        Stage stage;
        if (const auto* const found = Faults::Find(fault.toStdString())) {
            stage.host.faults().Set(found->fault, true, found->fault == Fault::Late ? 50 : 100);
        }
        QElapsedTimer clock;
        clock.start();
        QCOMPARE(QString::fromStdString(Asked(stage, static_cast<int>(order.size()))), order);
        QVERIFY(fault != QLatin1String("late") || clock.elapsed() >= 50);
        const auto failed = stage.client->Answers().back()->reply->body;
        QCOMPARE(failed.at("ret"), std::string(fault == QLatin1String("failed") ? "-1" : "0"));
        QCOMPARE(failed.count("ret_text"), fault == QLatin1String("failed") ? 1U : 0U);
        stage.host.faults().AllOff();
        QCOMPARE(Asked(stage, 2), std::string("12"));
        QCOMPARE(stage.client->Answers().back()->reply->body.at("ret"), std::string("0"));
    }

    void WhatIsLostNeverComes()
    {
        SettingSeen listener;
        Stage stage;
        stage.host.SetListener(&listener);
        stage.host.faults().Set(Fault::Lost, true);
        stage.Send({{"type", "3"}}, {{"zqdm", "600000"}, {"mmlb", "B"}, {"wtjg", "9.90"}, {"wtsl", "100"}});
        StringMap setting;
        stage.form.NotifyConfigChange(setting);
        QTRY_VERIFY(listener.seen);
        stage.host.SetListener(nullptr);
        stage.host.faults().Set(Fault::Lost, false);
        QCOMPARE(Asked(stage, 2), std::string("12"));
        QCOMPARE(stage.client->Answers().front()->request->head.at("type"), std::string("5"));
        const std::string contract = stage.List(&DataDealBase::QueryOrders, "orders", "2135");
        QVERIFY(!contract.empty());  // the order itself has come in
    }

    void APercentageStrikesNowAndThen()
    {
        Faults faults(7);
        faults.Set(Fault::Lost, true, 30);
        int struck = 0;
        for (int i = 0; i < 10'000; ++i) {
            struck += faults.Strikes(Fault::Lost) ? 1 : 0;
        }
        QVERIFY2(struck > 2700 && struck < 3300, qPrintable(QString::number(struck)));
        QVERIFY(!faults.Strikes(Fault::Doubled));
        for (const auto& one : Faults::All()) {
            QCOMPARE(Faults::Find(one.name)->fault, one.fault);
        }
        QVERIFY(!Faults::Find("other"));
    }

    void AFailedRequestDoesNothing()
    {
        Stage stage;
        stage.host.faults().Set(Fault::Failed, true);
        QCOMPARE(stage.Order()["ret"], std::string("-1"));
        stage.host.faults().AllOff();
        QCOMPARE(stage.List(&DataDealBase::QueryOrders, "orders", "2135"), std::string());
    }

    void SubscriptionsFail()
    {
        Stage stage;
        stage.host.faults().Set(Fault::Subscriptions, true);
        std::vector<MarketCode> codes{{17, "600000"}};
        QCOMPARE(stage.client->SubscribeKey("chedan_table", true), -1);
        QCOMPARE(stage.client->SubscribeCodes(codes, true), -1);
        QCOMPARE(static_cast<int>(codes.at(0).market), 17);
        QCOMPARE(stage.client->SubscribeTopicA(1, true), -1);
        stage.host.faults().AllOff();
        QCOMPARE(stage.client->SubscribeKey("chedan_table", true), 0);
        QCOMPARE(stage.client->SubscribeCodes(codes, true), 0);
        QTRY_COMPARE(stage.client->Pushes().size(), std::size_t{1});
    }

    void TablesLackAColumn()
    {
        Stage stage;
        const auto column = [&](const char* id) {
            return stage.List(&DataDealBase::QueryPositions, "gupiao_table", id);
        };
        const std::string codes = column("2102");
        stage.host.faults().Set(Fault::Columns, true, 2102);
        QCOMPARE(column("2102"), std::string("no column"));
        QVERIFY(column("2103").find("演示银行 ") != std::string::npos);
        QCOMPARE(stage.client->GetTable("gupiao_table")->FindColumn("2102"), -1);
        stage.host.faults().Set(Fault::Columns, true);
        int missing = 0;
        for (const char* const id : {"2102", "2103", "32009", "2108", "2106", "2117", "2121", "2118", "2122",
                                     "2123", "2124", "2125", "2147", "3616"}) {
            missing += stage.client->GetTable("account_table")->FindColumn("2108") < 0 ? 1 : 0;
            missing += column(id) == "no column" ? 1 : 0;
        }
        QVERIFY(missing > 0);
        stage.host.faults().AllOff();
        QCOMPARE(column("2102"), codes);
        QVERIFY(stage.client->GetTable("account_table")->FindColumn("2108") >= 0);
    }

    // What the library makes of it stays text.
    void WordsAreCut()
    {
        Stage stage;
        stage.host.faults().Set(Fault::Text, true);
        const std::string name = stage.List(&DataDealBase::QueryPositions, "gupiao_table", "2103");
        StringMap refused = stage.Order({{"wtsl", "1"}});
        std::vector<MarketCode> codes{{17, "600000"}};
        stage.client->SubscribeCodes(codes, true);
        QTRY_COMPARE(stage.client->Pushes().size(), std::size_t{1});
        const std::string replaced = "\xEF\xBF\xBD";
        QCOMPARE(name.substr(0, 10), "演示银" + replaced.substr(0, 1));
        QVERIFY(panelry::HostTextToUtf8(refused["ret_text"]).find(replaced) != std::string::npos);
        QCOMPARE(stage.client->Pushes()[0].at("stock_name"), std::string("演示银行").substr(0, 11));
        QCOMPARE(stage.client->Column("gupiao_table", "2117").substr(0, 6), std::string("12500 "));
        stage.host.faults().AllOff();
        refused = stage.Order({{"wtsl", "1"}});
        QVERIFY(panelry::HostTextToUtf8(refused["ret_text"]).find(replaced) == std::string::npos);
    }

    void NewsComeOnEightThreads()
    {
        Stage stage;
        std::atomic<int> together{0};
        std::atomic<int> most{0};
        stage.client->inside = [&] {
            const int now = ++together;
            int seen = most;
            while (now > seen && !most.compare_exchange_weak(seen, now)) {
            }
            // All eight are in the callback at a time, or it would never end.
            QDeadlineTimer deadline(5000);
            while (most < 8 && !deadline.hasExpired()) {
                std::this_thread::yield();
            }
            --together;
        };
        stage.host.faults().Set(Fault::Threads, true);
        for (int i = 0; i < 8; ++i) {
            stage.Send({{"type", "5"}}, {});
        }
        QTRY_COMPARE(stage.client->Answers().size(), std::size_t{8});
        QCOMPARE(stage.client->Threads().size(), std::size_t{8});
        QTRY_COMPARE(together.load(), 0);
        stage.host.faults().AllOff();
        QCOMPARE(Asked(stage, 2), std::string("12"));
        QCOMPARE(most.load(), 8);
    }

    void QuotesComeOnEightThreads()
    {
        auto settings = StillMarket();
        settings.changesPerSecond = 20'000;
        Stage stage(settings);
        std::vector<MarketCode> codes;
        for (const auto& security : stage.host.Market().Securities().securities) {
            codes.push_back({security.market, security.code});
        }
        stage.host.faults().Set(Fault::Threads, true);
        stage.client->SubscribeCodes(codes, true);
        QTRY_VERIFY_WITH_TIMEOUT((stage.host.Market().Step(10ms), stage.client->Threads().size() == 8),
                                 20'000);
        stage.host.Stop();
        QCOMPARE(stage.client.use_count(), 1L);
    }

    void ACallIsBlockedUntilItIsSwitchedOff_data()
    {
        const Rows<int, bool> row("ms byStop");
        row("switched off", 0, false);
        row("for a time", 30, false);
        row("stopped", 0, true);
    }
    void ACallIsBlockedUntilItIsSwitchedOff()
    {
        QFETCH(int, ms);
        QFETCH(bool, byStop);
        Stage stage;
        stage.host.faults().Set(Fault::Blocked, true, ms);
        std::atomic<int> back{0};
        std::atomic<int> results{0};
        std::vector<MarketCode> codes{{17, "600000"}};
        std::vector<std::thread> callers;
        callers.emplace_back([&] { results += stage.Send({{"type", "5"}}, {}), ++back; });
        callers.emplace_back([&] { results += stage.client->SubscribeCodes(codes, true), ++back; });
        callers.emplace_back([&] { stage.client->GetTable("account_table"), ++back; });
        if (ms == 0) {
            QTest::qWait(20);  // longer than any of the calls takes
            QCOMPARE(back.load(), 0);
            byStop ? stage.host.Stop() : stage.host.faults().Set(Fault::Blocked, false);
        }
        QTRY_COMPARE(back.load(), 3);
        QCOMPARE(results.load(), byStop ? -2 : 0);
        for (std::thread& caller : callers) {
            caller.join();
        }
        stage.host.faults().AllOff();
    }
};

PANELRY_TEST(FaultsTest)

#include "faults_test.moc"
