#pragma once

#include "ticket/data_deal_base.h"

/// Asks the host to bring its tables of holdings, deals, orders and cancellable orders up to date, and words
/// the cancel of an order, each for the normal account, the margin account ("rzrq") and Stock Connect
/// ("ggt").
///
/// The host keeps a result under the name that the request carries in local "table_name" and tells whoever
/// subscribed to that name; rows are read by TradeObserver::GetTable(). Columns are named by the ids of
/// tables/column_dictionary.h.
///
/// Query parameters, all texts: "rzrq" "1" chooses the margin account and wins over "ggt" "1", Stock Connect;
/// neither: the normal account. "table_name" is the name under which the host keeps the result.
///
/// Ownership, threading, failures: those of DataDealBase. No operation changes its parameters.
class TableFormInfo : public DataDealBase
{
public:
    /// Fills `request` with the cancel of the order in `row`, whose "htbh" is the contract number; "rzrq" "1"
    /// and "ggt" "1" name the account, where Stock Connect wins and needs "cjbh" and "czlb" too. "chedan_num",
    /// "time_stamp" and "index" stay with the request where the row has them. Sends nothing; an empty
    /// reference is left alone.
    void FillCancelRequest(std::shared_ptr<ddsdk::TradeRequestParam> request, StringMap& row) override;

    /// Fills `request` with the refresh of a table that the caller describes himself: "type", "menuid",
    /// "table_name", and "setcode", "cmd", "dataid", "rzrq" where they are there. Sends nothing; an empty
    /// reference is left alone.
    void FillTableRefreshRequest(std::shared_ptr<ddsdk::TradeRequestParam> request,
                                 StringMap& description) override;

    /// "standard_table_name", where it is there, is the name that the host's own list goes by.
    void QueryPositions(StringMap& parameters) override;
    /// "qsrq" and "jzrq", both or neither, are the first and last date of a query of past deals (20250701);
    /// "menuid" is the host's menu of the caller.
    void QueryDeals(StringMap& parameters) override;
    void QueryOrders(StringMap& parameters) override;
    /// "table_name" "ggt_chedan_table" chooses Stock Connect too.
    void QueryCancelableOrders(StringMap& parameters) override;
};
