#pragma once

#include <QWidget>
#include <vector>

#include "order_ticket/order_request.h"
#include "order_ticket/ticket_face.h"
#include "ticket/ticket_session.h"

class QComboBox;
class QFormLayout;
class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;
class QStackedWidget;
class QTabBar;

namespace panelry
{

class BookView;
class StatusLine;

/// What stands in the bar at the ticket's foot.
enum class TicketMessage {
    Refusal,   ///< by the check; gone as soon as the order is changed, as the next
    Question,  ///< with the buttons that confirm the order or take it back
    Progress,  ///< an order is on its way
    Success,   ///< what became of an order: stays until the next one or Escape, as the next
    Failure,
};

/// The order ticket: side, account, code, price, quantity, money, the order book, and a bar for what has to be
/// read before an order goes out and after it.
///
/// F2 buys, F3 sells. Enter goes on: code, price, quantity, button. Up and Down move price and quantity by a
/// step. A question is confirmed by Enter and taken back by Escape; Enter that is only held down doesn't count.
/// A quantity worked out from money follows the price until the quantity itself is changed.
///
/// What the user wants goes out as signals; the module decides. The names of the fields and buttons, for those
/// that drive the panel from outside, stand in docs/order-ticket.md.
///
/// Ownership: made without a parent by its module. Threading: application thread.
class OrderTicketWidget : public QWidget
{
    Q_OBJECT

public:
    explicit OrderTicketWidget(QWidget* parent = nullptr);

    /// A ticket for `code` begins: the fields are emptied.
    void StartTicket(const QString& code);
    /// There is no ticket any more: all but the code is emptied.
    void EndTicket();
    /// Nor is there a code: the next one is asked for.
    void AskCode();
    /// The ticket has changed.
    void ShowFace(const TicketFace& face);
    void ShowChoices(const std::vector<TicketChoice>& choices);

    void SetPrice(const QString& price);
    void SetAmount(const QString& amount);
    /// Tells MoneyEntered() again where money decides on the quantity.
    void TellMoney();

    /// One at a time; what stood there is gone, an unanswered question with it.
    void ShowMessage(TicketMessage kind, const QString& words);
    /// While an order is on its way no other can be asked for.
    void SetSending(bool sending);
    /// Tells no AccountChanged().
    void SetAccount(OrderAccount account);
    void ShowStatus(const QString& text);
    void Warn(const QString& problem);

    std::string Side() const;  ///< "B" or "S"
    QString Price() const;
    QString Amount() const;
    OrderAccount Account() const;
    bool OnCredit() const;        ///< see OrderEntry
    QString MessageText() const;  ///< empty while there is none
    QString StatusText() const;

    QSize sizeHint() const override;

Q_SIGNALS:
    void CodeEntered(const QString& code);
    void CodeLeft();  ///< what stands in the field isn't the ticket's code any more
    void ChoicePicked(int row);
    void SideChanged();
    void AccountChanged();  ///< by the user
    void PriceChanged();    ///< by the user
    void MoneyEntered(const QString& money);
    void StepWanted(bool price, int steps);
    void OrderWanted();
    void OrderConfirmed();

protected:
    void showEvent(QShowEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void BuildUi();
    QWidget* BuildHead();
    QWidget* BuildFields();
    QWidget* BuildButtons();
    QWidget* BuildMessage();
    QLineEdit* AddField(QFormLayout* form, const QString& label, const char* name, const char* pattern);
    QLabel* AddLabel(QFormLayout* form, const QString& label);
    void ConnectFields();
    void EnterCode();
    void ShowSide();
    void ShowAccount();
    void Select(QLineEdit* field);
    void FocusOrder();
    void LeaveMessage();
    void DropMessage();
    void DropQuestion();
    bool GoOn(QObject* from);
    int CodeLength() const;

    QTabBar* m_side = nullptr;
    QComboBox* m_account = nullptr;
    QComboBox* m_credit = nullptr;
    QLineEdit* m_code = nullptr;
    QLineEdit* m_price = nullptr;
    QLineEdit* m_amount = nullptr;
    QLineEdit* m_money = nullptr;
    QLabel* m_name = nullptr;
    QLabel* m_latest = nullptr;
    QLabel* m_limits = nullptr;
    QLabel* m_protected = nullptr;
    QLabel* m_usable = nullptr;
    QLabel* m_steps = nullptr;
    QFormLayout* m_form = nullptr;
    QPushButton* m_buy = nullptr;
    QPushButton* m_sell = nullptr;
    QStackedWidget* m_right = nullptr;
    BookView* m_book = nullptr;
    QListWidget* m_choices = nullptr;
    QWidget* m_message = nullptr;
    QLabel* m_messageText = nullptr;
    QPushButton* m_confirm = nullptr;
    QPushButton* m_back = nullptr;
    TicketMessage m_messageKind = TicketMessage::Refusal;
    StatusLine* m_status = nullptr;
    QString m_enteredCode;
};

}  // namespace panelry
