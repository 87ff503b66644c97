#include "tables/table_form_info.h"

#include <cstdint>
#include <string>

#include "base/number_text.h"
#include "tables/trade_requests.h"
#include "ticket/field_map.h"

namespace
{

using ddsdk::TradeRequestParam;
using panelry::FieldOf;
using panelry::tables::CopyPresent;
using panelry::tables::Fields;
using panelry::tables::kMarginType;
using panelry::tables::kStockConnectType;
using panelry::tables::Put;
using panelry::ticket::IsOne;

constexpr char kTableName[] = "table_name";
constexpr char kStockConnectCancelTable[] = "ggt_chedan_table";

// What tells the accounts apart in one query.
struct Flavour {
    Fields head;
    Fields body;
};

struct Flavours {
    Flavour normal;
    Flavour margin;
    Flavour stockConnect;
};

constexpr Flavours kPositions{
    {{{{"type", "1537"}, {"setcode", "50"}}}, {}},
    {{{{"type", kMarginType}}}, {{{"cmd", "rzrq_cxgp"}, {"dataid", "rzrq_gupiao"}, {"rzrq", "1"}}}},
    {{{{"type", kStockConnectType}, {kTableName, "ggt_gupiao"}}},
     {{{"cmd", "ggt_query_cican"}, {"dataid", "ggt_gupiao"}}}}};

// No "setcode" here.
constexpr Flavours kDeals{{{{{"type", "1538"}}}, {}},
                          {{{{"type", kMarginType}}}, {{{"cmd", "rzrq_cxcj"}, {"rzrq", "1"}}}},
                          {{{{"type", kStockConnectType}, {kTableName, "ggt_chengjiao"}}},
                           {{{"cmd", "ggt_query_chengjiao"}, {"dataid", "ggt_chengjiao"}}}}};

// Margin has one command for both lists of orders and tells them apart by "dataid"; Stock Connect has one table
// for both and tells them apart by "cmd".
constexpr Flavours kOrders{
    {{{{"type", "1539"}, {"setcode", "50"}}}, {}},
    {{{{"type", kMarginType}}}, {{{"cmd", "rzrq_cxwt"}, {"dataid", "rzrq_weituo"}, {"rzrq", "1"}}}},
    {{{{"type", kStockConnectType}, {kTableName, "ggt_weituo"}}},
     {{{"cmd", "ggt_query_drwt"}, {"dataid", "ggt_drwt"}}}}};

constexpr Flavours kCancelableOrders{
    {{{{"type", "1539"}, {"setcode", "50"}}}, {{{"dataid", "ptwt_kcwt"}}}},
    {{{{"type", kMarginType}}}, {{{"cmd", "rzrq_cxwt"}, {"dataid", "rzrq_chedan"}, {"rzrq", "1"}}}},
    {{{{"type", kStockConnectType}, {kTableName, "ggt_weituo"}}},
     {{{"cmd", "ggt_query_kcwt"}, {"dataid", "ggt_kcwt"}}}}};

const Flavour& FlavourOf(const Flavours& flavours, const StringMap& parameters,
                         bool stockConnectTable = false)
{
    if (IsOne(parameters, "rzrq")) {
        return flavours.margin;
    }
    return stockConnectTable || IsOne(parameters, "ggt") ? flavours.stockConnect : flavours.normal;
}

std::shared_ptr<TradeRequestParam> NewRequest(const Flavour& flavour, const StringMap& parameters)
{
    auto request = std::make_shared<TradeRequestParam>();
    Put(request->head, flavour.head);
    Put(request->body, flavour.body);
    request->head["cachedata"] = "1";
    request->local[kTableName] = FieldOf(parameters, kTableName);
    return request;
}

void AppendLittleEndian(std::string& block, int number)
{
    const auto bits = static_cast<std::uint32_t>(number);
    for (int shift = 0; shift < 32; shift += 8) {
        block += static_cast<char>(static_cast<unsigned char>(bits >> shift));
    }
}

// The host takes the two dates as raw numbers in a text, which therefore ends at their first zero byte.
std::string RawDates(const std::string& first, const std::string& last)
{
    std::string block;
    AppendLittleEndian(block, panelry::TextToInt(first));
    AppendLittleEndian(block, panelry::TextToInt(last));
    return block.substr(0, block.find('\0'));
}

void PutHistoryRange(const StringMap& parameters, TradeRequestParam& request)
{
    const auto first = parameters.find("qsrq");
    const auto last = parameters.find("jzrq");
    if (first == parameters.end() || last == parameters.end()) {
        return;
    }
    request.body["qsrq"] = first->second;
    request.body["jzrq"] = last->second;
    request.body["dataid"] = IsOne(parameters, "rzrq") ? "rzrq_lishichengjiao" : "H";
    request.head["pub_1_str"] = RawDates(first->second, last->second);
}

}  // namespace

