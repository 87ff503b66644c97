#include <sys/resource.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <future>
#include <limits>
#include <stdexcept>
#include <thread>

#include "services/module_base.h"
#include "support/test.h"
#include "watchlist/fake_library.h"
#include "watchlist/list_stage.h"
#include "watchlist/watchlist_subscription.h"

using namespace panelry;
using namespace panelry::test;

namespace
{

using Heard = std::vector<std::string>;

constexpr char kThree[] = R"([{"market":"16","stockcode":"600000"},{"market":"32","stockcode":"000001"},
                              {"market":"16","stockcode":"600519","stockname":"old","note":"kept"}])";
constexpr char kThreeWords[] = "600000/16 000001/32 600519/16=old+note";
constexpr char kGbk[] = "\xC6\xD6\xB7\xA2";

class EmptyModule : public ModuleBase
{
public:
    void Initialize(int, const char*, const char*, const char*) override {}
    void OnMessage(int, void*) override {}
};

// While it lives, no file may be made beside the user's list, which may be written.
class ClosedDirectory
{
public:
    explicit ClosedDirectory(const ListStage& stage) : m_stage(stage)
    {
        Allow(kUserFile, 0666);
        Allow("userconfig", 0555);
        Allow(".", 0755);
        m_isClosed = m_me != 0 || ::seteuid(65534) == 0;  // root may write anywhere
    }
    ~ClosedDirectory()
    {
        static_cast<void>(::seteuid(m_me));
        Allow("userconfig", 0755);  // so that it can be removed
    }
    ClosedDirectory(const ClosedDirectory&) = delete;
    ClosedDirectory& operator=(const ClosedDirectory&) = delete;

    bool IsClosed() const { return m_isClosed; }

private:
    void Allow(const char* name, int mode) const
    {
        std::filesystem::permissions(m_stage.Path(name).toStdString(), std::filesystem::perms(mode));
    }

    const ListStage& m_stage;
    const uid_t m_me = ::geteuid();
    bool m_isClosed = false;
};

}  // namespace

Q_DECLARE_METATYPE(std::string)
Q_DECLARE_METATYPE(WatchlistRequest)

class WatchlistTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void Requests_data()
    {
        QTest::addColumn<WatchlistRequest>("request");
        QTest::addColumn<std::string>("expected");  // the list; "" for one that isn't written
        const auto row = [](const char* name, int command, const char* items, const char* expected) {
            WatchlistRequest request;
            request.cmd = command;
            request.items = Stocks(items);
            QTest::newRow(name) << request << std::string(expected);
        };
        row("add", kAddStocks, "1/1 2/1=two", "600000/16 000001/32 600519/16=old+note 1/1 2/1=two");
        row("add what is there under another name", kAddStocks, "600519/16=new", kThreeWords);
        row("add one twice", kAddStocks, "1/1 1/1", "600000/16 000001/32 600519/16=old+note 1/1");
        row("add the code in another market", kAddStocks, "600000/32",
            "600000/16 000001/32 600519/16=old+note 600000/32");
        row("add nothing", kAddStocks, "", kThreeWords);
        row("add without a market", kAddStocks, "600000", "600000/16 000001/32 600519/16=old+note 600000");
        row("remove", kRemoveStocks, "000001/32 600000/16", "600519/16=old+note");
        row("remove strangers", kRemoveStocks, "600000/32 16/600000 600000", kThreeWords);
        row("remove all", kRemoveStocks, "600519/16 600000/16 000001/32", "");
        const auto move = [](const char* name, int from, int to, const char* expected) {
            WatchlistRequest request;
            request.cmd = kMoveStock;
            request.from = from;
            request.to = to;
            QTest::newRow(name) << request << std::string(expected);
        };
        move("move the first behind all", 0, 2, "000001/32 600519/16=old+note 600000/16");
        move("move the last before all", 2, 0, "600519/16=old+note 600000/16 000001/32");
        move("move down by one", 0, 1, "000001/32 600000/16 600519/16=old+note");
        move("move nowhere", 1, 1, kThreeWords);
        move("move from behind the end", 3, 0, kThreeWords);
        move("move to behind the end", 0, 3, kThreeWords);
        move("move from before the start", -1, 1, kThreeWords);
        move("move to before the start", 1, std::numeric_limits<int>::min(), kThreeWords);
    }

    // Whatever a request changes, or doesn't: written, told, and the search still finds everything.
    void Requests()
    {
        QFETCH(WatchlistRequest, request);
        QFETCH(const std::string, expected);
        ListStage stage;
        stage.Put(kSystemFile, kThree);
        QVERIFY(stage.Load());
        Listener listener;
        stage.Listen(kListenWatchlist, &listener);
        stage.m_present->HandleRequest(request);
        QCOMPARE(listener.m_heard,
                 (Heard{std::string("4: ") + kThreeWords, std::to_string(request.cmd) + ": " + expected}));
        QCOMPARE(stage.List(kUserFile), expected);
        QCOMPARE(stage.Text(kSystemFile), QByteArray(kThree));

        WatchlistRequest test;
        test.cmd = kTestStocks;
        test.items = Stocks(expected);
        test.items.push_back({{"stockcode", "600000"}, {"market", "17"}});
        test.found.assign(test.items.size(), false);
        test.found.back() = true;
        stage.m_present->HandleRequest(test);
        for (std::size_t i = 0; i < test.items.size(); ++i) {
            QCOMPARE(test.found[i], i + 1 < test.items.size() && test.items[i].contains("market"));
        }
    }

    void WhatChangesNothingIsNeitherWrittenNorTold_data()
    {
        QTest::addColumn<int>("command");
        for (const int command : {int{kTestStocks}, 8, 1000, -1}) {
            QTest::addRow("command %d", command) << command;
        }
    }

    void WhatChangesNothingIsNeitherWrittenNorTold()
    {
        QFETCH(const int, command);
        ListStage stage;
        stage.Put(kSystemFile, kThree);
        stage.Load();
        Listener listener;
        stage.Listen(kListenWatchlist, &listener);
        WatchlistRequest request;
        request.cmd = command;
        request.items = Stocks("600000/16 1/1 000001/32");
        request.found.assign(2, false);  // one short
        stage.m_present->HandleRequest(request);
        QCOMPARE(request.found, (std::vector<bool>{command == kTestStocks, false}));
        QCOMPARE(listener.m_heard.size(), std::size_t{1});
        QCOMPARE(stage.Text(kUserFile), QByteArray("(none)"));
    }

    void Start_data()
    {
        QTest::addColumn<QByteArray>("user");
        QTest::addColumn<QByteArray>("system");
        QTest::addColumn<bool>("read");
        QTest::addColumn<std::string>("list");
        QTest::addColumn<std::string>("latest");
        const QByteArray one = R"([{"stockcode":"1","market":"1"}])";
        const std::string latest = "9/9=nine";
        QTest::newRow("the user's") << one << QByteArray(kThree) << true << std::string("1/1") << latest;
        QTest::newRow("empty but there")
            << QByteArray("[]") << QByteArray(kThree) << true << std::string() << latest;
        QTest::newRow("with a tail") << one + "]}" << QByteArray(kThree) << true << std::string("1/1")
                                     << latest;
        QTest::newRow("with a byte order mark")
            << "\xEF\xBB\xBF" + one << QByteArray() << true << std::string("1/1") << latest;
        QTest::newRow("none") << QByteArray() << QByteArray(kThree) << true << std::string(kThreeWords)
                              << std::string();
        QTest::newRow("neither") << QByteArray() << QByteArray() << false << std::string() << std::string();
        QTest::newRow("both broken") << QByteArray("[") << QByteArray("nul") << false << std::string()
                                     << std::string();
        for (const QByteArray& broken :
             {QByteArray("[{\"stockcode\":\"1\",\"market\":\"1\"},{\"stock"), QByteArray("\n"),
              QByteArray("[{\"stockcode\":\"\xC6\xD6\"}]"), QByteArray(9000, '[') + QByteArray(9000, ']')}) {
            QTest::addRow("broken: %s", broken.left(24).toPercentEncoding(" []{}\":,").constData())
                << broken << QByteArray(kThree) << true << std::string(kThreeWords) << std::string();
        }
    }

    void Start()
    {
        QFETCH(const QByteArray, user);
        QFETCH(const QByteArray, system);
        QFETCH(const std::string, list);
        QFETCH(const std::string, latest);
        ListStage stage;
        stage.Put(kUserFile, user);
        stage.Put(kSystemFile, system);
        stage.Put(kLatestFile, R"([{"stockcode":"9","market":"9","stockname":"nine"}])");
        const bool read = stage.Load();
        QTEST(read, "read");
        QCOMPARE(stage.Current(), list);
        QCOMPARE(stage.Current(kListenLatest), latest);
        QCOMPARE(stage.Text(kUserFile), user.isEmpty() ? QByteArray("(none)") : user);
        stage.End();  // what wasn't read is replaced all the same
        QCOMPARE(stage.List(kLatestFile), latest);
    }

    // Files that parse but hold no list of stocks.
    void OddFiles_data()
    {
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<std::string>("addThrows");  // for the stock 1/1; "" if it works
        QTest::addColumn<std::string>("listenThrows");
        const auto row = [](const QByteArray& file, const char* addThrows, const char* listenThrows) {
            QTest::newRow(file) << file << std::string(addThrows) << std::string(listenThrows);
        };
        row("{}", "cannot use push_back() with object", "type must be array, but is object");
        row(R"({"a":{"market":"2"}})", "cannot use push_back() with object",
            "type must be array, but is object");
        row("17", "cannot use operator[] with a string argument with number",
            "type must be array, but is number");
        row("null", "", "");
        row("[17]", "cannot use operator[] with a string argument with number",
            "type must be object, but is number");
        row(R"([{"stockcode":"1","market":"1"},null])", "", "type must be object, but is null");
        row(R"([[],{"stockcode":"1","market":"1"}])",
            "cannot use operator[] with a string argument with array", "type must be object, but is array");
        row(R"([{"stockcode":"1","market":1}])", "", "type must be string, but is number");
        row(R"([{"stockcode":"1"},{"market":"1"},{}])", "", "");
    }

    void OddFiles()
    {
        QFETCH(const QByteArray, file);
        QFETCH(const std::string, addThrows);
        QFETCH(const std::string, listenThrows);
        ListStage stage;
        stage.Put(kUserFile, file);
        QVERIFY(stage.Load());
        const auto add = [&] { stage.Request(kAddStocks, "1/1"); };
        const auto said = [](const std::string& thrown, const std::string& part) {
            return part.empty() ? thrown.empty() : thrown.find(part) != std::string::npos;
        };
        for (int i = 0; i < 2; ++i) {
            const std::string thrown = Thrown(add);
            QVERIFY2(said(thrown, addThrows), thrown.c_str());
        }
        const std::string thrown = Thrown([&] { stage.Current(); });
        QVERIFY2(said(thrown, listenThrows), thrown.c_str());
        if (addThrows.empty()) {  // and after what was added twice, once is enough
            stage.Request(kRemoveStocks, "1/1");
            QVERIFY(!stage.Text(kUserFile).contains(R"("market": "1",)"));
        } else {
            QCOMPARE(stage.Text(kUserFile), file);
        }
    }

    void TheFileIsWrittenForPeople()
    {
        ListStage stage;
        stage.Load();
        stage.Request(kAddStocks, "600000/16=浦发银行");
        QCOMPARE(stage.Text(kUserFile),
                 QByteArray("[\n    {\n        \"market\": \"16\",\n        \"stockcode\": "
                            "\"600000\",\n        \"stockname\": \"浦发银行\"\n    }\n]"));
        stage.Request(kRemoveStocks, "600000/16");
        QCOMPARE(stage.Text(kUserFile), QByteArray("[]"));
    }

    void TextThatIsntUtf8LeavesTheOldFile()
    {
        ListStage stage;
        stage.Put(kUserFile, kThree);
        stage.Load();
        WatchlistRequest request;
        request.cmd = kAddStocks;
        request.items = {{{"stockcode", "1"}, {"market", "1"}, {"stockname", kGbk}}};
        Listener listener;
        stage.Listen(kListenWatchlist, &listener);
        stage.m_present->HandleRequest(request);
        QCOMPARE(stage.Text(kUserFile), QByteArray(kThree));
        QCOMPARE(listener.m_heard.back(), std::string("0: ") + kThreeWords + " 1/1=" + kGbk);
        stage.Request(kRemoveStocks, "1/1 600000/16");
        QCOMPARE(stage.List(kUserFile), std::string("000001/32 600519/16=old+note"));
    }

    void TheFilesStayWhereTheyWereRead()
    {
        ListStage stage;
        stage.Load();
        QDir::setCurrent(QDir::rootPath());
        stage.Request(kAddStocks, "1/1");
        QCOMPARE(stage.List(kUserFile), std::string("1/1"));
    }

    void ADirectoryThatIsntThereIsNotMade()
    {
        ListStage stage;
        QVERIFY(QDir().rmdir(QStringLiteral("userconfig")));
        stage.Load();
        stage.Request(kAddStocks, "1/1");
        stage.End();
        QVERIFY(!QDir().exists(QStringLiteral("userconfig")));
    }

    void AWritableFileInADirectoryThatIsntIsWrittenInPlace()
    {
        ListStage stage;
        stage.Put(kUserFile, kThree);
        const ClosedDirectory closed(stage);
        QVERIFY(closed.IsClosed());
        stage.Load();
        stage.Request(kRemoveStocks, "600000/16");
        QCOMPARE(stage.List(kUserFile), std::string("000001/32 600519/16=old+note"));
    }

    void AFileThatCantBeWrittenInPlaceKeepsItsOldText()
    {
        ListStage stage;
        stage.Put(kUserFile, kThree);
        const ClosedDirectory closed(stage);
        QVERIFY(closed.IsClosed());
        stage.Load();
        const auto formerHandler = std::signal(SIGXFSZ, SIG_IGN);
        rlimit limit = {};
        ::getrlimit(RLIMIT_FSIZE, &limit);
        const rlimit tight{sizeof kThree, limit.rlim_max};  // the old text fits, and a part of the new one
        ::setrlimit(RLIMIT_FSIZE, &tight);
        stage.Request(kAddStocks, "1/1 2/2 3/3");
        ::setrlimit(RLIMIT_FSIZE, &limit);
        std::signal(SIGXFSZ, formerHandler);
        QCOMPARE(stage.Text(kUserFile), QByteArray(kThree));
        stage.Request(kRemoveStocks, "1/1 2/2 3/3");  // and the next one is written
        QCOMPARE(stage.List(kUserFile), std::string(kThreeWords));
    }

    void OneListenerDoesNoHarmToTheOthers()
    {
        ListStage stage;
        stage.Load();
        Listener listeners[3];
        for (Listener& listener : listeners) {
            stage.Listen(kListenWatchlist, &listener);
            stage.Listen(kListenWatchlist, &listener);  // heard twice, registered once
            listener.m_then = [] { throw std::runtime_error("swallowed"); };
        }
        stage.Listen(kListenWatchlist, nullptr);
        stage.Listen(kUnlistenWatchlist, nullptr);
        stage.Request(kAddStocks, "1/1");
        for (const Listener& listener : listeners) {
            QCOMPARE(listener.m_heard, (Heard{"4: ", "4: ", "0: 1/1"}));
        }
    }

    // From inside a notice: requests, registering, unregistering oneself and others, by address before and
    // after.
    void ListenersMayDoWhatTheyLike()
    {
        ListStage stage;
        stage.Load();
        Listener listeners[3];  // called in this order
        auto late = std::make_unique<Listener>();
        for (Listener& listener : listeners) {
            stage.Listen(kListenWatchlist, &listener);
        }
        int calls = 0;
        listeners[1].m_then = [&] {
            if (++calls == 1) {
                stage.Listen(kUnlistenWatchlist, &listeners[0]);
                stage.Listen(kListenWatchlist, late.get());
                stage.Request(kAddStocks, "2/2");  // calls itself once more
                stage.Listen(kUnlistenWatchlist, late.get());
                late.reset();
            } else {
                stage.Listen(kUnlistenWatchlist, &listeners[1]);
            }
        };
        stage.Request(kAddStocks, "1/1");
        QCOMPARE(listeners[0].m_heard, (Heard{"4: ", "0: 1/1"}));
        QCOMPARE(listeners[1].m_heard, (Heard{"4: ", "0: 1/1", "0: 1/1 2/2"}));
        QCOMPARE(listeners[2].m_heard,
                 (Heard{"4: ", "0: 1/1 2/2", "0: 1/1 2/2"}));  // never told of an old list last
    }

    // On a thread that isn't ours the call may still run when the listener unregisters: it would die in it.
    void UnregisteringWaitsForACallOnAnotherThread()
    {
        constexpr std::chrono::milliseconds kPatience(200);  // only a fault comes back sooner
        ListStage stage;
        stage.Load();
        Listener listener;
        stage.Listen(kListenWatchlist, &listener);
        std::promise<void> called;
        std::promise<void> gone;
        bool wasGone = false;
        listener.m_then = [&] {
            called.set_value();
            wasGone = gone.get_future().wait_for(kPatience) == std::future_status::ready;
        };
        std::thread other([&] { stage.Request(kAddStocks, "1/1"); });
        called.get_future().wait();
        stage.Listen(kUnlistenWatchlist, &listener);
        gone.set_value();
        other.join();
        QVERIFY(!wasGone);
    }

    // Each change is told while listeners come and go: none is called after it has gone.
    void ListenersComeAndGoWhileAnotherThreadTells()
    {
        ListStage stage;
        stage.Load();
        std::atomic<bool> enough{false};
        std::thread other([&] {
            for (StringMap stock = Stocks("1/1=").front(); !enough;) {
                stage.m_present->OnStockSelected(&stock);
            }
        });
        std::size_t told = 0;
        std::atomic<bool> alive{false};
        std::atomic<bool> calledLate{false};
        for (int i = 0; i < 500 || told == 0; ++i) {
            auto listener = std::make_unique<Listener>();
            listener->m_then = [&] { calledLate = calledLate || !alive; };
            alive = true;
            stage.Listen(kListenLatest, listener.get());
            std::this_thread::yield();
            stage.Listen(kUnlistenLatest, listener.get());
            alive = false;
            told += listener->m_heard.size() - 1;
        }
        enough = true;
        other.join();
        QVERIFY(!calledLate);
    }

    void AListenerThatFailsOnRegisteringIsNotRegistered()
    {
        ListStage stage;
        stage.Load();
        Listener listener;
        listener.m_then = [] { throw std::runtime_error("mine"); };
        QCOMPARE(Thrown([&] { stage.Listen(kListenWatchlist, &listener); }), std::string("mine"));
        stage.Request(kAddStocks, "1/1");
        QCOMPARE(listener.m_heard.size(), std::size_t{1});
    }

    void ASubscriptionLastsAsLongAsItLives()
    {
        ListStage stage;
        stage.Load();
        FakeLibrary library(*stage.m_present);
        EmptyModule module;
        Listener listener;
        {
            const WatchlistSubscription unconnected(module, listener, kListenWatchlist);
            QVERIFY(listener.m_heard.empty());
        }
        module.m_manager = &library;
        {
            const WatchlistSubscription watchlist(module, listener, kListenWatchlist);
            const WatchlistSubscription latest(module, listener, kListenLatest);
            stage.Request(kAddStocks, "1/1");
            stage.m_present->OnStockSelected(&Stocks("2/2=two").front());
        }
        const Heard heard{"4: ", "6: ", "0: 1/1", "8: 2/2=two"};
        QCOMPARE(listener.m_heard, heard);
        stage.Request(kAddStocks, "3/3");
        stage.m_present->OnStockSelected(&Stocks("3/3").front());
        QCOMPARE(listener.m_heard, heard);
    }

    void ManyThreadsAtATime()
    {
        constexpr int kThreads = 4;
        constexpr int kEach = 15;
        ListStage stage;
        stage.Load();
        std::vector<std::thread> threads;
        for (int thread = 0; thread < kThreads; ++thread) {
            threads.emplace_back([&stage, thread] {
                for (int i = 0; i < kEach; ++i) {
                    const std::string mine = std::to_string(thread * kEach + i) + "/1";
                    stage.Request(kAddStocks, mine + " gone/" + std::to_string(thread));
                    stage.Request(kRemoveStocks, "gone/" + std::to_string(thread));
                    std::vector<bool> found(1);
                    stage.m_present->TestStocks(Stocks(mine), found);
                    stage.m_present->MoveStock(0, found[0] ? 1 : 1000);
                    stage.m_present->OnStockSelected(&Stocks(mine).front());
                    stage.Current(kListenLatest);
                }
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
        QCOMPARE(Stocks(stage.Current()).size(), std::size_t{kThreads * kEach});
        QCOMPARE(Stocks(stage.Current(kListenLatest)).size(), std::size_t{kThreads * kEach});
        stage.m_present->Save();  // moves alone aren't saved
        QCOMPARE(stage.List(kUserFile), stage.Current());
    }
};

PANELRY_TEST(WatchlistTest)

#include "watchlist_test.moc"
