#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "services/host_table.h"
#include "services/quote_observer.h"
#include "services/quote_records.h"
#include "services/records.h"
#include "services/trade_observer.h"
#include "services/trade_records.h"

/// The rule book of securities orders: turns a stock code into a request, an answer or a quote push into the
/// flat field map that an order ticket shows, fills prices and quantities, and says whether an order may go
/// out. It sends no order.
///
/// Order of virtual operations is binary contract; append nothing, reorder nothing. Operations named
/// Reserved... are called by nobody and keep their places.
///
/// A *ticket* is a StringMap that its caller owns: all that a ticket knows stands there and nothing in the
/// object. Values are text: numbers in decimal, flags "1" and "0", names in UTF-8. An absent key reads as
/// empty, an empty or malformed number as 0, and what follows a number is ignored; reading may add a key with
/// an empty value. Prices are in yuan, quantities whole numbers in decimal.
///
/// Ownership: holds two weak references; the observers belong to whoever made them. Shared pointers passed
///   in are released at the end of the operation.
/// Threading: no lock and no state after SetObservers(), so any number of tickets and threads may share an
///   object, but a ticket map belongs to one thread at a time. A side is locked once and kept for the run of
///   an operation.
/// Failures: a side that is gone ends, silently, what needs it. Bad input raises nothing, with these
///   exceptions: std::regex_error for a mask list that is no list of regular expressions, std::invalid_argument
///   and std::out_of_range where a market number must be one (FindAccountForCode, QueryMarketOrderTypes), and
///   std::out_of_range from ListCodeCandidates for a provider's row without a stock.
class DataDealBase
{
public:
    DataDealBase();
    virtual ~DataDealBase();
    DataDealBase(const DataDealBase&) = delete;
    DataDealBase& operator=(const DataDealBase&) = delete;

    virtual void ReservedHookA(std::uintptr_t a, std::uintptr_t b);

    /// Puts one push of one stock into `out`: order book, limits, change against the previous close in
    /// percent, limit prices. Pushes of another "type", of several stocks or of an ambiguous code are ignored
    /// and leave `out` as it was. Fields that the push lacks become empty.
    virtual void OnQuotePush(std::shared_ptr<QuotePushRecord> push, StringMap& out);

    /// Asks for all that a ticket needs to know of "market" and "stockcode" (request "1025"). The quote side
    /// may correct the ticket's "market". The answer goes to OnStockInfo().
    virtual void RequestStockInfo(StringMap& ticket);
    /// The same, for a new "usable_amount"; the mark "local_cx_wtsl" stays in the ticket and comes back with
    /// the answer.
    virtual void RequestUsableAmount(StringMap& ticket);

    virtual void ReservedHookB(std::uintptr_t a);
    virtual void ReservedHookC(std::uintptr_t a);

    /// The cancel of the order in `row`. Empty here; so are the next ones up to QueryCancelableOrders: the
    /// classes of the tables and funds override them.
    virtual void FillCancelRequest(std::shared_ptr<ddsdk::TradeRequestParam> request, StringMap& row);
    virtual void ReservedHook(std::uintptr_t a);
    virtual void FillTableRefreshRequest(std::shared_ptr<ddsdk::TradeRequestParam> request,
                                         StringMap& description);
    virtual void QueryFunds(StringMap& parameters);
    virtual void QueryPositions(StringMap& parameters);
    virtual void QueryDeals(StringMap& parameters);
    virtual void QueryOrders(StringMap& parameters);
    virtual void QueryCancelableOrders(StringMap& parameters);

    virtual void ReservedHookD(std::uintptr_t a);

    /// Tells the host that a system setting changed (request "2304"); reads "notify_wtzz" and "module".
    virtual void NotifyConfigChange(StringMap& fields);

    virtual void ReservedHookE(std::uintptr_t a);
    virtual void ReservedHookF(std::uintptr_t a);
    virtual void ReservedHookG(std::uintptr_t a);

    /// Puts the answer to a request "1025" into `out`; the answer must have both request and reply. For an
    /// ambiguous code only "pushflag" and the choices of ResolveDuplicateCodes() are written.
    virtual void OnStockInfo(std::shared_ptr<StockInfoAnswer> answer, StringMap& out);

    virtual void ReservedHookH(std::shared_ptr<StockInfoAnswer> answer, std::uintptr_t a);
    virtual void ReservedHookI(std::shared_ptr<StockInfoAnswer> answer, std::uintptr_t a);
    virtual void ReservedHookJ(std::shared_ptr<StockInfoAnswer> answer);

    /// Empty here; so are the next two.
    virtual void OnFundsAnswer(std::shared_ptr<StockInfoAnswer> answer, StringMap& scratch);
    virtual void OnPositionsTable(std::shared_ptr<HostTable> table);
    virtual void OnFundsFields(std::shared_ptr<StringMap> fields);

    virtual void ReservedHookK(std::shared_ptr<StockInfoAnswer> answer, std::uintptr_t a);

    /// The last gate before an order: `result` gets "check" ("1" may go on, "0" refused), for a refusal
    /// "ret_text", and "other_tip", what the user must confirm (empty: nothing; absent after a refusal for
    /// price or quantity). Changes no price and sends nothing.
    virtual void CheckOrder(StringMap& order, StringMap& result);

