#include "support/test.h"
#include "support/text_rows.h"
#include "ticket/data_deal_base.h"
#include "ticket/fields.h"

using panelry::test::Fields;
using panelry::test::Given;
using panelry::test::TextRows;
using panelry::test::Unlike;
using panelry::test::With;

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

}  // namespace

class OrderCheckTest : public panelry::test::Test
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
};

PANELRY_TEST(OrderCheckTest)
#include "order_check_test.moc"
