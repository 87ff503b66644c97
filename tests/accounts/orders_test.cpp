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

AccountKind Kind(const QString& name)
{
    return name == QLatin1String("margin")    ? AccountKind::Margin
           : name == QLatin1String("connect") ? AccountKind::Connect
                                              : AccountKind::Normal;
}

// A broker that obeys lines like "buy 1000; deal 300 9.90; gone" or "margin: sell 10 100.000 bond" (of that account,
// else the normal one). What isn't said is: 10.00, bank, and of a deal the price of its order, the one that was placed
// last.
class Play
{
public:
    explicit Play(const QString& script)
        : m_account(Kind(script.section(QLatin1Char(':'), 0, 0))), m_broker(MadeListing(), MadeOpening(), {})
    {
        Do(script.section(QStringLiteral(": "), -1));
    }

    void Do(const QString& script)
    {
        for (const QString& step : script.split(QLatin1String("; "))) {
            Do(step.toStdString());
            if (const std::string difference = m_broker.Audit(); !difference.empty()) {
                throw std::runtime_error(difference);
            }
        }
    }

    // Cash, available, withdrawable, debt and credit where there are any, then what is held of what was traded: total,
    // sellable, frozen, cost.
    QString Standing() const
    {
        const Funds funds = m_broker.FundsOf(m_account, [](std::size_t) { return 0; });
        std::string text;
        for (const Money money : {funds.balance, funds.available, funds.withdrawable}) {
            text += MoneyText(money) + ' ';
        }
        if (funds.debt != 0 || funds.credit != 0) {
            text += MoneyText(funds.debt) + ' ' + MoneyText(funds.credit) + ' ';
        }
        const Holding held = m_broker.HoldingOf(m_account, m_traded);
        text += '|';
        for (const Quantity quantity : {held.total, held.sellable, held.frozen}) {
            text += ' ' + std::to_string(quantity);
        }
        return QString::fromStdString(text + ' ' + MoneyText(held.cost));
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
    void Do(const std::string& step)
    {
        std::istringstream words(step);
        std::string verb;
        std::string what;
        std::string price;
        std::string name = "bank";
        words >> verb >> what >> price >> name;
        if (verb == "deal") {
            const Price at = price.empty() ? m_broker.Find(m_contract)->wish.price : *ReadPrice(price);
            m_broker.OnDeal(m_contract, at, *ReadQuantity(what), Now());
        } else if (verb == "gone") {
            m_broker.OnGone(m_contract);
        } else if (verb == "refuse") {
            m_broker.Refuse(m_contract, what);
        } else if (verb == "day") {
            m_broker.OpenDay(m_broker.Day() + 1);
        } else {
            Place(verb, name, *ReadQuantity(what), price.empty() ? 10'000 : *ReadPrice(price));
        }
    }
    void Place(const std::string& verb, const std::string& name, Quantity quantity, Price price)
    {
        const bool sells = verb == "sell" || verb == "payback" || verb == "shortborrow";
        const Funding funding = verb == "borrow" || verb == "shortborrow"   ? Funding::Borrowed
                                : verb == "payback" || verb == "buypayback" ? Funding::PayBack
                                                                            : Funding::Own;
        m_traded = static_cast<std::size_t>(std::find(std::begin(kNames), std::end(kNames), name) - kNames);
        const OrderWish wish{m_account, m_traded, sells ? Side::Sell : Side::Buy, price, quantity, funding};
        m_contract = m_broker.Place(wish, Now()).contract;
    }
    MarketTime Now() const { return {m_broker.Day(), std::chrono::hours(10)}; }

    AccountKind m_account;
    Brokerage m_broker;
    std::size_t m_traded = kBank;
    std::string m_contract;
};

}  // namespace

class OrdersTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    // Cash 100,000.00 in each account, 1000 shares that cost 9,000.00. Figures were worked out by hand.
    void MoneyAndShares_data()
    {
        const Rows<const char*, const char*> row("script expected");
        row("a buy freezes its worth and the least commission", "buy 1000",
            "100000.00 89994.90 89994.90 | 1000 1000 0 9000.00");
        row("a commission above the least", "buy 9000", "100000.00 9976.60 9976.60 | 1000 1000 0 9000.00");
        row("a better price frees the difference at once", "buy 1000; deal 300 9.90",
            "97024.97 90024.90 90024.90 | 1300 1000 0 11975.03");
        row("the least commission is charged once", "buy 1000; deal 300 9.90; deal 300 9.90; deal 400",
            "90054.90 90054.90 90054.90 | 2000 1000 0 18945.10");
        row("deals pay what they lift the commission by", "buy 4000; deal 1000; deal 2000",
            "69992.20 59989.60 59989.60 | 4000 1000 0 39007.80");
        row("a cancel frees the rest", "buy 1000; deal 300 9.90; gone",
            "97024.97 97024.97 97024.97 | 1300 1000 0 11975.03");
        row("a refusal of the exchange frees all", "buy 1000; refuse no",
            "100000.00 100000.00 100000.00 | 1000 1000 0 9000.00");
        row("the day's end frees all", "buy 1000; day",
            "100000.00 100000.00 100000.00 | 1000 1000 0 9000.00");
        row("a sale freezes shares", "sell 400", "100000.00 100000.00 100000.00 | 1000 600 400 9000.00");
        row("proceeds buy today but aren't withdrawn", "sell 400; deal 300",
            "102993.47 102993.47 100000.00 | 700 600 100 6300.00");
        row("tomorrow they are", "sell 400; deal 300; day",
            "102993.47 102993.47 102993.47 | 700 700 0 6300.00");
        row("an odd cost stays with the rest", "sell 1; deal 1; sell 998; deal 998",
            "109974.90 109974.90 100000.00 | 1 1 0 9.00");
        row("a sale never costs cash", "sell 1 1.00; deal 1",
            "100000.00 100000.00 100000.00 | 999 999 0 8991.00");
        row("bought today, sold tomorrow", "buy 100 12.00 other; deal 100",
            "98794.99 98794.99 98794.99 | 100 0 0 1205.01");
        row("tomorrow", "buy 100 12.00 other; deal 100; day",
            "98794.99 98794.99 98794.99 | 100 100 0 1205.01");
        row("a bond is sold the same day", "buy 10 100.000 bond; deal 10",
            "98999.00 98999.00 98999.00 | 510 510 0 51001.00");
        row("a fund, to the fen by halves up", "buy 1 4.005 fund; deal 1",
            "99995.89 99995.89 99995.89 | 1 0 0 4.11");
        row("rounding doesn't exceed the limit price", "buy 3 4.005 fund; deal 1; deal 1; deal 1",
            "99987.88 99987.88 99987.88 | 3 0 0 12.12");
        row("a subscription freezes without fees", "buy 500 20.00 subscription",
            "100000.00 90000.00 90000.00 | 0 0 0 0.00");
        row("borrowed money is debt", "margin: borrow 1000; deal 400",
            "100000.00 100000.00 100000.00 4005.04 39994.90 | 400 0 0 4005.04");
        row("a sale pays back first", "margin: borrow 1000; deal 1000; day; payback 600; deal 600",
            "100000.00 100000.00 100000.00 4013.16 45986.84 | 400 400 0 4002.04");
        row("and leaves the rest as cash",
            "margin: borrow 1000; deal 1000; day; payback 1000 12.00; deal 1000",
            "101983.78 101983.78 100000.00 0.00 50000.00 | 0 0 0 0.00");
        row("an own sale leaves the debt", "margin: borrow 1000; deal 1000; day; sell 1000 12.00; deal 1000",
            "111988.88 111988.88 100000.00 10005.10 39994.90 | 0 0 0 0.00");
        row("Hong Kong dollars are paid in yuan, taxed on both sides",
            "connect: buy 100 300.200 connect; deal 100", "72344.73 72344.73 72344.73 | 100 100 0 27655.27");
        row("and the same day back",
            "connect: buy 100 300.200 connect; deal 100; sell 100 300.200 connect; deal 100",
            "99926.26 99926.26 72344.73 | 0 0 0 0.00");
    }
    void MoneyAndShares()
    {
        QFETCH(QString, script);
        const Play play(script);
        QTEST(play.Standing(), "expected");
    }

