#pragma once

#include "ticket/data_deal_base.h"

/// The funds of the normal account: asks for them, and keeps what comes in the map "zijin_data_proc" on the
/// trade side, for everybody to read. All values are the host's texts but "zyk", the profit of the holdings.
///
/// The map's keys: "account"; "zcc" total assets; "zjye" balance; "djye" frozen; "kyye" available; "sjye" to
/// be withdrawn; "cqye" another balance of the host's; "gpsz" market value of the holdings; "options", the
/// host's own; "zyk" profit and loss of the holdings, six decimals. Amounts are in yuan.
///
/// Ownership, failures: those of DataDealBase.
/// Threading: any thread. Reading the map and publishing it anew isn't one step, so of an answer and a sum of
///   holdings that come at a time one may undo the other.
class ZiJinInfo : public DataDealBase
{
public:
    /// "ggt" "1" asks for Stock Connect's; that answer goes to the table "ggt_zijin_data" and not into the
    /// map.
    void QueryFunds(StringMap& parameters) override;

    /// Replaces the map by the answer to a request of type "5", but for "zyk"; other answers are ignored.
    /// `scratch` is the caller's, empty, and holds the fields afterwards. An answer without request or reply
    /// is ignored.
    void OnFundsAnswer(std::shared_ptr<StockInfoAnswer> answer, StringMap& scratch) override;

    /// Sets "zyk" to the sum of the table's column of profits, "0.000000" if it has none; an empty reference
    /// changes nothing.
    void OnPositionsTable(std::shared_ptr<HostTable> table) override;

    /// As OnFundsAnswer(), from the fields of a push. An empty reference changes nothing.
    void OnFundsFields(std::shared_ptr<StringMap> fields) override;

private:
    void Publish(StringMap& fields);
};
