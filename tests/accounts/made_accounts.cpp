#include "accounts/made_accounts.h"

namespace panelry::test
{

using namespace panelry::desk;

namespace
{

Security Listed(const char* code, std::uint8_t market, const char* name, Price close,
                SecurityKind kind = SecurityKind::Stock, Quantity lot = 100)
{
    Security security{.code = code, .market = market, .name = name, .kind = kind, .close = close};
    security.lot = security.minimum = lot;
    return security;
}

Security ByThousandths(Security security)
{
    security.decimals = 3;
    security.step = 1;
    return security;
}

}  // namespace

std::shared_ptr<const Listing> MadeListing()
{
    auto listing = std::make_shared<Listing>();
    listing->securities = {
        Listed("600000", 17, "演示银行", 10'000),
        Listed("688981", 22, "演示芯片", 50'000, SecurityKind::Star, 1),
        ByThousandths(Listed("510300", 20, "演示基金", 4'001, SecurityKind::Fund)),
        ByThousandths(Listed("019666", 23, "演示国债", 100'000, SecurityKind::Bond, 10)),
        ByThousandths(Listed("00700", 64, "演示港股", 300'200, SecurityKind::Connect)),
        Listed("730001", 17, "演示申购", 20'000, SecurityKind::Subscription, 500),
        Listed("000001", 16, "演示指数", 3'000'000, SecurityKind::Index),
        ByThousandths(Listed("900901", 18, "演示B股", 1'001)),
        Listed("000001", 33, "模拟银行", 12'000),
    };
    listing->securities[kStar].minimum = 200;
    listing->securities[kStar].maximum = 100'000;
    listing->securities[kConnect].step = 10;
    listing->securities[kBond].sameDay = listing->securities[kConnect].sameDay = true;
    return listing;
}

Opening MadeOpening(Money cash)
{
    Opening opening;
    opening.normal = {"N1", cash, 0, {}};
    opening.normal.holdings = {{AccountKind::Normal, kBank, 1000, 1000, 0, 900'000},
                               {AccountKind::Normal, kBond, 500, 500, 0, 5'000'000}};
    opening.margin = {"M1", cash, 5'000'000, {}};
    opening.connect = {"C1", cash, 0, {}};
    opening.stock = {250, 500, 500, 0, 10};
    opening.fund = {100, 10, 0, 0, 0};
    opening.bond = {50, 100, 0, 0, 0};
    opening.connectRates = {250, 500, 1000, 1000, 85};
    opening.hongKongRate = 920'000;
    return opening;
}

}  // namespace panelry::test
