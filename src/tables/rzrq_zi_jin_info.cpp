#include "tables/rzrq_zi_jin_info.h"

#include <map>
#include <string>

#include "base/number_text.h"
#include "tables/trade_requests.h"
#include "ticket/field_map.h"

namespace
{

using panelry::FieldOf;
using panelry::tables::Put;

constexpr int kMarginType = 2314;
constexpr char kCommand[] = "rzrq_cxzj";
constexpr char kStoredPrefix[] = "zijin_data_rzrq_";
constexpr char kCurrencyColumn[] = "2172";

struct FundsColumn {
    const char* key;
    const char* column;
};
constexpr FundsColumn kFundsColumns[] = {{"zjye", "2971"}, {"kyye", "2116"},  {"sjye", "2114"},
                                         {"gpsz", "2973"}, {"zcc", "2191"},   {"account", "2908"},
                                         {"djye", "2113"}, {"rzkyed", "3857"}};

using ColumnIndex = std::map<std::string, int>;

// Of columns with one id the last counts.
ColumnIndex IndexColumns(const HostAnswerTable& table)
{
    ColumnIndex index;
    for (int column = 0; column < table.ColumnCount(); ++column) {
        std::shared_ptr<StringMap> record;
        table.ColumnInfo(column, record);
        const auto id = record ? record->find("id") : StringMap::iterator();
        if (record && id != record->end()) {
            index[id->second] = column;
        }
    }
    return index;
}

// A column that isn't there reads as the first one, a table without any as empty.
std::string Cell(const HostAnswerTable& table, int row, const ColumnIndex& index, const char* id)
{
    const auto column = index.find(id);
    std::shared_ptr<std::string> text;
    if (table.ColumnCount() > 0) {
        table.CellValue(row, column == index.end() ? 0 : column->second, text);
    }
    return text ? *text : std::string();
}

bool AnswersOurQuery(const StockInfoAnswer& answer)
{
    return answer.request && answer.reply &&
           panelry::TextToInt(FieldOf(answer.request->head, "type")) == kMarginType &&
           FieldOf(answer.reply->body, "cmd") == kCommand;
}

}  // namespace

void RzrqZiJinInfo::QueryFunds(StringMap& /*parameters*/)
{
    const std::shared_ptr<TradeObserver> tradeSide = m_tradeSide.lock();
    if (!tradeSide) {
        return;
    }
    const auto request = std::make_shared<ddsdk::TradeRequestParam>();
    request->head["type"] = panelry::tables::kMarginType;
    Put(request->body, {{{"cmd", kCommand}, {"dataid", "rzrq_zijin"}, {"rzrq", "1"}}});
    panelry::tables::PutAccount(*tradeSide, "rzrq_account", *request);
    tradeSide->SendTradeRequest(request);
}

void RzrqZiJinInfo::OnFundsAnswer(std::shared_ptr<StockInfoAnswer> answer, StringMap& scratch)
{
    if (!answer || !AnswersOurQuery(*answer) || !answer->table) {
        return;
    }
    const HostAnswerTable& table = *answer->table;
    const ColumnIndex index = IndexColumns(table);
    for (int row = 0; row < table.RowCount(); ++row) {
        const std::string currency = Cell(table, row, index, kCurrencyColumn);
        for (const FundsColumn& funds : kFundsColumns) {
            scratch[funds.key] = Cell(table, row, index, funds.column);
        }
        if (const std::shared_ptr<TradeObserver> tradeSide = m_tradeSide.lock()) {
            tradeSide->SetStringMap(kStoredPrefix + currency, std::make_shared<StringMap>(scratch));
        }
    }
}