    void Orders_data()
    {
        const Rows<const char*, const char*> row("script expected");
        row("their states",
            "buy 100; buy 100; deal 40; buy 100; deal 100; buy 9; gone; buy 100; deal 40; gone; buy 9; "
            "refuse why",
            "已报 部成 已成 已撤 部撤 废单:why");
        row("the day's end leaves a clean table", "buy 100; day", "");
        row("the last fen", "buy 1 99974.01", "已报");
        row("a fen too dear", "buy 1 99974.02", "废单:可用资金不足");
        row("frozen cash isn't there", "buy 6000; buy 6000", "已报 废单:可用资金不足");
        row("frozen shares aren't there", "sell 600; sell 401", "已报 废单:可卖数量不足");
        row("today's shares aren't there", "buy 100; deal 100; sell 1001", "已成 废单:可卖数量不足");
        row("not held", "margin: sell 1", "废单:可卖数量不足");
        row("Stock Connect elsewhere", "buy 100 300.000 connect", "废单:该账户不能交易此证券");
        row("Stock Connect with margin", "margin: buy 100 300.000 connect", "废单:该账户不能交易此证券");
        row("others in Stock Connect", "connect: buy 100", "废单:该账户不能交易此证券");
        row("an index", "buy 100 10.00 index", "废单:指数不能交易");
        row("B shares", "buy 100 1.000 foreign", "废单:该账户未开通B股交易");
        row("a subscription isn't sold", "sell 500 20.00 subscription", "废单:申购代码只能买入");
        row("no price, no quantity, out of all measure", "buy 100 0.00; buy 0; buy 999999999 999999.00",
            "废单:委托价格无效 废单:委托数量无效 废单:委托价格无效");
        row("only margin borrows", "borrow 100; payback 100",
            "废单:该账户不能进行融资交易 废单:该账户不能进行融资交易");
        row("borrowing buys, paying back sells", "margin: shortborrow 100; buypayback 100",
            "废单:融资委托只能买入 废单:卖券还款只能卖出");
        row("what can't be borrowed for", "margin: borrow 10 100.000 bond; borrow 500 20.00 subscription",
            "废单:该证券不能融资买入 废单:该证券不能融资买入");
        row("the credit line ends", "margin: borrow 4000; borrow 1000; buy 1000",
            "已报 废单:融资可用额度不足 已报");
    }
    void Orders()
    {
        QFETCH(QString, script);
        const Play play(script);
        QTEST(play.States(), "expected");
    }

