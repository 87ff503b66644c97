#include <thread>

#include "observers/fake_providers.h"
#include "support/slot_of.h"
#include "support/test.h"
#include "watchlist/watchlist_listener.h"

using panelry::test::FakeQuoteProvider;
using panelry::test::FakeTradeProvider;
using panelry::test::PairOfObservers;
using panelry::test::SlotOf;

namespace
{

using Calls = std::vector<std::string>;
using Codes = std::vector<MarketCode>;
using Call = std::function<int(PairOfObservers&)>;

constexpr bool kOn = true;
constexpr bool kOff = false;

// A pair with its two providers, attached.
struct Stage {
    Stage()
    {
        quotes.Expect(pair.get());
        trades.Expect(pair.get());
        quoteResult = pair->QuoteObserver::SetProvider(&quotes);
        tradeResult = pair->TradeObserver::SetProvider(&trades);
    }

    std::string LastCall() const
    {
        const Calls calls = quotes.Calls().size() > 1 ? quotes.Calls() : trades.Calls();
        return calls.back();
    }

    FakeQuoteProvider quotes;
    FakeTradeProvider trades;
    std::shared_ptr<PairOfObservers> pair = std::make_shared<PairOfObservers>();
    int quoteResult = 0;
    int tradeResult = 0;
};

Codes TwoStocks()
{
    return {{16, "600000"}, {32, "unknown"}};
}

// A result whose out parameters are as they should be; -1 goes without.
int Checked(int result, bool asItShouldBe)
{
    return result == -1 || asItShouldBe ? result : 1000;
}

std::string KeysOf(const PairOfObservers& pair)
{
    std::string keys;
    for (const std::string& key : pair.SubscribedCodes()) {
        keys += std::to_string(static_cast<unsigned char>(key.front())) + ':' + key.substr(1) + ' ';
    }
    for (const std::uint32_t topic : pair.SubscribedTopicsA()) {
        keys += 'A' + std::to_string(topic) + ' ';
    }
    for (const std::uint32_t topic : pair.SubscribedTopicsB()) {
        keys += 'B' + std::to_string(topic) + ' ';
    }
    for (const std::string& key : pair.SubscribedKeys()) {
        keys += key + ' ';
    }
    return keys;
}

}  // namespace

Q_DECLARE_METATYPE(Call)
Q_DECLARE_METATYPE(std::string)

class ObserversTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    // The n-th operation of a host's object has place n: the destructor, the first, fills 0 and 1.
    void HostsFindEachOperationInItsPlace_data()
    {
        QTest::addColumn<int>("slot");
        QTest::addColumn<int>("place");
        QTest::newRow("quote: Attach") << SlotOf(&QuoteProvider::Attach) << 3;
        QTest::newRow("quote: QueryQuoteFields") << SlotOf(&QuoteProvider::QueryQuoteFields) << 5;
        QTest::newRow("quote: SubscribeCodes") << SlotOf(&QuoteProvider::SubscribeCodes) << 7;
        QTest::newRow("quote: SubscribeTopicA") << SlotOf(&QuoteProvider::SubscribeTopicA) << 8;
        QTest::newRow("quote: SubscribeTopicB") << SlotOf(&QuoteProvider::SubscribeTopicB) << 9;
        QTest::newRow("quote: ResolveCodeMarkets") << SlotOf(&QuoteProvider::ResolveCodeMarkets) << 10;
        QTest::newRow("quote: ListCodeMatches") << SlotOf(&QuoteProvider::ListCodeMatches) << 15;
        QTest::newRow("quote: AgreedQuoteCall") << SlotOf(&QuoteProvider::AgreedQuoteCall) << 16;
        QTest::newRow("trade: Attach") << SlotOf(&TradeProvider::Attach) << 2;
        QTest::newRow("trade: SendTradeRequest") << SlotOf(&TradeProvider::SendTradeRequest) << 3;
        QTest::newRow("trade: GetString") << SlotOf(&TradeProvider::GetString) << 6;
        QTest::newRow("trade: SubscribeKey") << SlotOf(&TradeProvider::SubscribeKey) << 7;
        QTest::newRow("trade: SetStringMap") << SlotOf(&TradeProvider::SetStringMap) << 8;
        QTest::newRow("trade: GetStringMap") << SlotOf(&TradeProvider::GetStringMap) << 10;
        QTest::newRow("trade: GetTable") << SlotOf(&TradeProvider::GetTable) << 11;
        QTest::newRow("table: Name") << SlotOf(&HostTable::Name) << 2;
        QTest::newRow("table: RowCount") << SlotOf(&HostTable::RowCount) << 3;
        QTest::newRow("table: CellText") << SlotOf(&HostTable::CellText) << 4;
        QTest::newRow("table: FindColumn") << SlotOf(&HostTable::FindColumn) << 5;
        QTest::newRow("answer table: ColumnCount") << SlotOf(&HostAnswerTable::ColumnCount) << 2;
        QTest::newRow("answer table: RowCount") << SlotOf(&HostAnswerTable::RowCount) << 3;
        QTest::newRow("answer table: ColumnInfo") << SlotOf(&HostAnswerTable::ColumnInfo) << 4;
        QTest::newRow("answer table: CellValue") << SlotOf(&HostAnswerTable::CellValue) << 5;
        QTest::newRow("watchlist listener") << SlotOf(&WatchlistListener::OnWatchlistEvent) << 2;
        const int quote = SlotOf(&QuoteObserver::ForwardQuoteCall);
        QTest::newRow("quote observer: self") << SlotOf(&QuoteObserver::ObserverSelf) - quote << 1;
        QTest::newRow("quote observer: push") << SlotOf(&QuoteObserver::OnQuotePush) - quote << 2;
        QTest::newRow("quote observer: event") << SlotOf(&QuoteObserver::OnQuoteEvent) - quote << 3;
        const int trade = SlotOf(&TradeObserver::ObserverSelf);
        QTest::newRow("trade observer: table") << SlotOf(&TradeObserver::OnTableChanged) - trade << 1;
        QTest::newRow("trade observer: data") << SlotOf(&TradeObserver::OnDataPush) - trade << 2;
        QTest::newRow("trade observer: funds") << SlotOf(&TradeObserver::OnFundsPush) - trade << 3;
        QTest::newRow("trade observer: log-in") << SlotOf(&TradeObserver::OnLoginState) - trade << 4;
    }

    void HostsFindEachOperationInItsPlace()
    {
        QFETCH(const int, slot);
        QTEST(slot, "place");
    }

    void BothViewsShareOneObject()
    {
        const Stage stage;
        const std::shared_ptr<QuoteObserver> quote =
            stage.pair->virtual_enable_shared_from_this<QuoteObserver>::shared_from_this();
        const std::shared_ptr<TradeObserver> trade =
            stage.pair->virtual_enable_shared_from_this<TradeObserver>::shared_from_this();
        QCOMPARE(stage.pair.use_count(), 3L);
        QCOMPARE(quote->ObserverSelf(), static_cast<void*>(stage.pair.get()));
        QCOMPARE(trade->ObserverSelf(), static_cast<void*>(stage.pair.get()));
        QCOMPARE(stage.quotes.Calls(), (Calls{"Attach 1 self"}));
        QCOMPARE(stage.trades.Calls(), (Calls{"Attach 1 self"}));
    }

    // Each operation with results of a provider: what the caller gets, what the provider hears, what is
    // remembered. "there" is subscribed before.
    void Forwarding_data()
    {
        QTest::addColumn<Call>("call");
        QTest::addColumn<int>("result");
        QTest::addColumn<std::string>("heard");
        QTest::addColumn<std::string>("remembered");

        const auto codes = [](bool on) {
            return Call([on](PairOfObservers& pair) {
                Codes stocks = TwoStocks();
                return pair.SubscribeCodes(stocks, on);
            });
        };
        const std::string before = "0:there A7 B7 there ";
        const auto row = [](const char* name, const Call& call, int result, const char* heard,
                            const std::string& remembered) {
            QTest::newRow(name) << call << result << std::string(heard) << remembered;
        };
        const auto topicA = [](std::uint32_t topic, bool on) {
            return Call([=](PairOfObservers& pair) { return pair.SubscribeTopicA(topic, on); });
        };
        const auto topicB = [](std::uint32_t topic, bool on) {
            return Call([=](PairOfObservers& pair) { return pair.SubscribeTopicB(1, 2, topic, on); });
        };
        const auto key = [](const char* name, bool on) {
            return Call([=](PairOfObservers& pair) { return pair.SubscribeKey(name, on); });
        };
        const char* const codesOn = "SubscribeCodes 16:600000 0:unknown on self";
        row("codes", codes(kOn), 0, codesOn, "0:there 0:unknown 16:600000 A7 B7 there ");
        row("codes, positive", codes(kOn), 2, codesOn, "0:there 0:unknown 16:600000 A7 B7 there ");
        row("codes, refused", codes(kOn), -3, codesOn, before);
        row("codes off, never subscribed", codes(kOff), 0, "SubscribeCodes 16:600000 0:unknown off self",
            before);
        row("topic A", topicA(4000000000U, kOn), 0, "SubscribeTopicA 4000000000 on self",
            "0:there A7 A4000000000 B7 there ");
        row("topic A, positive", topicA(8, kOn), 1, "SubscribeTopicA 8 on self", before);
        row("topic A off", topicA(7, kOff), 0, "SubscribeTopicA 7 off self", "0:there B7 there ");
        row("topic A off, refused", topicA(7, kOff), -1, "SubscribeTopicA 7 off self", before);
        row("topic B", topicB(8, kOn), 0, "SubscribeTopicB 1 2 8 on self", "0:there A7 B7 B8 there ");
        row("topic B, positive", topicB(8, kOn), 1, "SubscribeTopicB 1 2 8 on self", before);
        row("topic B off", topicB(7, kOff), 0, "SubscribeTopicB 1 2 7 off self", "0:there A7 there ");
        row("key", key("new", kOn), 0, "SubscribeKey new on self", "0:there A7 B7 new there ");
        row("key, positive", key("new", kOn), 1, "SubscribeKey new on self", before);
        row("key off", key("there", kOff), 0, "SubscribeKey there off self", "0:there A7 B7 ");
        row("key off, positive", key("there", kOff), 1, "SubscribeKey there off self", before);
        row(
            "agreed call", [](PairOfObservers& pair) { return pair.ForwardQuoteCall(1, 2); }, 5,
            "AgreedQuoteCall 1 2", before);
        row(
            "request",
            [](PairOfObservers& pair) {
                auto request = std::make_shared<ddsdk::TradeRequestParam>();
                request->head["type"] = "1025";
                return pair.SendTradeRequest(request);
            },
            6, "SendTradeRequest 1025 self", before);
        row(
            "fields",
            [](PairOfObservers& pair) {
                StringMap stock{{"stockcode", "600000"}};
                std::shared_ptr<StringMap> fields;
                const int result = pair.QueryQuoteFields(4, stock, fields);
                return Checked(result, fields && fields->at("price_decimal") == "3");
            },
            -4, "QueryQuoteFields 4 600000", before);
        row(
            "matches",
            [](PairOfObservers& pair) {
                Codes stocks{{0, "600000"}};
                std::vector<std::vector<std::string>> rows;
                const int result = pair.ListCodeMatches(stocks, rows);
                return Checked(result, rows.size() == 1 && stocks.size() == 1);
            },
            -4, "ListCodeMatches 0:600000", before);
        row(
            "text",
            [](PairOfObservers& pair) {
                std::shared_ptr<std::string> value;
                const int result = pair.GetString("account", value);
                return Checked(result, value && *value == "1234");
            },
            3, "GetString account", before);
        row(
            "map out and in",
            [](PairOfObservers& pair) {
                const auto map = std::make_shared<StringMap>();
                const int result = pair.SetStringMap("zijin", map);
                return Checked(result, pair.GetStringMap("zijin") == map && !pair.GetStringMap("other"));
            },
            -2, "GetStringMap other", before);
        row(
            "table", [](PairOfObservers& pair) { return pair.GetTable("account_table") ? 1000 : -1; }, -1,
            "GetTable account_table", before);
    }

    void Forwarding()
    {
        QFETCH(const Call, call);
        QFETCH(const int, result);
        QFETCH(const std::string, heard);
        QFETCH(const std::string, remembered);
        Stage stage;
        Codes there{{0, "there"}};
        stage.pair->SubscribeCodes(there, kOn);
        stage.pair->SubscribeTopicA(7, kOn);
        stage.pair->SubscribeTopicB(1, 2, 7, kOn);
        stage.pair->SubscribeKey("there", kOn);
        stage.trades.m_strings["account"] = std::make_shared<std::string>("1234");
        const std::size_t quoteCalls = stage.quotes.Calls().size();
        stage.quotes.m_result = result;
        stage.trades.m_result = result;

        QCOMPARE(call(*stage.pair), result);
        const bool quoteHeard = stage.quotes.Calls().size() > quoteCalls;
        const Calls calls = quoteHeard ? stage.quotes.Calls() : stage.trades.Calls();
        QCOMPARE(calls.back(), heard);
        QCOMPARE(KeysOf(*stage.pair), remembered);

        // The same call without a provider, on an object that nobody shares and which thus can't pass itself
        // on.
        PairOfObservers bare;
        QCOMPARE(call(bare), -1);
        QCOMPARE(KeysOf(bare), std::string());
        QCOMPARE(bare.QuoteObserver::SetProvider(nullptr), -1);
        QCOMPARE(bare.TradeObserver::SetProvider(nullptr), -1);
    }

    void ARefusalTakesTheUnknownOutOfTheCallersSequence_data()
    {
        QTest::addColumn<int>("result");
        QTest::addColumn<int>("left");
        QTest::newRow("refused") << -1 << 1;
        QTest::newRow("done") << 0 << 2;
        QTest::newRow("positive") << 1 << 2;
    }

    void ARefusalTakesTheUnknownOutOfTheCallersSequence()
    {
        QFETCH(const int, result);
        QFETCH(const int, left);
        Stage stage;
        stage.quotes.m_result = result;
        Codes subscribed = TwoStocks();
        Codes resolved = TwoStocks();
        QCOMPARE(stage.pair->SubscribeCodes(subscribed, kOn), result);
        QCOMPARE(stage.pair->ResolveCodeMarkets(resolved), result);
        for (const Codes& codes : {subscribed, resolved}) {
            QCOMPARE(codes.size(), static_cast<std::size_t>(left));
            QCOMPARE(codes.front().code, std::string("600000"));
        }
    }

    void TheEndOfSubscriptionsComesInOrderAndOnce()
    {
        Stage stage;
        for (const char* const name : {"b", "a", "c"}) {
            stage.pair->SubscribeKey(name, kOn);
        }
        for (const std::uint32_t topic : {9U, 10U, 2U}) {
            stage.pair->SubscribeTopicA(topic, kOn);
        }
        stage.trades.m_result = -1;  // even if the provider refuses
        stage.quotes.m_result = -1;
        for (int i = 0; i < 2; ++i) {
            stage.pair->UnsubscribeAll();
            stage.pair->UnsubscribeTopicsA();
        }
        const Calls trades = stage.trades.Calls();
        QCOMPARE(Calls(trades.begin() + 4, trades.end()),
                 (Calls{"SubscribeKey a off self", "SubscribeKey b off self", "SubscribeKey c off self"}));
        const Calls quotes = stage.quotes.Calls();
        QCOMPARE(Calls(quotes.begin() + 4, quotes.end()),
                 (Calls{"SubscribeTopicA 2 off self", "SubscribeTopicA 9 off self",
                        "SubscribeTopicA 10 off self"}));
        QCOMPARE(KeysOf(*stage.pair), std::string());
    }

    // A provider may deliver on a thread of its own while a call is in progress, and wait for that.
    void ProvidersMayCallBackFromInsideACall()
    {
        Stage stage;
        stage.pair->SubscribeKey("key", kOn);
        stage.pair->SubscribeTopicA(1, kOn);
        const auto lookFromOutside = [&] {
            std::thread([&] {
                KeysOf(*stage.pair);
                stage.pair->SubscribeKey("inside", kOn);
            }).join();
        };
        Codes codes = TwoStocks();
        const std::vector<std::function<void()>> calls{[&] { stage.pair->SubscribeCodes(codes, kOn); },
                                                       [&] { stage.pair->SubscribeTopicA(2, kOn); },
                                                       [&] { stage.pair->SubscribeTopicB(1, 1, 2, kOn); },
                                                       [&] { stage.pair->SubscribeKey("key", kOff); },
                                                       [&] { stage.pair->UnsubscribeTopicsA(); },
                                                       [&] { stage.pair->UnsubscribeAll(); }};
        for (const auto& call : calls) {
            stage.quotes.m_inside = stage.trades.m_inside = lookFromOutside;
            call();
        }
        QCOMPARE(stage.pair->SubscribedKeys(), (std::set<std::string>{"inside"}));
    }

    void ManyThreadsSubscribeAtATime()
    {
        constexpr std::uint32_t kThreads = 4;
        constexpr std::uint32_t kEach = 50;
        Stage stage;
        std::vector<std::thread> threads;
        for (std::uint32_t thread = 0; thread < kThreads; ++thread) {
            threads.emplace_back([&pair = *stage.pair, thread] {
                for (std::uint32_t i = 0; i < kEach; ++i) {
                    const std::uint32_t number = thread * kEach + i;
                    Codes codes{{static_cast<std::uint8_t>(thread), std::to_string(i)}};
                    pair.SubscribeCodes(codes, kOn);
                    pair.SubscribeTopicA(number, kOn);
                    pair.SubscribeTopicB(0, 0, number, kOn);
                    pair.SubscribeKey(std::to_string(number), kOn);
                    pair.SubscribeKey(std::to_string(number), i % 2 == 0);
                }
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
        QCOMPARE(stage.pair->SubscribedCodes().size(), std::size_t{kThreads * kEach});
        QCOMPARE(stage.pair->SubscribedTopicsA().size(), std::size_t{kThreads * kEach});
        QCOMPARE(stage.pair->SubscribedTopicsB().size(), std::size_t{kThreads * kEach});
        QCOMPARE(stage.pair->SubscribedKeys().size(), std::size_t{kThreads * kEach / 2});
    }
};

PANELRY_TEST(ObserversTest)

#include "observers_test.moc"
