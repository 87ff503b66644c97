#include "exchange/stage.h"

#include <sstream>
#include <stdexcept>
#include <vector>

namespace panelry::desk::test
{

namespace
{

Security Listed(const char* code, std::uint8_t market, SecurityKind kind, Price close, int limitPercent,
                Quantity lot)
{
    Security security;
    security.code = code;
    security.market = market;
    security.name = "模拟";
    security.kind = kind;
    security.close = close;
    security.limitPercent = limitPercent;
    security.lot = security.minimum = lot;
    security.decimals = kind == SecurityKind::Fund || kind == SecurityKind::Bond || market == 64 ? 3 : 2;
    security.step = security.decimals == 3 ? 1 : 10;
    return security;
}

std::vector<std::string> Split(const std::string& text, char separator)
{
    std::vector<std::string> parts;
    std::istringstream in(text);
    for (std::string part; std::getline(in >> std::ws, part, separator);) {
        parts.push_back(part);
    }
    return parts;
}

}  // namespace

std::shared_ptr<const Listing> SmallListing()
{
    auto listing = std::make_shared<Listing>();
    listing->securities = {
        Listed("600001", 17, SecurityKind::Stock, 10'000, 10, 100),
        Listed("600003", 17, SecurityKind::Stock, 1'000, 10, 100),
        Listed("605001", 17, SecurityKind::Stock, 20'000, 0, 100),
        Listed("688001", 22, SecurityKind::Star, 50'000, 20, 1),
        Listed("688002", 22, SecurityKind::Star, 1'000, 20, 1),
        Listed("300001", 37, SecurityKind::ChiNext, 20'000, 20, 100),
        Listed("510001", 20, SecurityKind::Fund, 3'000, 10, 100),
        Listed("019001", 23, SecurityKind::Bond, 100'000, 0, 10),
        Listed("730001", 17, SecurityKind::Subscription, 5'000, 0, 500),
        Listed("00001", 64, SecurityKind::Connect, 80'000, 0, 500),
        Listed("000001", 16, SecurityKind::Index, 3'000'000, 0, 100),
    };
    for (Security& security : listing->securities) {
        if (security.kind == SecurityKind::Star) {
            security.minimum = 200;
            security.maximum = 100'000;
        }
    }
    listing->securities[5].maximum = 300'000;
    listing->securities[9].step = 50;
    return listing;
}

std::shared_ptr<const Listing> ShippedListing()
{
    static const auto listing = std::make_shared<const Listing>(ReadListing(SECURITIES_FILE));
    return listing;
}

MarketTime Time(const std::string& text)
{
    const std::size_t slash = text.find('/');
    const int day = slash == std::string::npos ? 1 : std::stoi(text.substr(0, slash));
    const auto parts = Split(slash == std::string::npos ? text : text.substr(slash + 1), ':');
    const Price milliseconds = parts.size() > 2 ? ReadPrice(parts[2]).value() : 0;
    return {day, std::chrono::hours(std::stoi(parts.at(0))) + std::chrono::minutes(std::stoi(parts.at(1))) +
                     std::chrono::milliseconds(milliseconds)};
}

Stage::Stage() : exchange(SmallListing(), {1, 0, 1}), m_security(0)
{
    exchange.SetListener(this);
}

std::string Stage::Play(const std::string& line)
{
    m_said.clear();
    for (const std::string& step : Split(line, ';')) {
        Step(step);
    }
    return m_said;
}

void Stage::Step(const std::string& step)
{
    const std::vector<std::string> words = Split(step, ' ');
    const auto number = [&](std::size_t word) { return std::stoll(words.at(word)); };
    const std::string& verb = words.at(0);
    if (verb == "buy" || verb == "sell") {
        const Side side = verb == "buy" ? Side::Buy : Side::Sell;
        const std::string at = words.size() > 1 ? words[1] : "10.00";
        const Price price = at[0] == '-' ? -1 : ReadPrice(at).value();
        Order(side, {m_security, side, price, words.size() > 2 ? number(2) : 100,
                     words.size() > 3 ? number(3) : 0});
    } else if (verb == "cancel") {
        Say(exchange.Cancel(static_cast<OrderId>(number(1))) ? "" : "cancel fails");
    } else if (verb == "fill") {
        const bool filled =
            exchange.Fill(static_cast<OrderId>(number(1)), number(2), static_cast<int>(number(3)));
        Say(filled ? "" : "fill fails");
    } else if (verb == "on") {
        m_security = exchange.Securities().FindAll(words.at(1)).at(0);
    } else if (verb == "up" || verb == "down") {
        exchange.RunToLimit(m_security, verb == "up" ? Side::Buy : Side::Sell);
    } else if (verb == "suspend" || verb == "resume") {
        exchange.SetSuspended(m_security, verb == "suspend");
    } else if (verb == "rate") {
        exchange.SetRate(static_cast<double>(number(1)));
    } else if (verb == "book") {
        Say(Book());
    } else if (verb == "day") {
        Say(Day());
    } else if (verb == "limits") {
        const Quote& quote = exchange.QuoteOf(m_security);
        Say(Text(quote.lowerLimit) + " to " + Text(quote.upperLimit));
    } else if (verb == "nowhere") {
        m_security = exchange.Securities().securities.size();
    } else if (verb == "phases") {
        m_tellsPhases = true;
    } else if (verb.find(':') != std::string::npos) {
        exchange.AdvanceTo(Time(verb));
    } else {
        throw std::invalid_argument("no such step: " + step);
    }
}

void Stage::Order(Side side, const NewOrder& order)
{
    const OrderId next = exchange.NextOrderId();
    const auto result = exchange.Submit(order);
    if (const auto* const refusal = std::get_if<Refusal>(&result)) {
        Say("no: " + refusal->reason);
    } else if (std::get<OrderId>(result) != next || order.side != side) {
        Say("wrong id");
    }
}

std::string Stage::Text(Price price) const
{
    return PriceText(price, exchange.Securities().securities[m_security].decimals);
}

std::string Stage::Book() const
{
    const Quote& quote = exchange.QuoteOf(m_security);
    std::string text;
    for (const auto* side : {&quote.bids, &quote.asks}) {
        text += side == &quote.bids ? "" : text.empty() ? "|" : " |";
        for (const Level& level : *side) {
            if (level.price != 0 || level.quantity != 0) {
                text += (text.empty() ? "" : " ") + Text(level.price) + "x" + std::to_string(level.quantity);
            }
        }
    }
    return text;
}

std::string Stage::Day() const
{
    const Quote& quote = exchange.QuoteOf(m_security);
    return Text(quote.open) + " " + Text(quote.high) + " " + Text(quote.low) + " " + Text(quote.last) + " " +
           std::to_string(quote.volume) + " " + MoneyText(quote.turnover);
}

void Stage::Say(const std::string& text)
{
    m_said += (m_said.empty() || text.empty() ? "" : "; ") + text;
}

void Stage::OnDeal(OrderId order, Price price, Quantity quantity)
{
    Say(std::to_string(order) + ": " + Text(price) + "x" + std::to_string(quantity));
}

void Stage::OnGone(OrderId order)
{
    Say("gone " + std::to_string(order));
}

void Stage::OnPhase(Phase phase)
{
    if (m_tellsPhases) {
        Say(PhaseName(phase));
    }
}

}  // namespace panelry::desk::test
