#pragma once

#include <QWidget>
#include <vector>

#include "order_ticket/ticket_face.h"
#include "ticket/ticket_session.h"

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

/// The order ticket: side, code, price, quantity, money, the order book, and a place for what has to be read
/// before an order goes out.
///
/// F2 buys, F3 sells. Enter goes to the next field and at last asks for the order; Up and Down move price and
/// quantity by a step; Escape takes back a question.
///
/// What the user wants goes out as signals; the module decides.
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
    /// The ticket has changed.
    void ShowFace(const TicketFace& face);
    void ShowChoices(const std::vector<TicketChoice>& choices);

    void SetPrice(const QString& price);
    void SetAmount(const QString& amount);

    /// Words to be read: a refusal, or with `confirm` a question.
    void ShowNotice(const QString& words, bool confirm);
    void HideNotice();
    void ShowStatus(const QString& text);
    void Warn(const QString& problem);

    std::string Side() const;  ///< "B" or "S"
    QString Price() const;
    QString Amount() const;
    QString NoticeText() const;  ///< empty while there is none
    QString StatusText() const;

    QSize sizeHint() const override;

Q_SIGNALS:
    void CodeEntered(const QString& code);
    void CodeLeft();  ///< what stands in the field isn't the ticket's code any more
    void ChoicePicked(int row);
    void SideChanged();
    void PriceChanged();  ///< by the user
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
    QWidget* BuildFields();
    QWidget* BuildNotice();
    QLineEdit* AddField(QFormLayout* form, const QString& label, const char* name, const char* pattern);
    QLabel* AddLabel(QFormLayout* form, const QString& label);
    void ConnectFields();
    void EnterCode();
    void ShowSide();
    void Select(QLineEdit* field);
    void DropNotice();

    QTabBar* m_side = nullptr;
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
    QPushButton* m_order = nullptr;
    QStackedWidget* m_right = nullptr;
    BookView* m_book = nullptr;
    QListWidget* m_choices = nullptr;
    QWidget* m_notice = nullptr;
    QLabel* m_noticeText = nullptr;
    QPushButton* m_confirm = nullptr;
    StatusLine* m_status = nullptr;
    QString m_enteredCode;
};

}  // namespace panelry
