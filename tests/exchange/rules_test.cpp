#include "desk/exchange/rules.h"

#include "desk/exchange/crowd.h"
#include "exchange/stage.h"
#include "support/rows.h"
#include "support/test.h"
#include "ticket/data_deal_base.h"

using namespace panelry::desk;
using panelry::desk::test::Stage;
using panelry::test::Rows;

class RulesTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void TakesOrders_data();
    void TakesOrders();
    void DaysHaveLimits_data();
    void DaysHaveLimits();
    void ProtectedRangeIsTheTicketsRange();
};

void RulesTest::TakesOrders_data()
{
    const Rows<const char*, const char*> row("steps told");
    const char* const range = "no: 价格超出涨跌停范围";

    row("stock: hundreds", "09:31; buy; buy 10.00 150; buy 10.00 99; buy 10.00 1000000; buy 10.00 1000100",
        "no: 委托数量应为100的整数倍; no: 委托数量应为100的整数倍; no: 委托数量超过单笔上限1000000股");
    row("stock: no quantity, no price", "09:31; buy 10.00 0; buy 0; sell 10.00 -100; buy -1 100",
        "no: 委托数量无效; no: 委托价格无效; no: 委托数量无效; no: 委托价格无效");
    row("stock: an odd rest is sold whole, alone or with lots",
        "09:31; sell 10.00 50 350; sell 10.00 150 350; sell 10.00 350 350; sell 10.00 50 50; "
        "sell 10.00 300 350",
        "");
    row("stock: part of an odd rest isn't sold, nor more than is held",
        "09:31; sell 10.00 30 350; sell 10.00 130 350; sell 10.00 450 350; sell 10.00 50",
        "no: 委托数量应为100的整数倍，零股应一次性卖出; no: 委托数量应为100的整数倍，零股应一次性卖出; "
        "no: 委托数量应为100的整数倍，零股应一次性卖出; no: 委托数量应为100的整数倍，零股应一次性卖出");
    row("stock: the step", "09:16; buy 10.005; buy 10.01", "no: 委托价格应为最小变动单位0.01的整数倍");
    row("stock: 10 %", "09:16; buy 11.00; sell 9.00; buy 11.01; sell 8.99; buy 8.99",
        "no: 价格超出涨跌停范围; no: 价格超出涨跌停范围; no: 价格超出涨跌停范围");
    row("new: no limits, protected limits hold all the same",
        "09:16; on 605001; buy 999.00; cancel 1; 09:31; buy 20.40; buy 20.82; buy 1000001",
        "gone 1; no: 价格超出有效申报范围，买入价格不得高于20.80; no: 委托价格无效");
    row("STAR: from 200 in single shares, up to 100,000",
        "09:31; on 688001; buy 50.00 200; buy 50.00 201; buy 50.00 199; buy 50.00 100000; buy 50.00 100001",
        "no: 委托数量应不少于200股; no: 委托数量超过单笔上限100000股");
    row("STAR: less than 200 is sold only as all there is",
        "09:31; on 688001; sell 50.00 150 150; sell 50.00 150 151; sell 50.00 200 350",
        "no: 委托数量应不少于200股，余额不足时应一次性卖出");
    row("ChiNext: 20 %, up to 300,000",
        "09:16; on 300001; buy 24.00 300000; buy 24.01; buy 24.00 300100; buy 24.00 150",
        "no: 价格超出涨跌停范围; no: 委托数量超过单笔上限300000股; no: 委托数量应为100的整数倍");
    row("fund: three decimals, no protected limits", "09:31; on 510001; buy 3.001; buy 3.300; sell 3.301",
        range);
    row("bond: tens of pieces, no limits",
        "09:31; on 019001; buy 100.001 10; buy 150.000 10; buy 100.000 15; buy 100.000 1000010",
        "no: 委托数量应为10的整数倍; no: 委托数量超过单笔上限1000000张");
    row("Stock Connect: its own lot and step", "09:31; on 00001; buy 80.050 500; buy 80.010 500; buy 80.000",
        "no: 委托价格应为最小变动单位0.050的整数倍; no: 委托数量应为500的整数倍");
    row("subscription: bought at the issue price in its lot",
        "09:31; on 730001; buy 5.00 500; sell 5.00 500; buy 5.00; buy 5.01 500",
        "no: 申购代码只能买入; no: 委托数量应为500的整数倍; no: 申购价格应为发行价5.00");
    row("index", "09:31; on 000001; buy 3000.00", "no: 指数不能交易");

    row("protected limits: from the close while there is nothing else",
        "09:31; buy 10.21; sell 9.79; buy 10.20",
        "no: 价格超出有效申报范围，买入价格不得高于10.20; no: 价格超出有效申报范围，卖出价格不得低于9.80");
    row("protected limits: from the best ask for a buy, from the best bid for a sale",
        "09:31; sell 10.05; buy 9.95; buy 10.26; sell 9.75; sell 10.60; buy 9.10; buy 10.25",
        "no: 价格超出有效申报范围，买入价格不得高于10.25; no: 价格超出有效申报范围，卖出价格不得低于9.76; "
        "5: 10.05x100; 1: 10.05x100");
    row("protected limits: from the own side's best where the other is empty", "09:31; buy 9.80; buy",
        "no: 价格超出有效申报范围，买入价格不得高于9.99");
    row("protected limits: from the last deal where the book is empty",
        "09:31; buy 10.10; sell 10.10; buy 10.31; buy 10.30",
        "1: 10.10x100; 2: 10.10x100; no: 价格超出有效申报范围，买入价格不得高于10.30");
    row("protected limits: ten ticks are more for a cheap stock",
        "09:31; on 600003; buy 1.10; cancel 1; sell 0.90; cancel 2; buy 1.11",
        "gone 1; gone 2; no: 价格超出涨跌停范围");
    row("protected limits: on STAR they aren't",
        "09:31; on 688002; buy 1.03 200; buy 1.02 200; sell 0.97 200",
        "no: 价格超出有效申报范围，买入价格不得高于1.02; no: 价格超出有效申报范围，卖出价格不得低于1.00");
    row("protected limits: not in auctions, before the open and in the break",
        "09:16; buy 11.00; cancel 1; 09:26; buy 11.00; cancel 2; 11:31; buy 11.00; cancel 3; 14:58; "
        "buy 11.00",
        "gone 1; gone 2; gone 3");
    row("a code that isn't listed", "09:31; nowhere; buy", "no: 证券代码不存在");
}

