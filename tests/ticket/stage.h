#pragma once

#include <QByteArray>
#include <memory>
#include <string>
#include <vector>

#include "observers/fake_providers.h"
#include "ticket/data_deal_base.h"
#include "ticket/fields.h"

namespace panelry::test
{

/// A host table out of text: the first line names the columns, "|" parts the cells.
class TextTable : public HostTable
{
public:
    explicit TextTable(const std::vector<QByteArray>& lines)
    {
        for (const QByteArray& line : lines) {
            std::vector<std::string> cells;
            for (const QByteArray& cell : line.split('|')) {
                cells.push_back(cell.toStdString());
            }
            cells.resize(m_lines.empty() ? cells.size() : m_lines[0].size());
            m_lines.push_back(cells);
        }
    }

    const char* Name() const override { return "table"; }
    int RowCount() const override { return static_cast<int>(m_lines.size()) - 1; }
    const char* CellText(int row, int column) const override
    {
        return m_lines.at(static_cast<std::size_t>(row) + 1).at(static_cast<std::size_t>(column)).c_str();
    }
    int FindColumn(const char* columnId) const override
    {
        for (std::size_t column = 0; column < m_lines[0].size(); ++column) {
            if (m_lines[0][column] == columnId) {
                return static_cast<int>(column);
            }
        }
        return -1;
    }

private:
    std::vector<std::vector<std::string>> m_lines;
};

/// Keeps what is sent.
class KeepingTradeProvider : public FakeTradeProvider
{
public:
    int SendTradeRequest(std::shared_ptr<TradeObserver> subscriber,
                         std::shared_ptr<ddsdk::TradeRequestParam> request) override
    {
        m_sent.push_back(request);
        return FakeTradeProvider::SendTradeRequest(std::move(subscriber), std::move(request));
    }

    std::vector<std::shared_ptr<ddsdk::TradeRequestParam>> m_sent;
};

/// Knows some stocks: corrects markets and gives decimals and matches.
class KnowingQuoteProvider : public FakeQuoteProvider
{
public:
    int QueryQuoteFields(int mask, StringMap& key, std::shared_ptr<StringMap>& fields) override
    {
        Record("QueryQuoteFields " + std::to_string(mask) + ' ' + key["market"] + ' ' + key["stockcode"]);
        fields = m_fields;
        return 0;
    }
    int ResolveCodeMarkets(std::vector<MarketCode>& codes) override
    {
        Record("ResolveCodeMarkets" + Words(codes));
        codes.front().market = m_market;
        return m_resolved;
    }
    int ListCodeMatches(std::vector<MarketCode>& codes, std::vector<std::vector<std::string>>& rows) override
    {
        Record("ListCodeMatches" + Words(codes));
        rows = m_matches;
        return 0;
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
    void PublishMap(const std::string& name, const QByteArray& words)
    {
        m_trade.m_maps[name] = std::make_shared<StringMap>(Fields(words));
    }
    void PublishTable(const std::string& name, const std::vector<QByteArray>& lines)
    {
        m_trade.m_tables[name] = std::make_shared<TextTable>(lines);
    }

    KnowingQuoteProvider m_quote;
    KeepingTradeProvider m_trade;
    std::shared_ptr<PairOfObservers> m_sides = std::make_shared<PairOfObservers>();
    DataDealBase m_rules;
};

/// An answer of the three maps of request and reply.
struct AnswerText {
    QByteArray requestBody, requestLocal, head, body, local;

    std::shared_ptr<StockInfoAnswer> Make() const
    {
        auto answer = std::make_shared<StockInfoAnswer>();
        answer->request = std::make_shared<ddsdk::TradeRequestParam>();
        answer->request->head["type"] = "1025";
        answer->request->body = Fields(requestBody);
        answer->request->local = Fields(requestLocal);
        answer->reply = std::make_shared<ddsdk::TradeRequestParam>(
            ddsdk::TradeRequestParam{Fields(head), Fields(body), Fields(local)});
        return answer;
    }
};

}  // namespace panelry::test
