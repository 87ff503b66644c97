#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "services/trade_observer.h"

/// The shareholder accounts as the host publishes them: two tables and the range of market codes that belongs
/// to each kind of account.
namespace panelry::ticket
{

/// The ids of the columns that are searched. Some have a use here that their names don't tell.
namespace column
{
inline constexpr char kHolderAccount[] = "2106";
inline constexpr char kMarketNumber[] = "2108";
inline constexpr char kMarketCode[] = "2167";
inline constexpr char kCodeMasks[] = "2170";
inline constexpr char kMainAccount[] = "2176";
inline constexpr char kBoardMasks[] = "2212";  ///< STAR board, on a row of Shanghai
inline constexpr char kOrderTypes[] = "2213";
inline constexpr char kChiNextMasks[] = "2214";  ///< on a row of Shenzhen
inline constexpr char kBoardOrderTypes[] = "2306";
}  // namespace column

/// One column of one table. The table must outlive it.
class TableColumn
{
public:
    TableColumn(const HostTable& table, const char* id) : m_table(table), m_index(table.FindColumn(id)) {}

    bool Exists() const { return m_index >= 0; }

    /// Empty where the table has no such column.
    std::string_view Cell(int row) const
    {
        const char* const text = Exists() ? m_table.CellText(row, m_index) : nullptr;
        return text ? std::string_view(text) : std::string_view();
    }

private:
    const HostTable& m_table;
    int m_index;
};

/// The market codes from the first to the last of one kind of account, compared as bytes. Without a beginning
/// it admits everything from below, without an end the empty code alone.
struct MarketCodeRange {
    std::string begin;
    std::string end;

    bool Holds(std::string_view marketCode) const { return marketCode >= begin && marketCode <= end; }
};

using AccountTables = std::vector<std::shared_ptr<HostTable>>;

/// The ordinary account's table, then the margin account's; one that isn't published is left out.
AccountTables ReadAccountTables(TradeObserver& tradeSide);

/// What a search needs. Empty tables where the range or both tables are absent.
struct AccountSearch {
    MarketCodeRange range;
    AccountTables tables;
};
AccountSearch BeginAccountSearch(TradeObserver* tradeSide, int kind);

/// The class by which a row is sought: 18, 34 and 38 are their own, all others count by their family. Throws
/// what TextToUnsignedOrThrow() throws; so does RowMarket(), which doesn't reduce.
int MarketClass(const std::string& market);
int RowMarket(std::string_view market);

}  // namespace panelry::ticket
