#pragma once

#include "ticket/data_deal_base.h"

/// The funds of the margin account. The host reports them as a table with a row for each currency; each row
/// is kept on the trade side as a map of its own, "zijin_data_rzrq_" and the currency's code.
///
/// The maps' keys: "zjye" balance; "kyye" available; "sjye" to be withdrawn; "gpsz" market value of the
/// holdings; "zcc" total assets; "account"; "djye" frozen; "rzkyed" credit left for financing. Amounts are in
/// the row's currency.
///
/// Ownership, threading, failures: those of DataDealBase.
class RzrqZiJinInfo : public DataDealBase
{
public:
    /// `parameters` is not read.
    void QueryFunds(StringMap& parameters) override;

    /// Publishes the rows of the answer to that query, each in place of the map before; other answers and one
    /// without a table are ignored. A column that the host didn't send reads as the first one. `scratch` is
    /// the caller's, empty, and holds the last row afterwards.
    void OnFundsAnswer(std::shared_ptr<StockInfoAnswer> answer, StringMap& scratch) override;
};