    void WhatDoesNotFitChangesNothing_data()
    {
        const Rows<const char*, const char*> row("before step");
        row("more than the rest", "buy 100; deal 50", "deal 51");
        row("a buy above its price", "buy 100", "deal 50 10.01");
        row("a sale below its price", "sell 100", "deal 50 9.99");
        row("nothing", "buy 100", "deal 0");
        row("after the end", "buy 100; gone", "deal 50");
        row("an end after the end", "buy 100; deal 100", "gone");
        row("an order of yesterday", "buy 100; day", "gone");
        row("refused after a deal", "buy 100; deal 50", "refuse why");
    }
    void WhatDoesNotFitChangesNothing()
    {
        QFETCH(QString, before);
        QFETCH(QString, step);
        Play play(before);
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
        Brokerage broker(MadeListing(), MadeOpening(), {});
        OrderWish wish{Kind(account), static_cast<std::size_t>(security), Side::Buy};
        wish.price = *ReadPrice(price.toStdString());
        wish.funding = static_cast<Funding>(funding);
        const Quantity most = broker.Buyable(wish.account, wish.security, wish.price, wish.funding);
        QTEST(static_cast<int>(most), "expected");
        const Security listed = MadeListing()->securities[wish.security];
        if (most > 0 && most + listed.lot <= listed.maximum) {
            wish.quantity = most + listed.lot;
            QVERIFY(!broker.Place(wish, {}).refusal.empty());
            wish.quantity = most;
            QCOMPARE(broker.Place(wish, {}).refusal, std::string());
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
        Play play(QStringLiteral("margin: borrow 1000; deal 1000"));
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
