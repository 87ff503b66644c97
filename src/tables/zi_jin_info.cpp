#include "tables/zi_jin_info.h"

#include "base/number_text.h"
#include "tables/trade_requests.h"
#include "ticket/field_map.h"

namespace
{

using panelry::FieldOf;
using panelry::tables::kStockConnectType;
using panelry::tables::Put;
using panelry::ticket::IsOne;

constexpr int kFundsType = 5;
constexpr char kStored[] = "zijin_data_proc";
constexpr char kProfit[] = "zyk";
constexpr char kProfitColumn[] = "2147";
constexpr char kMarketValue[] = "gpsz";
constexpr const char* kHeadKeys[] = {"account", "zcc", "zjye", "djye", "cqye", "sjye", "options", "kyye"};

void CopyFunds(const StringMap& head, const StringMap& body, StringMap& fields)
{
    for (const char* const key : kHeadKeys) {
        fields[key] = FieldOf(head, key);
    }
    fields[kMarketValue] = FieldOf(body, kMarketValue);
}

double SumOfProfits(const HostTable& table)
{
    const int column = table.FindColumn(kProfitColumn);
    double sum = 0;
    for (int row = 0; column >= 0 && row < table.RowCount(); ++row) {
        sum += panelry::TextToDouble(table.CellText(row, column));
    }
    return sum;
}

std::shared_ptr<StringMap> StoredMap(TradeObserver& tradeSide)
{
    std::shared_ptr<StringMap> stored = tradeSide.GetStringMap(kStored);
    return stored ? stored : std::make_shared<StringMap>();
}

}  // namespace

void ZiJinInfo::QueryFunds(StringMap& parameters)
{
    const std::shared_ptr<TradeObserver> tradeSide = m_tradeSide.lock();
    if (!tradeSide) {
        return;
    }
    const auto request = std::make_shared<ddsdk::TradeRequestParam>();
    Put(request->head, {{{"type", "5"}, {"pub_4_int", "555"}, {"refresh", "1"}, {"cachedata", "1"}}});
    request->body["dd_local_name"] = "query_zijin";
    panelry::tables::PutAccount(*tradeSide, "account", *request);
    if (IsOne(parameters, "ggt")) {  // the other keys stay
        request->head["type"] = kStockConnectType;
        request->body["cmd"] = "ggt_query_zijin";
        request->local["table_name"] = "ggt_zijin_data";
    }
    tradeSide->SendTradeRequest(request);
}

void ZiJinInfo::OnFundsAnswer(std::shared_ptr<StockInfoAnswer> answer, StringMap& scratch)
{
    if (!answer || !answer->request || !answer->reply ||
        panelry::TextToInt(FieldOf(answer->request->head, "type")) != kFundsType) {
        return;
    }
    CopyFunds(answer->reply->head, answer->reply->body, scratch);
    Publish(scratch);
}

void ZiJinInfo::OnFundsFields(std::shared_ptr<StringMap> fields)
{
    if (!fields) {
        return;
    }
    StringMap copied;
    CopyFunds(*fields, *fields, copied);
    Publish(copied);
}

// The contents are replaced, not merged: only the profit survives.
void ZiJinInfo::Publish(StringMap& fields)
{
    const std::shared_ptr<TradeObserver> tradeSide = m_tradeSide.lock();
    if (!tradeSide) {
        return;
    }
    const std::shared_ptr<StringMap> stored = StoredMap(*tradeSide);
    fields[kProfit] = FieldOf(*stored, kProfit);
    *stored = fields;
    tradeSide->SetStringMap(kStored, stored);
}

void ZiJinInfo::OnPositionsTable(std::shared_ptr<HostTable> table)
{
    if (!table) {
        return;
    }
    const std::string profit = panelry::FixedText(SumOfProfits(*table), panelry::kPlainDecimals);
    const std::shared_ptr<TradeObserver> tradeSide = m_tradeSide.lock();
    if (!tradeSide) {
        return;
    }
    const std::shared_ptr<StringMap> stored = StoredMap(*tradeSide);
    (*stored)[kProfit] = profit;
    tradeSide->SetStringMap(kStored, stored);
}
