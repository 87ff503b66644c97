#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "refresh/refresh_state.h"
#include "services/quote_observer.h"

namespace panelry::refresh
{

/// Does the operation text of a row, in the host's code page, say that the order buys? Made when that code
/// page has been set.
class DirectionReader
{
public:
    DirectionReader();
    bool IsBuy(std::string_view operation) const;

private:
    bool m_rawBytes;
};

/// Reads the tables of cancellable orders: which orders are open, which fresh ones have appeared, and which
/// stocks' quotes are wanted from here on.
///
/// Threading: the table worker alone. Failures: a table without one of the five columns is passed over;
///   results of the quote side are not looked at.
class TableReader
{
public:
    explicit TableReader(RefreshState& state) : m_state(state) {}

    /// To be called within a visit (see VisitGate), which lasts at most a row longer than the end.
    void Read(const HostTable& table, QuoteObserver& quoteSide);

private:
    struct Columns;
    struct Row;

    void ReadRow(const Row& row, QuoteObserver& quoteSide);
    void UpdateWatchedCodes(std::vector<std::string> keys, QuoteObserver& quoteSide);
    void Subscribe(const std::vector<std::string>& keys, bool on, QuoteObserver& quoteSide);

    RefreshState& m_state;
    const DirectionReader m_directions;
    std::vector<std::string> m_watchedCodes;  // sorted: what the quote side has been asked for
    std::vector<MarketCode> m_oneStock;       // the row's
    std::string m_price;                      // the row's; both are kept for their memory
};

}  // namespace panelry::refresh
