// DataDealBase: quantities of an order, from money to lots and units.

#include <algorithm>
#include <cmath>

#include "ticket/data_deal_base.h"
#include "ticket/ticket_keys.h"

namespace
{

using panelry::TextToDouble;
using panelry::TextToInt;
using panelry::ticket::IsOne;
using panelry::ticket::Key;
namespace key = panelry::ticket::key;

constexpr double kLeastMoney = 0.001;  // of a price and of an amount of money
constexpr int kSubscriptionLot = 500;
constexpr int kOtherSubscriptionLot = 1000;
constexpr int kBondLot = 10;
constexpr int kLot = 100;

constexpr int kHandShift = 8;
constexpr int kMultiplierShift = 12;
constexpr int kOptionDigit = 15;
constexpr int kKindMask = 15;
constexpr int kBondKind = 3;
constexpr char kPiece[] = "股";
constexpr char kHandful[] = "手";
constexpr char kSheet[] = "张";

const std::string& kMoneyPrice = Key("dd_price");
const std::string& kMoney = Key("dd_money");
const std::string& kMoneyAmount = Key("dd_amount");
const std::string& kHandApplies = Key("newhand");
const std::string& kSubscription = Key("IsXGSG");

int OptionDigit(const std::string& options, int shift)
{
    return static_cast<int>((panelry::TextToInt64(options) >> shift) & kOptionDigit);
}

bool BeginsBelowSeven(const std::string& code)
{
    return static_cast<unsigned char>(code.front()) < '7';
}

// 10 to the power `digit` - 1, whole: up to 10^14.
std::int64_t Multiple(int digit)
{
    std::int64_t value = 1;
    for (int power = 1; power < digit; ++power) {
        value *= 10;
    }
    return value;
}

int UnitOfMoney(StringMap& ticket)
{
    const int hand = IsOne(ticket, kHandApplies) ? TextToInt(ticket[key::kHand]) : 0;
    return hand > 0 ? hand : DataDealBase::ReadVolumeUnit(ticket);
}

double AmountForMoney(StringMap& ticket, double price, double money)
{
    if (ticket[key::kBusinessKind] == "S") {
        // To the nearest unit and counted in units, on the STAR board too.
        return std::floor(money / UnitOfMoney(ticket) / price + 0.5);
    }
    double raw = std::floor(money / price);
    return IsOne(ticket, key::kStar) ? raw : DataDealBase::RoundAmountToLot(ticket, raw, true);
}

}  // namespace

void DataDealBase::FillMaxAmount(StringMap& ticket)
{
    const double price = TextToDouble(ticket[kMoneyPrice]);
    const double money = TextToDouble(ticket[kMoney]);
    if (price < kLeastMoney || money < kLeastMoney) {
        ticket[kMoneyAmount] = "0";  // not in the form of the others
        return;
    }
    panelry::AssignFixedText(ticket[kMoneyAmount], AmountForMoney(ticket, price, money),
                             panelry::kPlainDecimals);
}

double DataDealBase::RoundAmountToLot(StringMap& ticket, double& quantity, bool useVolumeUnit)
{
    quantity = std::floor(quantity);
    if (IsOne(ticket, key::kStar)) {
        return quantity;
    }
    const int unit = useVolumeUnit ? ReadVolumeUnit(ticket) : 1;
    if (unit > 1) {
        quantity = std::floor(quantity / unit);  // a count of units, not multiplied back
        return quantity;
    }
    const int lot = ReadLotSize(ticket);
    quantity = std::floor(quantity / lot) * lot;
    return quantity;
}

int DataDealBase::ReadVolumeUnit(StringMap& ticket)
{
    return std::max(1, TextToInt(ticket[key::kVolumeUnit]));
}

int DataDealBase::ReadLotSize(StringMap& ticket)
{
    if (IsOne(ticket, kSubscription)) {
        const int market = panelry::ticket::MarketByte(ticket[key::kMarket]);
        const bool listed = market & (panelry::ticket::kShanghaiBit | panelry::ticket::kShenzhenBit);
        return listed ? kSubscriptionLot : kOtherSubscriptionLot;
    }
    return IsZhangCode(ticket) ? kBondLot : kLot;
}

void DataDealBase::ResolveHandSize(const std::string& options, std::string& hand)
{
    const int digit = OptionDigit(options, kHandShift);
    panelry::AssignIntText(hand, digit == 0 ? kLot : Multiple(digit));
}

void DataDealBase::ResolveAmountUnit(const std::string& codeType, const std::string& code,
                                     const std::string& options, std::string& unit, std::string& multiplier)
{
    unit = kPiece;
    multiplier = "1";
    if (options.empty() || codeType.empty() || code.empty()) {
        return;
    }
    const int market = panelry::ticket::MarketByte(codeType);
    const int digit = OptionDigit(options, kMultiplierShift);
    const int family = market & panelry::ticket::kFamilyMask;
    if (digit > 1) {
        panelry::AssignIntText(multiplier, Multiple(digit));
        unit = kHandful;
    } else if (digit == 0 && (market & kKindMask) == kBondKind && BeginsBelowSeven(code)) {
        multiplier = "10";
        unit = kHandful;
    } else if ((family == panelry::ticket::kShanghaiBit && code.starts_with("0")) ||
               (family == panelry::ticket::kShenzhenBit && code.starts_with("10"))) {
        unit = kSheet;
    }
}
