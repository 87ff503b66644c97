#include <thread>

#include "observers/fake_providers.h"
#include "support/slot_of.h"
#include "support/test.h"
#include "support/text_rows.h"
#include "watchlist/watchlist_listener.h"

using namespace panelry::test;

namespace
{

using Calls = std::vector<std::string>;
using Codes = std::vector<MarketCode>;

constexpr bool kOn = true;

// A pair with its two providers, attached.
struct Stage {
    Stage()
    {
        quotes.Expect(pair.get());
        trades.Expect(pair.get());
        pair->QuoteObserver::SetProvider(&quotes);
        pair->TradeObserver::SetProvider(&trades);
    }

    FakeQuoteProvider quotes;
    FakeTradeProvider trades;
    std::shared_ptr<PairOfObservers> pair = std::make_shared<PairOfObservers>();
};

Codes TwoStocks()
{
    return {{16, "600000"}, {32, "unknown"}};
}

// "codes" for the two stocks, "A7" and "B7" for topics, anything else for a key.
int Subscribe(PairOfObservers& pair, const std::string& what, bool on)
{
    Codes stocks = TwoStocks();
    const auto topic = static_cast<std::uint32_t>(std::atoll(what.c_str() + 1));
    return what == "codes"  ? pair.SubscribeCodes(stocks, on)
           : what[0] == 'A' ? pair.SubscribeTopicA(topic, on)
           : what[0] == 'B' ? pair.SubscribeTopicB(1, 2, topic, on)
                            : pair.SubscribeKey(what, on);
}

std::string KeysOf(const PairOfObservers& pair)
{
    std::string keys;
    for (const std::string& key : pair.SubscribedCodes()) {
        keys += std::to_string(static_cast<unsigned char>(key.front())) + ':' + key.substr(1) + ' ';
    }
    for (const auto& [kind, topics] :
         {std::pair('A', pair.SubscribedTopicsA()), {'B', pair.SubscribedTopicsB()}}) {
        for (const std::uint32_t topic : topics) {
            keys += kind + std::to_string(topic) + ' ';
        }
    }
    for (const std::string& key : pair.SubscribedKeys()) {
        keys += key + ' ';
    }
    return keys;
}

}  // namespace

class ObserversTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    // The n-th operation of a host's object has place n: the destructor, the first, fills 0 and 1.
    void HostsFindEachOperationInItsPlace()
    {
        using Places = std::vector<int>;
        using Quotes = QuoteProvider;
        using Trades = TradeProvider;
        using Answer = HostAnswerTable;
        QCOMPARE(SlotsOf(&Quotes::Attach, &Quotes::QueryQuoteFields, &Quotes::SubscribeCodes,
                         &Quotes::SubscribeTopicA, &Quotes::SubscribeTopicB, &Quotes::ResolveCodeMarkets,
                         &Quotes::ListCodeMatches, &Quotes::AgreedQuoteCall),
                 (Places{3, 5, 7, 8, 9, 10, 15, 16}));
        QCOMPARE(
            SlotsOf(&Trades::Attach, &Trades::SendTradeRequest, &Trades::GetString, &Trades::SubscribeKey,
                    &Trades::SetStringMap, &Trades::GetStringMap, &Trades::GetTable),
            (Places{2, 3, 6, 7, 8, 10, 11}));
        QCOMPARE(
            SlotsOf(&HostTable::Name, &HostTable::RowCount, &HostTable::CellText, &HostTable::FindColumn),
            (Places{2, 3, 4, 5}));
        QCOMPARE(SlotsOf(&Answer::ColumnCount, &Answer::RowCount, &Answer::ColumnInfo, &Answer::CellValue),
                 (Places{2, 3, 4, 5}));
        QCOMPARE(SlotOf(&WatchlistListener::OnWatchlistEvent), 2);
        const int quote = SlotOf(&QuoteObserver::ForwardQuoteCall);
        QCOMPARE(
            SlotsOf(&QuoteObserver::ObserverSelf, &QuoteObserver::OnQuotePush, &QuoteObserver::OnQuoteEvent),
            (Places{quote + 1, quote + 2, quote + 3}));
        const int trade = SlotOf(&TradeObserver::ObserverSelf);
        QCOMPARE(SlotsOf(&TradeObserver::OnTableChanged, &TradeObserver::OnDataPush,
                         &TradeObserver::OnFundsPush, &TradeObserver::OnLoginState),
                 (Places{trade + 1, trade + 2, trade + 3, trade + 4}));
    }

    // What the provider hears and what is remembered, by its result. "there", A7 and B7 are subscribed before.
    void Subscriptions_data()
    {
        const QByteArray before = "0:there A7 B7 there ";
        TextRows("heard remembered", {{"codes on 2", "SubscribeCodes 16:600000 0:unknown on self",
                                       "0:there 0:unknown 16:600000 A7 B7 there "},
                                      {"codes on -3", "SubscribeCodes 16:600000 0:unknown on self", before},
                                      {"codes off 0", "SubscribeCodes 16:600000 0:unknown off self", before},
                                      {"A4000000000 on 0", "SubscribeTopicA 4000000000 on self",
                                       "0:there A7 A4000000000 B7 there "},
                                      {"A8 on 1", "SubscribeTopicA 8 on self", before},
                                      {"A7 off 0", "SubscribeTopicA 7 off self", "0:there B7 there "},
                                      {"A7 off -1", "SubscribeTopicA 7 off self", before},
                                      {"B8 on 0", "SubscribeTopicB 1 2 8 on self", "0:there A7 B7 B8 there "},
                                      {"B8 on 1", "SubscribeTopicB 1 2 8 on self", before},
                                      {"B7 off 0", "SubscribeTopicB 1 2 7 off self", "0:there A7 there "},
                                      {"new on 0", "SubscribeKey new on self", "0:there A7 B7 new there "},
                                      {"new on 1", "SubscribeKey new on self", before},
                                      {"there off 0", "SubscribeKey there off self", "0:there A7 B7 "},
                                      {"there off 1", "SubscribeKey there off self", before}});
    }

    void Subscriptions()
    {
        const QByteArrayList words = QByteArray(QTest::currentDataTag()).split(' ');
        const std::string what = words[0].toStdString();
        const bool on = words[1] == "on";
        const int result = words[2].toInt();
        Stage stage;
        Codes there{{0, "there"}};
        stage.pair->SubscribeCodes(there, kOn);
        for (const char* const known : {"A7", "B7", "there"}) {
            Subscribe(*stage.pair, known, kOn);
        }
        const std::size_t quoteCalls = stage.quotes.Calls().size();
        stage.quotes.m_result = stage.trades.m_result = result;
        QCOMPARE(Subscribe(*stage.pair, what, on), result);
        const bool quoteHeard = stage.quotes.Calls().size() > quoteCalls;
        QCOMPARE((quoteHeard ? stage.quotes.Calls() : stage.trades.Calls()).back(),
                 std::string(Given("heard")));
        QCOMPARE(KeysOf(*stage.pair), std::string(Given("remembered")));

        // The same without a provider, on an object that nobody shares and which thus can't pass itself on.
        PairOfObservers bare;
        QCOMPARE(Subscribe(bare, what, on), -1);
        QCOMPARE(KeysOf(bare), std::string());
    }

    // With providers whose result is -4, and without any.
    void QuestionsAndAnswersAreHandedOn()
    {
        Stage stage;
        PairOfObservers bare;
        stage.quotes.m_result = stage.trades.m_result = -4;
        const auto map = std::make_shared<StringMap>(StringMap{{"zcc", "1"}});
        const auto request = std::make_shared<ddsdk::TradeRequestParam>();
        request->head["type"] = "1025";
        stage.trades.m_strings["account"] = "1234";
        for (PairOfObservers* const pair : {stage.pair.get(), &bare}) {
            const bool isBare = pair == &bare;
            const int result = isBare ? -1 : -4;
            StringMap stock{{"stockcode", "600000"}};
            std::shared_ptr<StringMap> fields;
            Codes stocks{{0, "600000"}};
            std::vector<std::vector<std::string>> rows;
            std::shared_ptr<std::string> text;
            QCOMPARE(pair->ForwardQuoteCall(1, 2), result);
            QCOMPARE(pair->QueryQuoteFields(4, stock, fields), result);
            QVERIFY(isBare ? !fields : fields->at("price_decimal") == "3");
            QCOMPARE(pair->ListCodeMatches(stocks, rows), result);
            QCOMPARE(rows.size(), std::size_t{isBare ? 0U : 1U});
            QCOMPARE(stocks.size(), std::size_t{1});  // refused or not
            QCOMPARE(pair->SendTradeRequest(request), result);
            QCOMPARE(pair->GetString("account", text), result);
            QVERIFY(isBare ? !text : *text == "1234");
            QCOMPARE(pair->SetStringMap("zijin", map), result);
            const std::shared_ptr<StringMap> stored = pair->GetStringMap("zijin");
            QVERIFY(isBare ? !stored : *stored == *map);
            QVERIFY(!pair->GetStringMap("other") && !pair->GetTable("account_table"));
        }
        QCOMPARE(bare.QuoteObserver::SetProvider(nullptr), -1);
        QCOMPARE(bare.TradeObserver::SetProvider(nullptr), -1);
        QCOMPARE(stage.quotes.Calls(), (Calls{"Attach 1 self", "AgreedQuoteCall 1 2",
                                              "QueryQuoteFields 4 600000", "ListCodeMatches 0:600000"}));
        QCOMPARE(stage.trades.Calls(), (Calls{"Attach 1 self", "SendTradeRequest 1025 self",
                                              "GetString account", "SetStringMap zijin", "GetStringMap zijin",
                                              "GetStringMap other", "GetTable account_table"}));
    }

    void ARefusalTakesTheUnknownOutOfTheCallersSequence()
    {
        for (const int result : {-1, 0, 1}) {
            Stage stage;
            stage.quotes.m_result = result;
            Codes subscribed = TwoStocks();
            Codes resolved = TwoStocks();
            stage.pair->SubscribeCodes(subscribed, kOn);
            QCOMPARE(stage.pair->ResolveCodeMarkets(resolved), result);
            for (const Codes& codes : {subscribed, resolved}) {
                QCOMPARE(codes.size(), std::size_t{result < 0 ? 1U : 2U});
                QCOMPARE(codes.front().code, "600000");
            }
        }
    }

    void TheEndOfSubscriptionsComesInOrderAndOnce()
    {
        Stage stage;
        for (const char* const what : {"b", "a", "c", "A9", "A10", "A2"}) {
            Subscribe(*stage.pair, what, kOn);
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
        Subscribe(*stage.pair, "key", kOn);
        Subscribe(*stage.pair, "A1", kOn);
        const auto answerFromOutside = [&](const auto& call) {
            stage.quotes.m_inside = stage.trades.m_inside = [&] {
                std::thread([&] {
                    KeysOf(*stage.pair);
                    stage.pair->SubscribeKey("inside", kOn);
                }).join();
            };
            call();
        };
        for (const char* const what : {"codes", "A2", "B2"}) {
            answerFromOutside([&] { Subscribe(*stage.pair, what, kOn); });
        }
        answerFromOutside([&] { Subscribe(*stage.pair, "key", !kOn); });
        answerFromOutside([&] { stage.pair->UnsubscribeTopicsA(); });
        answerFromOutside([&] { stage.pair->UnsubscribeAll(); });
        QCOMPARE(stage.pair->SubscribedKeys(), (std::set<std::string>{"inside"}));
    }

    void ManyThreadsSubscribeAtATime()
    {
        constexpr std::uint32_t kThreads = 4;
        constexpr std::uint32_t kEach = 50;
        Stage stage;
        std::vector<std::jthread> threads;
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
        threads.clear();  // joins them
        QCOMPARE(stage.pair->SubscribedCodes().size(), std::size_t{kThreads * kEach});
        QCOMPARE(stage.pair->SubscribedTopicsA().size(), std::size_t{kThreads * kEach});
        QCOMPARE(stage.pair->SubscribedTopicsB().size(), std::size_t{kThreads * kEach});
        QCOMPARE(stage.pair->SubscribedKeys().size(), std::size_t{kThreads * kEach / 2});
    }
};

PANELRY_TEST(ObserversTest)

#include "observers_test.moc"
