#pragma once

#include <array>
#include <string>

#include "ticket/field_map.h"

/// The keys of a ticket that more than one rule touches. Keys of the host's maps stand with the rule that
/// reads them.
namespace panelry::ticket::key
{

inline const std::string& kMarket = Key("market");
inline const std::string& kStockCode = Key("stockcode");
inline const std::string& kStockName = Key("stock_name");
inline const std::string& kPushFlag = Key("pushflag");

inline const std::string& kLatestPrice = Key("latest_price");
inline const std::string& kRaisingLimit = Key("raising_limit");
inline const std::string& kLimitDown = Key("limit_down");
inline const std::string& kLastClosingPrice = Key("last_closing_price");
inline const std::string& kOpen = Key("open");
inline const std::string& kBuy1Price = Key("buy_1_price");
inline const std::string& kSell1Price = Key("sell_1_price");
inline const std::string& kRiseFallScale = Key("rise_fall_scale");
inline const std::string& kPriceDecimal = Key("price_decimal");
inline const std::string& kBenchmarkCode = Key("benchmarkcode");
inline const std::string& kQuoteTime = Key("hq_time");

inline const std::string& kPriceStep = Key("price_step");
inline const std::string& kAmountStep = Key("amount_step");
inline const std::string& kAmountMin = Key("amount_min");
inline const std::string& kAmountMax = Key("amount_max");
inline const std::string& kAmountUnit = Key("amount_unit");
inline const std::string& kVolumeUnit = Key("amount_chart_volunit");
inline const std::string& kHand = Key("hand");
inline const std::string& kUsableAmount = Key("usable_amount");

inline const std::string& kStar = Key("kcb");
inline const std::string& kChiNext = Key("cyb");
inline const std::string& kMarketCode = Key("scdm");
inline const std::string& kHolderAccount = Key("gdzh");
inline const std::string& kMargin = Key("rzrq");
inline const std::string& kBusinessKind = Key("czlb");
inline const std::string& kOptions = Key("options");
inline const std::string& kPrice = Key("price");
inline const std::string& kAmount = Key("amount");
inline const std::string& kSupportsProtectedMarketOrder = Key("support_bhjg");
inline const std::string& kUsableOnly = Key("local_cx_wtsl");

/// The five levels of one side, in the order of a map: buy_1_amount, buy_1_price, buy_2_amount, ...
inline const std::array<std::string, 10>& kBuySide = *new std::array<std::string, 10>{
    "buy_1_amount", "buy_1_price",  "buy_2_amount", "buy_2_price",  "buy_3_amount",
    "buy_3_price",  "buy_4_amount", "buy_4_price",  "buy_5_amount", "buy_5_price"};
inline const std::array<std::string, 10>& kSellSide = *new std::array<std::string, 10>{
    "sell_1_amount", "sell_1_price",  "sell_2_amount", "sell_2_price",  "sell_3_amount",
    "sell_3_price",  "sell_4_amount", "sell_4_price",  "sell_5_amount", "sell_5_price"};

}  // namespace panelry::ticket::key
