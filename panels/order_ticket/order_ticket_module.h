#pragma once

#include <QPointer>
#include <QTimer>
#include <optional>

#include "order_ticket/order_ticket_widget.h"
#include "services/module_base.h"
#include "ticket/ticket_session.h"

namespace panelry
{

/// The order ticket's number.
inline constexpr unsigned kOrderTicketId = 41005;

/// An order ticket as a panel: fills from the host by a TicketSession, checks what is entered, asks where the
/// check wants it, and sends the order in the form that the desk's trade side takes (order_request.h).
///
/// One order at a time: the next one can be sent when the host has answered, or after ten seconds. An answer that
/// comes later is told all the same, with the order that it belongs to.
///
/// Listens to 102 and the frame commands (common/frame_commands.h); tells 102 when a code was typed.
///
/// Ownership: holds the widget, which the library may delete first, and the session.
/// Threading: application thread.
class OrderTicketModule : public ModuleBase, public TicketListener
{
public:
    explicit OrderTicketModule(const InstanceInfo& info);
    ~OrderTicketModule() override;

    void Initialize(int moduleId, const char* a, const char* b, const char* initParam) override;
    void OnMessage(int msgId, void* payload) override;
    QWidget* GetWidget() override { return m_widget; }
    void SetProviders(void* quoteProvider, void* tradeProvider) override;

    void OnTicketChanged(TicketNews news) override;
    void OnTicketChoices(const std::vector<TicketChoice>& choices) override;
    void OnTicketProblem(const std::string& problem) override;
    void OnOrderAnswered(const OrderAnswer& answer) override;

private:
    void ConnectWidget();
    void ConnectOrders();
    void Open(const std::string& code, const std::string& market);
    void Close();
    void OfferPrice();
    void AskUsable();
    void FillAmount(const QString& money);
    void Step(bool price, int steps);
    void ChangeAccount();
    bool TakeAccountOfMarket();
    void Check();
    QString WhyNotYet();
    OrderEntry Entry() const;
    std::string FundsAccount() const;
    void Send();
    void EndSending();
    bool IsOfThisTicket(const ddsdk::TradeRequestParam& order);
    void TellStock();

    QPointer<OrderTicketWidget> m_widget;
    std::optional<TicketSession> m_session;
    std::string m_code;  // of the ticket; an unknown one comes back empty
    std::vector<TicketChoice> m_choices;
    QTimer m_priceSettled;
    QTimer* m_answerAwaited = nullptr;  // the widget's
    TradeProvider* m_trades = nullptr;
    std::optional<ddsdk::TradeRequestParam> m_asked;  // passed the check, may wait for the user's word
    std::optional<std::int64_t> m_sending;            // number of the order that is on its way
    bool m_tellStock = false;                         // the code was typed here
};

}  // namespace panelry
