// The quote side: who is pushed what, and when.

#include <atomic>
#include <latch>

#include "providers/stage.h"
#include "support/rows.h"
#include "support/test.h"

using namespace panelry::test;
using Codes = std::vector<MarketCode>;

namespace
{

struct QuoteStage : Stage {
    using Stage::Stage;

    int Subscribe(Codes codes, bool on = true) { return client->SubscribeCodes(codes, on); }
    // Each push of these is told: a change of the book.
    void Move(panelry::desk::Price price = 9'900)
    {
        BuyAtCounter(panelry::desk::AccountKind::Normal, price, 100);
    }
};

}  // namespace

class QuoteDeskTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void ASubscriberGetsASnapshotAndThenTheChanges()
    {
        QuoteStage stage;
        stage.Move();  // nobody listens
        QCOMPARE(stage.Subscribe({{17, "600000"}, {33, "000001"}}), 0);
        QTRY_COMPARE(stage.client->Pushes().size(), std::size_t{2});
        StringMap first = stage.client->Pushes()[0];
        QCOMPARE(first.at("type") + " " + first.at("latest_price") + " " + first.at("buy_1_price") + " " +
                     first.at("buy_1_amount"),
                 std::string("nowdata 10.02 9.90 100"));
        QCOMPARE(first.at("stockcode"), std::string("\x11") + "600000");
        QCOMPARE(first.at("stock_name"), std::string("演示银行"));
        QCOMPARE(first.at("benchmarkcode").substr(0, 1), std::string("T"));
        for (const char* const key : {"sell_5_amount", "raising_limit", "limit_down", "last_closing_price",
                                      "opening_price", "price_decimal", "hq_time"}) {
            QVERIFY2(first.count(key) == 1, key);
        }
        stage.Move(9'910);
        QTRY_COMPARE(stage.client->Pushes().size(), std::size_t{3});
        QCOMPARE(stage.client->Pushes()[2].at("type") + stage.client->Pushes()[2].at("buy_1_price"),
                 std::string("pushdata9.91"));
        QCOMPARE(stage.Subscribe({{17, "600000"}}, false), 0);
        stage.Move(9'920);
        stage.host.Market().RunToLimit(stage.Security(33, "000001"), panelry::desk::Side::Sell);
        QTRY_COMPARE(stage.client->Pushes().back().at("sell_1_price"), std::string("10.28"));
        for (const StringMap& push : stage.client->Pushes()) {
            QVERIFY(push.at("buy_1_price") != "9.92");
        }
    }

    void ASlowSubscriberGetsTheLatest()
    {
        QuoteStage stage;
        std::latch entered(1);
        std::latch go(1);
        std::atomic<int> calls{0};
        stage.client->inside = [&] {
            if (++calls == 1) {
                entered.count_down();
                go.wait();
            }
        };
        stage.Subscribe({{17, "600000"}});
        entered.wait();
        stage.Subscribe({{17, "600519"}});  // thinks better of it before anything is told
        stage.Subscribe({{17, "600519"}}, false);
        for (int cent = 1; cent <= 50; ++cent) {
            stage.Move(9'020 + 10 * cent);
        }
        go.count_down();
        QTRY_COMPARE(stage.client->Pushes().back().at("buy_1_price"), std::string("9.52"));
        QCOMPARE(stage.client->Pushes().size(), std::size_t{2});
    }

    void ASubscriberMayCallStraightBack()
    {
        QuoteStage stage;
        std::atomic<int> calls{0};
        stage.client->inside = [&] {
            if (++calls == 1) {
                stage.Subscribe({{17, "600519"}});
                stage.Subscribe({{17, "600000"}}, false);
            }
        };
        stage.Subscribe({{17, "600000"}});
        QTRY_COMPARE(calls.load(), 2);
    }

    void AnUnknownCodeChangesNothing()
    {
        QuoteStage stage;
        Codes codes{{17, "600000"}, {17, "999999"}, {33, "600000"}};
        QCOMPARE(stage.host.Quotes()->SubscribeCodes(codes, true, stage.client), -1);
        QVERIFY(codes[0].market == 17 && codes[1].market == 0 && codes[2].market == 0);
        stage.Move();
        QCOMPARE(stage.Settle(), std::string());
        QVERIFY(stage.client->Pushes().empty());
    }

    void MarketsAreCorrected_data()
    {
        const Rows<int, const char*, int, int> row("market code corrected result");
        row("right", 17, "600000", 17, 0);
        row("a bare family", 16, "600000", 17, 0);
        row("the wrong kind of the family", 17, "688981", 22, 0);
        row("no market", 0, "600000", 17, 0);
        row("no market and two of them", 0, "000001", 0, -1);
        row("the family tells them apart", 32, "000001", 33, 0);
        row("the other family", 32, "600000", 0, -1);
        row("unknown", 17, "999999", 0, -1);
        row("Connect", 64, "00700", 64, 0);
    }

    void MarketsAreCorrected()
    {
        QFETCH(int, market);
        QFETCH(const QString, code);
        QFETCH(int, corrected);
        QFETCH(int, result);
        QuoteStage stage;
        Codes codes{{static_cast<std::uint8_t>(market), code.toStdString()}};
        QCOMPARE(stage.host.Quotes()->ResolveCodeMarkets(codes), result);
        QCOMPARE(static_cast<int>(codes[0].market), corrected);
    }

    void CandidatesAndFieldsAreFound()
    {
        QuoteStage stage;
        std::vector<StringMap> candidates;
        stage.form.ListCodeCandidates("00000", candidates);
        std::string found;
        for (StringMap& one : candidates) {
            found += one["market"] + one["stockcode"] + one["stockname"] + one["marketname"] + " ";
            QVERIFY(one["stockcode"].starts_with("00000"));
        }
        QVERIFY2(found.find("16000001演示综合指数上海 ") != std::string::npos, found.c_str());
        QVERIFY2(found.find("33000001演示城商行深圳 ") != std::string::npos, found.c_str());
        std::shared_ptr<StringMap> fields;
        StringMap key{{"market", "20"}, {"stockcode", "510300"}};
        QCOMPARE(stage.client->QueryQuoteFields(4, key, fields), 0);
        QCOMPARE(*fields, (StringMap{{"price_decimal", "3"}}));
        QCOMPARE(stage.client->QueryQuoteFields(1, key, fields), -1);
        QVERIFY(!fields);
        key["stockcode"] = "999999";
        QCOMPARE(stage.client->QueryQuoteFields(4, key, fields), -1);
    }

    void PhasesArePushed()
    {
        auto settings = StillMarket();
        settings.startOfDay = 9h + 29min;
        QuoteStage stage(settings);
        stage.Subscribe({{17, "600000"}, {33, "000001"}, {17, "600100"}});
        QTRY_COMPARE(stage.client->Pushes().size(), std::size_t{3});
        // By what was pushed last.
        const auto isContinuous = [&](const std::string& code) {
            StringMap ticket;
            for (const StringMap& push : stage.client->Pushes()) {
                ticket = push.at("stockcode").substr(1) == code ? push : ticket;
            }
            ticket["market"] = std::to_string(static_cast<unsigned char>(ticket.at("stockcode")[0]));
            return stage.form.IsContinuousPhase(ticket);
        };
        QVERIFY(!isContinuous("600000") && !isContinuous("000001"));
        stage.host.Market().Step(2min);
        QTRY_VERIFY(isContinuous("600000") && isContinuous("000001"));
        QVERIFY(!isContinuous("600100"));  // it is suspended
    }

    void NothingIsPushedOnceItHasStopped()
    {
        QuoteStage stage;
        stage.Subscribe({{17, "600000"}});
        for (const char* const key : {"auto_refresh_data", "chedan_table", "rzrq_chedan_table"}) {
            stage.client->SubscribeKey(key, true);
        }
        stage.Settle();
        stage.host.Stop();
        QCOMPARE(stage.client.use_count(), 1L);
        stage.client->TakeNews();
        stage.Move();
        Codes codes{{17, "600000"}};
        std::shared_ptr<std::string> text;
        QCOMPARE(stage.client->SubscribeCodes(codes, true), -1);
        QCOMPARE(stage.client->SubscribeKey("chedan_table", true), -1);
        QCOMPARE(stage.client->GetString("account", text), -1);
        QCOMPARE(stage.Send({{"type", "1537"}}, {}), -1);
        QCOMPARE(stage.client->TakeNews(), std::vector<std::string>());
        QCOMPARE(stage.client.use_count(), 1L);
    }
};

PANELRY_TEST(QuoteDeskTest)

#include "quote_desk_test.moc"
