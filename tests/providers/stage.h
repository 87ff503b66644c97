#pragma once

#include <QtTest>
#include <chrono>
#include <memory>
#include <string>
#include <utility>

#include "base/host_text.h"
#include "desk/providers/market_host.h"
#include "providers/client.h"
#include "tables/table_form_info.h"

Q_DECLARE_METATYPE(StringMap)

namespace panelry::test
{

using namespace std::chrono_literals;

/// The shipped market on a clock that stands at 10:00, with a crowd that is silent: nothing happens but what
/// a test does.
inline desk::MarketHost::Settings StillMarket()
{
    desk::MarketHost::Settings settings;
    settings.listing = SECURITIES;
    settings.opening = ACCOUNTS;
    settings.changesPerSecond = 0;
    settings.speed = 0;
    settings.startOfDay = 10h;
    return settings;
}

/// One client in front of a host.
struct Stage {
    explicit Stage(const desk::MarketHost::Settings& settings = StillMarket()) : host(settings)
    {
        host.Start();
        client->QuoteObserver::SetProvider(host.Quotes());
        client->TradeObserver::SetProvider(host.Trades());
        form.SetObservers(client, client);
    }
    ~Stage() { host.Stop(); }

    int Send(StringMap head, StringMap body, StringMap local = {})
    {
        return client->SendTradeRequest(std::make_shared<ddsdk::TradeRequestParam>(
            ddsdk::TradeRequestParam{std::move(head), std::move(body), std::move(local)}));
    }

    /// Waits until what was asked before is answered, and gives the news without the waiting's own. The trade
    /// side does one thing after another.
    std::string Settle()
    {
        const std::size_t before = client->Answers().size();
        std::string news;
        Send({{"type", "1025"}}, {{"zqdm", "settle"}});
        const auto isThere = [&] {
            const auto answers = client->Answers();
            return answers.size() > before && answers.back()->request->body["zqdm"] == "settle";
        };
        if (!QTest::qWaitFor(isThere)) {
            return "nothing is answered";
        }
        for (const std::string& one : client->TakeNews()) {
            news += (one == "answer 1025" ? "" : one + "; ");
        }
        return news;
    }

    /// Sends a request and waits for its answer's reply.
    ddsdk::TradeRequestParam Ask(StringMap head, StringMap body, StringMap local = {})
    {
        const std::size_t before = client->Answers().size();
        Send(std::move(head), std::move(body), std::move(local));
        Settle();
        const auto answers = client->Answers();
        return answers.size() == before + 2 ? *answers[before]->reply : ddsdk::TradeRequestParam();
    }

    /// An order of the desk's kind: 1000 of 600000 at 9.90, with `changes`.
    StringMap Order(const StringMap& changes = {})
    {
        StringMap body{
            {"zqdm", "600000"}, {"market", "17"}, {"mmlb", "B"}, {"wtjg", "9.90"}, {"wtsl", "1000"}};
        for (const auto& [key, value] : changes) {
            body[key] = value;
        }
        return Ask({{"type", "3"}}, body).body;
    }

    /// 600000 is bought at the broker's counter.
    std::string BuyAtCounter(desk::AccountKind account, desk::Price price, desk::Quantity quantity)
    {
        const desk::OrderWish wish{account, Security(17, "600000"), desk::Side::Buy, price, quantity};
        return host.Market().Place(wish).contract;
    }
    std::size_t Security(std::uint8_t market, const char* code)
    {
        return *host.Market().Securities().Find(market, code);
    }

    /// An open order is dealt.
    std::string Fill(desk::AccountKind account, const std::string& contract, desk::Quantity quantity,
                     int parts = 1)
    {
        return host.Market().Fill(account, contract, quantity, parts);
    }

    /// Asks for a list under a name, and gives a column of what came.
    std::string List(void (DataDealBase::*query)(StringMap&), const std::string& name, const char* column,
                     StringMap parameters = {})
    {
        client->SubscribeKey(name, true);
        parameters["table_name"] = name;
        (static_cast<DataDealBase&>(form).*query)(parameters);
        Settle();
        return client->Column(name, column);
    }

    desk::MarketHost host;
    std::shared_ptr<Client> client = std::make_shared<Client>();
    TableFormInfo form;
};

}  // namespace panelry::test
