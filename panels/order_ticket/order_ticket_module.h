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

/// An order ticket as a panel: fills from the host by a TicketSession, checks what is entered, and shows what
/// the check says. It is a sample: an order that has passed is told in the status line and goes nowhere.
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

private:
    void ConnectWidget();
    void Open(const std::string& code, const std::string& market);
    void Close();
    void OfferPrice();
    void AskUsable();
    void FillAmount(const QString& money);
    void Step(bool price, int steps);
    void Check();
    void Finish();
    StringMap& EnteredTicket();
    void TellStock();

    QPointer<OrderTicketWidget> m_widget;
    std::optional<TicketSession> m_session;
    std::string m_code;  // of the ticket; an unknown one comes back empty
    std::vector<TicketChoice> m_choices;
    QTimer m_priceSettled;
    bool m_tellStock = false;  // the code was typed here
};

}  // namespace panelry
