#pragma once

#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "desk/accounts/account.h"
#include "desk/exchange/listing.h"
#include "services/trade_observer.h"
#include "tables/rzrq_zi_jin_info.h"
#include "tables/table_form_info.h"
#include "tables/zi_jin_info.h"

namespace panelry::test
{

/// A trading client beside the panels: sends orders and cancels and waits for their answers, and can ask for tables and
/// funds as the library does.
///
/// Threading: one thread but for the callback. Owned by a shared pointer.
class Client : public TradeObserver
{
public:
    /// The contract number of the order; empty for one that is refused or isn't answered in time.
    std::string Order(const desk::OrderWish& wish, const desk::Security& security);
    void Cancel(const std::string& contract, bool margin);
    /// Asks for all tables and the funds of both accounts.
    void AskForAll();

    void* ObserverSelf() override { return this; }
    void OnFundsPush(std::shared_ptr<StockInfoAnswer> answer) override;

private:
    StringMap Ask(const std::shared_ptr<ddsdk::TradeRequestParam>& request);

    TableFormInfo m_tables;
    ZiJinInfo m_funds;
    RzrqZiJinInfo m_marginFunds;
    int m_number = 0;

    std::mutex m_lock;  // guards the answers
    std::condition_variable m_changed;
    std::map<std::string, StringMap> m_answers;  // bodies, by the number of the request
};

}  // namespace panelry::test
