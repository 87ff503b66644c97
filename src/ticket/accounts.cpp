// DataDealBase: market code and shareholder account of a stock.

#include <utility>

#include "ticket/account_tables.h"
#include "ticket/data_deal_base.h"
#include "ticket/ticket_keys.h"

namespace
{

using panelry::ticket::AccountSearch;
using panelry::ticket::Flag;
using panelry::ticket::Key;
using panelry::ticket::MarketCodeRange;
using panelry::ticket::TableColumn;
namespace column = panelry::ticket::column;
namespace key = panelry::ticket::key;

const std::string& kDeclaredOrder = Key("sbwt");
const std::string& kMarketOrder = Key("sjwt");
const std::string& kPlainOrder = Key("ptwt");

constexpr int kMarginAuthority = 2;
constexpr char kOrdinarySentinel[] = ":";
constexpr char kOtherSentinel[] = "!:";

struct Account {
    std::string& marketCode;
    std::string& holder;
};

// Asks the virtual operation, with a text that is used again and again.
class MaskTest
{
public:
    MaskTest(DataDealBase& rules, std::string code) : m_rules(rules), m_code(std::move(code)) {}

    bool operator()(std::string_view masks)
    {
        m_masks = masks;
        return m_rules.MatchCodeMask(m_masks, m_code);
    }

private:
    DataDealBase& m_rules;
    const std::string m_code;
    std::string m_masks;
};

// Visits all rows: the last that fits wins.
void ResolveFromTable(const HostTable& table, const MarketCodeRange& range, MaskTest& fits, StringMap& ticket)
{
    const TableColumn market(table, column::kMarketNumber);
    const TableColumn marketCode(table, column::kMarketCode);
    const TableColumn masks(table, column::kCodeMasks);
    const TableColumn holder(table, column::kHolderAccount);
    const TableColumn boardMasks(table, column::kBoardMasks);
    const TableColumn chiNextMasks(table, column::kChiNextMasks);
    if (!market.Exists() || !boardMasks.Exists()) {
        return;
    }
    for (int row = 0, rows = table.RowCount(); row < rows; ++row) {
        if (!range.Holds(marketCode.Cell(row))) {
            continue;
        }
        if (market.Cell(row) == "16") {  // as text, so "016" is none
            ticket[key::kStar] = Flag(fits(boardMasks.Cell(row)));
        } else if (market.Cell(row) == "32") {
            ticket[key::kChiNext] = Flag(fits(chiNextMasks.Cell(row)));
        }
        if (fits(masks.Cell(row))) {
            ticket[key::kMarketCode] = marketCode.Cell(row);
            ticket[key::kHolderAccount] = holder.Cell(row);
        }
    }
}

// The first row, table by table, for which `isIt(columns..., row)` holds.
template <class IsIt>
bool FindRow(const AccountSearch& search, const char* testedColumn, IsIt isIt, Account out)
{
    for (const std::shared_ptr<HostTable>& table : search.tables) {
        const TableColumn marketCode(*table, column::kMarketCode);
        const TableColumn tested(*table, testedColumn);
        const TableColumn holder(*table, column::kHolderAccount);
        for (int row = 0, rows = table->RowCount(); row < rows; ++row) {
            if (isIt(marketCode.Cell(row), tested, row)) {
                out.marketCode = marketCode.Cell(row);
                out.holder = holder.Cell(row);
                return true;
            }
        }
    }
    return false;
}

bool FindByMarketCode(const AccountSearch& search, std::string_view wanted, Account out)
{
    const auto isIt = [&](std::string_view marketCode, const TableColumn&, int) {
        return marketCode == wanted;  // whatever the range
    };
    return FindRow(search, column::kMarketCode, isIt, out);
}

bool FindByMasks(const AccountSearch& search, MaskTest& fits, Account out)
{
    const auto isIt = [&](std::string_view marketCode, const TableColumn& masks, int row) {
        return search.range.Holds(marketCode) && fits(masks.Cell(row));
    };
    return FindRow(search, column::kCodeMasks, isIt, out);
}

bool FindByMarket(const AccountSearch& search, const std::string& market, Account out)
{
    const int wanted = panelry::ticket::MarketClass(market);
    const auto isIt = [&](std::string_view marketCode, const TableColumn& number, int row) {
        return search.range.Holds(marketCode) && panelry::ticket::RowMarket(number.Cell(row)) == wanted;
    };
    return FindRow(search, column::kMarketNumber, isIt, out);
}

// The types of the first row whose masks fit; false when none does.
bool TypesByMasks(const HostTable& table, const MarketCodeRange& range, MaskTest& fits, std::string& types)
{
    const TableColumn marketCode(table, column::kMarketCode);
    const TableColumn masks(table, column::kCodeMasks);
    const TableColumn orderTypes(table, column::kOrderTypes);
    for (int row = 0, rows = table.RowCount(); row < rows; ++row) {
        if (range.Holds(marketCode.Cell(row)) && fits(masks.Cell(row))) {
            types = orderTypes.Cell(row);
            return true;
        }
    }
    return false;
}

// The types of the last row of the market; a code of the row's board has types of its own.
void TypesByMarket(const HostTable& table, const MarketCodeRange& range, int wanted, MaskTest& fits,
                   std::string& types)
{
    const TableColumn marketCode(table, column::kMarketCode);
    const TableColumn market(table, column::kMarketNumber);
    const TableColumn boardMasks(table, column::kBoardMasks);
    const TableColumn orderTypes(table, column::kOrderTypes);
    const TableColumn boardTypes(table, column::kBoardOrderTypes);
    for (int row = 0, rows = table.RowCount(); row < rows; ++row) {
        if (range.Holds(marketCode.Cell(row)) && panelry::ticket::RowMarket(market.Cell(row)) == wanted) {
            types = fits(boardMasks.Cell(row)) ? boardTypes.Cell(row) : orderTypes.Cell(row);
        }
    }
}

}  // namespace

