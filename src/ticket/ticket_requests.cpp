// DataDealBase: what a ticket asks of the host, and what it tells it.

#include <utility>

#include "ticket/data_deal_base.h"
#include "ticket/ticket_keys.h"

namespace
{

using ddsdk::TradeRequestParam;
namespace key = panelry::ticket::key;

constexpr int kStockInfoRequest = 1025;
constexpr int kConfigChangeRequest = 2304;
constexpr char kStockInfoFunction[] = "33";
constexpr int kBareFamilyCode = 10;  // joins the number of a bare exchange family on the wire

// The market that the quote side knows the code by; the ticket's own where it knows none.
void CorrectMarket(StringMap& ticket, QuoteObserver& quoteSide)
{
    std::vector<MarketCode> stocks{
        {panelry::ticket::MarketByte(ticket[key::kMarket]), ticket[key::kStockCode]}};
    if (quoteSide.ResolveCodeMarkets(stocks) == 0 && !stocks.empty()) {
        ticket[key::kMarket] = panelry::IntText(stocks.front().market);
    }
}

// The whole number is compared here, not its low byte: "272" stays as it is.
std::string WireMarket(const std::string& market)
{
    const int number = panelry::TextToInt(market);
    const bool bareFamily =
        number == panelry::ticket::kShanghaiBit || number == panelry::ticket::kShenzhenBit;
    return bareFamily ? panelry::IntText(number | kBareFamilyCode) : market;
}

void CopyIfPresent(const StringMap& ticket, const std::string& name, StringMap& out)
{
    const auto found = ticket.find(name);
    if (found != ticket.end()) {
        out[name] = found->second;
    }
}

void FillHead(StringMap& ticket, StringMap& head)
{
    head["type"] = panelry::IntText(kStockInfoRequest);
    head["setcode"] = WireMarket(ticket[key::kMarket]);
    head["pub_3_str"] = ticket[key::kStockCode];
    const std::string& function = ticket["pub_4_int"];
    head["pub_4_int"] = function.empty() ? std::string(kStockInfoFunction) : function;
    head["tab_id"] = ticket["tab_id"];
    head["command"] = ticket["menuid"];
}

void FillHolderAccount(const StringMap& ticket, TradeRequestParam& request)
{
    const auto account = ticket.find(key::kHolderAccount);
    if (account != ticket.end()) {
        request.head["pub_5_str"] = account->second;
        request.body["gdzh"] = account->second;
    }
}

void FillBody(StringMap& ticket, TradeObserver& tradeSide, StringMap& body)
{
    body["zqdm"] = ticket[key::kStockCode];
    for (const char* name : {"type", "czlb", "menuid", "NotNotifyParent"}) {
        body[name] = ticket[name];
    }
    std::shared_ptr<std::string> account;
    tradeSide.GetString("account", account);
    if (account) {
        body["zjzh"] = *account;
    }
    const std::string& price = ticket[key::kPrice];
    if (!price.empty()) {
        body["wt_price"] = price;
        body["wtjg"] = price;
    }
    for (const char* name : {"rzrq", "wtjw", "wtjwname", "scdm"}) {
        CopyIfPresent(ticket, name, body);
    }
}

void FillLocal(StringMap& ticket, StringMap& local)
{
    for (const char* name : {"passive_flag", "local_request_type", "dd_wtsl"}) {
        CopyIfPresent(ticket, name, local);
    }
    if (ticket.contains("cangwei")) {
        local["local_cal_cangwei"] = "1";
        local["cangwei"] = ticket["cangwei"];
        local["price"] = ticket[key::kPrice];  // an empty one too, unlike in the body
    }
    CopyIfPresent(ticket, "multiplecode_transparent", local);
    local["local_market"] = ticket[key::kMarket];
    CopyIfPresent(ticket, key::kUsableOnly, local);
    CopyIfPresent(ticket, key::kMargin, local);  // a second time: it goes in the body too
}

}  // namespace

void DataDealBase::RequestStockInfo(StringMap& ticket)
{
    const std::shared_ptr<TradeObserver> tradeSide = m_tradeSide.lock();
    if (!tradeSide) {
        return;
    }
    if (!ticket[key::kMarket].empty() && !ticket[key::kStockCode].empty()) {
        if (const std::shared_ptr<QuoteObserver> quoteSide = m_quoteSide.lock()) {
            CorrectMarket(ticket, *quoteSide);
        }
    }
    auto request = std::make_shared<TradeRequestParam>();
    FillHead(ticket, request->head);
    FillHolderAccount(ticket, *request);
    FillBody(ticket, *tradeSide, request->body);
    FillLocal(ticket, request->local);
    tradeSide->SendTradeRequest(std::move(request));
}

void DataDealBase::RequestUsableAmount(StringMap& ticket)
{
    ticket[key::kUsableOnly] = "1";  // also without a trade side
    RequestStockInfo(ticket);
}

void DataDealBase::NotifyConfigChange(StringMap& fields)
{
    const std::shared_ptr<TradeObserver> tradeSide = m_tradeSide.lock();
    if (!tradeSide) {
        return;
    }
    auto request = std::make_shared<TradeRequestParam>();
    request->head["type"] = panelry::IntText(kConfigChangeRequest);
    request->body["cmd"] = "chg_peizhi_notify";
    request->body["topmost"] = "1";
    request->body["type"] = "sys_set";
    for (const char* name : {"notify_wtzz", "module"}) {
        request->body[name] = fields[name];
    }
    tradeSide->SendTradeRequest(std::move(request));
}
