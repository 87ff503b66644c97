// DataDealBase: one push of quotes into a ticket.

#include <array>

#include "ticket/data_deal_base.h"
#include "ticket/ordered_walk.h"
#include "ticket/ticket_keys.h"

namespace
{

using panelry::FieldOf;
using panelry::ticket::Key;
namespace key = panelry::ticket::key;

constexpr double kPercent = 100.0;

const std::string& kType = Key("type");
const std::string& kSnapshot = Key("nowdata");
const std::string& kChange = Key("pushdata");
const std::string& kRepeatedCode = Key("repeatcode_num");
const std::string& kOpeningPrice = Key("opening_price");

bool IsQuoteOfOneStock(const QuotePushRecord& push)
{
    const auto type = push.head.find(kType);
    // The repeated code's number may be anything, "0" too: that it is there counts.
    return type != push.head.end() && (type->second == kSnapshot || type->second == kChange) &&
           !push.head.contains(kRepeatedCode) && push.rows.size() == 1;
}

using Reader = panelry::ticket::OrderedWalk<const StringMap>;
using Writer = panelry::ticket::OrderedWalk<StringMap>;

// What the row lacks becomes empty: an old level must not stay beside new ones.
std::string& Copy(const std::string& name, Reader& from, Writer& to)
{
    std::string& value = to.Write(name);
    panelry::ticket::Overwrite(value, from.Read(name));
    return value;
}

// A level is price and amount; in a map the amounts and prices of one side stand together.
void CopySide(const std::array<std::string, 10>& names, Reader& from, Writer& to)
{
    for (const std::string& name : names) {
        Copy(name, from, to);
    }
}

// In percent, and up is positive. The answer of a request has a field of the same name with another meaning,
// on purpose; see stock_info.cpp.
void WriteChange(double latest, double close, Writer& to)
{
    if (close != 0.0) {
        panelry::AssignFixedText(to.Write(key::kRiseFallScale), (latest - close) / close * kPercent,
                                 panelry::kPlainDecimals);
    }
}

// All keys in rising order, as the walks want them.
void CopyQuote(const QuotePushRecord& push, StringMap& out)
{
    const StringMap& row = push.rows.front();
    // The market byte, then the code. A push without it leaves the ticket's own in place.
    const std::string& stock = FieldOf(row, key::kStockCode);
    Reader from(row);
    Writer to(out);
    Copy(key::kBenchmarkCode, from, to);
    CopySide(key::kBuySide, from, to);
    Copy(key::kQuoteTime, from, to);
    const double close = panelry::TextToDouble(Copy(key::kLastClosingPrice, from, to));
    const double latest = panelry::TextToDouble(Copy(key::kLatestPrice, from, to));
    Copy(key::kLimitDown, from, to);
    if (!stock.empty()) {
        panelry::AssignIntText(to.Write(key::kMarket), static_cast<unsigned char>(stock.front()));
    }
    to.Write(key::kOpen) = from.Read(kOpeningPrice);  // the one field that changes its key on the way
    Copy(key::kPriceDecimal, from, to);
    to.Write(key::kPushFlag) = FieldOf(push.head, key::kPushFlag);
    Copy(key::kRaisingLimit, from, to);
    WriteChange(latest, close, to);
    CopySide(key::kSellSide, from, to);
    Copy(key::kStockName, from, to);
    if (!stock.empty()) {
        to.Write(key::kStockCode).assign(stock, 1);
    }
}

}  // namespace

void DataDealBase::OnQuotePush(std::shared_ptr<QuotePushRecord> push, StringMap& out)
{
    if (!push || !IsQuoteOfOneStock(*push)) {
        return;
    }
    CopyQuote(*push, out);
    UpdateProtectedLimitFields(out);
}
