#pragma once

#include <memory>

#include "services/host_table.h"
#include "services/records.h"

/// The records that pass between the trade side of a host and the library.
/// The order of fields is binary contract; append nothing, reorder nothing.

namespace ddsdk
{

/// A request to the trade side, and the form of its answer.
///
/// Request: `head` addresses it (its "type" is a decimal number), `body` holds the fields of the business
/// function, `local` is for the host to keep and to give back with the answer.
/// Answer: what the host has to say, in the same three maps.
///
/// Prices are decimal text in yuan with a point, quantities whole numbers. Requests are UTF-8. In an answer
/// the display texts (names of stocks and markets, hints) stand in the host's own code page, GB18030 unless
/// the deployment says otherwise; the library converts them.
struct TradeRequestParam {
    StringMap head;
    StringMap body;
    StringMap local;
};

}  // namespace ddsdk

/// What arrives for a request, funds included. Shared and never changed once it is handed over: several
/// receivers may read it at a time.
struct StockInfoAnswer {
    std::shared_ptr<ddsdk::TradeRequestParam> request;  ///< as it was sent
    std::shared_ptr<ddsdk::TradeRequestParam> reply;
    std::shared_ptr<HostAnswerTable> table;  ///< empty for an answer without rows
};
