#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "services/quote_provider.h"
#include "services/records.h"
#include "services/trade_provider.h"
#include "services/trade_records.h"
#include "ticket/data_deal_base.h"

namespace panelry
{

class TicketMailbox;
class WakeUp;
class TicketSides;

/// What has changed a ticket.
enum class TicketNews {
    Stock,         ///< the answer about a stock: everything may be new
    UsableAmount,  ///< the answer to AskUsableAmount()
    Quote,         ///< one quote push or several
};

/// One of the stocks that a code stands for.
struct TicketChoice {
    std::string market;      ///< in decimal, for Open()
    std::string stockCode;   ///< without a market
    std::string marketName;  ///< UTF-8, as the next
    std::string stockName;
};

/// What a host has said to an order.
struct OrderAnswer {
    std::int64_t number = 0;         ///< what SendOrder() returned for it
    ddsdk::TradeRequestParam order;  ///< as it was given to SendOrder()
    ddsdk::TradeRequestParam
        reply;  ///< the host's words, all in UTF-8; empty maps from a host that sent none
};

/// What a panel hears of its ticket, on the thread on which it made its session. Any of these may open
/// another stock, or destroy the session.
class TicketListener
{
public:
    virtual ~TicketListener() = default;

    /// TicketSession::Ticket() has new values.
    virtual void OnTicketChanged(TicketNews news) = 0;
    /// The code is ambiguous: open one of `choices`. The ticket has only what it was opened with.
    virtual void OnTicketChoices(const std::vector<TicketChoice>& choices) = 0;
    /// What the host sent can't be used, such as code masks that are malformed. `problem` is for people.
    virtual void OnTicketProblem(const std::string& problem) = 0;
    /// The host has answered an order, whatever ticket is open by now. Once for an order, if ever: a host may
    /// stay silent, and an order without an answer may have gone out all the same.
    virtual void OnOrderAnswered(const OrderAnswer& /*answer*/) {}
};

/// One order ticket of a panel, fed by the host: owns the rules and the observer pair through which they reach
/// the host, asks for a stock, keeps the ticket map up to date with answers and quote pushes, and sends orders.
///
///     class Panel : public ModuleBase, TicketListener {
///         void SetProviders(void* quotes, void* trades) override {
///             m_session.emplace(static_cast<QuoteProvider*>(quotes), static_cast<TradeProvider*>(trades), *this);
///         }
///         void OnCodeTyped(const std::string& code) { m_session->Open({{"stockcode", code}, {"czlb", "B"}}); }
///         void OnTicketChanged(TicketNews) override { Show(m_session->Ticket()); }
///
/// Answers and pushes for a ticket that is no longer open are dropped, and so are answers about a usable
/// quantity that has been asked for anew: the session numbers its requests in "local_request_type", and the
/// host gives a request's `local` back unchanged. Of what comes faster than the panel takes them the oldest are
/// dropped too: each is complete in itself. An answer to an order is never dropped: it is told as long as the
/// session lives, and is known by the session's own mark before its number, whoever else numbers his orders.
///
/// Ownership: owns everything but the providers, which are the host's, and the listener; both must outlive it.
///   A provider may hold the observers longer; they are deaf then.
/// Threading: one thread, which must have an event loop: construct, use and destroy it there. The host's threads
///   only put answers and pushes into a mailbox.
/// Failures: without a provider (null), or where the host refuses, nothing is answered and nothing is told; of an
///   order SendOrder() tells it at once.
class TicketSession
{
public:
    TicketSession(QuoteProvider* quotes, TradeProvider* trades, TicketListener& listener);
    ~TicketSession();
    TicketSession(const TicketSession&) = delete;
    TicketSession& operator=(const TicketSession&) = delete;

    /// Starts a new ticket that has just these fields, and asks for its stock: "stockcode", "market" where it is
    /// known, and what the request takes besides (see DataDealBase::RequestStockInfo()). Pushes of the stock
    /// begin with its answer.
    void Open(StringMap fields);

    /// Ends the ticket: the map becomes empty and nothing is told until the next Open() but answers to orders.
    void Close();

    /// Asks how much can be traded at `price`; the answer is told as TicketNews::UsableAmount. Nothing is asked
    /// before the stock's own answer is there, nor for a code that the host doesn't know.
    void AskUsableAmount(const std::string& price);

    /// Sends an order as it is: its maps are the host's matter (docs/order-ticket.md has those of the desk), but
    /// for "local_request_type" in its `local`, which is the session's. Nothing is checked before; that is what
    /// CheckOrder() of the rules is for. Returns the order's number, which comes back with the answer, or nothing
    /// where the host (or a missing one) didn't take it: then it hasn't gone out and no answer is told.
    [[nodiscard]] std::optional<std::int64_t> SendOrder(const ddsdk::TradeRequestParam& order);

    /// The ticket as it stands. A panel may write into it what its user enters ("price", "amount", "mmlb",
    /// "dd_money"); the keys of answers and pushes are overwritten by the next ones.
    StringMap& Ticket() { return m_ticket; }

    /// For all that isn't told: CheckOrder(), FillMaxAmount() and the rest, with Ticket().
    DataDealBase& Rules() { return m_rules; }

private:
    void TakeNews();
    void TellOrder(const StockInfoAnswer& answer);
    void TakeAnswer(const std::shared_ptr<StockInfoAnswer>& answer);
    bool IsForThisTicket(const StockInfoAnswer& answer) const;
    bool TakePush(const std::shared_ptr<QuotePushRecord>& push);
    void TellChoices(const StringMap& filled);
    void Subscribe(const MarketCode& stock);
    void Unsubscribe();

    TicketListener& m_listener;
    const std::string m_orderMark;  // before the numbers of orders; no other session has it
    DataDealBase m_rules;
    StringMap m_ticket;
    std::int64_t m_requests = 0;  // sent so far; they are numbered from 1 on
    std::string m_usableRequest;  // number of the latest question for the usable quantity
    std::map<std::int64_t, ddsdk::TradeRequestParam> m_orders;  // not answered yet, by number
    std::vector<MarketCode> m_subscribed;                       // none or one
    std::unique_ptr<WakeUp> m_reader;                           // what the mailbox calls
    std::shared_ptr<TicketMailbox> m_mailbox;
    std::shared_ptr<TicketSides> m_sides;
};

}  // namespace panelry
