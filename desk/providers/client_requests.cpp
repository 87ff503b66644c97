#include "desk/providers/client_requests.h"

#include <algorithm>
#include <iterator>

#include "desk/providers/host_words.h"
#include "desk/providers/stock_records.h"

namespace panelry::desk
{

namespace
{

// An empty "cmd" or "dataid" stands for any. The first one that fits is meant.
struct Known {
    const char* type = "";
    const char* command = "";
    const char* dataId = "";
    ClientRequest request;
};

constexpr AccountKind kMargin = AccountKind::Margin;
constexpr AccountKind kConnect = AccountKind::Connect;

constexpr Known kKnown[] = {
    {"1025", "", "", {Ask::StockInfo}},
    {"3", "", "", {Ask::Order}},
    {"4", "", "", {Ask::Cancel}},
    {"5", "", "", {Ask::Funds}},
    {"1537", "", "", {Ask::Holdings}},
    {"1538", "", "H", {Ask::Deals, AccountKind::Normal, true}},
    {"1538", "", "", {Ask::Deals}},
    {"1539", "", "ptwt_kcwt", {Ask::OpenOrders}},
    {"1539", "", "", {Ask::Orders}},
    {"2304", "chg_peizhi_notify", "", {Ask::Setting}},
    {"2314", "rzrq_cxgp", "", {Ask::Holdings, kMargin}},
    {"2314", "rzrq_cxcj", "rzrq_lishichengjiao", {Ask::Deals, kMargin, true}},
    {"2314", "rzrq_cxcj", "", {Ask::Deals, kMargin}},
    {"2314", "rzrq_cxwt", "rzrq_chedan", {Ask::OpenOrders, kMargin}},
    {"2314", "rzrq_cxwt", "", {Ask::Orders, kMargin}},
    {"2314", "rzrq_cxzj", "", {Ask::Funds, kMargin}},
    {"2314", "rzrq_cd", "", {Ask::Cancel, kMargin}},
    {"2317", "ggt_query_cican", "", {Ask::Holdings, kConnect}},
    {"2317", "ggt_query_chengjiao", "H", {Ask::Deals, kConnect, true}},
    {"2317", "ggt_query_chengjiao", "", {Ask::Deals, kConnect}},
    {"2317", "ggt_query_drwt", "", {Ask::Orders, kConnect}},
    {"2317", "ggt_query_kcwt", "", {Ask::OpenOrders, kConnect}},
    {"2317", "ggt_query_zijin", "", {Ask::Funds, kConnect}},
    {"2317", "ggt_cd", "", {Ask::Cancel, kConnect}},
};

constexpr char kNoSuchCode[] = "证券代码不存在";
constexpr char kNoSide[] = "买卖类别不明";
constexpr char kBadPrice[] = "委托价格不正确";
constexpr char kBadQuantity[] = "委托数量不正确";
constexpr char kWrongAccount[] = "资金账号不符";
constexpr char kWrongShareholder[] = "股东账户不存在";
constexpr char kBadFunding[] = "融资方式不明";

bool Fits(const char* wanted, const std::string& given)
{
    return *wanted == '\0' || given == wanted;
}

std::optional<Funding> ReadFunding(const std::string& text)
{
    if (text.empty()) {
        return Funding::Own;
    }
    if (text == "rz") {
        return Funding::Borrowed;
    }
    return text == "hk" ? std::optional(Funding::PayBack) : std::nullopt;
}

// Whichever it is: clients name the normal account also where "rzrq" or "ggt" mean another one.
bool IsFundsAccount(const Opening& opening, const std::string& number)
{
    return number == opening.normal.number || number == opening.margin.number ||
           number == opening.connect.number;
}

bool IsShareholder(const Opening& opening, const std::string& number)
{
    return std::any_of(opening.shareholders.begin(), opening.shareholders.end(),
                       [&](const Shareholder& one) { return one.number == number; });
}

}  // namespace

std::optional<ClientRequest> ReadRequest(const ddsdk::TradeRequestParam& request)
{
    const auto* const found = std::find_if(std::begin(kKnown), std::end(kKnown), [&](const Known& one) {
        return FieldOf(request.head, "type") == one.type && Fits(one.command, FieldOf(request.body, "cmd")) &&
               Fits(one.dataId, FieldOf(request.body, "dataid"));
    });
    return found == std::end(kKnown) ? std::nullopt : std::optional(found->request);
}

std::optional<std::pair<int, int>> ReadDays(const ddsdk::TradeRequestParam& request)
{
    const std::optional<int> first = DayOf(FieldOf(request.body, "qsrq"));
    const std::optional<int> last = DayOf(FieldOf(request.body, "jzrq"));
    return first && last ? std::optional(std::pair(*first, *last)) : std::nullopt;
}

WantedOrder ReadOrder(const ddsdk::TradeRequestParam& request, const Listing& listing, const Opening& opening)
{
    const StringMap& body = request.body;
    const auto security =
        SecurityMeant(listing, MarketNumber(FieldOf(body, "market")), FieldOf(body, "zqdm"));
    const std::string& side = FieldOf(body, "mmlb");
    const std::optional<Price> price = ReadPrice(FieldOf(body, "wtjg"));
    const std::optional<Quantity> quantity = ReadQuantity(FieldOf(body, "wtsl"));
    const std::optional<Funding> funding = ReadFunding(FieldOf(body, "rzfs"));
    const AccountKind account = FieldOf(body, "rzrq") == "1"  ? AccountKind::Margin
                                : FieldOf(body, "ggt") == "1" ? AccountKind::Connect
                                                              : AccountKind::Normal;
    const std::string& fundsAccount = FieldOf(body, "zjzh");
    const std::string& shareholder = FieldOf(body, "gdzh");
    if (!security) {
        return {{}, kNoSuchCode};
    }
    if (side != "B" && side != "S") {
        return {{}, kNoSide};
    }
    if (!price || *price <= 0) {
        return {{}, kBadPrice};
    }
    if (!quantity || *quantity <= 0) {
        return {{}, kBadQuantity};
    }
    if (!funding) {
        return {{}, kBadFunding};
    }
    if (!fundsAccount.empty() && !IsFundsAccount(opening, fundsAccount)) {
        return {{}, kWrongAccount};
    }
    if (!shareholder.empty() && !IsShareholder(opening, shareholder)) {
        return {{}, kWrongShareholder};
    }
    return {{account, *security, side == "B" ? Side::Buy : Side::Sell, *price, *quantity, *funding}, {}};
}

}  // namespace panelry::desk
