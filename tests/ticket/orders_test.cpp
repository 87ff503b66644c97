#include <QRandomGenerator>

#include "support/test.h"
#include "support/text_rows.h"
#include "ticket/data_deal_base.h"
#include "ticket/fields.h"

using namespace panelry::test;

namespace
{

const QByteArray kProtection = "若您输入的保护限价超出范围，将被视为无效委托。";
const QByteArray kTip =
    "连续竞价阶段的限价申报，若输入的%1限），将被视为无效委托。开市期间临停牌阶段的限价申报不适用此规定。\n";
const QByteArray kBuyTip = QByteArray(kTip).replace("%1", "买入价格高于买限（买入价格上");
const QByteArray kSellTip = QByteArray(kTip).replace("%1", "卖出价格低于卖限（卖出价格下");
const QByteArray kBeyond = "您输入的价格已超出涨跌停限制：[9.00~-~11.00]~\n\n是否继续该笔委托？";
const QByteArray kCode = "check=0 ret_text=请输入代码！";
const QByteArray kPrice = "check=0 ret_text=请输入正确的委托价格！";
const QByteArray kAmount = "check=0 ret_text=请输入正确的委托数量！";
const QByteArray kStar =
    "check=0 ret_text=科创板股票交易，委托数量必须符合以下要求：\n1.委托数量必须大于等于200股；\n"
    "2.如果您是卖出操作，可卖出数量小于200股，必须一次性卖出。\n请您重新核查您的数量！";
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

QByteArray AmountFor(StringMap ticket)
{
    DataDealBase().FillMaxAmount(ticket);
    return QByteArray::fromStdString(ticket["dd_amount"]);
}

}  // namespace

class OrdersTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void AnOrder_data()
    {
        TextRows(
            "order result",
            {{"may go", "", kPasses},
             {"without a code goes on to the tips", "stockcode= price=12", kCode + " other_tip=" + kBeyond},
             {"without code and price: the later refusal stays", "stockcode= price=", kPrice + " !other_tip"},
             {"of a price that is no number", "price=inf", kPrice + " !other_tip"},
             {"of nothing", "amount=0", kAmount + " !other_tip"},

             {"at the upper limit", "price=11.00", kPasses},
             {"at the lower limit", "price=9.00", kPasses},
             {"above the limit", "price=11.01", "check=1 !ret_text other_tip=" + kBeyond},
             {"below the limit", "price=8.99 mmlb=S", "check=1 !ret_text other_tip=" + kBeyond},
             {"with one limit as small as none", "price=12 limit_down=0.0001", kPasses},
             {"with a lower limit that just counts", "price=12 limit_down=0.00011 price_decimal=5",
              "other_tip=您输入的价格已超出涨跌停限制：[0.00011~-~11.00000]~\n\n是否继续该笔委托？"},
             {"with one limit missing", "price=12 raising_limit=", kPasses},
             {"with no decimals told", "price=12 price_decimal=",
              "other_tip=您输入的价格已超出涨跌停限制：[9~-~11]~\n\n是否继续该笔委托？"},

             {"at the market", "sjwt=1 support_bhjg=1", "check=1 other_tip=" + kProtection},
             {"at the market, beyond", "sjwt=1 support_bhjg=1 price=12",
              "other_tip=" + kProtection + kBeyond},
             {"at the market, unprotected", "sjwt=1 support_bhjg=0 price=12", "other_tip=" + kBeyond},
             {"at the market goes before declared", "sjwt=1 sbwt=1 sbwt_tips_B=declared", kPasses},
             {"with a blank kind is declared", "sjwt=~ sbwt=1 sbwt_tips_B=declared", "other_tip=declared"},
             {"declared: the host's text for the side",
              "sbwt=1 mmlb=S sbwt_tips_B=b sbwt_tips_S=\xb1\xb8\xff", "other_tip=备\uFFFD"},
             {"declared without a text", "sbwt=1 market=17", kPasses},

             {"to buy, with a protected limit", "market=17 rqmc=1", "other_tip=" + kBuyTip},
             {"to sell, with a protected limit", "market=17 mmlb=S", "other_tip=" + kSellTip},
             {"to sell short", "market=17 mmlb=S rqmc=1", kPasses},
             {"of another side", "market=17 mmlb=X", kPasses},
             {"with a protected limit, beyond", "market=17 price=12", "other_tip=" + kBuyTip + kBeyond},

             {"STAR: quantity beyond 32 bits", "kcb=1 amount=4294967297", kPasses},
             {"STAR: refused, beyond", "kcb=1 amount=100 price=12", kStar + " other_tip=" + kBeyond},
             {"STAR: no code", "kcb=1 stockcode= amount=100", kStar},
             {"not quite STAR", "kcb=11 amount=100", kPasses}});
    }

    void AnOrder()
    {
        QCOMPARE(Unlike(Checked(With(Fields(kOrder), Given("order"))), Given("result")), QString());
    }

    void APriceCountsFromTheSmallestOn()
    {
        for (int ticks = -20; ticks < 200; ++ticks) {  // of 0.00001
            const QByteArray price = "limit_down=0 price=" + QByteArray::number(ticks * 1e-5, 'f', 5);
            QCOMPARE(Unlike(Checked(With(Fields(kOrder), price)), ticks >= 10 ? kPasses : kPrice), QString());
        }
    }

    void AStarOrderBelowTwoHundredIsAWholeSale()
    {
        for (int amount = 1; amount <= 201; ++amount) {
            for (const QByteArray side : {"B", "S", "X"}) {
                for (const int usable : {amount - 1, amount, amount + 1, 200}) {
                    const StringMap order =
                        With(Fields(kOrder), "kcb=1 mmlb=" + side + " amount=" + QByteArray::number(amount) +
                                                 " usable_amount=" + QByteArray::number(usable));
                    const bool refused = amount < 200 && (side == "B" || (side == "S" && amount != usable));
                    QCOMPARE(Checked(order).at("check") == "0", refused);
                }
            }
        }
    }

    void MoneyBuys_data()
    {
        const QByteArray tens = " amount_chart_volunit=10";
        TextRows("ticket amount",
                 {{"lots, rounded down", "czlb=B dd_money=10990", "1000.000000"},
                  {"STAR: single shares", "dd_money=10059 kcb=1", "1005.000000"},
                  {"price below the least", "dd_price=0.0009", "0"},
                  {"least price", "dd_money=1 dd_price=0.001", "1000.000000"},
                  {"money below the least", "dd_money=0.0009 dd_price=1", "0"},
                  {"units, not shares", "dd_money=10050" + tens, "100.000000"},
                  {"a unit below 1: lots", "dd_money=10050 amount_chart_volunit=-5", "1000.000000"},
                  {"bonds in lots of 10", "dd_money=1059 market=17 stockcode=019666", "100.000000"},
                  {"S: half a unit goes up", "czlb=S dd_money=1505 amount_chart_volunit=1", "151.000000"},
                  {"S: below half goes down", "czlb=S dd_money=1504.9", "150.000000"},
                  {"S: in units of the table, and STAR has no say", "czlb=S kcb=1" + tens, "15.000000"},
                  {"S: hand applies", "czlb=S newhand=1 hand=50" + tens, "3.000000"},
                  {"S: hand doesn't apply", "czlb=S newhand=0 hand=50", "150.000000"},
                  {"S: an empty hand", "czlb=S newhand=1" + tens, "15.000000"},
                  {"B with hand: the lots of the code", "newhand=1 hand=50", "100.000000"},
                  {"beyond whole numbers", "dd_money=1e30 dd_price=1 kcb=1",
                   "1000000000000000019884624838656.000000"}});
    }

    void MoneyBuys()
    {
        QTEST(AmountFor(With(Fields("dd_money=1500 dd_price=10"), Given("ticket"))), "amount");
    }

    void AnAmountNeverCostsMoreThanTheMoney()
    {
        QRandomGenerator random(4);
        for (int i = 0; i < 20'000; ++i) {
            const qint64 price = 1 + random.bounded(1 << (4 + random.bounded(16)));  // of 1/1000 yuan
            const qint64 money = 1 + random.bounded(1 << 30);
            const int unit = random.bounded(3) == 0 ? 10 : 1;
            const StringMap ticket{
                {"dd_price", QByteArray::number(static_cast<double>(price) / 1000, 'f', 3).toStdString()},
                {"dd_money", QByteArray::number(static_cast<double>(money) / 1000, 'f', 3).toStdString()},
                {"amount_chart_volunit", std::to_string(unit)},
                {"kcb", random.bounded(3) == 0 ? "1" : "0"}};
            const qint64 pieces =
                AmountFor(ticket).split('.')[0].toLongLong() * (ticket.at("kcb") == "1" ? 1 : unit);
            QVERIFY(pieces >= 0 && pieces * price <= money);
            QVERIFY((pieces + 101) * price > money);  // and leaves less than a lot
        }
    }

    void AUnit_data()
    {
        const auto digit = [](int n) { return QByteArray::number(n << 12); };
        TextRows("codeType code options unit",
                 {{"shares", "17", "600000", "0", "1 股"},
                  {"options say 1000, beside other bits", "17", "600000",
                   QByteArray::number((4 << 12) + 4095 + (1 << 16)), "1000 手"},
                  {"options say 10^14", "17", "600000", digit(15), "100000000000000 手"},
                  {"options say 1: none, and no kind 3 either", "19", "123456", digit(1), "1 股"},
                  {"options say 1: still a sheet", "19", "019666", digit(1), "1 张"},
                  {"kind 3 from 7 on", "19", "712345", "0", "1 股"},
                  {"kind 3, a byte above all digits", "19", "\xe6", "0", "1 股"},
                  {"kind 3 in the low byte", "275", "123456", "0", "10 手"},
                  {"Shenzhen bond", "33", "101666", "0", "1 张"},
                  {"Shenzhen fund", "33", "159001", "0", "1 股"},
                  {"both families: none of the two", "49", "019666", "0", "1 股"},
                  {"no options", "19", "123456", "", "1 股"},
                  {"no market", "", "019666", "0", "1 股"},
                  {"no code", "19", "", "0", "1 股"}});
    }

    void AUnit()
    {
        std::string unit = "old";
        std::string multiplier = "old";
        DataDealBase().ResolveAmountUnit(Given("codeType"), Given("code"), Given("options"), unit,
                                         multiplier);
        QTEST(QByteArray::fromStdString(multiplier + ' ' + unit), "unit");
    }

    void AHand()
    {
        QByteArray hands;
        for (const char* options : {"", "255", "256", "512", "1279", "3840", "4096"}) {
            std::string hand = "old";
            DataDealBase().ResolveHandSize(options, hand);
            hands += hand.c_str() + QByteArray(" ");
        }
        QCOMPARE(hands, "100 100 1 10 1000 100000000000000 100 ");
    }
};

PANELRY_TEST(OrdersTest)
#include "orders_test.moc"
