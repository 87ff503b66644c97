#include <sys/resource.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <future>
#include <limits>
#include <stdexcept>
#include <thread>

#include "services/module_base.h"
#include "support/rows.h"
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

struct EmptyModule : ModuleBase {
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

    bool m_isClosed = false;

private:
    void Allow(const char* name, int mode) const
    {
        std::filesystem::permissions(m_stage.Path(name).toStdString(), std::filesystem::perms(mode));
    }

    const ListStage& m_stage;
    const uid_t m_me = ::geteuid();
};

}  // namespace

Q_DECLARE_METATYPE(WatchlistRequest)

class WatchlistTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void Requests_data()
    {
        const Rows<WatchlistRequest, std::string> row("request expected");
        const auto add = [](const char* items) { return Asking(kAddStocks, items); };
        const auto remove = [](const char* items) { return Asking(kRemoveStocks, items); };
        const auto move = [](int from, int to) { return Asking(kMoveStock, "", from, to); };
        row("add, one of them twice", add("1/1 2/1=two 1/1"), kThreeWords + std::string(" 1/1 2/1=two"));
        row("add what is there under another name", add("600519/16=new"), kThreeWords);
        row("add in another market and without one", add("600000/32 600000"),
            kThreeWords + std::string(" 600000/32 600000"));
        row("remove", remove("000001/32 600000/16"), "600519/16=old+note");
        row("remove strangers", remove("600000/32 16/600000 600000"), kThreeWords);
        row("remove all", remove("600519/16 600000/16 000001/32"), "");
        row("move the first behind all", move(0, 2), "000001/32 600519/16=old+note 600000/16");
        row("move the last before all", move(2, 0), "600519/16=old+note 600000/16 000001/32");
        row("move nowhere", move(1, 1), kThreeWords);
        row("move from behind the end", move(3, 0), kThreeWords);
        row("move to behind the end", move(0, 3), kThreeWords);
        row("move from before the start", move(-1, 1), kThreeWords);
        row("move to before the start", move(1, std::numeric_limits<int>::min()), kThreeWords);
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

        WatchlistRequest test = Asking(kTestStocks, expected + " 600000/17");
        test.found.assign(test.items.size(), false);
        test.found.back() = true;
        stage.m_present->HandleRequest(test);
        for (std::size_t i = 0; i < test.items.size(); ++i) {
            QCOMPARE(test.found[i], i + 1 < test.items.size() && test.items[i].contains("market"));
        }
    }

    void WhatChangesNothingIsNeitherWrittenNorTold()
    {
        ListStage stage;
        stage.Put(kSystemFile, kThree);
        stage.Load();
        Listener listener;
        stage.Listen(kListenWatchlist, &listener);
        for (const int command : {int{kTestStocks}, 8, 1000, -1}) {
            WatchlistRequest request = Asking(command, "600000/16 1/1 000001/32");
            request.found.assign(2, false);  // one short
            stage.m_present->HandleRequest(request);
            QCOMPARE(request.found, (std::vector<bool>{command == kTestStocks, false}));
        }
        QCOMPARE(listener.m_heard.size(), std::size_t{1});
        QCOMPARE(stage.Text(kUserFile), QByteArray("(none)"));
    }

    void Start_data()
    {
        // The source of the list: the user's file, the system's, or none.
        const Rows<QByteArray, QByteArray, QByteArray, std::string> row("user system source list");
        const QByteArray one = R"([{"stockcode":"1","market":"1"}])";
        row("the user's", one, kThree, "user", "1/1");
        row("empty but there", "[]", kThree, "user", "");
        row("with a tail", one + "]}", kThree, "user", "1/1");
        row("with a byte order mark", "\xEF\xBB\xBF" + one, "", "user", "1/1");
        row("none", "", kThree, "system", kThreeWords);
        row("both broken", "[", "nul", "", "");
        row("cut off", one.chopped(3), kThree, "system", kThreeWords);
        row("not UTF-8", "[{\"stockcode\":\"\xC6\xD6\"}]", kThree, "system", kThreeWords);
        row("too deep", QByteArray(9000, '[') + QByteArray(9000, ']'), kThree, "system", kThreeWords);
    }

    void Start()
    {
        QFETCH(const QByteArray, user);
        QFETCH(const QByteArray, system);
        QFETCH(const QByteArray, source);
        QFETCH(const std::string, list);
        const std::string latest = source == "user" ? "9/9=nine" : "";
        ListStage stage;
        stage.Put(kUserFile, user);
        stage.Put(kSystemFile, system);
        stage.Put(kLatestFile, R"([{"stockcode":"9","market":"9","stockname":"nine"}])");
        QCOMPARE(stage.Load(), !source.isEmpty());
        QCOMPARE(stage.Current(), list);
        QCOMPARE(stage.Current(kListenLatest), latest);
        QCOMPARE(stage.Text(kUserFile), user.isEmpty() ? QByteArray("(none)") : user);
        stage.End();  // what wasn't read is replaced all the same
        QCOMPARE(stage.List(kLatestFile), latest);
    }

    // Files that parse but hold no list of stocks: what adding and listening throw, nothing for "".
    void OddFiles()
    {
        const std::string notIndexed = "cannot use operator[] with a string argument with number";
        OddFile("{}", "cannot use push_back() with object", "type must be array, but is object");
        OddFile("null", "", "");
        OddFile("[17]", notIndexed, "type must be object, but is number");
        OddFile(R"([{"stockcode":"1","market":"1"},null])", "", "type must be object, but is null");
        OddFile(R"([{"stockcode":"1","market":1}])", "", "type must be string, but is number");
        OddFile(R"([{"stockcode":"1"},{"market":"1"},{}])", "", "");
    }

    void TheFileIsWrittenForPeople()
    {
        ListStage stage("");
        stage.Request(kAddStocks, "600000/16=浦发银行");
        QCOMPARE(stage.Text(kUserFile),
                 QByteArray("[\n    {\n        \"market\": \"16\",\n        \"stockcode\": "
                            "\"600000\",\n        \"stockname\": \"浦发银行\"\n    }\n]"));
        stage.Request(kRemoveStocks, "600000/16");
        QCOMPARE(stage.Text(kUserFile), QByteArray("[]"));
    }

    void TextThatIsntUtf8LeavesTheOldFile()
    {
        ListStage stage(kThree);
        WatchlistRequest request = Asking(kAddStocks, "1/1");
        request.items.front()["stockname"] = kGbk;
        Listener listener;
        stage.Listen(kListenWatchlist, &listener);
        stage.m_present->HandleRequest(request);
        QCOMPARE(stage.Text(kUserFile), QByteArray(kThree));
        QCOMPARE(listener.m_heard.back(), std::string("0: ") + kThreeWords + " 1/1=" + kGbk);
        stage.Request(kRemoveStocks, "1/1 600000/16");
        QCOMPARE(stage.List(kUserFile), std::string("000001/32 600519/16=old+note"));
    }

    void TheFilesStayWhereTheyWereReadAndNoDirectoryIsMade()
    {
        ListStage stage("");
        QDir::setCurrent(QDir::rootPath());
        stage.Request(kAddStocks, "1/1");
        QCOMPARE(stage.List(kUserFile), std::string("1/1"));
        QVERIFY(QDir(stage.Path("userconfig")).removeRecursively());
        stage.Request(kAddStocks, "2/2");
        stage.End();
        QVERIFY(!QDir(stage.Path("userconfig")).exists());
    }

    // Where no file can be made beside it the file is written in place; what fails there leaves the old text.
    void AFileThatCantBeWrittenInPlaceKeepsItsOldText()
    {
        ListStage stage;
        stage.Put(kUserFile, kThree);
        const ClosedDirectory closed(stage);
        QVERIFY(closed.m_isClosed);
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
        ListStage stage("");
        Listener listeners[3];
        for (Listener& listener : listeners) {
            stage.Listen(kListenWatchlist, &listener);
            stage.Listen(kListenWatchlist, &listener);  // heard twice, registered once
            listener.m_then = [] { throw std::runtime_error("mine"); };
        }
        stage.Listen(kListenWatchlist, nullptr);
        stage.Listen(kUnlistenWatchlist, nullptr);
        Listener refusing;  // fails on registering: the caller hears of it, and it isn't registered
        refusing.m_then = listeners[0].m_then;
        QCOMPARE(Thrown([&] { stage.Listen(kListenWatchlist, &refusing); }), std::string("mine"));
        stage.Request(kAddStocks, "1/1");
        for (const Listener& listener : listeners) {
            QCOMPARE(listener.m_heard, (Heard{"4: ", "4: ", "0: 1/1"}));
        }
        QCOMPARE(refusing.m_heard, Heard{"4: "});
    }

    // From inside a notice: requests, registering, unregistering oneself and others, by address before and
    // after.
    void ListenersMayDoWhatTheyLike()
    {
        ListStage stage("");
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
        ListStage stage("");
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

    void ASubscriptionLastsAsLongAsItLives()
    {
        ListStage stage("");
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
        ListStage stage("");
        std::vector<std::jthread> threads;
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
        threads.clear();
        QCOMPARE(Stocks(stage.Current()).size(), std::size_t{kThreads * kEach});
        QCOMPARE(Stocks(stage.Current(kListenLatest)).size(), std::size_t{kThreads * kEach});
        stage.m_present->Save();  // moves alone aren't saved
        QCOMPARE(stage.List(kUserFile), stage.Current());
    }

private:
    static void OddFile(const QByteArray& file, const std::string& addThrows, const std::string& listenThrows)
    {
        ListStage stage(file);
        const auto check = [&file](const std::string& said, const auto& operation) {
            const std::string thrown = Thrown(operation);
            const bool isSaid = said.empty() ? thrown.empty() : thrown.find(said) != std::string::npos;
            QVERIFY2(isSaid, (file + ": " + thrown.c_str()).constData());
        };
        for (int i = 0; i < 2; ++i) {
            check(addThrows, [&] { stage.Request(kAddStocks, "1/1"); });
        }
        check(listenThrows, [&] { stage.Current(); });
        if (addThrows.empty()) {  // and after what was added twice, once is enough
            stage.Request(kRemoveStocks, "1/1");
            QVERIFY2(!stage.Text(kUserFile).contains(R"("market": "1",)"), file);
        } else {
            QCOMPARE(stage.Text(kUserFile), file);
        }
    }
};

PANELRY_TEST(WatchlistTest)

#include "watchlist_test.moc"