void DataDealBase::ResolveAccountFields(int kind, StringMap& ticket)
{
    const std::shared_ptr<TradeObserver> tradeSide = m_tradeSide.lock();
    const AccountSearch search = panelry::ticket::BeginAccountSearch(tradeSide.get(), kind);
    MaskTest fits(*this, panelry::FieldOf(ticket, key::kStockCode));
    for (const std::shared_ptr<HostTable>& table : search.tables) {
        ResolveFromTable(*table, search.range, fits, ticket);
    }
}

void DataDealBase::SelectWeituoKind(const std::string& scdm, const std::string& marketOrderType,
                                    std::string& out)
{
    if (!marketOrderType.empty() && marketOrderType != " ") {
        out = kMarketOrder;
    } else if (scdm == "6" || scdm == "7" || scdm == ":") {
        out = kDeclaredOrder;
    } else {
        out = kPlainOrder;
    }
}

void DataDealBase::FindAccountForCode(int kind, const std::string& market, const std::string& code,
                                      std::string& outScdm, std::string& outAccount, bool exactFirst)
{
    outScdm.clear();
    outAccount.clear();
    const std::shared_ptr<TradeObserver> tradeSide = m_tradeSide.lock();
    const AccountSearch search = panelry::ticket::BeginAccountSearch(tradeSide.get(), kind);
    if (search.tables.empty()) {
        return;
    }
    const Account out{outScdm, outAccount};
    if (exactFirst && FindByMarketCode(search, kind == 0 ? kOrdinarySentinel : kOtherSentinel, out)) {
        return;
    }
    MaskTest fits(*this, code);
    if (!FindByMasks(search, fits, out)) {
        FindByMarket(search, market, out);
    }
}

void DataDealBase::FindAccountByMarket(std::string scdm, std::string& outAccount)
{
    outAccount.clear();
    const std::shared_ptr<TradeObserver> tradeSide = m_tradeSide.lock();
    if (!tradeSide) {
        return;
    }
    for (const std::shared_ptr<HostTable>& table : panelry::ticket::ReadAccountTables(*tradeSide)) {
        const TableColumn marketCode(*table, column::kMarketCode);
        const TableColumn holder(*table, column::kHolderAccount);
        const TableColumn mainAccount(*table, column::kMainAccount);
        for (int row = 0, rows = table->RowCount(); row < rows; ++row) {
            if (marketCode.Cell(row) != scdm) {
                continue;
            }
            outAccount = holder.Cell(row);
            if (mainAccount.Cell(row) == "1") {
                return;
            }
        }
    }
}

std::string DataDealBase::QueryMarketOrderTypes(int kind, const std::string& market, const std::string& code)
{
    const std::shared_ptr<TradeObserver> tradeSide = m_tradeSide.lock();
    const AccountSearch search = panelry::ticket::BeginAccountSearch(tradeSide.get(), kind);
    std::string types;
    MaskTest fits(*this, code);
    for (const std::shared_ptr<HostTable>& table : search.tables) {
        if (TypesByMasks(*table, search.range, fits, types)) {
            break;
        }
        // Anew for each table, behind its first sweep: only here may a market that is no number be noticed.
        TypesByMarket(*table, search.range, panelry::ticket::MarketClass(market), fits, types);
    }
    return types;
}

bool DataDealBase::HasAuthority(int kind)
{
    const std::shared_ptr<TradeObserver> tradeSide = m_tradeSide.lock();
    if (!tradeSide) {
        return false;
    }
    std::shared_ptr<std::string> authority;
    tradeSide->GetString(kind == kMarginAuthority ? "authority_1" : "authority_0", authority);
    return authority && *authority == "1";
}
