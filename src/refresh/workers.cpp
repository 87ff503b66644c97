#include "refresh/workers.h"

#include <optional>

#include "base/number_text.h"
#include "refresh/table_reader.h"

namespace panelry::refresh
{

namespace
{

void TestQuote(const QuoteRow& row, RefreshState& state)
{
    const Crossed crossed = state.openOrders.Test(row.key, TextToDouble(row.price));
    if (crossed.margin) {
        state.marginAccount.refreshDue = 1;
    }
    if (crossed.normal) {
        state.normalAccount.refreshDue = 1;
    }
}

}  // namespace

void RunTableWorker(std::shared_ptr<RefreshState> state, std::weak_ptr<QuoteObserver> quoteSide)
{
    std::optional<TableReader> reader;
    state->tables.Work([&](std::shared_ptr<HostTable>& table) {
        // Let go of behind the visit: if it is the last to hold the presenter, that waits for all visits.
        const std::shared_ptr<QuoteObserver> side = quoteSide.lock();
        const Visit visit(state->gate);  // the table too is the host's
        if (!side || !visit) {
            return;
        }
        try {
            if (!reader) {  // not before a visit: the toolkit's code pages may be gone, at the end of the process
                reader.emplace(*state);
            }
            reader->Read(*table, *side);
        } catch (...) {
            // passed over silently, as a table without its columns
        }
    });
}

void RunQuoteWorker(std::shared_ptr<RefreshState> state)
{
    state->quotes.Work([&](const QuoteRow& row) { TestQuote(row, *state); });
}

}  // namespace panelry::refresh
