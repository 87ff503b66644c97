// Start and end, the host's callbacks, ticks and follow-ups.

#include "refresh/refresh_stage.h"

using namespace panelry::test;

class PresentTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    // Any text is a yes, but margin is 1.
    void ADataPushMarksOrWaits()
    {
        StartedStage stage;
        const StringMap push{{"htbh", "1"}, {"chedan", "0"}, {"rzrq", "yes"}};
        stage.PushData(push);
        QCOMPARE(stage.Due(), std::string("normal"));
        QCOMPARE(stage.FollowUpLog(), std::string("chedan_table"));
        stage.PushData({{"htbh", ""}, {"chedan", ""}, {"rzrq", "1"}});
        stage.PushData({{"rzrq", "1"}});
        stage.present->OnDataPush("auto_refresh_data", nullptr);
        stage.present->OnDataPush("another", std::make_shared<StringMap>(push));
        QCOMPARE(stage.Due(), std::string("normal"));
        QCOMPARE(stage.FollowUpLog(), std::string());
    }

    void AMarkThatComesWhileTheRefreshRunsGoesWithIt()
    {
        StartedStage stage;
        stage.host.m_inside = [&stage](const std::string&) { stage.PushData({{"chedan", "1"}}); };
        stage.PushData({{"chedan", "1"}});
        QCOMPARE(stage.TickLog(), std::string(kAllNormal));
        QCOMPARE(stage.Due(), std::string());
    }

    // A provider may call as soon as it is attached.
    void LoginsOnManyThreadsRefreshOnce()
    {
        for (int round = 0; round < 50; ++round) {
            RefreshStage stage;
            stage.host.m_strings["authority_1"] = "1";
            const auto login = [&stage](int) {
                stage.present->OnFundsPush(FundsAnswer());
                stage.present->OnLoginState(1);
            };
            auto early = OnThreads(2, login);
            stage.Start();
            early.clear();
            OnThreads(4, login).clear();
            QCOMPARE(QString::fromStdString(stage.host.TakeLog()).count(QStringLiteral("rzrq_funds")), 1);
        }
    }

    void FundsGoToBothAccounts()
    {
        StartedStage stage;
        const auto answer = FundsAnswer();
        stage.present->OnFundsPush(answer);
        QCOMPARE(stage.host.TakeLog(), std::string("set zijin_data_proc"));
        answer->request->head["type"] = "2314";
        answer->reply->body["cmd"] = "rzrq_cxzj";
        answer->table = std::make_shared<FakeAnswerTable>(FakeTable::Rows{{"2172"}, {"0"}, {"1"}});
        stage.present->OnFundsPush(answer);
        QCOMPARE(stage.host.TakeLog(), std::string("set zijin_data_rzrq_0, set zijin_data_rzrq_1"));
    }

    // Nobody would take what is queued, and nothing may grow. The follow-up has a timer of its own, and no table takes
    // a contract away from it.
    void WithoutAnIntervalNothingIsWatched()
    {
        for (const char* const interval : {"", "0", "-5", "soon"}) {
            RefreshStage stage;
            stage.Set("auto_refresh_interval", interval);
            stage.Start();
            QCOMPARE(stage.host.TakeLog(),
                     std::string("key+ auto_refresh_data, key+ chedan_table, key+ rzrq_chedan_table"));
            stage.PushData({{"htbh", "7"}});
            const auto table = Orders("chedan_table", "600000 16 B 10 7");
            stage.present->OnTableChanged("chedan_table", table);
            stage.present->OnQuotePush(Quote(16, "600000", "9"));
            QCOMPARE(table.use_count(), 1L);
            QCOMPARE(stage.present->State().quotes.Backlog(), std::uint64_t{0});
            QCOMPARE(stage.FollowUpLog(), std::string("chedan_table"));
        }
    }

    void TheTimersStepTheTasks()
    {
        RefreshStage stage;
        stage.Set("auto_refresh_interval", "1");
        stage.Set("auto_refresh_afterweituo", "1");
        stage.Start();
        stage.host.TakeLog();
        stage.PushData({{"chedan", "1"}, {"htbh", "1"}});
        std::string log;
        QTRY_VERIFY_WITH_TIMEOUT((log += stage.host.TakeLog() + ' ').find("funds") != std::string::npos,
                                 60'000);
        QTRY_VERIFY_WITH_TIMEOUT(stage.present->State().normalAccount.pending.Empty(), 60'000);
    }

    void EmptyPushesMeanNothing()
    {
        StartedStage stage;
        stage.PushTable("600000 16 B 10 1");
        stage.host.TakeLog();
        auto noRow = std::make_shared<QuotePushRecord>();
        auto noKey = Quote(16, "600000", "9");
        noKey->rows[0].erase("stockcode");
        auto emptyKey = Quote(16, "600000", "9");
        emptyKey->rows[0]["stockcode"].clear();
        auto secondRow = Quote(16, "000000", "9");
        secondRow->rows.push_back(Quote(16, "600000", "9")->rows[0]);
        for (const auto& record : {std::shared_ptr<QuotePushRecord>(), noRow, noKey, emptyKey, secondRow}) {
            stage.present->OnQuotePush(record);
        }
        stage.present->OnTableChanged("chedan_table", nullptr);
        stage.present->OnTableChanged("weituo_table", Orders("weituo_table", ""));
        stage.present->OnFundsPush(nullptr);
        stage.present->OnFundsPush(std::make_shared<StockInfoAnswer>());
        stage.Settle();
        QCOMPARE(stage.Due(), std::string());
        QCOMPARE(stage.host.TakeLog(), std::string());
    }

    // The table is the host's: nobody reads on in it when Stop() has returned, and what waited behind it is let go.
    void TheEndWaitsForTheTableInHand()
    {
        std::atomic<bool> reading{false};
        std::atomic<bool> over{false};
        std::atomic<bool> late{false};
        StartedStage stage;
        const auto table = Orders("chedan_table", "600000 16 B 10 1; 600001 16 B 10 2");
        table->m_onCell = [&] {
            reading = true;
            while (!stage.present->State().stopped) {
                std::this_thread::yield();
            }
            for (int turn = 0; turn < 100; ++turn) {
                std::this_thread::yield();
            }
            late = late || over;
        };
        stage.present->OnTableChanged("chedan_table", table);
        stage.present->OnTableChanged("chedan_table", table);
        QTRY_VERIFY_WITH_TIMEOUT(reading, 60'000);
        stage.present->Stop();
        stage.present->OnTableChanged("chedan_table", table);
        over = true;
        QTRY_COMPARE_WITH_TIMEOUT(table.use_count(), 1L, 60'000);
        QVERIFY(!late);
    }
};

PANELRY_TEST(PresentTest)

#include "present_test.moc"
