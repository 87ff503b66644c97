#include "accounts/made_accounts.h"

namespace panelry::test
{

using namespace panelry::desk;

std::shared_ptr<const Listing> MadeListing()
{
    auto listing = std::make_shared<Listing>();
    listing->securities = {
        {.code = "600000", .market = 17, .name = "演示银行", .close = 10'000},
        {.code = "688981",
         .market = 22,
         .name = "演示芯片",
         .kind = SecurityKind::Star,
         .close = 50'000,
         .lot = 1,
         .minimum = 200,
         .maximum = 100'000},
        {.code = "510300",
         .market = 20,
         .name = "演示基金",
         .kind = SecurityKind::Fund,
         .decimals = 3,
         .step = 1,
         .close = 4'001},
        {.code = "019666",
         .market = 23,
         .name = "演示国债",
         .kind = SecurityKind::Bond,
         .decimals = 3,
         .step = 1,
         .close = 100'000,
         .lot = 10,
         .minimum = 10,
         .sameDay = true},
        {.code = "00700",
         .market = 64,
         .name = "演示港股",
         .kind = SecurityKind::Connect,
         .decimals = 3,
         .close = 300'200,
         .sameDay = true},
        {.code = "730001",
         .market = 17,
         .name = "演示申购",
         .kind = SecurityKind::Subscription,
         .close = 20'000,
         .lot = 500,
         .minimum = 500},
        {.code = "000001", .market = 16, .name = "演示指数", .kind = SecurityKind::Index, .close = 3'000'000},
        {.code = "900901", .market = 18, .name = "演示B股", .decimals = 3, .step = 1, .close = 1'001},
        {.code = "000001", .market = 33, .name = "模拟银行", .close = 12'000}};
    return listing;
}

Opening MadeOpening(Money cash)
{
    Opening opening;
    opening.normal = {"N1",
                      cash,
                      0,
                      {{AccountKind::Normal, kBank, 1000, 1000, 0, 900'000},
                       {AccountKind::Normal, kBond, 500, 500, 0, 5'000'000}}};
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
