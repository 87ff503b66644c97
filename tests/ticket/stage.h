#pragma once

#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "observers/fake_providers.h"
#include "tables/fake_account.h"
#include "ticket/data_deal_base.h"
#include "ticket/fields.h"

namespace panelry::test
{

/// A host table out of text, see FakeTable::LinesOf().
inline std::shared_ptr<HostTable> TextTable(const QByteArray& text, const std::string& name = "table")
{
    return std::make_shared<FakeTable>(name, FakeTable::LinesOf(text));
}

/// An answer of the three maps of request and reply.
struct AnswerText {
    QByteArray requestBody, requestLocal, head, body, local;

    std::shared_ptr<StockInfoAnswer> Make() const
    {
        using ddsdk::TradeRequestParam;
        auto answer = std::make_shared<StockInfoAnswer>();
        answer->request = std::make_shared<TradeRequestParam>(
            TradeRequestParam{{{"type", "1025"}}, Fields(requestBody), Fields(requestLocal)});
        answer->reply =
            std::make_shared<TradeRequestParam>(TradeRequestParam{Fields(head), Fields(body), Fields(local)});
        return answer;
    }
};

/// Answers when the test wants it, on a thread of its own, as hosts do.
class LateTradeProvider : public FakeTradeProvider
{
public:
    int SendTradeRequest(std::shared_ptr<TradeObserver> subscriber,
                         std::shared_ptr<ddsdk::TradeRequestParam> request) override
    {
        m_subscriber = subscriber;
        return FakeTradeProvider::SendTradeRequest(std::move(subscriber), std::move(request));
    }
    void Answer(std::size_t request, const AnswerText& text)
    {
        const std::shared_ptr<StockInfoAnswer> answer = text.Make();
        answer->request = m_sent.at(request);
        std::thread([&] { m_subscriber->OnFundsPush(answer); }).join();
    }

    std::shared_ptr<TradeObserver> m_subscriber;
};

/// Knows some stocks: corrects markets and gives decimals and matches. Pushes come on a thread of their own.
class KnowingQuoteProvider : public FakeQuoteProvider
{
public:
    int SubscribeCodes(std::vector<MarketCode>& codes, bool on,
                       std::shared_ptr<QuoteObserver> subscriber) override
    {
        m_subscriber = std::move(subscriber);
        m_subscriptions += Words(codes) + (on ? " on" : " off");
        return 0;
    }
    int QueryQuoteFields(int mask, StringMap& key, std::shared_ptr<StringMap>& fields) override
    {
        fields = m_fields;
        return Record("QueryQuoteFields " + std::to_string(mask) + ' ' + key["market"] + ' ' +
                      key["stockcode"]);
    }
    int ResolveCodeMarkets(std::vector<MarketCode>& codes) override
    {
        Record("ResolveCodeMarkets" + Words(codes));
        codes.front().market = m_market;
        return m_resolved;
    }
    int ListCodeMatches(std::vector<MarketCode>& codes, std::vector<std::vector<std::string>>& rows) override
    {
        rows = m_matches;
        return Record("ListCodeMatches" + Words(codes));
    }
    /// A row's "stockcode" begins with a raw market byte.
    void Push(const QByteArray& row)
    {
        auto push = std::make_shared<QuotePushRecord>();
        push->head = Fields("type=pushdata pushflag=1");
        push->rows = {Fields(row)};
        std::thread([&] { m_subscriber->OnQuotePush(push); }).join();
    }

    std::shared_ptr<QuoteObserver> m_subscriber;
    std::string m_subscriptions;
    std::shared_ptr<StringMap> m_fields;
    std::uint8_t m_market = 0;
    int m_resolved = -1;
    std::vector<std::vector<std::string>> m_matches;
};

/// The rules between two fake sides.
class TicketStage
{
public:
    TicketStage()
    {
        m_sides->QuoteObserver::SetProvider(&m_quote);
        m_sides->TradeObserver::SetProvider(&m_trade);
        m_rules.SetObservers(m_sides, m_sides);
    }

    void PublishText(const std::string& name, const std::string& text) { m_trade.m_strings[name] = text; }
    /// The range of market codes, and the accounts' tables in the columns market code, market, account, masks,
    /// main account, STAR masks, order types, ChiNext masks, order types of the board; empty ones not at all.
    void PublishAccounts(const QByteArray& range, const QByteArray& ordinary, const QByteArray& margin = {})
    {
        const QByteArray columns = "2167|2108|2106|2170|2176|2212|2213|2214|2306 ";
        m_trade.m_maps["scdm_range"] = Fields(range);
        for (const auto& [name, lines] :
             {std::pair("account_table", ordinary), std::pair("rzrq_account_table", margin)}) {
            if (!lines.isEmpty()) {
                m_trade.m_tables[name] = TextTable(lines.startsWith("2167") ? lines : columns + lines);
            }
        }
    }

    KnowingQuoteProvider m_quote;
    LateTradeProvider m_trade;
    std::shared_ptr<PairOfObservers> m_sides = std::make_shared<PairOfObservers>();
    DataDealBase m_rules;
};

}  // namespace panelry::test
