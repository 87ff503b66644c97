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
        const char* const rules = "market price_decimal price_step amount_step amount_min amount_max";
        const char* const unit = "stock_name amount_unit amount_chart_volunit hand";
        const char* const account = "kcb cyb scdm gdzh";
        row("main board of Shanghai", {{"stockcode", "600000"}}, rules, "17 2 0.01 100 -1 1000000 ");
        row("its account", {{"stockcode", "600000"}}, account, "0 0 1 A880010011 ");
        row("its margin account", {{"stockcode", "600000"}, {"rzrq", "1"}}, account, "0 0 !1 E990010021 ");
        row("main board of Shenzhen", {{"stockcode", "000001"}, {"market", "33"}}, account,
            "0 0 2 0880010012 ");
        row("STAR", {{"stockcode", "688981"}}, rules, "22 2 0.01 1 200 100000 ");
        row("its board", {{"stockcode", "688981"}}, account, "1 0 1 A880010011 ");
        row("ChiNext", {{"stockcode", "300750"}}, rules, "37 2 0.01 100 -1 300000 ");
        row("its board too", {{"stockcode", "300750"}}, account, "0 1 2 0880010012 ");
        row("a fund", {{"stockcode", "510300"}}, rules, "20 3 0.001 100 -1 1000000 ");
        row("its unit", {{"stockcode", "510300"}}, unit, "演示三百基金 股 1 100 ");
        row("a fund of Shenzhen", {{"stockcode", "159001"}}, rules, "36 3 0.001 100 -1 1000000 ");
        row("a bond in pieces", {{"stockcode", "019666"}}, unit, "演示国债2201 张 1 10 ");
        row("its steps", {{"stockcode", "019666"}}, rules, "23 3 0.001 10 -1 1000000 ");
        row("a bond in hands", {{"stockcode", "113001"}}, unit, "演示转债 手 10 10 ");
        row("a B share", {{"stockcode", "900901"}}, rules, "18 3 0.001 100 -1 1000000 ");
        row("Connect", {{"stockcode", "00700"}}, rules, "64 3 0.200 100 -1 1000000 ");
        row("its lot", {{"stockcode", "00700"}}, unit, "演示港股1 股 1 100 ");
        row("limits", {{"stockcode", "600000"}}, "raising_limit limit_down last_closing_price latest_price",
            "11.02 9.02 10.02 10.02 ");
        row("limits of STAR", {{"stockcode", "688981"}}, "raising_limit limit_down", "61.44 40.96 ");
        row("none of a bond", {{"stockcode", "019666"}}, "raising_limit limit_down", "0 0 ");
        row("to sell", {{"stockcode", "600000"}, {"type", "S"}}, "usable_amount", "12500 ");
        row("to sell of margin", {{"stockcode", "600000"}, {"type", "S"}, {"rzrq", "1"}}, "usable_amount",
            "6000 ");
        row("to sell of Connect", {{"stockcode", "00700"}, {"type", "S"}}, "usable_amount", "300 ");
        // 500000 yuan, less 0.026 %, at 10.02.
        row("to buy", {{"stockcode", "600000"}, {"type", "B"}}, "usable_amount", "49800 ");
        row("to buy at a price", {{"stockcode", "600000"}, {"type", "B"}, {"price", "11.00"}},
            "usable_amount", "45400 ");
        row("an index", {{"stockcode", "000001"}, {"market", "16"}, {"type", "B"}}, "usable_amount", "0 ");
        row("told twice", {{"stockcode", "300059"}, {"type", "B"}, {"price", "15.00"}}, "usable_amount",
            "33300 ");
        row("the phase", {{"stockcode", "600000"}}, "isshowxj islxjj", "1 1 ");
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
        QCOMPARE(ticket.choices[0].market + ticket.choices[0].marketName + ticket.choices[0].stockName,
                 std::string("16上海演示综合指数"));
        QCOMPARE(ticket.choices[1].market + ticket.choices[1].marketName + ticket.choices[1].stockName,
                 std::string("33深圳演示城商行"));
        ticket.session.Open(
            {{"stockcode", ticket.choices[1].stockCode}, {"market", ticket.choices[1].market}});
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
        stage.host.Market().RunToLimit(*stage.host.Market().Securities().Find(17, "600000"),
                                       panelry::desk::Side::Buy);
        QTRY_COMPARE(ticket.Fields(QStringLiteral("buy_1_price sell_1_price islxjj")),
                     std::string("11.02  1 "));
        stage.host.Market().MoveTo(14h + 58min);
        QTRY_COMPARE(ticket.Fields(QStringLiteral("islxjj")), std::string("0 "));
    }

    void AnOrderOfATicketIsAnswered_data()
    {
        const Rows<const char*, const char*, const char*, const char*> row("price amount result reason");
        row("accepted", "9.90", "100", "0", "");
        row("refused", "9.00", "100", "-1", "涨跌停");
    }

    void AnOrderOfATicketIsAnswered()
    {
        QFETCH(const QString, price);
        QFETCH(const QString, amount);
        QFETCH(const QString, result);
        QFETCH(const QString, reason);
        Stage stage;
        Ticket ticket(stage.host);
        const auto sent = ticket.session.SendOrder({{{"type", "3"}},
                                                    {{"zqdm", "600000"},
                                                     {"market", "17"},
                                                     {"mmlb", "B"},
                                                     {"wtjg", price.toStdString()},
                                                     {"wtsl", amount.toStdString()}},
                                                    {}});
        QVERIFY(sent.has_value());
        QTRY_VERIFY(!ticket.order.empty());
        QCOMPARE(ticket.order["ret"], result.toStdString());
        QVERIFY(QString::fromStdString(ticket.order["ret_text"]).contains(reason));
    }
};

PANELRY_TEST(TicketTest)

#include "ticket_test.moc"