void RulesTest::TakesOrders()
{
    QFETCH(QString, steps);
    QFETCH(QString, told);
    Stage stage;
    QCOMPARE(QString::fromStdString(stage.Play(steps.toStdString())), told);
}

void RulesTest::DaysHaveLimits_data()
{
    const Rows<int, qlonglong, int, const char*> row("percent close step range");
    row("ten percent", 10, 10'000, 10, "9000 11000");
    row("rounded up from the half", 10, 10'050, 10, "9050 11060");
    row("rounded down below it", 10, 10'040, 10, "9040 11040");
    row("five", 5, 1'360, 10, "1290 1430");
    row("three decimals", 10, 3'955, 1, "3560 4351");
    row("so cheap that a percentage is less than a step", 5, 80, 10, "70 90");
    row("cheapest", 10, 10, 10, "10 20");
    row("none", 0, 10'000, 10, "none");
}

void RulesTest::DaysHaveLimits()
{
    QFETCH(qlonglong, close);
    QFETCH(int, percent);
    QFETCH(int, step);
    Security security;
    security.limitPercent = percent;
    security.step = step;
    const auto range = DayRange(security, close);
    QTEST(range ? QStringLiteral("%1 %2").arg(range->lowest).arg(range->highest) : QStringLiteral("none"),
          "range");
}

// Where the ticket shows a range, the exchange takes just what is in it.
void RulesTest::ProtectedRangeIsTheTicketsRange()
{
    Dice dice(3);
    DataDealBase ticketRules;
    for (int i = 0; i < 20'000; ++i) {
        Security security;
        security.decimals = dice.OneIn(4) ? 3 : 2;
        security.market = security.decimals == 3 ? 18 : dice.OneIn(2) ? 17 : 33;
        if (dice.OneIn(3)) {
            security.kind = SecurityKind::Star;
            security.market = 22;
            security.decimals = 2;
        }
        security.step = security.decimals == 3 ? 1 : 10;
        const auto price = [&] {
            return dice.OneIn(4) ? 0 : security.step * (1 + dice.Below(dice.OneIn(2) ? 2'000 : 200'000));
        };
        Quote quote;
        quote.previousClose = security.step * (1 + dice.Below(20'000));
        quote.last = price();
        quote.bids[0].price = price();
        quote.asks[0].price = price();
        security.limitPercent = dice.OneIn(5) ? 0 : 20;
        if (const auto limits = DayRange(security, quote.previousClose)) {
            quote.lowerLimit = limits->lowest;
            quote.upperLimit = limits->highest;
        }

        const auto text = [&](Price value) { return PriceText(value, security.decimals); };
        StringMap ticket{{"price_decimal", std::to_string(security.decimals)},
                         {"kcb", security.kind == SecurityKind::Star ? "1" : ""},
                         {"sell_1_price", text(quote.asks[0].price)},
                         {"buy_1_price", text(quote.bids[0].price)},
                         {"latest_price", text(quote.last)},
                         {"last_closing_price", text(quote.previousClose)},
                         {"raising_limit", text(quote.upperLimit)},
                         {"limit_down", text(quote.lowerLimit)}};
        std::string highest;
        std::string lowest;
        ticketRules.ComputeProtectedRange(ticket, highest, lowest);

        const auto taken = [&](Side side, Price at) {
            return Objection(security, quote, Phase::Continuous, {0, side, at, 200, 0}).empty();
        };
        const Price ceiling = ReadPrice(highest).value();
        const bool isInDay = ceiling >= std::max(quote.lowerLimit, security.step);
        QVERIFY2(!isInDay || taken(Side::Buy, ceiling), highest.c_str());
        QVERIFY2(!taken(Side::Buy, ceiling + security.step), highest.c_str());
        // A floor at or below nought leaves every price open.
        const Price floor = lowest[0] == '-' ? 0 : ReadPrice(lowest).value();
        const bool canSellThere = floor > 0 && (quote.upperLimit == 0 || floor <= quote.upperLimit);
        QVERIFY2(!canSellThere || taken(Side::Sell, floor), lowest.c_str());
        QVERIFY2(!taken(Side::Sell, floor - security.step), lowest.c_str());
    }
}

PANELRY_TEST(RulesTest)
#include "rules_test.moc"
