#include "order_ticket/order_ticket_module.h"

#include <QVariant>

#include "base/number_text.h"
#include "common/frame_commands.h"
#include "common/panel_style.h"
#include "hosting/message_ids.h"
#include "hosting/module_manager_spi.h"
#include "hosting/widget_properties.h"

namespace panelry
{

namespace
{

constexpr int kPriceSettledMs = 300;

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
    QObject::connect(widget, &OrderTicketWidget::OrderWanted, widget, [this] { Check(); });
    QObject::connect(widget, &OrderTicketWidget::OrderConfirmed, widget, [this] { Finish(); });
}

void OrderTicketModule::SetProviders(void* quoteProvider, void* tradeProvider)
{
    m_session.emplace(static_cast<QuoteProvider*>(quoteProvider), static_cast<TradeProvider*>(tradeProvider),
                      *this);
    m_widget->ShowStatus(tradeProvider ? QStringLiteral("请输入代码") : QStringLiteral("未连接交易服务"));
}

void OrderTicketModule::Initialize(int /*moduleId*/, const char* /*a*/, const char* /*b*/,
                                   const char* /*initParam*/)
{
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
    m_session->Open({{"stockcode", code}, {"market", market}, {"type", side}, {"czlb", side}});
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
    m_widget->ShowStatus(face.market + QLatin1Char(' ') + code + QLatin1Char(' ') + face.name);
    OfferPrice();
    AskUsable();  // the answer's own quantity is for no price in particular
    TellStock();
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
    if (!m_session || money.isEmpty()) {
        return;
    }
    StringMap& ticket = m_session->Ticket();
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
    const std::string step = Value(ticket, price ? "price_step" : "amount_step");
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

StringMap& OrderTicketModule::EnteredTicket()
{
    StringMap& ticket = m_session->Ticket();
    ticket["price"] = m_widget->Price().toStdString();
    ticket["amount"] = m_widget->Amount().toStdString();
    ticket["mmlb"] = m_widget->Side();
    return ticket;
}

void OrderTicketModule::Check()
{
    if (!m_session) {
        return;
    }
    StringMap result;
    m_session->Rules().CheckOrder(EnteredTicket(), result);
    if (result["check"] != "1") {
        m_widget->ShowNotice(QString::fromStdString(result["ret_text"]), false);
    } else if (!result["other_tip"].empty()) {
        m_widget->ShowNotice(QString::fromStdString(result["other_tip"]), true);
    } else {
        Finish();
    }
}

void OrderTicketModule::Finish()
{
    m_widget->ShowStatus(QStringLiteral("已通过检查（示例面板不发送委托）：%1 %2 %3 × %4")
                             .arg(m_widget->Side() == "B" ? QStringLiteral("买入") : QStringLiteral("卖出"),
                                  QString::fromStdString(Value(m_session->Ticket(), "stockcode")),
                                  m_widget->Price(), m_widget->Amount()));
}

}  // namespace panelry
