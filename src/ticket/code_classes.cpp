// DataDealBase: what kind of code is it?

#include "ticket/code_masks.h"
#include "ticket/data_deal_base.h"
#include "ticket/ticket_keys.h"

namespace
{

using panelry::FieldOf;
using panelry::ticket::IsOne;
using panelry::ticket::Key;
namespace key = panelry::ticket::key;

constexpr int kBhjgMask = 0xF8;

const std::string& kZhangMask = Key("iszhangmask");

}  // namespace

bool DataDealBase::MatchCodeMask(const std::string& masks, const std::string& code)
{
    return panelry::ticket::MatchesMaskList(masks, code);
}

bool DataDealBase::MatchFullMask(const std::string& code, const std::string& mask)
{
    return panelry::ticket::MatchesFullMask(code, mask);
}

bool DataDealBase::IsThreeDecimalCode(const std::string& code, const std::string& market)
{
    return panelry::ticket::IsThreeDecimalCode(code, market);
}

bool DataDealBase::IsBhjgMarket(StringMap& ticket)
{
    const std::string& market = FieldOf(ticket, key::kMarket);
    return !market.empty() && (panelry::TextToInt(market) & kBhjgMask) == panelry::ticket::kShanghaiBit;
}

// The list "11*;12*;13*;10*;181*;12*;201*;202*;" belongs here and is deliberately not applied: its codes stay
// shares.
bool DataDealBase::IsZhangCode(StringMap& ticket)
{
    const std::string& code = FieldOf(ticket, key::kStockCode);
    const int market = panelry::ticket::MarketByte(FieldOf(ticket, key::kMarket));
    return (!code.empty() && IsOne(ticket, kZhangMask)) ||
           ((market & panelry::ticket::kShanghaiBit) && code.starts_with("0")) ||
           ((market & panelry::ticket::kShenzhenBit) && code.starts_with("10"));
}
