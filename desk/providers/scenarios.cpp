#include "desk/providers/scenarios.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <optional>

#include "desk/providers/market_host.h"
#include "desk/providers/stock_records.h"

namespace panelry::desk
{

namespace
{

using Words = std::vector<std::string>;

constexpr double kFastRate = 20'000;
constexpr int kManyParts = 1000;

constexpr Scenario kScenarios[] = {
    {"limit-up", "CODE [MARKET]",
     "buyers take all there is; the price stands at the upper limit until the day ends"},
    {"limit-down", "CODE [MARKET]",
     "sellers take all there is; the price stands at the lower limit until the day ends"},
    {"suspend", "CODE [MARKET]", "trade in the security stops"},
    {"resume", "CODE [MARKET]", "trade in the security goes on"},
    {"fast-market", "[RATE]", "quotes change RATE times a second, all together (20000)"},
    {"thousand-fills", "[CODE [MARKET]]",
     "the largest open order, of the security if one is named, is dealt in up to a thousand deals"},
    {"login-lost", "", "the trade side is cut off"},
    {"login-back", "", "the trade side is back"},
    {"midnight", "", "the clock goes to 00:00 of the next day"},
};

// What is told to people of a command that can't be done.
using Outcome = std::string;

std::optional<std::size_t> NamedSecurity(MarketHost& host, const Words& words)
{
    const int market = words.size() > 2 ? MarketNumber(words[2]) : 0;
    return words.size() > 1 ? SecurityMeant(host.Market().Securities(), market, words[1]) : std::nullopt;
}

Outcome PlayOnSecurity(MarketHost& host, const Words& words)
{
    const std::optional<std::size_t> security = NamedSecurity(host, words);
    if (!security) {
        return words.size() > 1 ? "no security has the code " + words[1] : words[0] + " needs a code";
    }
    Simulation& market = host.Market();
    if (words[0] == "limit-up") {
        market.RunToLimit(*security, Side::Buy);
    } else if (words[0] == "limit-down") {
        market.RunToLimit(*security, Side::Sell);
    } else {
        market.SetSuspended(*security, words[0] == "suspend");
    }
    return {};
}

Outcome PlayFastMarket(MarketHost& host, const Words& words)
{
    double rate = kFastRate;
    if (words.size() > 1) {
        const std::string& text = words[1];
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), rate);
        if (error != std::errc() || end != text.data() + text.size() || !(rate >= 0 && rate <= 1e6)) {
            return text + " is no rate from 0 to 1000000";
        }
    }
    host.Market().SetRate(rate);
    return {};
}

// Of whatever account.
std::optional<Order> LargestOpenOrder(const Simulation& market, std::optional<std::size_t> security)
{
    return market.Read([&](const Exchange&, const Brokerage& brokerage) {
        std::optional<Order> largest;
        for (const AccountKind account : {AccountKind::Normal, AccountKind::Margin, AccountKind::Connect}) {
            for (const Order& order : brokerage.Orders(account, true)) {
                if ((!security || order.wish.security == *security) &&
                    (!largest || order.Rest() > largest->Rest())) {
                    largest = order;
                }
            }
        }
        return largest;
    });
}

Outcome PlayThousandFills(MarketHost& host, const Words& words)
{
    const std::optional<std::size_t> security = NamedSecurity(host, words);
    if (words.size() > 1 && !security) {
        return "no security has the code " + words[1];
    }
    const std::optional<Order> order = LargestOpenOrder(host.Market(), security);
    if (!order) {
        return "there is no open order";
    }
    return host.Market().Fill(order->wish.account, order->contract, order->Rest(), kManyParts);
}

}  // namespace

std::span<const Scenario> Scenarios()
{
    return kScenarios;
}

std::string PlayScenario(MarketHost& host, const std::vector<std::string>& words)
{
    const auto* const found =
        std::find_if(std::begin(kScenarios), std::end(kScenarios),
                     [&](const Scenario& one) { return !words.empty() && words[0] == one.name; });
    if (found == std::end(kScenarios)) {
        return words.empty() ? "no scenario is named" : "there is no scenario " + words[0];
    }
    if (words[0] == "fast-market") {
        return PlayFastMarket(host, words);
    }
    if (words[0] == "thousand-fills") {
        return PlayThousandFills(host, words);
    }
    if (words[0] == "login-lost") {
        host.LoseLogin();
    } else if (words[0] == "login-back") {
        host.LogIn();
    } else if (words[0] == "midnight") {
        host.Market().Midnight();
    } else {
        return PlayOnSecurity(host, words);
    }
    return {};
}

}  // namespace panelry::desk
