#include <algorithm>
#include <map>
#include <sstream>

#include "desk/exchange/crowd.h"
#include "desk/exchange/tape.h"
#include "exchange/stage.h"
#include "support/rows.h"
#include "support/test.h"

using namespace panelry::desk;
using namespace std::chrono_literals;
using panelry::desk::test::ShippedListing;
using panelry::desk::test::Time;
using panelry::test::Rows;

namespace
{

/// A user who sends and cancels orders at random, at any price inside the limits that he thinks may pass.
class RandomUser
{
public:
    explicit RandomUser(std::uint64_t seed, bool fills = true) : m_dice(seed), m_fills(fills) {}

    void Act(Exchange& exchange)
    {
        const std::size_t security = Pick(exchange);
        const Security& listed = exchange.Securities().securities[security];
        const Quote& quote = exchange.QuoteOf(security);
        NewOrder order{security, m_dice.OneIn(2) ? Side::Buy : Side::Sell};
        const Price base = quote.last > 0 ? quote.last : quote.previousClose;
        order.price = base + (m_dice.Below(41) - 20) * listed.step;
        order.quantity = listed.minimum + m_dice.Below(30) * listed.lot;
        const OrderId id = exchange.NextOrderId();
        sent[id] = {order, 0, false};
        if (!std::holds_alternative<OrderId>(exchange.Submit(order))) {
            sent.erase(id);
        } else if (m_dice.OneIn(4)) {
            exchange.Cancel(1 + static_cast<OrderId>(m_dice.Below(static_cast<std::int64_t>(id))));
        } else if (m_fills && m_dice.OneIn(20)) {
            exchange.Fill(id, 1 + m_dice.Below(5'000), 3);
        }
    }

    struct Sent {
        NewOrder order;
        Quantity dealt = 0;
        bool isGone = false;
    };
    std::map<OrderId, Sent> sent;

private:
    // Few codes, so that his orders meet each other.
    std::size_t Pick(const Exchange& exchange)
    {
        return static_cast<std::size_t>(m_dice.Below(
            m_dice.OneIn(2) ? static_cast<std::int64_t>(exchange.Securities().securities.size()) : 20));
    }

    Dice m_dice;
    bool m_fills;
};

/// Looks at every event for what must never be.
class Watcher : public ExchangeListener
{
public:
    Watcher(const Exchange& exchange, RandomUser& user)
        : m_exchange(exchange), m_user(user), m_before(exchange.Securities().securities.size())
    {
    }

    void OnQuote(std::size_t security) override
    {
        const Security& listed = m_exchange.Securities().securities[security];
        const Quote& quote = m_exchange.QuoteOf(security);
        ++quotes;
        Expect(quote.changes == m_before[security].changes + 1, "a change was not counted", listed);
        const bool isNewDay = quote.volume < m_before[security].volume;
        Expect(!isNewDay || m_exchange.CurrentPhase() == Phase::Closed, "the volume fell", listed);
        // Elsewhere what meets shows its one price on both sides.
        const bool isTrade = m_exchange.CurrentPhase() == Phase::Continuous;
        Expect(!isTrade || quote.bids[0].price == 0 || quote.asks[0].price == 0 ||
                   quote.bids[0].price < quote.asks[0].price,
               "the book is crossed", listed);
        for (std::size_t level = 0; level < 5; ++level) {
            CheckLevel(listed, quote, quote.bids, level, -1);
            CheckLevel(listed, quote, quote.asks, level, 1);
        }
        CheckPrice(listed, quote, quote.last);
        Expect(quote.low <= quote.last && quote.last <= quote.high, "the last price is beyond the day's",
               listed);
        m_before[security] = quote;
    }
    void OnDeal(OrderId id, Price price, Quantity quantity) override
    {
        RandomUser::Sent& sent = m_user.sent.at(id);
        const Security& listed = m_exchange.Securities().securities[sent.order.security];
        sent.dealt += quantity;
        dealt += quantity;
        Expect(!sent.isGone && quantity > 0 && sent.dealt <= sent.order.quantity, "dealt more than there was",
               listed);
        Expect(sent.order.side == Side::Buy ? price <= sent.order.price : price >= sent.order.price,
               "dealt at a worse price than was asked for", listed);
    }
    void OnGone(OrderId id) override
    {
        RandomUser::Sent& sent = m_user.sent.at(id);
        Expect(!sent.isGone && sent.dealt < sent.order.quantity, "gone twice, or wholly dealt",
               m_exchange.Securities().securities[sent.order.security]);
        sent.isGone = true;
    }
    void OnPhase(Phase) override {}

    std::int64_t quotes = 0;
    Quantity dealt = 0;
    QString fault;

private:
    void CheckLevel(const Security& listed, const Quote& quote, const std::array<Level, 5>& side,
                    std::size_t level, int away)
    {
        CheckPrice(listed, quote, side[level].price);
        Expect((side[level].price > 0) == (side[level].quantity > 0), "a level is half empty", listed);
        Expect(level == 0 || side[level].price == 0 || (side[level].price - side[level - 1].price) * away > 0,
               "levels are out of order", listed);
    }
    void CheckPrice(const Security& listed, const Quote& quote, Price price)
    {
        Expect(price % listed.step == 0 && price >= 0, "a price is off the step", listed);
        Expect(
            price == 0 || (price >= quote.lowerLimit && (quote.upperLimit == 0 || price <= quote.upperLimit)),
            "a price is beyond the limits", listed);
    }
    void Expect(bool holds, const char* what, const Security& listed)
    {
        if (!holds && fault.isEmpty()) {
            fault = QString::fromStdString(what + (": " + listed.code) + " at " +
                                           ClockText(m_exchange.Now().ofDay));
        }
    }

    const Exchange& m_exchange;
    RandomUser& m_user;
    std::vector<Quote> m_before;
};

/// The tape of a day with orders and scenarios at fixed times, played in slices of this length.
std::string TapeOf(std::uint64_t seed, std::chrono::milliseconds slice)
{
    std::ostringstream out;
    Exchange exchange(ShippedListing(), {seed, 30, 1});
    Tape tape(exchange, out);
    exchange.SetListener(&tape);
    RandomUser user(5);
    const auto playTo = [&](const char* time) {
        const MarketTime end = Time(time);
        while (exchange.Now().day == end.day && exchange.Now() < end) {
            exchange.AdvanceTo(std::min(end, MarketTime{end.day, exchange.Now().ofDay + slice}));
        }
        exchange.AdvanceTo(end);
    };
    for (const char* const time : {"09:16", "09:26", "09:31:00.7", "10:10", "11:45", "13:30", "14:58"}) {
        playTo(time);
        for (int i = 0; i < 20; ++i) {
            user.Act(exchange);
        }
    }
    playTo("15:00");
    exchange.SetRate(60);
    playTo("2/09:40");
    exchange.RunToLimit(7, Side::Buy);
    exchange.SetSuspended(8, true);
    playTo("2/09:45");
    return out.str();
}

}  // namespace

class RandomRunTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void NothingImpossibleHappens()
    {
        Exchange exchange(ShippedListing(), {11, 300, 1});
        RandomUser user(12);
        Watcher watcher(exchange, user);
        exchange.SetListener(&watcher);
        Dice dice(13);
        while (exchange.Now() < Time("3/09:35")) {
            exchange.AdvanceTo({exchange.Now().day,
                                exchange.Now().ofDay + 20s + std::chrono::milliseconds(dice.Below(999))});
            user.Act(exchange);
            if (dice.OneIn(200)) {
                exchange.RunToLimit(static_cast<std::size_t>(dice.Below(100)),
                                    dice.OneIn(2) ? Side::Buy : Side::Sell);
            }
            if (dice.OneIn(100)) {
                const auto security = static_cast<std::size_t>(dice.Below(100));
                exchange.SetSuspended(security, !exchange.QuoteOf(security).suspended);
            }
        }
        QCOMPARE(watcher.fault, QString());
        QVERIFY(watcher.quotes > 5'000'000 && watcher.dealt > 0);
        for (const auto& [id, sent] : user.sent) {
            const bool isOld = id < exchange.NextOrderId() / 2;
            QVERIFY2(!isOld || sent.isGone || sent.dealt == sent.order.quantity, "an order outlived its day");
        }
    }

