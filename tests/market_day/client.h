#pragma once

#include <chrono>
#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "desk/accounts/account.h"
#include "desk/exchange/listing.h"
#include "services/trade_observer.h"
#include "tables/rzrq_zi_jin_info.h"
#include "tables/table_form_info.h"
#include "tables/zi_jin_info.h"

namespace panelry::test
{

/// A trading client beside the panels: sends orders and cancels and waits for their answers, and can ask for tables and
/// funds as the library does.
///
/// Threading: one thread but for the callback. Owned by a shared pointer.
class Client : public TradeObserver
{
public:
    /// The contract number of the order; empty for one that is refused or isn't answered in time.
    std::string Order(const desk::OrderWish& wish, const desk::Security& security)
    {
        auto request = std::make_shared<ddsdk::TradeRequestParam>();
        request->head["type"] = "3";
        request->body = {{"zqdm", security.code},
                         {"market", std::to_string(security.market)},
                         {"mmlb", wish.side == desk::Side::Buy ? "B" : "S"},
                         {"wtjg", desk::PriceText(wish.price, 3)},
                         {"wtsl", std::to_string(wish.quantity)},
                         {"rzrq", wish.account == desk::AccountKind::Margin ? "1" : "0"},
                         {"rzfs", wish.funding == desk::Funding::Borrowed  ? "rz"
                                  : wish.funding == desk::Funding::PayBack ? "hk"
                                                                           : ""}};
        const StringMap answer = Ask(request);
        return FieldOf(answer, "ret") == "0" ? FieldOf(answer, "htbh") : std::string();
    }

    void Cancel(const std::string& contract, bool margin)
    {
        auto request = std::make_shared<ddsdk::TradeRequestParam>();
        StringMap row{{"htbh", contract}, {"rzrq", margin ? "1" : "0"}};
        m_tables.FillCancelRequest(request, row);
        Ask(request);
    }

    /// Asks for all tables and the funds of both accounts.
    void AskForAll()
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

    void* ObserverSelf() override { return this; }
    void OnFundsPush(std::shared_ptr<StockInfoAnswer> answer) override
    {
        StringMap scratch;
        m_funds.OnFundsAnswer(answer, scratch);
        scratch.clear();
        m_marginFunds.OnFundsAnswer(answer, scratch);
        {
            const std::lock_guard guard(m_lock);
            m_answers[FieldOf(answer->request->local, "number")] = answer->reply->body;
        }
        m_changed.notify_all();
    }

private:
    StringMap Ask(const std::shared_ptr<ddsdk::TradeRequestParam>& request)
    {
        constexpr std::chrono::milliseconds kInTime(500);
        const std::string number = std::to_string(++m_number);
        request->local["number"] = number;
        if (SendTradeRequest(request) != 0) {
            return {};
        }
        std::unique_lock lock(m_lock);
        m_changed.wait_for(lock, kInTime, [&] { return m_answers.count(number) > 0; });
        return m_answers[number];
    }

    TableFormInfo m_tables;
    ZiJinInfo m_funds;
    RzrqZiJinInfo m_marginFunds;
    int m_number = 0;

    std::mutex m_lock;  // guards the answers
    std::condition_variable m_changed;
    std::map<std::string, StringMap> m_answers;  // bodies, by the number of the request
};

}  // namespace panelry::test
