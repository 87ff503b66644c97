// Start and end, the host's callbacks, ticks and follow-ups.

#include <latch>
#include <thread>

#include "refresh/auto_refresh.h"
#include "refresh/refresh_stage.h"

using namespace panelry::test;

namespace
{

constexpr char kKeys[] = "key+ auto_refresh_data, key+ chedan_table, key+ rzrq_chedan_table";

std::string Join(const std::string& first, const std::string& second)
{
    return first + ", " + second;
}

}  // namespace

Q_DECLARE_METATYPE(std::string)
Q_DECLARE_METATYPE(StringMap)

class PresentTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void ADataPushMarksOrWaits_data()
    {
        QTest::addColumn<StringMap>("push");
        QTest::addColumn<std::string>("due");
        QTest::addColumn<std::string>("followedUp");
        const auto row = [](const char* name, const StringMap& push, const char* due,
                            const char* followedUp) {
            QTest::newRow(name) << push << std::string(due) << std::string(followedUp);
        };
        row("an order", {{"htbh", "1"}}, "", "chedan_table");
        row("a cancel", {{"chedan", "yes"}}, "normal", "");
        row("both", {{"htbh", "1"}, {"chedan", "0"}}, "normal", "chedan_table");
        row("both, margin", {{"htbh", "1"}, {"chedan", "1"}, {"rzrq", "1"}}, "margin", "rzrq_chedan_table");
        row("only 1 is margin", {{"htbh", "1"}, {"rzrq", "yes"}}, "", "chedan_table");
        row("empty texts", {{"htbh", ""}, {"chedan", ""}, {"rzrq", "1"}}, "", "");
    }

    void ADataPushMarksOrWaits()
    {
        QFETCH(const StringMap, push);
        QFETCH(const std::string, due);
        QFETCH(const std::string, followedUp);
        RefreshStage stage;
        stage.Start();
        stage.host.TakeLog();
        stage.PushData(push);
        QCOMPARE(stage.Due(), due);
        QCOMPARE(stage.FollowUpLog(), followedUp);
        QCOMPARE(stage.FollowUpLog(), std::string());  // once each
        stage.PushData({});
        stage.present->OnDataPush("auto_refresh_data", nullptr);
        stage.present->OnDataPush("another", std::make_shared<StringMap>(push));
        QCOMPARE(stage.Due(), due);
        QCOMPARE(stage.FollowUpLog(), std::string());
    }

    void TheModeSaysWhatAFollowUpCovers_data()
    {
        QTest::addColumn<QByteArray>("mode");
        QTest::addColumn<std::string>("normal");
        QTest::addColumn<std::string>("margin");
        const std::string orders = "chedan_table";
        const std::string all = "chedan_table, chengjiao_table, funds";
        const std::string marginAll = "rzrq_chedan_table, rzrq_chengjiao_table, rzrq_funds";
        QTest::newRow("none") << QByteArray() << orders << "rzrq_" + orders;
        QTest::newRow("0") << QByteArray("0") << orders << "rzrq_" + orders;
        QTest::newRow("1") << QByteArray("1") << all << marginAll;
        QTest::newRow("2") << QByteArray("2") << orders << "rzrq_" + orders;
    }

    void TheModeSaysWhatAFollowUpCovers()
    {
        QFETCH(const QByteArray, mode);
        QFETCH(const std::string, normal);
        QFETCH(const std::string, margin);
        RefreshStage stage;
        stage.Start();
        stage.host.TakeLog();
        stage.Set("autorefresh_mode_afterwt", mode.constData());  // read at every tick
        stage.PushData({{"htbh", "1"}});
        stage.PushData({{"htbh", "2"}});
        QCOMPARE(stage.FollowUpLog(), normal);
        stage.PushData({{"htbh", "1"}, {"rzrq", "1"}});
        QCOMPARE(stage.FollowUpLog(), margin);
        stage.PushData({{"htbh", "1"}, {"rzrq", "1"}});
        stage.PushData({{"htbh", "1"}});
        QCOMPARE(stage.FollowUpLog(), Join(normal, margin));
    }

    // A table of the same account, and only the contract that it shows.
    void AnOrderThatHasAppearedIsNotFollowedUp()
    {
        RefreshStage stage;
        stage.Start();
        stage.PushData({{"htbh", "12"}});
        stage.PushTable("600000 16 B 10 12", "rzrq_chedan_table");
        stage.host.TakeLog();
        QCOMPARE(stage.FollowUpLog(), std::string("chedan_table"));
        stage.PushData({{"htbh", "12"}});
        stage.PushTable("600000 16 B 10 1; 600000 16 B 10 12");
        stage.host.TakeLog();
        QCOMPARE(stage.FollowUpLog(), std::string());
        stage.PushData({{"htbh", "12"}, {"rzrq", "1"}});
        stage.PushData({{"htbh", "13"}, {"rzrq", "1"}});
        stage.PushTable("600000 16 B 10 12", "rzrq_chedan_table");
        stage.host.TakeLog();
        QCOMPARE(stage.FollowUpLog(), std::string("rzrq_chedan_table"));
    }

    void ATickRefreshesWhatIsMarked()
    {
        RefreshStage stage;
        stage.Start();
        stage.host.TakeLog();
        QCOMPARE(stage.TickLog(), std::string());
        stage.PushData({{"chedan", "1"}, {"rzrq", "1"}});
        stage.PushData({{"chedan", "1"}});
        stage.PushData({{"chedan", "1"}});
        QCOMPARE(stage.TickLog(), Join(kAllNormal, kAllMargin));
        QCOMPARE(stage.TickLog(), std::string());
        // A mark that comes while the refresh runs goes with it.
        stage.host.m_inside = [&stage](const std::string&) { stage.PushData({{"chedan", "1"}}); };
        stage.PushData({{"chedan", "1"}});
        QCOMPARE(stage.TickLog(), std::string(kAllNormal));
        QCOMPARE(stage.Due(), std::string());
    }

    void LoginStates_data()
    {
        QTest::addColumn<QByteArray>("ready");  // the accounts that are
        QTest::addColumn<int>("state");
        QTest::addColumn<std::string>("first");
        QTest::addColumn<std::string>("second");  // what the same state does once more
        const std::string keys = kKeys;
        QTest::newRow("0, none ready") << QByteArray() << 0 << keys << keys;
        QTest::newRow("0, normal ready") << QByteArray("0") << 0 << Join(keys, kAllNormal) << keys;
        QTest::newRow("0, margin ready") << QByteArray("1") << 0 << Join(keys, kAllMargin) << keys;
        QTest::newRow("0, both ready")
            << QByteArray("01") << 0 << Join(keys, Join(kAllNormal, kAllMargin)) << keys;
        QTest::newRow("1, both ready") << QByteArray("01") << 1 << std::string(kAllMargin) << std::string();
        QTest::newRow("1, normal ready") << QByteArray("0") << 1 << std::string() << std::string();
        QTest::newRow("5") << QByteArray("01") << 5 << std::string() << std::string();
        QTest::newRow("-1") << QByteArray("01") << -1 << std::string() << std::string();
    }

    void LoginStates()
    {
        QFETCH(const QByteArray, ready);
        QFETCH(const int, state);
        QFETCH(const std::string, first);
        QFETCH(const std::string, second);
        RefreshStage stage;
        for (const char account : ready) {
            stage.host.SetString(std::string("authority_") + account, "1");
        }
        stage.Start();
        stage.host.TakeLog();
        stage.present->OnLoginState(state);
        QCOMPARE(stage.host.TakeLog(), first);
        stage.present->OnLoginState(state);
        QCOMPARE(stage.host.TakeLog(), second);
    }

    void AnAccountThatGetsReadyLaterIsRefreshedThen()
    {
        RefreshStage stage;
        stage.Start();
        stage.present->OnLoginState(0);
        stage.host.TakeLog();
        stage.host.SetString("authority_1", "1");
        stage.present->OnLoginState(1);
        QCOMPARE(stage.host.TakeLog(), std::string(kAllMargin));
    }

    void LoginsOnManyThreadsRefreshOnce()
    {
        for (int round = 0; round < 50; ++round) {
            RefreshStage stage;
            stage.host.SetString("authority_1", "1");
            stage.Start();
            stage.host.TakeLog();
            std::latch together(4);
            std::vector<std::jthread> threads;
            for (int i = 0; i < 4; ++i) {
                threads.emplace_back([&] {
                    together.arrive_and_wait();
                    stage.present->OnLoginState(1);
                });
            }
            threads.clear();
            QCOMPARE(stage.host.TakeLog(), std::string(kAllMargin));
        }
    }

    void FundsGoToBothAccounts()
    {
        RefreshStage stage;
        stage.Start();
        stage.host.TakeLog();
        auto answer = std::make_shared<StockInfoAnswer>();
        answer->request = std::make_shared<ddsdk::TradeRequestParam>();
        answer->reply = std::make_shared<ddsdk::TradeRequestParam>();
        answer->request->head["type"] = "5";
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
    void WithoutAnIntervalNothingIsWatched_data()
    {
        QTest::addColumn<QByteArray>("interval");
        for (const char* const interval : {"", "0", "-5", "soon"}) {
            QTest::newRow(interval) << QByteArray(interval);
        }
    }

    void WithoutAnIntervalNothingIsWatched()
    {
        QFETCH(const QByteArray, interval);
        RefreshStage stage;
        stage.Set("auto_refresh_interval", interval.constData());
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
        RefreshStage stage;
        stage.Start();
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
        stage.host.SetString("authority_0", "1");
        stage.Start();
        stage.present->Stop();
        stage.host.TakeLog();
        const auto table = Orders("chedan_table", "600000 16 B 10 1");
        stage.present->OnTableChanged("chedan_table", table);
        stage.present->OnQuotePush(Quote(16, "600000", "9"));
        stage.PushData({{"chedan", "1"}, {"htbh", "1"}});
        stage.present->OnLoginState(0);
        auto answer = std::make_shared<StockInfoAnswer>();
        answer->request = answer->reply = std::make_shared<ddsdk::TradeRequestParam>();
        answer->request->head["type"] = "5";
        stage.present->OnFundsPush(answer);
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
};

PANELRY_TEST(PresentTest)

#include "present_test.moc"
