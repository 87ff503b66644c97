#include "refresh/table_reader.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <utility>

#include "base/host_text.h"
#include "base/number_text.h"

namespace panelry::refresh
{

namespace
{

constexpr char kBuyInGb[] = "\xC2\xF2";
constexpr char kBuy[] = "买";
constexpr char kBuyTraditional[] = "買";  // where the code page has no other

bool IsMarginTable(const HostTable& table)
{
    return std::string_view(table.Name()).find("rzrq") != std::string_view::npos;
}

}  // namespace

// The texts of the usual code pages are compared as they come, byte by byte.
DirectionReader::DirectionReader() : m_rawBytes(HostTextToUtf8(kBuyInGb) == kBuy) {}

bool DirectionReader::IsBuy(std::string_view operation) const
{
    if (m_rawBytes) {
        return operation.find(kBuyInGb) != std::string_view::npos;
    }
    const std::string text = HostTextToUtf8(operation);
    return text.find(kBuy) != std::string::npos || text.find(kBuyTraditional) != std::string::npos;
}

struct TableReader::Columns {
    explicit Columns(const HostTable& table)
        : code(table.FindColumn("2102")),
          operation(table.FindColumn("2109")),
          price(table.FindColumn("2127")),
          contract(table.FindColumn("2135")),
          market(table.FindColumn("32009"))
    {
    }

    bool Complete() const
    {
        return code >= 0 && operation >= 0 && price >= 0 && contract >= 0 && market >= 0;
    }

    int code;
    int operation;
    int price;
    int contract;
    int market;
};

struct TableReader::Row {
    std::string_view Cell(int column) const { return table.CellText(number, column); }

    const HostTable& table;
    const Columns& columns;
    bool margin;
    int number;
};

void TableReader::Read(const HostTable& table, QuoteObserver& quoteSide)
{
    const Columns columns(table);
    if (!columns.Complete()) {
        return;  // the orders stay as they were
    }
    const bool margin = IsMarginTable(table);
    m_state.openOrders.Clear();  // those of the other account too: the last table decides
    const int rows = table.RowCount();
    for (int number = 0; number < rows; ++number) {
        if (m_state.stopped) {
            return;
        }
        ReadRow({table, columns, margin, number}, quoteSide);
    }
    UpdateWatchedCodes(m_state.openOrders.Stocks(), quoteSide);
}

void TableReader::ReadRow(const Row& row, QuoteObserver& quoteSide)
{
    m_state.Account(row.margin).pending.Erase(row.Cell(row.columns.contract));
    m_oneStock.resize(1);  // the last answer may have emptied it
    MarketCode& stock = m_oneStock.front();
    stock.market = static_cast<std::uint8_t>(TextToInt(row.Cell(row.columns.market)));
    stock.code = row.Cell(row.columns.code);
    OrderWatch watch;
    watch.key = MarketCodeKey(stock);
    // The host's own market, where it knows the stock, becomes the first byte of the key.
    if (quoteSide.ResolveCodeMarkets(m_oneStock) == 0 && !m_oneStock.empty()) {
        watch.key.front() = static_cast<char>(m_oneStock.front().market);
    }
    watch.direction = m_directions.IsBuy(row.Cell(row.columns.operation)) ? 'B' : 'S';
    m_price = row.Cell(row.columns.price);
    watch.price = static_cast<float>(TextToDouble(m_price));
    watch.isMargin = row.margin;
    m_state.openOrders.Add(std::move(watch), m_price);
}

void TableReader::UpdateWatchedCodes(std::vector<std::string> keys, QuoteObserver& quoteSide)
{
    const auto without = [](const std::vector<std::string>& these, const std::vector<std::string>& those) {
        std::vector<std::string> rest;
        std::set_difference(these.begin(), these.end(), those.begin(), those.end(), std::back_inserter(rest));
        return rest;
    };
    Subscribe(without(keys, m_watchedCodes), true, quoteSide);
    Subscribe(without(m_watchedCodes, keys), false, quoteSide);
    m_watchedCodes = std::move(keys);
}

void TableReader::Subscribe(const std::vector<std::string>& keys, bool on, QuoteObserver& quoteSide)
{
    std::vector<MarketCode> stocks;
    stocks.reserve(keys.size());
    for (const std::string& key : keys) {
        stocks.push_back({static_cast<std::uint8_t>(key.front()), key.substr(1)});
    }
    if (!m_state.stopped && !stocks.empty()) {
        quoteSide.SubscribeCodes(stocks, on);
    }
}

}  // namespace panelry::refresh
