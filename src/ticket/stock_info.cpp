// DataDealBase: what a ticket learns of a stock. Later steps overwrite what earlier ones wrote; the order is
// the rule.

#include <algorithm>
#include <array>

#include "base/host_text.h"
#include "ticket/data_deal_base.h"
#include "ticket/ordered_walk.h"
#include "ticket/ticket_keys.h"

namespace
{

using panelry::FieldOf;
using panelry::TextToDouble;
using panelry::ticket::IsOne;
using panelry::ticket::Key;
namespace key = panelry::ticket::key;

constexpr int kPriceDecimalMask = 4;    // of QueryQuoteFields
constexpr int kUsableFromQuoteBit = 4;  // of "options"
constexpr int kStandardDecimals = 2;
constexpr int kFundDecimals = 3;
constexpr int kOrdinaryAccount = 0;
constexpr int kMarginAccount = 1;

const std::string& kCode = Key("zqdm");
const std::string& kCodeType = Key("codetype");
const std::string& kAskedMarket = Key("local_market");
const std::string& kHostName = Key("zqmc");
const std::string& kHostUsable = Key("wtsl");
const std::string& kQuoteUsable = Key("canbuy");
const std::string& kKindOfTransfer = Key("zrlx");
const std::string& kTzmCode = Key("is_bjscode");
const std::string& kNoBound = Key("-1");

const std::string& kNewPrice = Key("newprice");
const std::string& kUpperLimit = Key("ztprice");
const std::string& kLowerLimit = Key("dtprice");
const std::string& kPreviousClose = Key("prevclose");
const std::string& kTime = Key("hqtime");

using Reader = panelry::ticket::OrderedWalk<const StringMap>;
using Writer = panelry::ticket::OrderedWalk<StringMap>;

// The market that the ticket asked with wins over the one that the host answers with.
const std::string& MarketOf(const StockInfoAnswer& answer)
{
    const std::string& asked = FieldOf(answer.request->local, kAskedMarket);
    return asked.empty() || asked == "0" ? FieldOf(answer.reply->head, kCodeType) : asked;
}

void CopySide(const std::array<std::string, 10>& names, const StringMap& head, Writer& to)
{
    Reader from(head);
    for (const std::string& name : names) {
        to.Write(name) = from.Read(name);
    }
}

// Close minus latest, not divided: a rising stock shows a negative number. The field of the same name that a
// quote push writes is a percentage of the opposite sign. Both are deliberate.
void WriteDifference(const std::string& latest, const std::string& close, Writer& to)
{
    if (!latest.empty() && !close.empty()) {
        panelry::AssignFixedText(to.Write(key::kRiseFallScale), TextToDouble(close) - TextToDouble(latest),
                                 panelry::kPlainDecimals);
    }
}

// Written only where one of the two sources says something; the quote's goes before, an empty one too.
void WriteUsableAmount(const ddsdk::TradeRequestParam& reply, const std::string& options, Writer& to)
{
    const std::string& usable = FieldOf(reply.body, kHostUsable);
    if (panelry::TextToInt64(options) & kUsableFromQuoteBit) {
        to.Write(key::kUsableAmount) = FieldOf(reply.head, kQuoteUsable);
    } else if (!usable.empty()) {
        to.Write(key::kUsableAmount) = usable == kNoBound ? panelry::ticket::kZero : usable;
    }
}

// What the answer says by itself. In the order of the keys, as the walk wants them; no two steps write the same.
void WriteAnswer(const StockInfoAnswer& answer, StringMap& out)
{
    const StringMap& head = answer.reply->head;
    const StringMap& local = answer.reply->local;
    const std::string& options = FieldOf(head, key::kOptions);
    Writer to(out);
    to.Write(key::kAmountMax) = kNoBound;
    to.Write(key::kAmountMin) = kNoBound;
    to.Write(key::kAmountStep) = "100";
    CopySide(key::kBuySide, head, to);
    to.Write(key::kBusinessKind) = FieldOf(answer.request->body, key::kBusinessKind);
    to.Write(key::kQuoteTime) = FieldOf(head, kTime);
    const std::string& close = to.Write(key::kLastClosingPrice) = FieldOf(head, kPreviousClose);
    const std::string& latest = to.Write(key::kLatestPrice) = FieldOf(head, kNewPrice);
    to.Write(key::kLimitDown) = FieldOf(head, kLowerLimit);
    to.Write(key::kMarket) = MarketOf(answer);
    to.Write(key::kOpen) = FieldOf(local, key::kOpen);
    to.Write(key::kOptions) = options;
    to.Write(key::kRaisingLimit) = FieldOf(head, kUpperLimit);
    WriteDifference(latest, close, to);
    CopySide(key::kSellSide, head, to);
    to.Write(key::kStockName) = panelry::HostTextToUtf8(FieldOf(local, kHostName));
    to.Write(key::kStockCode) = FieldOf(local, kCode);
    WriteUsableAmount(*answer.reply, options, to);
}

void AskDecimals(QuoteObserver& quoteSide, const std::string& market, const std::string& code, StringMap& out)
{
    StringMap stock;
    stock[key::kMarket] = market;
    stock[key::kStockCode] = code;
    std::shared_ptr<StringMap> fields;
    quoteSide.QueryQuoteFields(kPriceDecimalMask, stock, fields);
    if (fields) {
        out[key::kPriceDecimal] = FieldOf(*fields, key::kPriceDecimal);
    }
}

void WritePriceStep(bool threeDecimals, StringMap& out)
{
    std::string& decimalsText = out[key::kPriceDecimal];
    int decimals = std::min(panelry::TextToInt(decimalsText), panelry::kMostDecimals);
    if (decimals <= 0) {
        decimals = kStandardDecimals;
    }
    if (threeDecimals) {
        decimals = kFundDecimals;  // whatever the quote side says
    }
    panelry::AssignIntText(decimalsText, decimals);
    std::string& step = out[key::kPriceStep];
    step = "0.";
    step.append(static_cast<std::size_t>(decimals - 1), '0') += '1';
}

void WriteBoardBounds(StringMap& out)
{
    if (IsOne(out, key::kStar)) {
        out[key::kAmountStep] = "1";
        out[key::kAmountMin] = "200";
        out[key::kAmountMax] = "100000";
    } else {
        out[key::kAmountMax] = IsOne(out, key::kChiNext) ? "300000" : "1000000";
    }
}

struct Copy {
    const std::string& from;
    const std::string& to;
};

void CopyUnlessEmpty(const StringMap& from, const Copy& copy, StringMap& out)
{
    const std::string& value = FieldOf(from, copy.from);
    if (!value.empty()) {
        out[copy.to] = value;
    }
}

// The host's own bounds beat every rule above; the decimals don't follow its step.
void WriteHostBounds(const StringMap& body, StringMap& out)
{
    static const std::string& amountStep = Key("slbc");
    static const std::string& amountMost = Key("slsx");
    static const std::string& amountLeast = Key("slxx");
    static const std::string& priceStep = Key("jgbc");
    for (const Copy& copy : {Copy{amountStep, key::kAmountStep}, Copy{amountMost, key::kAmountMax},
                             Copy{amountLeast, key::kAmountMin}, Copy{priceStep, key::kPriceStep}}) {
        CopyUnlessEmpty(body, copy, out);
    }
}

}  // namespace

