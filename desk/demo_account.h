#pragma once

#include <memory>
#include <string>
#include <vector>

#include "desk/demo_trade.h"

namespace panelry::desk
{

/// A small account on the desk's trade side, invented: orders, deals, holdings and funds of the normal and the
/// margin account, as tables and answers. It cancels what it is asked to, and one of its orders, a buy above the
/// market, is dealt without a word: whoever asks again finds it so.
///
/// Ownership: borrows the trade side. Threading: everything runs on the delivery thread but for the constructor.
class DemoAccount
{
public:
    explicit DemoAccount(DemoTrade& trade);
    DemoAccount(const DemoAccount&) = delete;
    DemoAccount& operator=(const DemoAccount&) = delete;

private:
    struct Order {
        std::string contract, code, market, name, price;
        bool buys = true;
        int amount = 0;
        int dealt = 0;
        std::string state;
    };
    struct Account {
        std::string prefix;  ///< of its tables' names
        long long cash = 0;  ///< fen
        std::vector<Order> orders;
        bool asked = false;  ///< the open orders have been told once
    };

    void LogIn(const std::string& subscribed);
    void Answer(const DemoTrade::Subscriber& subscriber, const DemoTrade::Request& request);
    void AnswerMargin(const DemoTrade::Subscriber& subscriber, const DemoTrade::Request& request);
    void AnswerFunds(const DemoTrade::Subscriber& subscriber, const DemoTrade::Request& request);
    void PublishOpenOrders(Account& account, const std::string& name);
    void PublishOrders(const Account& account, const std::string& name, bool onlyOpen);
    void PublishDeals(const Account& account, const std::string& name);
    void PublishHoldings(const Account& account, const std::string& name);
    void Cancel(Account& account, const std::string& contract);

    DemoTrade& m_trade;
    Account m_normal;
    Account m_margin;
    bool m_loggedIn = false;
};

}  // namespace panelry::desk
