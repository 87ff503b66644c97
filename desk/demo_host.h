#pragma once

#include <filesystem>

#include "desk/delivery.h"
#include "desk/demo_account.h"
#include "desk/demo_market.h"
#include "desk/demo_trade.h"

namespace panelry::desk
{

/// The two service objects of a desk that has a market, and the thread on which they deliver.
///
/// Ownership: must outlive Uninit. Threading: construct, stop and destroy on the desk's thread.
/// Failures: the constructor throws std::runtime_error for a file that is no market.
class DemoHost
{
public:
    explicit DemoHost(const std::filesystem::path& marketFile)
        : m_trade(m_delivery), m_market(ReadDemoMarket(marketFile), m_trade, m_delivery), m_account(m_trade)
    {
    }
    ~DemoHost() { Stop(); }
    DemoHost(const DemoHost&) = delete;
    DemoHost& operator=(const DemoHost&) = delete;

    /// Ends all deliveries, then lets go of the subscribers.
    void Stop()
    {
        m_delivery.Stop();
        m_market.Stop();
        m_trade.Stop();
    }

    /// As Init wants them.
    QuoteProvider* Quotes() { return &m_market; }
    TradeProvider* Trades() { return &m_trade; }

private:
    Delivery m_delivery;
    DemoTrade m_trade;
    DemoMarket m_market;
    DemoAccount m_account;
};

}  // namespace panelry::desk