    virtual void ReservedHookL(std::uintptr_t a, std::uintptr_t b);
    virtual void ReservedHookM(std::uintptr_t a, std::uintptr_t b);

    /// Is the account of `kind` (2: margin, all else: ordinary) ready to be asked?
    virtual bool HasAuthority(int kind);

    /// Does one of the masks, separated by ";", fit the head of `code`? A mask is a regular expression from
    /// which every "*" is taken out and that at least one digit must follow, so "60*" fits "600000" and
    /// "600000" doesn't.
    virtual bool MatchCodeMask(const std::string& masks, const std::string& code);

    /// Is `code` on one of the two mask lists that the host publishes as "Json_TZM_SBA" and "Json_TZM_SBB"?
    virtual bool IsTzmCode(const std::string& code);

    /// Looks the ticket's "stockcode" up in the account tables, for `kind` 0 (ordinary) or 1 (margin), and
    /// sets "kcb", "cyb", "scdm" and "gdzh". All rows are visited and the last fitting one wins; what no row
    /// touches stays.
    virtual void ResolveAccountFields(int kind, StringMap& ticket);

    /// "sjwt" for a market order, "sbwt" for a market of declared orders, else "ptwt".
    virtual void SelectWeituoKind(const std::string& scdm, const std::string& marketOrderType,
                                  std::string& out);

    /// Market code and shareholder account for `code` on `market`; the first fitting row wins, here. Both
    /// outs are cleared first. `exactFirst` tries the kind's own special row before anything else.
    virtual void FindAccountForCode(int kind, const std::string& market, const std::string& code,
                                    std::string& outScdm, std::string& outAccount, bool exactFirst);

    /// The shareholder account of a market code: the main one, else the last.
    virtual void FindAccountByMarket(std::string scdm, std::string& outAccount);

    /// The word for the unit in which quantities are shown, and how many pieces one unit has.
    virtual void ResolveAmountUnit(const std::string& codeType, const std::string& code,
                                   const std::string& options, std::string& unit, std::string& multiplier);

    /// Pieces per lot.
    virtual void ResolveHandSize(const std::string& options, std::string& hand);

    /// Writes "isshowxj", "mrxjg", "mcxjg" and "islxjj": are protected limits offered, and which.
    virtual void UpdateProtectedLimitFields(StringMap& ticket);
    virtual bool IsProtectedLimitSupported(StringMap& ticket);
    /// Is the market in continuous trading, by the quote's phase or else by its time? "hq_time", seconds of
    /// the epoch, is read in the local time of this machine.
    virtual bool IsContinuousPhase(StringMap& ticket);

    /// The highest buy and the lowest sell price that the market takes, printed with the ticket's decimals.
    /// Both stay as they are where there is no price to start from.
    virtual void ComputeProtectedRange(StringMap& ticket, std::string& buyCeiling, std::string& sellFloor);

    /// "dd_amount", in "%f" form, from "dd_money" and "dd_price".
    virtual void FillMaxAmount(StringMap& ticket);

    /// The market-order types of `code`, empty when nothing applies.
    virtual std::string QueryMarketOrderTypes(int kind, const std::string& market, const std::string& code);

    virtual bool IsBhjgMarket(StringMap& ticket);

    /// Appends to `out` one map for each stock that `code` may mean: "market", "stockcode", "stockname",
    /// "marketname".
    virtual void ListCodeCandidates(const std::string& code, std::vector<StringMap>& out);

    /// True for an answer that stands for several stocks: the ticket then has "duplicatecode_count" and, with
    /// a number from 0 on behind them, "duplicatecode_market", "duplicatecode_stockcode",
    /// "duplicatecode_marketname" and "duplicatecode_stockname".
    virtual bool ResolveDuplicateCodes(std::shared_ptr<StockInfoAnswer> answer, StringMap& ticket);

    /// Before the first use, on the owner's thread.
    void SetObservers(std::weak_ptr<QuoteObserver> quoteSide, std::weak_ptr<TradeObserver> tradeSide);

    /// Is the stock priced in three decimals? By a fixed list.
    static bool IsThreeDecimalCode(const std::string& code, const std::string& market);
    /// Does `mask` fit the whole of `code`? Its first "*" stands for anything, the rest is a regular
    /// expression. Another language than that of MatchCodeMask(), on purpose.
    static bool MatchFullMask(const std::string& code, const std::string& mask);
    /// Is the code counted in pieces of a bond rather than in shares?
    static bool IsZhangCode(StringMap& ticket);
    /// Pieces of one lot, by kind of security.
    static int ReadLotSize(StringMap& ticket);
    /// Pieces of one unit of the shown quantity, 1 or more.
    static int ReadVolumeUnit(StringMap& ticket);
    /// `quantity` rounded down to a whole lot or, with `useVolumeUnit`, to a count of units; returned too.
    static double RoundAmountToLot(StringMap& ticket, double& quantity, bool useVolumeUnit);

protected:
    std::weak_ptr<QuoteObserver> m_quoteSide;
    std::weak_ptr<TradeObserver> m_tradeSide;
};
