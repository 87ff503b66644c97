#include "desk/providers/market_host.h"

#include <atomic>

#include "desk/providers/host_words.h"
#include "desk/providers/quote_desk.h"
#include "desk/providers/trade_desk.h"

namespace panelry::desk
{

namespace
{

using Fields = nlohmann::ordered_json;

const char* EventName(OrderEvent event)
{
    switch (event) {
        case OrderEvent::Accepted:
            return "accepted";
        case OrderEvent::Refused:
            return "refused";
        case OrderEvent::Dealt:
            return "dealt";
        case OrderEvent::Cancelled:
            return "cancelled";
        case OrderEvent::Expired:
            return "expired";
    }
    return "";
}

Fields WithSecurity(Fields fields, AccountKind account, const Security& security, Side side)
{
    fields["account"] = AccountName(account);
    fields["code"] = security.code;
    fields["market"] = security.market;
    fields["name"] = security.name;
    fields["side"] = side == Side::Buy ? "buy" : "sell";
    return fields;
}

}  // namespace

// Passes what happens on the market on to both desks and to whoever writes it down.
class MarketHost::Ear : public SimulationListener
{
public:
    explicit Ear(MarketHost& host) : m_host(host) {}

    void SetListener(MarketListener* listener) { m_listener = listener; }

    void Announce(const std::string& event, const Fields& fields)
    {
        if (MarketListener* const listener = m_listener) {
            listener->OnMarketEvent(event, fields);
        }
    }

    void OnQuote(std::size_t security) override { m_host.m_quotes->OnQuote(security); }

    void OnPhase(Phase phase, MarketTime time) override
    {
        m_host.m_quotes->OnPhase();
        Announce("phase", {{"day", time.day}, {"time", ClockText(time.ofDay)}, {"phase", PhaseName(phase)}});
    }

    void OnDay(int day) override { Announce("day", {{"day", day}, {"date", DateText(day)}}); }

    void OnOrder(const Order& order, OrderEvent event) override
    {
        m_host.m_trades->OnOrder(order, event);
        if (!m_listener) {
            return;
        }
        const Security& security = SecurityAt(order.wish.security);
        Fields fields = WithSecurity({{"what", EventName(event)}, {"contract", order.contract}},
                                     order.wish.account, security, order.wish.side);
        fields["price"] = PriceText(order.wish.price, security.decimals);
        fields["quantity"] = order.wish.quantity;
        fields["dealt"] = order.dealt;
        fields["state"] = StateName(order.state);
        if (!order.reason.empty()) {
            fields["reason"] = order.reason;
        }
        Announce("order", fields);
    }

    void OnDeal(const Deal& deal) override
    {
        if (!m_listener) {
            return;
        }
        const Security& security = SecurityAt(deal.security);
        Fields fields = WithSecurity({{"number", deal.number}, {"contract", deal.contract}}, deal.account,
                                     security, deal.side);
        fields["price"] = PriceText(deal.price, security.decimals);
        fields["quantity"] = deal.quantity;
        fields["worth"] = MoneyText(deal.worth);
        fields["fees"] = MoneyText(deal.fees);
        Announce("deal", fields);
    }

    void OnTrouble(const std::string& problem) override { Announce("trouble", {{"problem", problem}}); }

private:
    const Security& SecurityAt(std::size_t place) const
    {
        return m_host.m_market.Securities().securities[place];
    }

    MarketHost& m_host;
    std::atomic<MarketListener*> m_listener{nullptr};
};

MarketHost::MarketHost(const Settings& settings) : m_faults(settings.faultSeed), m_market(settings)
{
    ToHostText({});  // a system that can't convert is found out here, not on a thread
    m_ear = std::make_unique<Ear>(*this);
    m_quotes = std::make_unique<QuoteDesk>(m_market, m_faults);
    m_trades = std::make_unique<TradeDesk>(
        m_market, m_faults,
        [this](const std::string& event, const Fields& fields) { m_ear->Announce(event, fields); });
    m_market.SetListener(m_ear.get());
}

MarketHost::~MarketHost()
{
    Stop();
}

void MarketHost::SetListener(MarketListener* listener)
{
    m_ear->SetListener(listener);
}

void MarketHost::Start()
{
    m_market.Start();
}

void MarketHost::Stop()
{
    m_faults.End();
    m_market.Stop();
    m_market.SetListener(nullptr);
    m_quotes->Stop();
    m_trades->Stop();
}

QuoteProvider* MarketHost::Quotes()
{
    return m_quotes.get();
}

TradeProvider* MarketHost::Trades()
{
    return m_trades.get();
}

void MarketHost::LoseLogin()
{
    m_trades->LoseLogin();
}

void MarketHost::LogIn()
{
    m_trades->LogIn();
}

}  // namespace panelry::desk
