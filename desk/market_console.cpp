#include "desk/market_console.h"

#include <algorithm>
#include <map>
#include <stdexcept>
#include <utility>

#include "desk/commands.h"
#include "desk/providers/host_words.h"
#include "desk/providers/scenarios.h"

namespace panelry::desk
{

namespace
{

/// Leaves a command; what() is the reason, for people.
class Failed : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

const char* SideWord(Side side)
{
    return side == Side::Buy ? "buy" : "sell";
}

Fields Named(const Security& security)
{
    return {{"code", security.code}, {"market", security.market}, {"name", security.name}};
}

Fields OrderFields(const Order& order, const Listing& listing)
{
    const OrderWish& wish = order.wish;
    const Security& security = listing.securities[wish.security];
    Fields fields{{"contract", order.contract}, {"account", AccountName(wish.account)}};
    fields.update(Named(security));
    fields.update(Fields{{"side", SideWord(wish.side)},
                         {"price", PriceText(wish.price, security.decimals)},
                         {"quantity", wish.quantity},
                         {"dealt", order.dealt},
                         {"state", StateName(order.state)}});
    if (!order.reason.empty()) {
        fields["reason"] = order.reason;
    }
    return fields;
}

Fields DealFields(const Deal& deal, const Listing& listing)
{
    const Security& security = listing.securities[deal.security];
    Fields fields{
        {"number", deal.number}, {"contract", deal.contract}, {"account", AccountName(deal.account)}};
    fields.update(Named(security));
    fields.update(Fields{{"side", SideWord(deal.side)},
                         {"price", PriceText(deal.price, security.decimals)},
                         {"quantity", deal.quantity},
                         {"worth", MoneyText(deal.worth)},
                         {"fees", MoneyText(deal.fees)}});
    return fields;
}

Fields HoldingFields(const Holding& holding, const Listing& listing)
{
    Fields fields{{"account", AccountName(holding.account)}};
    fields.update(Named(listing.securities[holding.security]));
    fields.update(Fields{{"total", holding.total},
                         {"sellable", holding.sellable},
                         {"frozen", holding.frozen},
                         {"cost", MoneyText(holding.cost)}});
    return fields;
}

Fields FundsFields(AccountKind account, const Funds& funds)
{
    Fields fields{{"account", AccountName(account)},
                  {"balance", MoneyText(funds.balance)},
                  {"frozen", MoneyText(funds.frozen)},
                  {"available", MoneyText(funds.available)},
                  {"withdrawable", MoneyText(funds.withdrawable)},
                  {"market_value", MoneyText(funds.marketValue)},
                  {"assets", MoneyText(funds.assets)}};
    if (account == AccountKind::Margin) {
        fields.update(Fields{{"debt", MoneyText(funds.debt)}, {"credit", MoneyText(funds.credit)}});
    }
    return fields;
}

template <class Entry>
Fields ListOf(const std::vector<Entry>& entries, Fields (*fieldsOf)(const Entry&, const Listing&),
              const Listing& listing)
{
    Fields list = Fields::array();
    for (const Entry& entry : entries) {
        list.push_back(fieldsOf(entry, listing));
    }
    return list;
}

Fields ListOf(Listed what, AccountKind account, const Exchange& exchange, const Brokerage& broker)
{
    const Listing& listing = exchange.Securities();
    switch (what) {
        case Listed::Deals:
            return ListOf(broker.Deals(account), &DealFields, listing);
        case Listed::Holdings:
            return ListOf(broker.Holdings(account), &HoldingFields, listing);
        case Listed::Funds: {
            const auto priceOf = [&exchange](std::size_t security) {
                return Simulation::PriceOf(exchange, security);
            };
            return Fields::array({FundsFields(account, broker.FundsOf(account, priceOf))});
        }
        case Listed::Orders:
            break;
    }
    return ListOf(broker.Orders(account), &OrderFields, listing);
}

const char* ListWord(Listed what)
{
    switch (what) {
        case Listed::Deals:
            return "deals";
        case Listed::Holdings:
            return "holdings";
        case Listed::Funds:
            return "funds";
        case Listed::Orders:
            break;
    }
    return "orders";
}

Fields LevelsOf(const std::array<Level, 5>& levels, int decimals, Quantity unit)
{
    Fields list = Fields::array();
    for (const Level& level : levels) {
        if (level.price > 0) {
            list.push_back(Fields::array({PriceText(level.price, decimals), level.quantity / unit}));
        }
    }
    return list;
}

/// Prices are left out while there is none.
void AddPrice(Fields& fields, const char* key, Price price, int decimals)
{
    if (price > 0) {
        fields[key] = PriceText(price, decimals);
    }
}

Fields QuoteFields(const Security& security, const Quote& quote)
{
    Fields fields = Named(security);
    const std::pair<const char*, Price> prices[] = {{"previous_close", quote.previousClose},
                                                    {"open", quote.open},
                                                    {"high", quote.high},
                                                    {"low", quote.low},
                                                    {"last", quote.last},
                                                    {"upper_limit", quote.upperLimit},
                                                    {"lower_limit", quote.lowerLimit}};
    for (const auto& [key, price] : prices) {
        AddPrice(fields, key, price, security.decimals);
    }
    fields["volume"] = quote.volume;
    fields["turnover"] = MoneyText(quote.turnover);
    if (quote.suspended) {
        fields["suspended"] = true;
    }
    fields["bids"] = LevelsOf(quote.bids, security.decimals, 1);
    fields["asks"] = LevelsOf(quote.asks, security.decimals, 1);
    return fields;
}

/// In what a board counts: hundreds of shares, tens of bonds.
Quantity BoardUnit(const Security& security)
{
    const bool isBond = security.kind == SecurityKind::Bond || security.kind == SecurityKind::Convertible;
    return isBond ? 10 : 100;
}

/// Text of a number in each pair, as the quote board reads levels.
Fields AsTexts(Fields levels)
{
    for (Fields& level : levels) {
        level[1] = level[1].dump();
    }
    return levels;
}

Fields BoardEntry(const Security& security, const Quote& quote)
{
    const Quantity unit = BoardUnit(security);
    Fields entry{{"code", security.code}, {"name", security.name}, {"decimals", security.decimals}};
    AddPrice(entry, "prev_close", quote.previousClose, security.decimals);
    AddPrice(entry, "last", quote.last, security.decimals);
    AddPrice(entry, "open", quote.open, security.decimals);
    AddPrice(entry, "high", quote.high, security.decimals);
    AddPrice(entry, "low", quote.low, security.decimals);
    entry["volume"] = std::to_string(quote.volume / unit);
    entry["bids"] = AsTexts(LevelsOf(quote.bids, security.decimals, unit));
    entry["asks"] = AsTexts(LevelsOf(quote.asks, security.decimals, unit));
    return entry;
}

std::string Marked(const Security& security)
{
    return security.code + '@' + std::to_string(security.market);
}

/// The market's clock stands, and all is played up to its time: a time that is still to come stays so.
class ClockHeld
{
public:
    explicit ClockHeld(Simulation& market) : m_market(market), m_speed(market.Speed())
    {
        m_market.SetSpeed(0);
        m_market.Step(std::chrono::milliseconds(0));
    }
    ~ClockHeld() { m_market.SetSpeed(m_speed); }
    ClockHeld(const ClockHeld&) = delete;
    ClockHeld& operator=(const ClockHeld&) = delete;

private:
    Simulation& m_market;
    const double m_speed;
};

bool IsTraded(const Security& security)
{
    return security.kind != SecurityKind::Index;
}

}  // namespace

std::string MarketConsole::Perform(const MarketCommand& command)
{
    try {
        return std::visit([this](const auto& chosen) { return this->Do(chosen); }, command);
    } catch (const Failed& reason) {
        return reason.what();
    }
}

std::string MarketConsole::Do(const PlaceOrder& order)
{
    const OrderWish wish{.account = order.account,
                         .security = Find(order.security),
                         .side = order.side,
                         .price = order.price,
                         .quantity = order.quantity,
                         .funding = order.funding};
    const Brokerage::Placed placed = m_host.Market().Place(wish);
    return placed.contract.empty() ? placed.refusal : "";  // a kept one is announced, refused or not
}

std::string MarketConsole::Do(const CancelOrder& cancel)
{
    return m_host.Market().Cancel(AccountOf(cancel.contract), cancel.contract);
}

std::string MarketConsole::Do(const ListAccounts& list)
{
    Fields entries = Fields::array();
    m_host.Market().Read([&](const Exchange& exchange, const Brokerage& broker) {
        for (const AccountKind account : kAccounts) {
            if (!list.account || *list.account == account) {
                for (Fields& entry : ListOf(list.what, account, exchange, broker)) {
                    entries.push_back(std::move(entry));
                }
            }
        }
    });
    const char* const word = ListWord(list.what);
    m_announcer.Say(word, {{word, std::move(entries)}});
    return {};
}

std::string MarketConsole::Do(const ShowQuote& show)
{
    const std::size_t security = Find(show.security);
    const Quote quote = m_host.Market().Read(
        [security](const Exchange& exchange, const Brokerage&) { return exchange.QuoteOf(security); });
    m_announcer.Say("quote", QuoteFields(m_host.Market().Securities().securities[security], quote));
    return {};
}

std::string MarketConsole::Do(const FillOrder& fill)
{
    const AccountKind account = AccountOf(fill.contract);
    const Quantity rest = m_host.Market().Read([&fill](const Exchange&, const Brokerage& broker) {
        const Order* const order = broker.Find(fill.contract);
        return order ? order->Rest() : 0;
    });
    return m_host.Market().Fill(account, fill.contract, fill.quantity.value_or(rest), fill.parts);
}

std::string MarketConsole::Do(const ShowPhase& /*show*/)
{
    const MarketTime now = m_host.Market().Now();
    m_announcer.Say(
        "phase",
        {{"day", now.day}, {"time", ClockText(now.ofDay)}, {"phase", PhaseName(PhaseAt(now.ofDay))}});
    return {};
}

// Through the timetable from now on; beyond the day's end it is tomorrow's.
std::string MarketConsole::Do(const MoveToPhase& move)
{
    constexpr std::chrono::milliseconds kDay = std::chrono::hours(24);
    const ClockHeld held(m_host.Market());
    std::chrono::milliseconds at = m_host.Market().Now().ofDay;
    if (PhaseAt(at) == move.phase) {
        return Do(ShowPhase{});
    }
    do {
        at = NextPhaseAt(at) % kDay;
    } while (PhaseAt(at) != move.phase);
    m_host.Market().MoveTo(at);
    return {};  // the market announces its phases
}

std::string MarketConsole::Do(const ShowClock& /*show*/)
{
    const MarketTime now = m_host.Market().Now();
    m_announcer.Say("clock", {{"day", now.day},
                              {"date", DateText(now.day)},
                              {"time", ClockText(now.ofDay)},
                              {"phase", PhaseName(PhaseAt(now.ofDay))},
                              {"speed", m_host.Market().Speed()}});
    return {};
}

std::string MarketConsole::Do(const SetSpeed& speed)
{
    m_host.Market().SetSpeed(speed.speed);
    return Do(ShowClock{});
}

std::string MarketConsole::Do(const StepClock& step)
{
    m_host.Market().Step(step.by);
    return Do(ShowClock{});
}

std::string MarketConsole::Do(const MoveClock& move)
{
    m_host.Market().MoveTo(move.ofDay);
    return Do(ShowClock{});
}

std::string MarketConsole::Do(const RunScenario& scenario)
{
    if (scenario.words.empty()) {
        Fields list = Fields::array();
        for (const Scenario& known : Scenarios()) {
            list.push_back({{"name", known.name}, {"arguments", known.arguments}, {"help", known.help}});
        }
        m_announcer.Say("scenarios", {{"scenarios", std::move(list)}});
        return {};
    }
    std::vector<std::string> words{scenario.words.front()};
    for (auto word = scenario.words.begin() + 1; word != scenario.words.end(); ++word) {
        const std::size_t at = std::min(word->find('@'), word->size());
        words.push_back(word->substr(0, at));
        if (at < word->size()) {
            words.push_back(word->substr(at + 1));
        }
    }
    m_announcer.Say("scenario",
                    {{"scenario", scenario.words.front()},
                     {"arguments", std::vector(scenario.words.begin() + 1, scenario.words.end())}});
    return PlayScenario(m_host, words);
}

std::string MarketConsole::Do(const SwitchFault& fault)
{
    if (fault.name.empty()) {
        SayFaults();
        return {};
    }
    const FaultDescription* const known = Faults::Find(fault.name);
    m_host.faults().Set(known->fault, fault.on, fault.number);
    Fields fields{{"fault", fault.name}, {"on", fault.on}};
    if (fault.on) {
        fields["number"] = m_host.faults().NumberOf(known->fault);
    }
    m_announcer.Say("fault", fields);
    return {};
}

void MarketConsole::SayFaults()
{
    Fields list = Fields::array();
    for (const FaultDescription& known : Faults::All()) {
        list.push_back({{"name", known.name},
                        {"on", m_host.faults().IsOn(known.fault)},
                        {"number", m_host.faults().NumberOf(known.fault)},
                        {"help", known.help}});
    }
    m_announcer.Say("faults", {{"faults", std::move(list)}});
}

// The code that can be traded is meant where another one can't.
std::size_t MarketConsole::Find(const CodeName& name) const
{
    const Listing& listing = m_host.Market().Securities();
    std::vector<std::size_t> found = listing.FindAll(name.code);
    std::erase_if(found,
                  [&](std::size_t i) { return name.market && listing.securities[i].market != *name.market; });
    if (found.empty()) {
        throw Failed("the market has no " + name.code +
                     (name.market ? '@' + std::to_string(*name.market) : ""));
    }
    std::vector<std::size_t> traded = found;
    std::erase_if(traded, [&listing](std::size_t i) { return !IsTraded(listing.securities[i]); });
    const std::vector<std::size_t>& meant = traded.empty() ? found : traded;
    if (meant.size() > 1) {
        std::string all;
        for (const std::size_t i : meant) {
            all += (all.empty() ? "" : ", ") + Marked(listing.securities[i]);
        }
        throw Failed(name.code + " stands on several markets: " + all);
    }
    return meant.front();
}

AccountKind MarketConsole::AccountOf(const std::string& contract) const
{
    const auto account = m_host.Market().Read([&contract](const Exchange&, const Brokerage& broker) {
        const Order* const order = broker.Find(contract);
        return order ? std::optional(order->wish.account) : std::nullopt;
    });
    if (!account) {
        throw Failed("there is no order " + contract);
    }
    return *account;
}

std::string MarketConsole::CheckFeed(const Feed& feed) const
{
    try {
        for (const CodeName& code : feed.codes) {
            (void)Find(code);
        }
        return {};
    } catch (const Failed& reason) {
        return reason.what();
    }
}

std::string MarketConsole::FeedText(const Feed& feed) const
{
    Fields quotes = Fields::array();
    m_host.Market().Read([&](const Exchange& exchange, const Brokerage&) {
        for (const CodeName& code : feed.codes) {
            const std::size_t security = Find(code);
            quotes.push_back(
                BoardEntry(exchange.Securities().securities[security], exchange.QuoteOf(security)));
        }
    });
    return Fields{{"quotes", std::move(quotes)}}.dump();
}

std::vector<std::string> CodeWords(const Listing& listing)
{
    std::map<std::string, int> count;
    for (const Security& security : listing.securities) {
        ++count[security.code];
    }
    std::vector<std::string> words;
    for (const Security& security : listing.securities) {
        words.push_back(count[security.code] > 1 ? Marked(security) : security.code);
    }
    return words;
}

}  // namespace panelry::desk
