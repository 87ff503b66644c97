// An order ticket of the library in front of the desk's market.

#include "ticket/ticket_session.h"

#include "providers/stage.h"
#include "support/rows.h"
#include "support/test.h"

using namespace panelry::test;
using panelry::TicketChoice;
using panelry::TicketNews;
using panelry::TicketSession;

namespace
{

class Ticket : public panelry::TicketListener
{
public:
    explicit Ticket(panelry::desk::MarketHost& host) : session(host.Quotes(), host.Trades(), *this) {}

    void OnTicketChanged(TicketNews news) override
    {
        answers += news == TicketNews::Stock ? 1 : 0;
        quotes += news == TicketNews::Quote ? 1 : 0;
    }
    void OnTicketChoices(const std::vector<TicketChoice>& offered) override { choices = offered; }
    void OnTicketProblem(const std::string& told) override { problem += told; }
    void OnOrderAnswered(const panelry::OrderAnswer& answer) override { order = answer.reply.body; }

    std::string Fields(const QString& keys)
    {
        std::string fields;
        for (const QString& key : keys.split(QLatin1Char(' '))) {
            fields += session.Ticket()[key.toStdString()] + " ";
        }
        return fields;
    }

    int answers = 0;
    int quotes = 0;
    std::vector<TicketChoice> choices;
    std::string problem;
    StringMap order;
    TicketSession session;
};

}  // namespace

class TicketTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void ATicketKnowsItsSecurity_data()
    {
        const Rows<StringMap, const char*, const char*> row("opened keys values");
        const auto of = [](const char* code) { return StringMap{{"stockcode", code}}; };
        const auto all =
            "market price_decimal price_step amount_step amount_min amount_max amount_unit "
            "amount_chart_volunit hand kcb cyb scdm gdzh";
        row("main board of Shanghai", of("600000"), all,
            "17 2 0.01 100 -1 1000000 股 1 100 0 0 1 A880010011 ");
        row("STAR", of("688981"), all, "22 2 0.01 1 200 100000 股 1 100 1 0 1 A880010011 ");
        row("ChiNext", of("300750"), all, "37 2 0.01 100 -1 300000 股 1 100 0 1 2 0880010012 ");
        row("a fund", of("510300"), all, "20 3 0.001 100 -1 1000000 股 1 100 0 0 1 A880010011 ");
        row("a fund of Shenzhen", of("159001"), all, "36 3 0.001 100 -1 1000000 股 1 100 0 0 2 0880010012 ");
        row("a bond in pieces", of("019666"), all, "23 3 0.001 10 -1 1000000 张 1 10 0 0 1 A880010011 ");
        row("a bond in hands", of("113001"), all, "19 3 0.001 10 -1 1000000 手 10 10 0 0 1 A880010011 ");
        row("a B share", of("900901"), all, "18 3 0.001 100 -1 1000000 股 1 100 0 0   ");
        row("Connect", of("00700"), all, "64 3 0.200 100 -1 1000000 股 1 100 0 0   ");

        const char* const limits = "raising_limit limit_down last_closing_price latest_price";
        row("limits", of("600000"), limits, "11.02 9.02 10.02 10.02 ");
        row("limits of STAR", of("688981"), "raising_limit limit_down", "61.44 40.96 ");
        row("none of a bond", of("019666"), "raising_limit limit_down", "0 0 ");
        row("the phase", of("600000"), "isshowxj islxjj", "1 1 ");
        row("margin", {{"stockcode", "600000"}, {"rzrq", "1"}}, "kcb cyb scdm gdzh", "0 0 !1 E990010021 ");
        row("of two the given one", {{"stockcode", "000001"}, {"market", "33"}}, "kcb cyb scdm gdzh",
            "0 0 2 0880010012 ");

        const char* const usable = "usable_amount";
        row("to sell", {{"stockcode", "600000"}, {"type", "S"}}, usable, "12500 ");
        row("to sell of margin", {{"stockcode", "600000"}, {"type", "S"}, {"rzrq", "1"}}, usable, "6000 ");
        row("to sell of Connect", {{"stockcode", "00700"}, {"type", "S"}}, usable, "300 ");
        // 500000 yuan, less 0.026 %, at 10.02.
        row("to buy", {{"stockcode", "600000"}, {"type", "B"}}, usable, "49800 ");
        row("at a price", {{"stockcode", "600000"}, {"type", "B"}, {"price", "11.00"}}, usable, "45400 ");
        row("told twice", {{"stockcode", "300059"}, {"type", "B"}, {"price", "15.00"}}, usable, "33300 ");
        row("an index", {{"stockcode", "000001"}, {"market", "16"}, {"type", "B"}}, usable, "0 ");
    }

    void ATicketKnowsItsSecurity()
    {
        QFETCH(StringMap, opened);
        QFETCH(const QString, keys);
        QFETCH(const QString, values);
        Stage stage;
        Ticket ticket(stage.host);
        ticket.session.Open(opened);
        QTRY_VERIFY(ticket.answers == 1 && ticket.quotes >= 1);
        QCOMPARE(QString::fromStdString(ticket.Fields(keys)), values);
        QCOMPARE(ticket.problem, std::string());
    }

    void AnAmbiguousCodeIsOffered()
    {
        Stage stage;
        Ticket ticket(stage.host);
        ticket.session.Open({{"stockcode", "000001"}});
        QTRY_COMPARE(ticket.choices.size(), std::size_t{2});
        const auto& [index, stock] = std::tie(ticket.choices[0], ticket.choices[1]);
        QCOMPARE(index.market + index.marketName + index.stockName, std::string("16上海演示综合指数"));
        QCOMPARE(stock.market + stock.marketName + stock.stockName, std::string("33深圳演示城商行"));
        ticket.session.Open({{"stockcode", stock.stockCode}, {"market", stock.market}});
        QTRY_COMPARE(ticket.answers, 1);
        QCOMPARE(ticket.Fields(QStringLiteral("stock_name")), std::string("演示城商行 "));
    }

    void AnUnknownCodeIsAnsweredWithNothing()
    {
        Stage stage;
        Ticket ticket(stage.host);
        ticket.session.Open({{"stockcode", "999999"}});
        QTRY_COMPARE(ticket.answers, 1);
        QCOMPARE(ticket.Fields(QStringLiteral("stock_name latest_price")), std::string("  "));
    }

    void ATicketFollowsTheMarket()
    {
        Stage stage;
        Ticket ticket(stage.host);
        ticket.session.Open({{"stockcode", "600000"}});
        QTRY_COMPARE(ticket.answers, 1);
        stage.host.Market().RunToLimit(stage.Security(17, "600000"), panelry::desk::Side::Buy);
        QTRY_COMPARE(ticket.Fields(QStringLiteral("buy_1_price sell_1_price islxjj")),
                     std::string("11.02  1 "));
        stage.host.Market().MoveTo(14h + 58min);
        QTRY_COMPARE(ticket.Fields(QStringLiteral("islxjj")), std::string("0 "));
    }

    void AnOrderOfATicketIsAnswered()
    {
        Stage stage;
        for (const auto& [price, result, reason] : {std::tuple("9.90", "0", ""), {"9.00", "-1", "涨跌停"}}) {
            Ticket ticket(stage.host);
            QVERIFY(ticket.session.SendOrder(
                {{{"type", "3"}},
                 {{"zqdm", "600000"}, {"market", "17"}, {"mmlb", "B"}, {"wtjg", price}, {"wtsl", "100"}},
                 {}}));
            QTRY_VERIFY(!ticket.order.empty());
            QCOMPARE(ticket.order["ret"], std::string(result));
            QVERIFY(ticket.order["ret_text"].find(reason) != std::string::npos);
        }
    }
};

PANELRY_TEST(TicketTest)

#include "ticket_test.moc"
