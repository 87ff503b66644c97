// Start and end, the host's callbacks, ticks and follow-ups.

#include "refresh/auto_refresh.h"
#include "refresh/refresh_stage.h"

using namespace panelry::test;

namespace
{

constexpr char kKeys[] = "key+ auto_refresh_data, key+ chedan_table, key+ rzrq_chedan_table";

std::shared_ptr<StockInfoAnswer> FundsAnswer()
{
    auto answer = std::make_shared<StockInfoAnswer>();
    answer->request = std::make_shared<ddsdk::TradeRequestParam>();
    answer->reply = std::make_shared<ddsdk::TradeRequestParam>();
    answer->request->head["type"] = "5";
    return answer;
}

}  // namespace

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

    void LoginsOnManyThreadsRefreshOnce()
    {
        for (int round = 0; round < 50; ++round) {
            RefreshStage stage;
            stage.host.m_strings["authority_1"] = "1";
            stage.Start();
            stage.host.TakeLog();
            OnThreads(4, [&](int) { stage.present->OnLoginState(1); }).clear();
            QCOMPARE(stage.host.TakeLog(), std::string(kAllMargin));
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
        answer->table = std::make_shared<FakeAnswerTable>(std::vector<std::string>{"2172"},
                                                          FakeTable::Rows{{"0"}, {"1"}});
        stage.present->OnFundsPush(answer);
        QCOMPARE(stage.host.TakeLog(), std::string("set zijin_data_rzrq_0, set zijin_data_rzrq_1"));
    }

    // Nobody would take what is queued, and nothing may grow.
    void WithoutAnIntervalNothingIsWatched()
    {
        for (const char* const interval : {"", "0", "-5", "soon"}) {
            WatchNothing(interval);
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

    // A provider may keep its subscriber for ever.
    void AStoppedPresenterIsDeaf()
    {
        RefreshStage stage;
        stage.host.m_strings["authority_0"] = "1";
        stage.Start();
        stage.present->Stop();
        stage.host.TakeLog();
        const auto table = Orders("chedan_table", "600000 16 B 10 1");
        stage.present->OnTableChanged("chedan_table", table);
        stage.present->OnQuotePush(Quote(16, "600000", "9"));
        stage.PushData({{"chedan", "1"}, {"htbh", "1"}});
        stage.present->OnLoginState(0);
        stage.present->OnFundsPush(FundsAnswer());
        QCOMPARE(stage.TickLog() + stage.FollowUpLog(), std::string());
        QCOMPARE(table.use_count(), 1L);
        QCOMPARE(stage.Due(), std::string());
    }

    void TheServiceIsAShellRoundThePresenter()
    {
        Settings()["system"] = {{"auto_refresh_interval", RefreshStage::kNever}};
        FakeHost host;
        AutoRefresh& service = *AutoRefresh::Instance(true);
        service.SetProviders(static_cast<QuoteProvider*>(&host), static_cast<TradeProvider*>(&host));
        QCOMPARE(host.TakeLog(), std::string());
        service.Start();
        QCOMPARE(host.TakeLog(), std::string(kKeys));
        QCOMPARE(service.GetWidget(), nullptr);
        service.OnMessage(102, nullptr);
        AutoRefresh::Destroy();
        QCOMPARE(AutoRefresh::Instance(false), nullptr);
        host.LetGo();
        AutoRefresh::Instance(true)->Start();  // without providers
        AutoRefresh::Destroy();
    }

private:
    static void WatchNothing(const char* interval)
    {
        RefreshStage stage;
        stage.Set("auto_refresh_interval", interval);
        stage.Start();
        QCOMPARE(stage.host.TakeLog(), std::string(kKeys));
        const auto table = Orders("chedan_table", "600000 16 B 10 7");
        for (int i = 0; i < 100; ++i) {
            stage.present->OnTableChanged("chedan_table", table);
            stage.present->OnQuotePush(Quote(16, "600000", "9"));
        }
        QCOMPARE(table.use_count(), 1L);
        QCOMPARE(stage.present->State().quotes.Backlog(), std::uint64_t{0});
        // The follow-up has a timer of its own, and no table takes a contract away.
        stage.PushData({{"htbh", "7"}});
        stage.present->OnTableChanged("chedan_table", table);
        QCOMPARE(stage.FollowUpLog(), std::string("chedan_table"));
    }
};

PANELRY_TEST(PresentTest)

#include "present_test.moc"