void TableFormInfo::FillCancelRequest(std::shared_ptr<TradeRequestParam> request, StringMap& row)
{
    if (!request) {
        return;
    }
    const std::string& contract = FieldOf(row, "htbh");
    request->head["type"] = "4";
    request->head["pub_5_str"] = contract;
    if (IsOne(row, "rzrq")) {
        request->head["type"] = kMarginType;
        Put(request->body, {{{"cmd", "rzrq_cd"}, {"rzrq", "1"}}});
    }
    if (IsOne(row, "ggt")) {  // on top of the margin fields, of which "rzrq" stays
        request->head["type"] = kStockConnectType;
        request->body["cmd"] = "ggt_cd";
        request->body["cjbh"] = FieldOf(row, "cjbh");
        request->body["czlb"] = FieldOf(row, "czlb");
    }
    request->body["htbh"] = contract;
    for (const char* const key : {"chedan_num", "time_stamp", "index"}) {
        CopyPresent(row, request->local, key);
    }
}

void TableFormInfo::FillTableRefreshRequest(std::shared_ptr<TradeRequestParam> request,
                                            StringMap& description)
{
    if (!request) {
        return;
    }
    request->head["type"] = FieldOf(description, "type");
    request->head["command"] = request->body["menuid"] = FieldOf(description, "menuid");
    request->local[kTableName] = FieldOf(description, kTableName);
    CopyPresent(description, request->head, "setcode");
    for (const char* const key : {"cmd", "dataid", "rzrq"}) {
        CopyPresent(description, request->body, key);
    }
}

void TableFormInfo::QueryPositions(StringMap& parameters)
{
    const std::shared_ptr<TradeObserver> tradeSide = m_tradeSide.lock();
    if (!tradeSide) {
        return;
    }
    const auto request = NewRequest(FlavourOf(kPositions, parameters), parameters);
    if (const auto name = parameters.find("standard_table_name"); name != parameters.end()) {
        request->head[kTableName] = name->second;
    }
    panelry::tables::PutAccount(*tradeSide, "account", *request);
    tradeSide->SendTradeRequest(request);
}

void TableFormInfo::QueryDeals(StringMap& parameters)
{
    const std::shared_ptr<TradeObserver> tradeSide = m_tradeSide.lock();
    if (!tradeSide) {
        return;
    }
    const auto request = NewRequest(FlavourOf(kDeals, parameters), parameters);
    PutHistoryRange(parameters, *request);
    request->head["command"] = request->body["menuid"] = FieldOf(parameters, "menuid");
    tradeSide->SendTradeRequest(request);
}

void TableFormInfo::QueryOrders(StringMap& parameters)
{
    if (const std::shared_ptr<TradeObserver> tradeSide = m_tradeSide.lock()) {
        tradeSide->SendTradeRequest(NewRequest(FlavourOf(kOrders, parameters), parameters));
    }
}

void TableFormInfo::QueryCancelableOrders(StringMap& parameters)
{
    const std::shared_ptr<TradeObserver> tradeSide = m_tradeSide.lock();
    if (!tradeSide) {
        return;
    }
    const bool stockConnectTable = FieldOf(parameters, kTableName) == kStockConnectCancelTable;
    const auto request = NewRequest(FlavourOf(kCancelableOrders, parameters, stockConnectTable), parameters);
    request->head["pub_3_str"] = "W";
    tradeSide->SendTradeRequest(request);
}
