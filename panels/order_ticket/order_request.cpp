#include "order_ticket/order_request.h"

#include <algorithm>
#include <cstdint>
#include <limits>

#include "base/number_text.h"
#include "order_ticket/ticket_face.h"
#include "services/records.h"

namespace panelry
{

namespace
{

constexpr char kOrderRequest[] = "3";

// What a field lets through but no reader of plain decimals: "10." and ".5".
std::string PlainPrice(std::string price)
{
    if (!price.empty() && price.back() == '.') {
        price.pop_back();
    }
    return !price.empty() && price.front() == '.' ? '0' + price : price;
}

void AddAccount(const OrderEntry& entry, StringMap& body)
{
    if (entry.account == OrderAccount::Margin) {
        body["rzrq"] = "1";
        body["rzfs"] = !entry.onCredit ? "" : entry.side == "B" ? "rz" : "hk";
    } else if (entry.account == OrderAccount::Connect) {
        body["ggt"] = "1";
    }
}

}  // namespace

OrderAccount AccountFor(const std::string& market, OrderAccount chosen)
{
    if (IsConnectMarket(market)) {
        return OrderAccount::Connect;
    }
    return chosen == OrderAccount::Connect ? OrderAccount::Ordinary : chosen;
}

std::string InPieces(const std::string& quantity, const StringMap& ticket)
{
    const std::int64_t unit = PiecesPerUnit(ticket);
    const std::int64_t most = std::numeric_limits<std::int64_t>::max() / unit;
    return IntText(std::min(TextToInt64(quantity), most) * unit);
}

ddsdk::TradeRequestParam OrderRequest(const StringMap& ticket, const OrderEntry& entry,
                                      const std::string& fundsAccount)
{
    ddsdk::TradeRequestParam order;
    order.head["type"] = kOrderRequest;
    order.body = {{"zqdm", FieldOf(ticket, "stockcode")},
                  {"market", FieldOf(ticket, "market")},
                  {"mmlb", entry.side},
                  {"wtjg", PlainPrice(entry.price)},
                  {"wtsl", InPieces(entry.quantity, ticket)}};
    if (!fundsAccount.empty()) {
        order.body["zjzh"] = fundsAccount;
    }
    for (const char* resolved : {"gdzh", "scdm"}) {
        if (!FieldOf(ticket, resolved).empty()) {
            order.body[resolved] = FieldOf(ticket, resolved);
        }
    }
    AddAccount(entry, order.body);
    return order;
}

QString OrderWords(const ddsdk::TradeRequestParam& order)
{
    const auto text = [&order](const char* key) { return QString::fromStdString(FieldOf(order.body, key)); };
    return QStringLiteral("%1 %2，%3 × %4")
        .arg(text("mmlb") == QLatin1String("B") ? QStringLiteral("买入") : QStringLiteral("卖出"),
             text("zqdm"), text("wtjg"), text("wtsl"));
}

OrderOutcome ReadOutcome(const ddsdk::TradeRequestParam& reply)
{
    const std::string& result = FieldOf(reply.body, "ret");
    const QString contract = QString::fromStdString(FieldOf(reply.body, "htbh"));
    const QString reason = QString::fromStdString(FieldOf(reply.body, "ret_text")).trimmed();
    if (result == "0") {
        return {true, QStringLiteral("委托已提交，合同号 %1").arg(contract)};
    }
    if (result.empty()) {
        return {false, QStringLiteral("柜台的答复不完整，请查询委托")};
    }
    const QString refused =
        QStringLiteral("委托被拒绝：") + (reason.isEmpty() ? QStringLiteral("柜台没有说明原因") : reason);
    return {false, contract.isEmpty() ? refused : refused + QStringLiteral("（合同号 %1）").arg(contract)};
}

}  // namespace panelry
