#include "market_day/client.h"

#include <chrono>

namespace panelry::test
{

namespace
{

constexpr std::chrono::milliseconds kInTime(500);

const char* FundingWord(desk::Funding funding)
{
    return funding == desk::Funding::Borrowed ? "rz" : funding == desk::Funding::PayBack ? "hk" : "";
}

}  // namespace

std::string Client::Order(const desk::OrderWish& wish, const desk::Security& security)
{
    auto request = std::make_shared<ddsdk::TradeRequestParam>();
    request->head["type"] = "3";
    request->body = {{"zqdm", security.code},
                     {"market", std::to_string(security.market)},
                     {"mmlb", wish.side == desk::Side::Buy ? "B" : "S"},
                     {"wtjg", desk::PriceText(wish.price, 3)},
                     {"wtsl", std::to_string(wish.quantity)},
                     {"rzrq", wish.account == desk::AccountKind::Margin ? "1" : "0"},
                     {"rzfs", FundingWord(wish.funding)}};
    const StringMap answer = Ask(request);
    return FieldOf(answer, "ret") == "0" ? FieldOf(answer, "htbh") : std::string();
}

void Client::Cancel(const std::string& contract, bool margin)
{
    auto request = std::make_shared<ddsdk::TradeRequestParam>();
    StringMap row{{"htbh", contract}, {"rzrq", margin ? "1" : "0"}};
    m_tables.FillCancelRequest(request, row);
    Ask(request);
}

void Client::AskForAll()
{
    const std::weak_ptr<TradeObserver> self = shared_from_this();
    m_tables.SetObservers({}, self);
    m_funds.SetObservers({}, self);
    m_marginFunds.SetObservers({}, self);
    for (const std::string prefix : {"", "rzrq_"}) {
        StringMap wanted{{"rzrq", prefix.empty() ? "0" : "1"}};
        const auto ask = [&](const char* table, auto query) {
            wanted["table_name"] = prefix + table;
            (m_tables.*query)(wanted);
        };
        ask("chedan_table", &TableFormInfo::QueryCancelableOrders);
        ask("gupiao_table", &TableFormInfo::QueryPositions);
        ask("chengjiao_table", &TableFormInfo::QueryDeals);
        ask("weituo_table", &TableFormInfo::QueryOrders);
    }
    StringMap none;
    m_funds.QueryFunds(none);
    m_marginFunds.QueryFunds(none);
}

void Client::OnFundsPush(std::shared_ptr<StockInfoAnswer> answer)
{
    StringMap scratch;
    m_funds.OnFundsAnswer(answer, scratch);
    StringMap marginScratch;
    m_marginFunds.OnFundsAnswer(answer, marginScratch);
    {
        const std::lock_guard guard(m_lock);
        m_answers[FieldOf(answer->request->local, "number")] = answer->reply->body;
    }
    m_changed.notify_all();
}

StringMap Client::Ask(const std::shared_ptr<ddsdk::TradeRequestParam>& request)
{
    const std::string number = std::to_string(++m_number);
    request->local["number"] = number;
    if (SendTradeRequest(request) != 0) {
        return {};
    }
    std::unique_lock lock(m_lock);
    m_changed.wait_for(lock, kInTime, [&] { return m_answers.count(number) > 0; });
    return m_answers[number];
}

}  // namespace panelry::test