void DataDealBase::OnStockInfo(std::shared_ptr<StockInfoAnswer> answer, StringMap& out)
{
    out[key::kPushFlag] = "0";
    if (ResolveDuplicateCodes(answer, out) || !answer || !answer->request || !answer->reply) {
        return;
    }
    const ddsdk::TradeRequestParam& reply = *answer->reply;
    // The answer's own market, also where the ticket keeps the one that it asked with.
    const std::string codeType = FieldOf(reply.head, kCodeType);
    const std::string code = FieldOf(reply.local, kCode);
    WriteAnswer(*answer, out);
    if (const std::shared_ptr<QuoteObserver> quoteSide = m_quoteSide.lock()) {
        AskDecimals(*quoteSide, codeType, code, out);
    }
    WritePriceStep(IsThreeDecimalCode(code, codeType), out);

    ResolveAccountFields(IsOne(answer->request->body, key::kMargin) ? kMarginAccount : kOrdinaryAccount, out);
    WriteBoardBounds(out);
    WriteHostBounds(reply.body, out);
    const std::string& options = FieldOf(reply.head, key::kOptions);
    ResolveAmountUnit(codeType, code, options, out[key::kAmountUnit], out[key::kVolumeUnit]);
    ResolveHandSize(options, out[key::kHand]);
    CopyUnlessEmpty(reply.local, {kKindOfTransfer, kKindOfTransfer}, out);

    UpdateProtectedLimitFields(out);
    if (IsBhjgMarket(out)) {
        out[key::kSupportsProtectedMarketOrder] = "1";
    }
    if (IsTzmCode(code) && FieldOf(out, kKindOfTransfer) == "B") {
        out[key::kSupportsProtectedMarketOrder] = "1";
        out[kTzmCode] = "1";
    }
    CopyUnlessEmpty(answer->request->local, {key::kUsableOnly, key::kUsableOnly}, out);
}
