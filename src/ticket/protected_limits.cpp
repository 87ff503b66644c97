// DataDealBase: are protected limits offered, and is this the hour for them?

#include <ctime>

#include "ticket/data_deal_base.h"
#include "ticket/ordered_walk.h"
#include "ticket/ticket_keys.h"

namespace
{

using panelry::FieldOf;
using panelry::TextToInt;
using panelry::ticket::Flag;
using panelry::ticket::IsOne;
using panelry::ticket::Key;
namespace key = panelry::ticket::key;

const std::string& kSupported = Key("issupportxj");
const std::string& kComputeAlways = Key("cal_xj");
const std::string& kOffered = Key("isshowxj");
const std::string& kComputed = Key("islxjj");
const std::string& kBuyCeiling = Key("mrxjg");
const std::string& kSellFloor = Key("mcxjg");

constexpr int kPhaseBegin = 92500;  // 09:25:00
constexpr int kPhaseEnd = 145700;   // 14:57:00, included

bool MarketOffersLimits(std::uint8_t market)
{
    switch (market) {
        case 17:
        case 18:
        case 21:
        case 22:
        case 33:
        case 34:
        case 37:
            return true;
        default:
            return false;
    }
}

// By the quote's phase text; the whole market number counts here, not its low byte.
bool IsContinuous(const std::string& phase, int market)
{
    if (market & panelry::ticket::kShanghaiBit) {
        return phase.front() == 'T';
    }
    return (market & panelry::ticket::kShenzhenBit) && phase.starts_with("T0");
}

// In local time. A time that the calendar can't hold lies in no phase.
bool IsInPhase(const std::string& epochSeconds)
{
    const std::time_t time = panelry::TextToInt64(epochSeconds);
    std::tm parts{};
    if (!localtime_r(&time, &parts)) {
        return false;
    }
    const int clock = parts.tm_hour * 10000 + parts.tm_min * 100 + parts.tm_sec;
    return clock >= kPhaseBegin && clock <= kPhaseEnd;
}

}  // namespace

void DataDealBase::UpdateProtectedLimitFields(StringMap& ticket)
{
    std::string buyCeiling;
    std::string sellFloor;
    bool compute = false;
    const bool supported = IsProtectedLimitSupported(ticket);
    if (supported) {
        compute = IsContinuousPhase(ticket) || IsOne(ticket, kComputeAlways);
        if (compute) {
            ComputeProtectedRange(ticket, buyCeiling, sellFloor);
        }
    }
    // All four on every call: an unsupported ticket ends with them cleared.
    panelry::ticket::OrderedWalk<StringMap> to(ticket);
    to.Write(kComputed) = Flag(compute);
    to.Write(kOffered) = Flag(supported);
    to.Write(kSellFloor) = sellFloor;
    to.Write(kBuyCeiling) = buyCeiling;
}

bool DataDealBase::IsProtectedLimitSupported(StringMap& ticket)
{
    const std::string& statement = FieldOf(ticket, kSupported);
    if (!statement.empty()) {
        return statement == "1";  // the host's word goes before the market's
    }
    return MarketOffersLimits(panelry::ticket::MarketByte(FieldOf(ticket, key::kMarket)));
}

bool DataDealBase::IsContinuousPhase(StringMap& ticket)
{
    const std::string& phase = FieldOf(ticket, key::kBenchmarkCode);
    if (!phase.empty()) {
        return IsContinuous(phase, TextToInt(FieldOf(ticket, key::kMarket)));
    }
    const std::string& time = FieldOf(ticket, key::kQuoteTime);
    return !time.empty() && IsInPhase(time);
}

bool DataDealBase::IsTzmCode(const std::string& code)
{
    const std::shared_ptr<TradeObserver> tradeSide = m_tradeSide.lock();
    if (!tradeSide) {
        return false;
    }
    for (const char* name : {"Json_TZM_SBA", "Json_TZM_SBB"}) {
        std::shared_ptr<std::string> text;
        tradeSide->GetString(name, text);
        if (!text) {
            continue;
        }
        const std::size_t bar = text->find('|');
        if (MatchCodeMask(bar == std::string::npos ? *text : text->substr(bar + 1), code)) {
            return true;
        }
    }
    return false;
}
