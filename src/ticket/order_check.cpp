// DataDealBase: the last gate before an order.

#include "base/host_text.h"
#include "ticket/data_deal_base.h"
#include "ticket/price_range.h"
#include "ticket/ticket_keys.h"

namespace
{

using panelry::FieldOf;
using panelry::TextToDouble;
using panelry::TextToInt64;
using panelry::ticket::IsOne;
using panelry::ticket::Key;
using panelry::ticket::kSmallestPrice;
namespace key = panelry::ticket::key;

constexpr std::int64_t kLeastStarAmount = 200;

constexpr char kNoCode[] = "请输入代码！";
constexpr char kNoPrice[] = "请输入正确的委托价格！";
constexpr char kNoAmount[] = "请输入正确的委托数量！";
constexpr char kProtectionTip[] = "若您输入的保护限价超出范围，将被视为无效委托。";
constexpr char kBuyTip[] =
    "连续竞价阶段的限价申报，若输入的买入价格高于买限（买入价格上限），将被视为无效委托。"
    "开市期间临停牌阶段的限价申报不适用此规定。\n";
constexpr char kSellTip[] =
    "连续竞价阶段的限价申报，若输入的卖出价格低于卖限（卖出价格下限），将被视为无效委托。"
    "开市期间临停牌阶段的限价申报不适用此规定。\n";
constexpr char kStarRule[] =
    "科创板股票交易，委托数量必须符合以下要求：\n1.委托数量必须大于等于200股；\n"
    "2.如果您是卖出操作，可卖出数量小于200股，必须一次性卖出。\n请您重新核查您的数量！";

const std::string& kCheck = Key("check");
const std::string& kRefusal = Key("ret_text");
const std::string& kTip = Key("other_tip");
const std::string& kMarketOrder = Key("sjwt");
const std::string& kDeclared = Key("sbwt");
const std::string& kSide = Key("mmlb");
const std::string& kShortSale = Key("rqmc");

void Refuse(StringMap& result, const char* words)
{
    result[kCheck] = "0";
    result[kRefusal] = words;
}

bool IsMarketOrder(const StringMap& order)
{
    const std::string& kind = FieldOf(order, kMarketOrder);
    return !kind.empty() && kind != " ";
}

// A short sale gets no sell tip, a buy gets its tip whatever the short-sale mark says: deliberate.
const char* LimitOrderTip(const StringMap& order)
{
    const std::string& side = FieldOf(order, kSide);
    if (side == "B") {
        return kBuyTip;
    }
    return side == "S" && !IsOne(order, kShortSale) ? kSellTip : "";
}

// Beyond the day's limits the order is not refused, only confirmed; limits of 0 are none.
std::string BeyondLimitsTip(const StringMap& order, double price)
{
    const std::string& up = FieldOf(order, key::kRaisingLimit);
    const std::string& down = FieldOf(order, key::kLimitDown);
    if (up.empty() || down.empty()) {
        return {};
    }
    const double upper = TextToDouble(up);
    const double lower = TextToDouble(down);
    const bool beyond = price > upper || price < lower;
    if (!beyond || upper <= kSmallestPrice || lower <= kSmallestPrice) {
        return {};
    }
    const int decimals = panelry::TextToInt(FieldOf(order, key::kPriceDecimal));
    return "您输入的价格已超出涨跌停限制：[" + panelry::FixedText(lower, decimals) + " - " +
           panelry::FixedText(upper, decimals) + "] \n\n是否继续该笔委托？";
}

// Below 200 a buy is refused always, and a sale unless it sells all there is. Any other side breaks nothing.
bool BreaksStarRule(const StringMap& order, std::int64_t amount)
{
    if (!IsOne(order, key::kStar) || amount >= kLeastStarAmount) {
        return false;
    }
    const std::string& side = FieldOf(order, kSide);
    return side == "B" || (side == "S" && amount != TextToInt64(FieldOf(order, key::kUsableAmount)));
}

}  // namespace

void DataDealBase::CheckOrder(StringMap& order, StringMap& result)
{
    result[kCheck] = "1";
    if (FieldOf(order, key::kStockCode).empty()) {
        Refuse(result, kNoCode);  // goes on: a later refusal says more
    }
    const double price = TextToDouble(FieldOf(order, key::kPrice));
    if (price < kSmallestPrice) {
        return Refuse(result, kNoPrice);
    }
    const std::int64_t amount = TextToInt64(FieldOf(order, key::kAmount));
    if (amount <= 0) {
        return Refuse(result, kNoAmount);
    }

    std::string tip;
    if (IsMarketOrder(order)) {
        tip = IsOne(order, key::kSupportsProtectedMarketOrder) ? kProtectionTip : "";
    } else if (IsOne(order, kDeclared)) {
        tip = panelry::HostTextToUtf8(FieldOf(order, "sbwt_tips_" + FieldOf(order, kSide)));
    } else if (IsProtectedLimitSupported(order)) {
        tip = LimitOrderTip(order);
    }
    result[kTip] = tip + BeyondLimitsTip(order, price);  // of market orders too

    if (BreaksStarRule(order, amount)) {
        Refuse(result, kStarRule);
    }
}