    // With nobody but users in the market, all that was traded was dealt to two of their orders.
    void EveryDealHasABuyerAndASeller()
    {
        Exchange exchange(ShippedListing(), {1, 0, 1});
        RandomUser user(21, false);
        Watcher watcher(exchange, user);
        exchange.SetListener(&watcher);
        for (std::chrono::seconds time = 9h + 15min; time < 15h; time += 1s) {
            exchange.AdvanceTo({1, time});
            user.Act(exchange);
        }
        exchange.AdvanceTo(Time("15:00"));
        Quantity volume = 0;
        for (std::size_t i = 0; i < exchange.Securities().securities.size(); ++i) {
            volume += exchange.QuoteOf(i).volume;
        }
        QCOMPARE(watcher.fault, QString());
        QVERIFY(volume > 0);
        QCOMPARE(watcher.dealt, 2 * volume);
    }

    void AQuotesRateIsKept_data()
    {
        const Rows<double> row("rate");
        row("slow", 20.0);
        row("usual", 200.0);
        row("fast", 20'000.0);
    }
    void AQuotesRateIsKept()
    {
        QFETCH(double, rate);
        Exchange exchange(ShippedListing(), {2, 200, 1});
        exchange.AdvanceTo(Time("10:00"));
        RandomUser nobody(1);
        Watcher watcher(exchange, nobody);
        exchange.SetListener(&watcher);
        exchange.SetRate(rate);
        exchange.AdvanceTo(Time("10:01"));
        const double kept = static_cast<double>(watcher.quotes) / 60 / rate;
        QVERIFY2(kept > 0.95 && kept < 1.05, qPrintable(QString::number(kept)));

        std::int64_t levels = 0;
        int books = 0;
        for (std::size_t i = 0; i < exchange.Securities().securities.size(); ++i) {
            const auto count = [](const auto& side) {
                return std::count_if(side.begin(), side.end(), [](Level level) { return level.price > 0; });
            };
            const auto shown = count(exchange.QuoteOf(i).bids) + count(exchange.QuoteOf(i).asks);
            levels += shown;
            books += shown > 0 ? 1 : 0;
        }
        QVERIFY(books > 250);
        QVERIFY2(levels > books * 9, "books are thinner than five levels a side");
    }

    void TheSameTapeWhateverTheSteps()
    {
        const std::string tape = TapeOf(1, 24h);
        QVERIFY(tape.size() > 1'000'000);
        QVERIFY(tape.find(" deal ") != std::string::npos && tape.find(" gone ") != std::string::npos);
        QVERIFY(TapeOf(1, 24h) == tape);
        QVERIFY(TapeOf(1, 7ms) == tape);
        QVERIFY(TapeOf(1, 1'234ms) == tape);
        QVERIFY(TapeOf(2, 24h) != tape);
    }
};

PANELRY_TEST(RandomRunTest)
#include "random_run_test.moc"
