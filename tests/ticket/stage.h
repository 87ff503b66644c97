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

/// A host table out of text: blanks part the lines, "|" the cells, and the first line names the columns.
inline std::shared_ptr<HostTable> TextTable(const QByteArray& text)
{
    FakeTable::Rows lines;
    for (const QByteArray& line : text.split(' ')) {
        std::vector<std::string>& cells = lines.emplace_back();
        for (const QByteArray& cell : line.split('|')) {
            cells.push_back(cell.toStdString());
        }
        cells.resize(lines[0].size());
    }
    return std::make_shared<FakeTable>("table", lines[0], FakeTable::Rows(lines.begin() + 1, lines.end()));
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

/// Keeps what is sent, and answers when the test wants it, on a thread of its own, as hosts do.
class LateTradeProvider : public FakeTradeProvider
{
public:
    int SendTradeRequest(std::shared_ptr<TradeObserver> subscriber,
                         std::shared_ptr<ddsdk::TradeRequestParam> request) override
    {
        m_subscriber = std::move(subscriber);
        m_sent.push_back(std::move(request));
        return 0;
    }
    void Answer(std::size_t request, const AnswerText& text)
    {
        const std::shared_ptr<StockInfoAnswer> answer = text.Make();
        answer->request = m_sent.at(request);
        std::thread([&] { m_subscriber->OnFundsPush(answer); }).join();
    }

    std::shared_ptr<TradeObserver> m_subscriber;
    std::vector<std::shared_ptr<ddsdk::TradeRequestParam>> m_sent;
};

/// Knows some stocks: corrects markets and gives decimals and matches.
class KnowingQuoteProvider : public FakeQuoteProvider
{
public:
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

    void PublishText(const std::string& name, const std::string& text)
    {
        m_trade.m_strings[name] = std::make_shared<std::string>(text);
    }
    /// The range of market codes, and the accounts' tables in the columns market code, market, account, masks,
    /// main account, STAR masks, order types, ChiNext masks, order types of the board; empty ones not at all.
    void PublishAccounts(const QByteArray& range, const QByteArray& ordinary, const QByteArray& margin = {})
    {
        const QByteArray columns = "2167|2108|2106|2170|2176|2212|2213|2214|2306 ";
        m_trade.m_maps["scdm_range"] = std::make_shared<StringMap>(Fields(range));
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
