#include <algorithm>
#include <array>
#include <sstream>

#include "accounts/made_accounts.h"
#include "support/rows.h"
#include "support/test.h"

using namespace panelry;
using namespace panelry::desk;
using namespace panelry::test;

namespace
{

constexpr const char* kNames[] = {"bank",         "star",  "fund",    "bond", "connect",
                                  "subscription", "index", "foreign", "other"};

// A broker that obeys lines like "buy bank 1000 10.00; deal 300 9.90; gone". What is placed last is meant by
// the steps behind it, until "on N" (from 1) chooses another order.
class Play
{
public:
    explicit Play(AccountKind account) : m_account(account), m_broker(MadeListing(), MadeOpening(), {}) {}

    void Do(const QString& script)
    {
        for (const QString& step : script.split(QLatin1String("; "))) {
            std::istringstream words(step.toStdString());
            std::string verb;
            std::string first;
            std::string second;
            std::string third;
            words >> verb >> first >> second >> third;
            Do(verb, first, second, third);
            const std::string difference = m_broker.Audit();
            if (!difference.empty()) {
                throw std::runtime_error(difference);
            }
        }
    }

    // Cash, available, withdrawable, debt, credit, then what is held of what was traded: total, sellable,
    // frozen, cost.
    QString Standing() const
    {
        const Funds funds = m_broker.FundsOf(m_account, [](std::size_t) { return 0; });
        std::string text = MoneyText(funds.balance) + ' ' + MoneyText(funds.available) + ' ' +
                           MoneyText(funds.withdrawable) + ' ' + MoneyText(funds.debt) + ' ' +
                           MoneyText(funds.credit);
        if (m_traded != kMadeCount) {
            const Holding holding = m_broker.HoldingOf(m_account, m_traded);
            text += " | " + std::to_string(holding.total) + ' ' + std::to_string(holding.sellable) + ' ' +
                    std::to_string(holding.frozen) + ' ' + MoneyText(holding.cost);
        }
        return QString::fromStdString(text);
    }
    QString States() const
    {
        QStringList states;
        for (const Order& order : m_broker.Orders(m_account)) {
            states << QString::fromUtf8(std::array{"已报", "部成", "已成", "已撤", "部撤", "废单"}.at(
                          static_cast<std::size_t>(order.state))) +
                          QString::fromStdString(order.reason.empty() ? "" : ":" + order.reason);
        }
        return states.join(QLatin1Char(' '));
    }
    Brokerage& Broker() { return m_broker; }

private:
    void Do(const std::string& verb, const std::string& first, const std::string& second,
            const std::string& third)
    {
        const MarketTime time{m_broker.Day(), std::chrono::hours(10)};
        if (verb == "deal") {
            m_broker.OnDeal(m_contract, *ReadPrice(second), *ReadQuantity(first), time);
        } else if (verb == "gone") {
            m_broker.OnGone(m_contract);
        } else if (verb == "refuse") {
            m_broker.Refuse(m_contract, first);
        } else if (verb == "on") {
            m_contract = m_broker.Orders(m_account).at(std::stoul(first) - 1).contract;
        } else if (verb == "day") {
            m_broker.OpenDay(m_broker.Day() + 1);
        } else {
            Place(verb, first, *ReadQuantity(second), *ReadPrice(third));
        }
    }
    void Place(const std::string& verb, const std::string& name, Quantity quantity, Price price)
    {
        const bool sells = verb == "sell" || verb == "payback" || verb == "shortborrow";
        const Funding funding = verb == "borrow" || verb == "shortborrow"   ? Funding::Borrowed
                                : verb == "payback" || verb == "buypayback" ? Funding::PayBack
                                                                            : Funding::Own;
        m_traded = static_cast<std::size_t>(std::find(std::begin(kNames), std::end(kNames), name) - kNames);
        m_contract =
            m_broker
                .Place({m_account, m_traded, sells ? Side::Sell : Side::Buy, price, quantity, funding},
                       {m_broker.Day(), std::chrono::hours(10)})
                .contract;
    }

    AccountKind m_account;
    Brokerage m_broker;
    std::size_t m_traded = kMadeCount;
    std::string m_contract;
};

AccountKind Kind(const QString& name)
{
    return name == QLatin1String("normal")   ? AccountKind::Normal
           : name == QLatin1String("margin") ? AccountKind::Margin
                                             : AccountKind::Connect;
}

}  // namespace

class OrdersTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    // Cash 100,000.00 in each account, 1000 shares that cost 9,000.00. Figures were worked out by hand.
    void MoneyAndShares_data()
    {
        const Rows<const char*, const char*, const char*> row("account script expected");
        row("a buy freezes its worth and the least commission", "normal", "buy bank 1000 10.00",
            "100000.00 89994.90 89994.90 0.00 0.00 | 1000 1000 0 9000.00");
        row("a commission above the least", "normal", "buy bank 9000 10.00",
            "100000.00 9976.60 9976.60 0.00 0.00 | 1000 1000 0 9000.00");
        row("a better price frees the difference at once", "normal", "buy bank 1000 10.00; deal 300 9.90",
            "97024.97 90024.90 90024.90 0.00 0.00 | 1300 1000 0 11975.03");
        row("the least commission is charged once", "normal",
            "buy bank 1000 10.00; deal 300 9.90; deal 300 9.90; deal 400 10.00",
            "90054.90 90054.90 90054.90 0.00 0.00 | 2000 1000 0 18945.10");
        row("deals pay what they lift the commission by", "normal",
            "buy bank 4000 10.00; deal 1000 10.00; deal 2000 10.00",
            "69992.20 59989.60 59989.60 0.00 0.00 | 4000 1000 0 39007.80");
        row("a cancel frees the rest", "normal", "buy bank 1000 10.00; deal 300 9.90; gone",
            "97024.97 97024.97 97024.97 0.00 0.00 | 1300 1000 0 11975.03");
        row("a refusal of the exchange frees all", "normal", "buy bank 1000 10.00; refuse no",
            "100000.00 100000.00 100000.00 0.00 0.00 | 1000 1000 0 9000.00");
        row("the day's end frees all", "normal", "buy bank 1000 10.00; day",
            "100000.00 100000.00 100000.00 0.00 0.00 | 1000 1000 0 9000.00");
        row("a sale freezes shares", "normal", "sell bank 400 10.00",
            "100000.00 100000.00 100000.00 0.00 0.00 | 1000 600 400 9000.00");
        row("proceeds buy today but aren't withdrawn", "normal", "sell bank 400 10.00; deal 300 10.00",
            "102993.47 102993.47 100000.00 0.00 0.00 | 700 600 100 6300.00");
        row("tomorrow they are", "normal", "sell bank 400 10.00; deal 300 10.00; day",
            "102993.47 102993.47 102993.47 0.00 0.00 | 700 700 0 6300.00");
        row("an odd cost stays with the rest", "normal",
            "sell bank 1 10.00; deal 1 10.00; sell bank 998 10.00; deal 998 10.00",
            "109974.90 109974.90 100000.00 0.00 0.00 | 1 1 0 9.00");
        row("a sale never costs cash", "normal", "sell bank 1 1.00; deal 1 1.00",
            "100000.00 100000.00 100000.00 0.00 0.00 | 999 999 0 8991.00");
        row("bought today, sold tomorrow", "normal", "buy other 100 12.00; deal 100 12.00",
            "98794.99 98794.99 98794.99 0.00 0.00 | 100 0 0 1205.01");
        row("tomorrow", "normal", "buy other 100 12.00; deal 100 12.00; day",
            "98794.99 98794.99 98794.99 0.00 0.00 | 100 100 0 1205.01");
        row("a bond is sold the same day", "normal", "buy bond 10 100.000; deal 10 100.000",
            "98999.00 98999.00 98999.00 0.00 0.00 | 510 510 0 51001.00");
        row("a fund, to the fen by halves up", "normal", "buy fund 1 4.005; deal 1 4.005",
            "99995.89 99995.89 99995.89 0.00 0.00 | 1 0 0 4.11");
        row("rounding doesn't exceed the limit price", "normal",
            "buy fund 3 4.005; deal 1 4.005; deal 1 4.005; deal 1 4.005",
            "99987.88 99987.88 99987.88 0.00 0.00 | 3 0 0 12.12");
        row("a subscription freezes without fees", "normal", "buy subscription 500 20.00",
            "100000.00 90000.00 90000.00 0.00 0.00 | 0 0 0 0.00");
        row("borrowed money is debt", "margin", "borrow bank 1000 10.00; deal 400 10.00",
            "100000.00 100000.00 100000.00 4005.04 39994.90 | 400 0 0 4005.04");
        row("a sale pays back first", "margin",
            "borrow bank 1000 10.00; deal 1000 10.00; day; payback bank 600 10.00; deal 600 10.00",
            "100000.00 100000.00 100000.00 4013.16 45986.84 | 400 400 0 4002.04");
        row("and leaves the rest as cash", "margin",
            "borrow bank 1000 10.00; deal 1000 10.00; day; payback bank 1000 12.00; deal 1000 12.00",
            "101983.78 101983.78 100000.00 0.00 50000.00 | 0 0 0 0.00");
        row("an own sale leaves the debt", "margin",
            "borrow bank 1000 10.00; deal 1000 10.00; day; sell bank 1000 12.00; deal 1000 12.00",
            "111988.88 111988.88 100000.00 10005.10 39994.90 | 0 0 0 0.00");
        row("Hong Kong dollars are paid in yuan, taxed on both sides", "connect",
            "buy connect 100 300.200; deal 100 300.200",
            "72344.73 72344.73 72344.73 0.00 0.00 | 100 100 0 27655.27");
        row("and the same day back", "connect",
            "buy connect 100 300.200; deal 100 300.200; sell connect 100 300.200; deal 100 300.200",
            "99926.26 99926.26 72344.73 0.00 0.00 | 0 0 0 0.00");
    }
    void MoneyAndShares()
    {
        QFETCH(QString, account);
        QFETCH(QString, script);
        Play play(Kind(account));
        play.Do(script);
        QTEST(play.Standing(), "expected");
    }

    void Orders_data()
    {
        const Rows<const char*, const char*, const char*> row("account script expected");
        row("their states", "normal",
            "buy bank 100 10.00; buy bank 100 10.00; deal 40 10.00; buy bank 100 10.00; deal 100 10.00; "
            "buy bank 100 10.00; gone; buy bank 100 10.00; deal 40 10.00; gone; buy bank 100 10.00; refuse "
            "why",
            "已报 部成 已成 已撤 部撤 废单:why");
        row("the day's end leaves a clean table", "normal", "buy bank 100 10.00; day", "");
        row("the last fen", "normal", "buy bank 1 99974.01", "已报");
        row("a fen too dear", "normal", "buy bank 1 99974.02", "废单:可用资金不足");
        row("frozen cash isn't there", "normal", "buy bank 6000 10.00; buy bank 6000 10.00",
            "已报 废单:可用资金不足");
        row("frozen shares aren't there", "normal", "sell bank 600 10.00; sell bank 401 10.00",
            "已报 废单:可卖数量不足");
        row("today's shares aren't there", "normal",
            "buy bank 100 10.00; deal 100 10.00; sell bank 1001 10.00", "已成 废单:可卖数量不足");
        row("not held", "margin", "sell bank 1 10.00", "废单:可卖数量不足");
        row("Stock Connect elsewhere", "normal", "buy connect 100 300.000", "废单:该账户不能交易此证券");
        row("Stock Connect with margin", "margin", "buy connect 100 300.000", "废单:该账户不能交易此证券");
        row("others in Stock Connect", "connect", "buy bank 100 10.00", "废单:该账户不能交易此证券");
        row("an index", "normal", "buy index 100 10.00", "废单:指数不能交易");
        row("B shares", "normal", "buy foreign 100 1.000", "废单:该账户未开通B股交易");
        row("a subscription isn't sold", "normal", "sell subscription 500 20.00", "废单:申购代码只能买入");
        row("no price, no quantity, out of all measure", "normal",
            "buy bank 100 0.00; buy bank 0 10.00; buy bank 999999999 999999.00",
            "废单:委托价格无效 废单:委托数量无效 废单:委托价格无效");
        row("only margin borrows", "normal", "borrow bank 100 10.00; payback bank 100 10.00",
            "废单:该账户不能进行融资交易 废单:该账户不能进行融资交易");
        row("borrowing buys, paying back sells", "margin",
            "shortborrow bank 100 10.00; buypayback bank 100 10.00",
            "废单:融资委托只能买入 废单:卖券还款只能卖出");
        row("what can't be borrowed for", "margin", "borrow bond 10 100.000; borrow subscription 500 20.00",
            "废单:该证券不能融资买入 废单:该证券不能融资买入");
        row("the credit line ends", "margin",
            "borrow bank 4000 10.00; borrow bank 1000 10.00; buy bank 1000 10.00",
            "已报 废单:融资可用额度不足 已报");
    }
    void Orders()
    {
        QFETCH(QString, account);
        QFETCH(QString, script);
        Play play(Kind(account));
        play.Do(script);
        QTEST(play.States(), "expected");
    }

    void WhatDoesNotFitChangesNothing_data()
    {
        const Rows<const char*, const char*> row("before step");
        row("more than the rest", "buy bank 100 10.00; deal 50 10.00", "deal 51 10.00");
        row("a buy above its price", "buy bank 100 10.00", "deal 50 10.01");
        row("a sale below its price", "sell bank 100 10.00", "deal 50 9.99");
        row("nothing", "buy bank 100 10.00", "deal 0 10.00");
        row("after the end", "buy bank 100 10.00; gone", "deal 50 10.00");
        row("an end after the end", "buy bank 100 10.00; deal 100 10.00", "gone");
        row("an order of yesterday", "buy bank 100 10.00; day", "gone");
        row("refused after a deal", "buy bank 100 10.00; deal 50 10.00", "refuse why");
    }
    void WhatDoesNotFitChangesNothing()
    {
        QFETCH(QString, before);
        QFETCH(QString, step);
        Play play(AccountKind::Normal);
        play.Do(before);
        const QString standing = play.Standing() + play.States();
        QVERIFY_EXCEPTION_THROWN(play.Do(step), std::logic_error);
        QCOMPARE(play.Standing() + play.States(), standing);
        QCOMPARE(play.Broker().Audit(), std::string());
    }

    // The most that can be bought is taken, and one lot more isn't.
    void BuyableIsTheMost_data()
    {
        const Rows<const char*, int, const char*, int, int> row("account security price funding expected");
        row("by the lot", "normal", kBank, "10.00", 0, 9900);
        row("by the share, from 200", "normal", kStar, "50.00", 0, 1999);
        row("not even the smallest", "normal", kStar, "600.00", 0, 0);
        row("by ten", "normal", kBond, "100.000", 0, 990);
        row("by the credit line", "margin", kBank, "10.00", 1, 4900);
        row("the largest order", "normal", kFund, "0.001", 0, 1'000'000);
        row("in yuan", "connect", kConnect, "300.200", 0, 300);
        row("not at all here", "normal", kConnect, "300.200", 0, 0);
        row("not without a price", "normal", kBank, "0.00", 0, 0);
    }
    void BuyableIsTheMost()
    {
        QFETCH(QString, account);
        QFETCH(int, security);
        QFETCH(QString, price);
        QFETCH(int, funding);
        Play play(Kind(account));
        OrderWish wish{Kind(account),
                       static_cast<std::size_t>(security),
                       Side::Buy,
                       *ReadPrice(price.toStdString()),
                       0,
                       static_cast<Funding>(funding)};
        const Quantity most = play.Broker().Buyable(wish.account, wish.security, wish.price, wish.funding);
        QTEST(static_cast<int>(most), "expected");
        const Security listed = MadeListing()->securities[wish.security];
        if (most > 0 && most + listed.lot <= listed.maximum) {
            wish.quantity = most + listed.lot;
            QVERIFY(!play.Broker().Place(wish, {}).refusal.empty());
            wish.quantity = most;
            QCOMPARE(play.Broker().Place(wish, {}).refusal, std::string());
        }
    }

    void BuyableHasAnEndWhereTheListingHasNone()
    {
        auto listing = std::make_shared<Listing>(*MadeListing());
        listing->securities[kFund].maximum = 1'000'000'000;
        const Brokerage broker(listing, MadeOpening(), {});
        QCOMPARE(broker.Buyable(AccountKind::Normal, kFund, 1, Funding::Own), Quantity{99'990'000});
    }

    void OrdersAreFoundByTheirNumberOnTheExchange()
    {
        Brokerage broker(MadeListing(), MadeOpening(), {});
        const OrderWish wish{AccountKind::Normal, kBank, Side::Buy, 10'000, 100, Funding::Own};
        const std::string first = broker.Place(wish, {}).contract;
        const std::string second = broker.Place(wish, {}).contract;
        broker.Accept(first, 7);
        broker.Accept(second, 8);
        broker.Accept(first, 8);  // the exchange began anew and counts again
        QVERIFY(broker.FindByExchangeOrder(7) == nullptr);
        QCOMPARE(broker.FindByExchangeOrder(8)->contract, first);
        broker.Accept(second, 9);
        QCOMPARE(broker.FindByExchangeOrder(8)->contract, first);
        QCOMPARE(broker.FindByExchangeOrder(9)->contract, second);
        broker.OpenDay(5);
        QVERIFY(broker.FindByExchangeOrder(9) == nullptr && broker.Find(first) == nullptr);
        QVERIFY(broker.Place(wish, {}).contract > second);
        for (const int day : {5, 4}) {
            QVERIFY_EXCEPTION_THROWN(broker.OpenDay(day), std::logic_error);
        }
    }

    void AssetsAreValuedAtTheGivenPrices()
    {
        Play play(AccountKind::Margin);
        play.Do(QStringLiteral("borrow bank 1000 10.00; deal 1000 10.00"));
        const auto valued = [&play](AccountKind kind) {
            return play.Broker().FundsOf(
                kind, [](std::size_t security) { return security == kBond ? 101'235 : 9'500; });
        };
        QCOMPARE(MoneyText(valued(AccountKind::Margin).assets), std::string("99494.90"));
        QCOMPARE(MoneyText(valued(AccountKind::Normal).marketValue), std::string("60117.50"));
        play.Do(QStringLiteral("day"));
        QCOMPARE(play.Broker().DealsBetween(AccountKind::Margin, 1, 1).size(), std::size_t{1});
        QVERIFY(play.Broker().DealsBetween(AccountKind::Margin, 2, 9).empty());
        QVERIFY(play.Broker().Deals(AccountKind::Margin).empty());
    }
};

PANELRY_TEST(OrdersTest)
#include "orders_test.moc"
