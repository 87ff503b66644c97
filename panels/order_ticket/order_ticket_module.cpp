#include "order_ticket/order_ticket_module.h"

#include <QVariant>
#include <utility>

#include "base/number_text.h"
#include "common/frame_commands.h"
#include "common/panel_style.h"
#include "common/placement.h"
#include "hosting/message_ids.h"
#include "hosting/module_manager_spi.h"
#include "hosting/widget_properties.h"

namespace panelry
{

namespace
{

constexpr int kPriceSettledMs = 300;
constexpr int kAnswerAwaitedMs = 10'000;
constexpr char kAnswerAwaited[] = "answer_awaited";  // the timer's name

std::string Value(const StringMap& fields, const char* key)
{
    const auto found = fields.find(key);
    return found == fields.end() ? std::string() : found->second;
}

}  // namespace

OrderTicketModule::OrderTicketModule(const InstanceInfo& info) : m_widget(new OrderTicketWidget)
{
    m_instance = info;
    m_widget->setWindowTitle(QString::fromStdString(info.module_title));
    m_widget->setProperty(kSupportClone, true);
    style::SetFrameSize(m_widget, m_widget->sizeHint());
    m_priceSettled.setSingleShot(true);
    m_priceSettled.setInterval(kPriceSettledMs);
    ConnectWidget();
    ConnectOrders();
}

OrderTicketModule::~OrderTicketModule()
{
    m_session.reset();
    delete m_widget;
}

void OrderTicketModule::ConnectWidget()
{
    OrderTicketWidget* const widget = m_widget;
    QObject::connect(widget, &OrderTicketWidget::CodeEntered, widget, [this](const QString& code) {
        m_tellStock = true;
        Open(code.toStdString(), {});
    });
    QObject::connect(widget, &OrderTicketWidget::CodeLeft, widget, [this] { Close(); });
    QObject::connect(widget, &OrderTicketWidget::ChoicePicked, widget, [this](int row) {
        if (row >= 0 && row < static_cast<int>(m_choices.size())) {
            const TicketChoice choice = m_choices[static_cast<std::size_t>(row)];
            Open(choice.stockCode, choice.market);
        }
    });
    QObject::connect(widget, &OrderTicketWidget::SideChanged, widget, [this] {
        if (m_session) {
            Open(m_code, Value(m_session->Ticket(), "market"));
        }
    });
    QObject::connect(widget, &OrderTicketWidget::PriceChanged, &m_priceSettled, qOverload<>(&QTimer::start));
    QObject::connect(&m_priceSettled, &QTimer::timeout, widget, [this] { AskUsable(); });
    QObject::connect(widget, &OrderTicketWidget::MoneyEntered, widget,
                     [this](const QString& money) { FillAmount(money); });
    QObject::connect(widget, &OrderTicketWidget::StepWanted, widget,
                     [this](bool price, int steps) { Step(price, steps); });
    QObject::connect(widget, &OrderTicketWidget::AccountChanged, widget, [this] { ChangeAccount(); });
}

void OrderTicketModule::ConnectOrders()
{
    QObject::connect(m_widget, &OrderTicketWidget::OrderWanted, m_widget, [this] { Check(); });
    QObject::connect(m_widget, &OrderTicketWidget::OrderConfirmed, m_widget, [this] { Send(); });
    m_answerAwaited = new QTimer(m_widget);
    m_answerAwaited->setObjectName(QLatin1String(kAnswerAwaited));
    m_answerAwaited->setSingleShot(true);
    m_answerAwaited->setInterval(kAnswerAwaitedMs);
    QObject::connect(m_answerAwaited, &QTimer::timeout, m_widget, [this] {
        EndSending();
        m_widget->ShowMessage(TicketMessage::Failure,
                              QStringLiteral("柜台尚未答复：请先查询委托，再决定是否重发"));
    });
}

void OrderTicketModule::SetProviders(void* quoteProvider, void* tradeProvider)
{
    m_trades = static_cast<TradeProvider*>(tradeProvider);
    m_session.emplace(static_cast<QuoteProvider*>(quoteProvider), m_trades, *this);
    m_widget->ShowStatus(tradeProvider ? QStringLiteral("请输入代码") : QStringLiteral("未连接交易服务"));
}

void OrderTicketModule::Initialize(int /*moduleId*/, const char* /*a*/, const char* /*b*/,
                                   const char* initParam)
{
    PlaceFrame(m_widget, initParam);
}

void OrderTicketModule::OnMessage(int msgId, void* payload)
{
    if (!m_widget || HandleFrameCommand(msgId, m_widget) || msgId != kStockSelected || !payload) {
        return;
    }
    const auto& stock = *static_cast<const StringMap*>(payload);
    if (!Value(stock, "stockcode").empty()) {
        m_tellStock = false;
        Open(Value(stock, "stockcode"), Value(stock, "market"));
    }
}

void OrderTicketModule::Open(const std::string& code, const std::string& market)
{
    if (!m_session || !m_widget || code.empty()) {
        return;
    }
    m_code = code;
    m_priceSettled.stop();
    m_widget->StartTicket(QString::fromStdString(code));
    m_widget->ShowStatus(QStringLiteral("正在查询 %1").arg(QString::fromStdString(code)));
    const std::string side = m_widget->Side();
    StringMap fields{{"stockcode", code}, {"market", market}, {"type", side}, {"czlb", side}};
    if (m_widget->Account() == OrderAccount::Margin) {
        fields["rzrq"] = "1";
    }
    m_session->Open(std::move(fields));
}

void OrderTicketModule::Close()
{
    m_code.clear();
    m_priceSettled.stop();
    if (m_session) {
        m_session->Close();
    }
    m_widget->EndTicket();
    m_widget->ShowStatus(QStringLiteral("请输入代码"));
}

void OrderTicketModule::OnTicketChanged(TicketNews news)
{
    if (!m_widget) {
        return;
    }
    const TicketFace face = ReadFace(m_session->Ticket());
    m_widget->ShowFace(face);
    if (news != TicketNews::Stock) {
        return;
    }
    const QString code = QString::fromStdString(m_code);
    if (!face.known) {
        m_widget->ShowStatus(QStringLiteral("没有找到代码 %1").arg(code));
        return;
    }
    if (TakeAccountOfMarket()) {
        return;
    }
    m_widget->ShowStatus(face.market + QLatin1Char(' ') + code + QLatin1Char(' ') + face.name);
    OfferPrice();
    m_widget->TellMoney();  // by now the rules know in what it is counted
    AskUsable();            // the answer's own quantity is for no price in particular
    TellStock();
}

// The stock's market may be another account's. True if the ticket was opened anew for that: what the margin
// account was asked for counts for no other.
bool OrderTicketModule::TakeAccountOfMarket()
{
    const OrderAccount chosen = m_widget->Account();
    const std::string market = Value(m_session->Ticket(), "market");
    const OrderAccount fitting = AccountFor(market, chosen);
    if (fitting == chosen) {
        return false;
    }
    m_widget->SetAccount(fitting);
    if (chosen == OrderAccount::Margin) {
        Open(m_code, market);
        return true;
    }
    return false;
}

// Another account for the same stock, or, where it can't trade that, another stock.
void OrderTicketModule::ChangeAccount()
{
    if (!m_session || m_code.empty()) {
        return;
    }
    const OrderAccount chosen = m_widget->Account();
    const std::string market = Value(m_session->Ticket(), "market");
    if (AccountFor(market, chosen) == chosen) {
        Open(m_code, market);
    } else {
        Close();
        m_widget->AskCode();
    }
}

// The price at which the order would be filled.
void OrderTicketModule::OfferPrice()
{
    const StringMap& ticket = m_session->Ticket();
    if (m_widget->Price().isEmpty()) {
        std::string price = Value(ticket, m_widget->Side() == "B" ? "sell_1_price" : "buy_1_price");
        if (TextToDouble(price) <= 0) {
            price = Value(ticket, "latest_price");
        }
        m_widget->SetPrice(QString::fromStdString(price));
    }
}

void OrderTicketModule::TellStock()
{
    if (!m_tellStock || !m_manager) {
        return;
    }
    m_tellStock = false;
    const StringMap& ticket = m_session->Ticket();
    StringMap stock{{"stockcode", Value(ticket, "stockcode")},
                    {"market", Value(ticket, "market")},
                    {"stockname", Value(ticket, "stock_name")}};
    m_manager->SendModuleMessage(kStockSelected, &stock, this, kAlongLink);
}

void OrderTicketModule::OnTicketChoices(const std::vector<TicketChoice>& choices)
{
    if (m_widget) {
        m_choices = choices;
        m_widget->ShowStatus(QStringLiteral("代码对应 %1 只证券，请选择").arg(choices.size()));
        m_widget->ShowChoices(choices);
    }
}

void OrderTicketModule::OnTicketProblem(const std::string& problem)
{
    if (m_widget) {
        m_widget->Warn(QStringLiteral("柜台数据有误：%1").arg(QString::fromStdString(problem)));
    }
}

void OrderTicketModule::AskUsable()
{
    if (m_session && !m_widget->Price().isEmpty()) {
        m_session->AskUsableAmount(m_widget->Price().toStdString());
    }
}

void OrderTicketModule::FillAmount(const QString& money)
{
    if (!m_session) {
        return;
    }
    if (money.isEmpty() || m_widget->Price().isEmpty()) {
        return m_widget->SetAmount(QString());
    }
    StringMap& ticket = m_session->Ticket();
    if (IsConnectMarket(Value(ticket, "market"))) {  // the rules know lots of 100 only
        return m_widget->SetAmount(QString::fromStdString(WholeLots(ticket, money, m_widget->Price())));
    }
    ticket["dd_price"] = m_widget->Price().toStdString();
    ticket["dd_money"] = money.toStdString();
    m_session->Rules().FillMaxAmount(ticket);
    m_widget->SetAmount(PlainQuantity(ticket["dd_amount"]));
}

void OrderTicketModule::Step(bool price, int steps)
{
    if (!m_session) {
        return;
    }
    const StringMap& ticket = m_session->Ticket();
    const std::string step = price ? Value(ticket, "price_step") : QuantityStep(ticket);
    if (step.empty()) {
        return;  // no stock yet: a price would lose its decimals
    }
    if (price) {
        m_widget->SetPrice(
            Stepped(m_widget->Price(), step, steps, TextToInt(Value(ticket, "price_decimal"))));
        m_priceSettled.start();
    } else {
        m_widget->SetAmount(Stepped(m_widget->Amount(), step, steps, 0));
    }
}

OrderEntry OrderTicketModule::Entry() const
{
    return {m_widget->Side(), m_widget->Price().toStdString(), m_widget->Amount().toStdString(),
            m_widget->Account(), m_widget->OnCredit()};
}

std::string OrderTicketModule::FundsAccount() const
{
    std::shared_ptr<std::string> account;
    if (m_trades) {
        m_trades->GetString("account", account);
    }
    return account ? *account : std::string();
}

// The rules check a ticket that has been answered.
QString OrderTicketModule::WhyNotYet()
{
    const StringMap& ticket = m_session->Ticket();
    const bool waits = !Value(ticket, "stockcode").empty() && !ticket.contains("pushflag");
    return waits ? QStringLiteral("证券尚未确定：请等待柜台答复，或在列表中选择") : QString();
}

void OrderTicketModule::Check()
{
    if (!m_session || m_sending) {
        return;
    }
    m_asked.reset();
    if (const QString reason = WhyNotYet(); !reason.isEmpty()) {
        return m_widget->ShowMessage(TicketMessage::Refusal, reason);
    }
    const OrderEntry entry = Entry();
    StringMap& ticket = m_session->Ticket();
    ticket["price"] = entry.price;
    ticket["amount"] = InPieces(entry.quantity, ticket);
    ticket["mmlb"] = entry.side;
    StringMap result;
    m_session->Rules().CheckOrder(ticket, result);
    if (result["check"] != "1") {
        return m_widget->ShowMessage(TicketMessage::Refusal, QString::fromStdString(result["ret_text"]));
    }
    m_asked = OrderRequest(ticket, entry, FundsAccount());
    if (result["other_tip"].empty()) {
        Send();
    } else {
        m_widget->ShowMessage(TicketMessage::Question, QString::fromStdString(result["other_tip"]));
    }
}

// Once what was asked, as it was asked.
void OrderTicketModule::Send()
{
    if (!m_asked || m_sending) {
        return;
    }
    const ddsdk::TradeRequestParam order = *std::exchange(m_asked, std::nullopt);
    m_sending = m_session->SendOrder(order);
    if (!m_sending) {
        return m_widget->ShowMessage(TicketMessage::Failure, QStringLiteral("委托未能送出"));
    }
    m_widget->SetSending(true);
    m_widget->ShowMessage(TicketMessage::Progress,
                          QStringLiteral("%1：等待柜台答复…").arg(OrderWords(order)));
    m_answerAwaited->start();
}

void OrderTicketModule::EndSending()
{
    m_sending.reset();
    m_answerAwaited->stop();
    m_widget->SetSending(false);
}

bool OrderTicketModule::IsOfThisTicket(const ddsdk::TradeRequestParam& order)
{
    return Value(order.body, "zqdm") == m_code && Value(order.body, "mmlb") == m_widget->Side() &&
           Value(order.body, "market") == Value(m_session->Ticket(), "market");
}

void OrderTicketModule::OnOrderAnswered(const OrderAnswer& answer)
{
    if (!m_widget) {
        return;
    }
    const bool awaited = m_sending == answer.number;
    if (awaited) {
        EndSending();
    }
    const OrderOutcome outcome = ReadOutcome(answer.reply);
    const QString words = awaited && IsOfThisTicket(answer.order)
                              ? outcome.words
                              : OrderWords(answer.order) + QStringLiteral("：") + outcome.words;
    m_widget->ShowMessage(outcome.accepted ? TicketMessage::Success : TicketMessage::Failure, words);
    AskUsable();
}

}  // namespace panelry
