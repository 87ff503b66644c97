#include <QRandomGenerator>

#include "support/test.h"
#include "ticket/data_deal_base.h"
#include "ticket/fields.h"

using panelry::test::Fields;
using panelry::test::Unlike;
using panelry::test::With;

namespace
{

const QByteArray kProtection = "若您输入的保护限价超出范围，将被视为无效委托。";
const QByteArray kBuyTip =
    "连续竞价阶段的限价申报，若输入的买入价格高于买限（买入价格上限），将被视为无效委托。开市期间临停牌阶段的"
    "限价"
    "申报不适用此规定。\n";
const QByteArray kSellTip =
    "连续竞价阶段的限价申报，若输入的卖出价格低于卖限（卖出价格下限），将被视为无效委托。开市期间临停牌阶段的"
    "限价"
    "申报不适用此规定。\n";
const QByteArray kBeyond = "您输入的价格已超出涨跌停限制：[9.00~-~11.00]~\n\n是否继续该笔委托？";
const QByteArray kCode = "check=0 ret_text=请输入代码！";
const QByteArray kPrice = "check=0 ret_text=请输入正确的委托价格！";
const QByteArray kAmount = "check=0 ret_text=请输入正确的委托数量！";
const QByteArray kStar =
    "check=0 "
    "ret_text=科创板股票交易，委托数量必须符合以下要求：\n1.委托数量必须大于等于200股；\n2.如果您是卖出操作"
    "，可卖出数量小于200股，必须一次性卖出。\n请您重新核查您的数量！";
const QByteArray kPasses = "check=1 !ret_text other_tip=";

// A limit order to buy on a market without protected limits; each row changes what it is about.
const char kOrder[] =
    "stockcode=600000 price=10.00 amount=100 mmlb=B market=16 price_decimal=2 "
    "raising_limit=11.00 limit_down=9.00 usable_amount=150";

StringMap Checked(StringMap order)
{
    StringMap result;
    DataDealBase().CheckOrder(order, result);
    return result;
}

}  // namespace

class OrderCheckTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void AnOrder_data()
    {
        QTest::addColumn<QByteArray>("order");
        QTest::addColumn<QByteArray>("result");
        const auto row = [](const char* name, const QByteArray& order, const QByteArray& result) {
            QTest::newRow(name) << order << result;
        };
        row("may go", "", kPasses);
        row("without a code goes on to the tips", "stockcode= price=12", kCode + " other_tip=" + kBeyond);
        row("without code and price: the later refusal stays", "stockcode= price=", kPrice + " !other_tip");
        row("just below the smallest price", "price=0.00009", kPrice + " !other_tip");
        row("of the smallest price", "price=0.0001 limit_down=0", kPasses);
        row("of a negative price", "price=-1", kPrice);
        row("of a price that is no number", "price=inf", kPrice);
        row("of nothing", "amount=0", kAmount + " !other_tip");
        row("of less than nothing", "amount=-5", kAmount);
        row("of words", "amount=abc", kAmount);
        row("of a part of one", "amount=0.9", kAmount);

        row("at the upper limit", "price=11.00", kPasses);
        row("at the lower limit", "price=9.00", kPasses);
        row("above the limit", "price=11.01", "check=1 !ret_text other_tip=" + kBeyond);
        row("below the limit", "price=8.99 mmlb=S", "check=1 !ret_text other_tip=" + kBeyond);
        row("with one limit of 0", "price=12 limit_down=0", kPasses);
        row("with one limit as small as none", "price=12 limit_down=0.0001", kPasses);
        row("with a lower limit that just counts", "price=12 limit_down=0.00011 price_decimal=5",
            "other_tip=您输入的价格已超出涨跌停限制：[0.00011~-~11.00000]~\n\n是否继续该笔委托？");
        row("with one limit missing", "price=12 raising_limit=", kPasses);
        row("with no decimals told", "price=12 price_decimal=",
            "other_tip=您输入的价格已超出涨跌停限制：[9~-~11]~\n\n是否继续该笔委托？");

        row("at the market", "sjwt=1 support_bhjg=1", "check=1 other_tip=" + kProtection);
        row("at the market, beyond the limits", "sjwt=1 support_bhjg=1 price=12",
            "other_tip=" + kProtection + kBeyond);
        row("at the market, unprotected", "sjwt=1 support_bhjg=0 price=12", "other_tip=" + kBeyond);
        row("at the market goes before declared", "sjwt=1 sbwt=1 sbwt_tips_B=declared", kPasses);
        row("with a blank kind is not at the market", "sjwt=~ sbwt=1 sbwt_tips_B=declared",
            "other_tip=declared");
        row("declared: the host's text for the side", "sbwt=1 mmlb=S sbwt_tips_B=b sbwt_tips_S=\xb1\xb8",
            "other_tip=备");
        row("declared: a broken text", "sbwt=1 sbwt_tips_B=a\xff", "other_tip=a\uFFFD");
        row("declared without a text", "sbwt=1 market=17", kPasses);

        row("to buy, with a protected limit", "market=17", "other_tip=" + kBuyTip);
        row("to buy back a short sale", "market=17 rqmc=1", "other_tip=" + kBuyTip);
        row("to sell, with a protected limit", "market=17 mmlb=S", "other_tip=" + kSellTip);
        row("to sell short", "market=17 mmlb=S rqmc=1", kPasses);
        row("of another side", "market=17 mmlb=X", kPasses);
        row("with a protected limit, beyond the limits", "market=17 price=12",
            "other_tip=" + kBuyTip + kBeyond);

        row("STAR: 199 to buy", "kcb=1 amount=199", kStar);
        row("STAR: 200 to buy", "kcb=1 amount=200", kPasses);
        row("STAR: all there is to sell", "kcb=1 mmlb=S amount=150", kPasses);
        row("STAR: a part to sell", "kcb=1 mmlb=S amount=150 usable_amount=300", kStar);
        row("STAR: 200 of more to sell", "kcb=1 mmlb=S amount=200 usable_amount=300", kPasses);
        row("STAR: another side", "kcb=1 mmlb=X amount=1", kPasses);
        row("STAR: quantity beyond 32 bits", "kcb=1 amount=4294967297", kPasses);
        row("STAR: refused, and beyond the limits", "kcb=1 amount=100 price=12",
            kStar + " other_tip=" + kBeyond);
        row("STAR: no code", "kcb=1 stockcode= amount=100", kStar);
        row("not quite STAR", "kcb=11 amount=100", kPasses);
    }

    void AnOrder()
    {
        QFETCH(const QByteArray, order);
        QFETCH(const QByteArray, result);
        QCOMPARE(Unlike(Checked(With(Fields(kOrder), order)), result), QString());
    }

    void WhatIsRefusedForItsPriceIsRefusedForEveryLowerOne()
    {
        QRandomGenerator random(1);
        for (int i = 0; i < 20'000; ++i) {
            const int ticks = static_cast<int>(random.bounded(200)) - 20;
            StringMap order = With(Fields(kOrder), "price=" + QByteArray::number(ticks * 1e-5, 'f', 5));
            const StringMap one = Checked(order);
            order["price"] = QByteArray::number((ticks - 1) * 1e-5, 'f', 5).toStdString();
            QVERIFY(one.at("check") == "1" || Checked(order).at("check") == "0");
            QCOMPARE(one.at("check") == "1", ticks >= 10);
        }
    }

    void AStarOrderBelowTwoHundredIsAWholeSale()
    {
        QRandomGenerator random(2);
        for (int i = 0; i < 20'000; ++i) {
            const int amount = 1 + random.bounded(250);
            const int usable = random.bounded(2) == 0 ? amount : random.bounded(250);
            const QByteArray side = QByteArrayList{"B", "S", "X"}[random.bounded(3)];
            const StringMap order =
                With(Fields(kOrder), "kcb=1 mmlb=" + side + " amount=" + QByteArray::number(amount) +
                                         " usable_amount=" + QByteArray::number(usable));
            const bool refused = amount < 200 && (side == "B" || (side == "S" && amount != usable));
            QCOMPARE(Checked(order).at("check") == "0", refused);
        }
    }
};

PANELRY_TEST(OrderCheckTest)
#include "order_check_test.moc"
