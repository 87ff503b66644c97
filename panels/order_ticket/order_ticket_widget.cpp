#include "order_ticket/order_ticket_widget.h"

#include <QComboBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRegularExpressionValidator>
#include <QSignalBlocker>
#include <QStackedWidget>
#include <QTabBar>
#include <QVBoxLayout>

#include "common/panel_style.h"
#include "common/status_line.h"
#include "order_ticket/book_view.h"
#include "order_ticket/direction_color.h"

namespace panelry
{

namespace
{

constexpr int kCodeLength = 6;
constexpr int kConnectCodeLength = 5;
constexpr QRgb kIdleButton = 0xFFB9C4CC;
constexpr QRgb kDoneBand = 0xFFE6F3EA;
constexpr QRgb kDoneText = 0xFF1E5B39;
constexpr QRgb kFailedBand = 0xFFFDF3E2;
constexpr char kDecimal[] = "[0-9]{0,9}(\\.[0-9]{0,4})?";
constexpr char kWhole[] = "[0-9]{0,9}";
constexpr char kCode[] = "[0-9A-Za-z.]{0,12}";

void SetColor(QLabel* label, QRgb color)
{
    QPalette palette = label->palette();
    palette.setColor(QPalette::WindowText, QColor(color));
    label->setPalette(palette);
}

// Filled with `color`; the frame of the one that has the keyboard is darker.
QPushButton* MakeOrderButton(QWidget* parent, const QString& text, const char* name, QRgb color)
{
    auto* const button = new QPushButton(text, parent);
    button->setObjectName(QLatin1String(name));
    button->setAutoDefault(true);  // Enter presses it too
    button->setStyleSheet(
        QStringLiteral(
            "QPushButton { background: %1; color: white; border: 2px solid %1; border-radius: 3px; "
            "padding: 4px; font-weight: bold; } "
            "QPushButton:focus { border-color: %2; } QPushButton:pressed { background: %2; } "
            "QPushButton:disabled { background: %3; border-color: %3; }")
            .arg(QColor(color).name(), QColor(color).darker(150).name(), QColor(kIdleButton).name()));
    return button;
}

struct MessageColors {
    QRgb background;
    QRgb text;
};

MessageColors ColorsOf(TicketMessage kind)
{
    switch (kind) {
        case TicketMessage::Question:
            return {style::kSelection, style::kText};
        case TicketMessage::Progress:
            return {style::kBand, style::kMutedText};
        case TicketMessage::Success:
            return {kDoneBand, kDoneText};
        default:
            return {kFailedBand, style::kWarningText};
    }
}

}  // namespace

OrderTicketWidget::OrderTicketWidget(QWidget* parent) : QWidget(parent)
{
    BuildUi();
    ConnectFields();
    ShowSide();
}

void OrderTicketWidget::BuildUi()
{
    style::Apply(this);
    m_book = new BookView(this);
    m_choices = new QListWidget(this);
    m_choices->setObjectName(QStringLiteral("choices"));
    m_right = new QStackedWidget(this);
    m_right->addWidget(m_book);
    m_right->addWidget(m_choices);
    m_status = new StatusLine(this);

    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(BuildHead());
    auto* const columns = new QHBoxLayout;
    columns->addWidget(BuildFields(), 3);
    columns->addWidget(m_right, 2);
    layout->addLayout(columns, 1);
    layout->addWidget(BuildMessage());
    layout->addWidget(m_status);
    setFocusProxy(m_code);
}

QWidget* OrderTicketWidget::BuildHead()
{
    auto* const head = new QWidget(this);
    m_side = new QTabBar(head);
    m_side->setObjectName(QStringLiteral("order_side"));
    m_side->addTab(QStringLiteral("买入 F2"));
    m_side->addTab(QStringLiteral("卖出 F3"));
    m_side->setFocusPolicy(Qt::NoFocus);
    m_side->setDrawBase(false);
    m_credit = new QComboBox(head);
    m_credit->setObjectName(QStringLiteral("order_credit"));
    m_account = new QComboBox(head);
    m_account->setObjectName(QStringLiteral("order_account"));
    m_account->addItems({QStringLiteral("普通账户"), QStringLiteral("信用账户"), QStringLiteral("港股通")});
    for (QComboBox* const box : {m_account, m_credit}) {
        box->setFocusPolicy(Qt::TabFocus);
        box->installEventFilter(this);
    }
    auto* const layout = new QHBoxLayout(head);
    const int margin = fontMetrics().averageCharWidth();
    layout->setContentsMargins(0, 0, margin, 0);
    layout->addWidget(m_side);
    layout->addStretch(1);
    layout->addWidget(m_credit);
    layout->addWidget(m_account);
    return head;
}

QWidget* OrderTicketWidget::BuildFields()
{
    auto* const fields = new QWidget(this);
    auto* const form = m_form = new QFormLayout(fields);
    const int margin = fontMetrics().averageCharWidth();
    form->setContentsMargins(margin, margin, margin, margin);
    form->setVerticalSpacing(margin / 2);
    m_code = AddField(form, QStringLiteral("代码"), "stock_code", kCode);
    m_name = AddLabel(form, QStringLiteral("名称"));
    m_latest = AddLabel(form, QStringLiteral("现价"));
    m_latest->setObjectName(QStringLiteral("latest"));
    m_limits = AddLabel(form, QStringLiteral("涨跌停"));
    m_protected = AddLabel(form, QStringLiteral("卖限 – 买限"));
    m_price = AddField(form, QStringLiteral("价格"), "order_price", kDecimal);
    m_amount = AddField(form, QStringLiteral("数量"), "order_amount", kWhole);
    m_money = AddField(form, QStringLiteral("金额"), "order_money", kDecimal);
    m_money->setPlaceholderText(QStringLiteral("按金额算数量"));
    m_usable = AddLabel(form, QString());
    m_usable->setObjectName(QStringLiteral("usable"));
    m_steps = AddLabel(form, QStringLiteral("步长"));
    m_steps->setObjectName(QStringLiteral("steps"));
    form->addRow(BuildButtons());
    return fields;
}

QWidget* OrderTicketWidget::BuildButtons()
{
    auto* const buttons = new QWidget(this);
    m_buy = MakeOrderButton(buttons, QStringLiteral("买入下单"), "buy_button", kUp);
    m_sell = MakeOrderButton(buttons, QStringLiteral("卖出下单"), "sell_button", kDown);
    auto* const layout = new QHBoxLayout(buttons);
    layout->setContentsMargins(0, fontMetrics().averageCharWidth() / 2, 0, 0);
    for (QPushButton* const button : {m_buy, m_sell}) {
        button->installEventFilter(this);
        layout->addWidget(button);
    }
    return buttons;
}

QLineEdit* OrderTicketWidget::AddField(QFormLayout* form, const QString& label, const char* name,
                                       const char* pattern)
{
    auto* const field = new QLineEdit(this);
    field->setObjectName(QLatin1String(name));
    field->setValidator(new QRegularExpressionValidator(QRegularExpression(QLatin1String(pattern)), field));
    field->installEventFilter(this);
    form->addRow(label, field);
    return field;
}

QLabel* OrderTicketWidget::AddLabel(QFormLayout* form, const QString& label)
{
    auto* const value = new QLabel(this);
    value->setTextFormat(Qt::PlainText);
    value->setMinimumWidth(fontMetrics().horizontalAdvance(QStringLiteral("12345.678 – 12345.678")));
    form->addRow(label, value);
    return value;
}

QWidget* OrderTicketWidget::BuildMessage()
{
    m_message = new QWidget(this);
    m_messageText = new QLabel(m_message);
    m_messageText->setObjectName(QStringLiteral("order_message"));
    m_messageText->setTextFormat(Qt::PlainText);  // the host's words aren't markup
    m_messageText->setWordWrap(true);
    m_messageText->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_confirm = new QPushButton(QStringLiteral("继续委托"), m_message);
    m_confirm->setObjectName(QStringLiteral("confirm_yes"));
    m_back = new QPushButton(QStringLiteral("返回"), m_message);
    m_back->setObjectName(QStringLiteral("confirm_no"));
    auto* const buttons = new QVBoxLayout;
    for (QPushButton* const button : {m_confirm, m_back}) {
        button->setAutoDefault(true);
        button->installEventFilter(this);
        buttons->addWidget(button);
    }
    buttons->addStretch(1);
    auto* const layout = new QHBoxLayout(m_message);
    layout->addWidget(m_messageText, 1);
    layout->addLayout(buttons);
    m_message->hide();
    return m_message;
}

void OrderTicketWidget::ConnectFields()
{
    connect(m_side, &QTabBar::currentChanged, this, [this] {
        ShowSide();
        DropQuestion();
        Q_EMIT SideChanged();
    });
    connect(m_account, qOverload<int>(&QComboBox::currentIndexChanged), this, [this] {
        ShowAccount();
        DropQuestion();
        Q_EMIT AccountChanged();
    });
    connect(m_credit, qOverload<int>(&QComboBox::currentIndexChanged), this,
            &OrderTicketWidget::DropQuestion);
    connect(m_code, &QLineEdit::textEdited, this, [this](const QString& code) {
        if (code.size() == CodeLength()) {
            EnterCode();
        } else if (!m_enteredCode.isEmpty()) {
            Q_EMIT CodeLeft();  // or the order would be for another stock than the one that is read
        }
    });
    // What was asked was asked of the order as it stood.
    connect(m_price, &QLineEdit::textChanged, this, &OrderTicketWidget::DropQuestion);
    connect(m_amount, &QLineEdit::textChanged, this, &OrderTicketWidget::DropQuestion);
    connect(m_price, &QLineEdit::textEdited, this, &OrderTicketWidget::PriceChanged);
    connect(m_price, &QLineEdit::textChanged, this, &OrderTicketWidget::TellMoney);
    connect(m_amount, &QLineEdit::textEdited, m_money, &QLineEdit::clear);  // it isn't that money's any more
    connect(m_money, &QLineEdit::textEdited, this, &OrderTicketWidget::MoneyEntered);
    connect(m_book, &BookView::PricePicked, this, [this](const QString& price) {
        SetPrice(price);
        Q_EMIT PriceChanged();
        Select(m_amount);
    });
    connect(m_choices, &QListWidget::itemActivated, this,
            [this](QListWidgetItem* item) { Q_EMIT ChoicePicked(m_choices->row(item)); });
    connect(m_buy, &QPushButton::clicked, this, &OrderTicketWidget::OrderWanted);
    connect(m_sell, &QPushButton::clicked, this, &OrderTicketWidget::OrderWanted);
    connect(m_confirm, &QPushButton::clicked, this, [this] {
        if (!m_confirm->isHidden()) {
            DropMessage();
            Q_EMIT OrderConfirmed();
        }
    });
    connect(m_back, &QPushButton::clicked, this, &OrderTicketWidget::LeaveMessage);
}

int OrderTicketWidget::CodeLength() const
{
    return Account() == OrderAccount::Connect ? kConnectCodeLength : kCodeLength;
}

void OrderTicketWidget::EnterCode()
{
    if (!m_code->text().isEmpty() && m_code->text() != m_enteredCode) {
        Q_EMIT CodeEntered(m_code->text());
    }
}

void OrderTicketWidget::ShowSide()
{
    const bool buys = Side() == "B";
    m_buy->setVisible(buys);
    m_sell->setVisible(!buys);
    SetColor(m_name, buys ? kUp : kDown);
    ShowAccount();
}

// What is paid with, or where the proceeds go: of the margin account alone, and in the words of the side.
void OrderTicketWidget::ShowAccount()
{
    const bool buys = Side() == "B";
    {
        const QSignalBlocker quiet(m_credit);
        m_credit->clear();
        m_credit->addItems(buys ? QStringList{QStringLiteral("自有资金"), QStringLiteral("融资买入")}
                                : QStringList{QStringLiteral("普通卖出"), QStringLiteral("卖券还款")});
    }
    m_credit->setVisible(Account() == OrderAccount::Margin);
}

void OrderTicketWidget::Select(QLineEdit* field)
{
    field->setFocus();
    field->selectAll();
}

void OrderTicketWidget::FocusOrder()
{
    (Side() == "B" ? m_buy : m_sell)->setFocus();
}

void OrderTicketWidget::StartTicket(const QString& code)
{
    EndTicket();
    m_enteredCode = code;
    m_code->setText(code);
}

void OrderTicketWidget::EndTicket()
{
    m_enteredCode.clear();
    for (QLineEdit* const field : {m_money, m_price, m_amount}) {  // first the one that fills another
        field->clear();
    }
    DropQuestion();
    m_right->setCurrentWidget(m_book);
    ShowFace({});
}

void OrderTicketWidget::AskCode()
{
    EndTicket();
    m_code->clear();
    m_code->setFocus();
}

void OrderTicketWidget::ShowFace(const TicketFace& face)
{
    const bool buys = Side() == "B";
    m_name->setText(face.known ? face.name + QStringLiteral("　") + face.market : QString());
    m_latest->setText(QString(face.latest + QStringLiteral("  ") + face.change).trimmed());
    SetColor(m_latest, DirectionColor(face.direction));
    m_limits->setText(face.limits);
    m_protected->setText(face.protectedLimits);
    m_usable->setText(face.usable.isEmpty() ? QString()
                                            : (buys ? QStringLiteral("可买 ") : QStringLiteral("可卖 ")) +
                                                  face.usable + QLatin1Char(' ') + face.unit);
    m_steps->setText(face.known ? QStringLiteral("价格 %1　数量 %2").arg(face.priceStep, face.amountStep)
                                : QString());
    static_cast<QLabel*>(m_form->labelForField(m_amount))
        ->setText(face.unit.isEmpty() ? QStringLiteral("数量") : QStringLiteral("数量（%1）").arg(face.unit));
    m_amount->setToolTip(face.piecesPerUnit > 1
                             ? QStringLiteral("每%1 %2").arg(face.unit).arg(face.piecesPerUnit)
                             : QString());
    m_book->SetBook(face.book);
}

void OrderTicketWidget::ShowChoices(const std::vector<TicketChoice>& choices)
{
    m_choices->clear();
    for (const TicketChoice& choice : choices) {
        m_choices->addItem(
            QString::fromStdString(choice.marketName + "  " + choice.stockCode + "  " + choice.stockName));
    }
    m_right->setCurrentWidget(m_choices);
    m_choices->setCurrentRow(0);
    m_choices->setFocus();
}

void OrderTicketWidget::SetPrice(const QString& price)
{
    m_price->setText(price);
}

void OrderTicketWidget::SetAmount(const QString& amount)
{
    m_amount->setText(amount);
}

void OrderTicketWidget::TellMoney()
{
    if (!m_money->text().isEmpty()) {
        Q_EMIT MoneyEntered(m_money->text());
    }
}

void OrderTicketWidget::ShowMessage(TicketMessage kind, const QString& words)
{
    const MessageColors colors = ColorsOf(kind);
    m_messageKind = kind;
    style::Apply(m_message, colors.background);
    SetColor(m_messageText, colors.text);
    m_messageText->setText(words.trimmed());
    const bool asks = kind == TicketMessage::Question;
    m_confirm->setVisible(asks);
    m_back->setVisible(asks);
    m_message->show();
    if (asks) {
        m_confirm->setFocus();
    }
}

// A question is taken back into the order that it was asked of.
void OrderTicketWidget::LeaveMessage()
{
    if (!m_message->isHidden() && m_messageKind == TicketMessage::Question) {
        Select(m_price);
    }
    DropMessage();
}

void OrderTicketWidget::DropMessage()
{
    m_message->hide();
    m_confirm->hide();  // nobody presses what can't be seen
    m_messageText->clear();
}

// What is said of an order that hasn't gone out is said of the order as it stood.
void OrderTicketWidget::DropQuestion()
{
    if (m_messageKind == TicketMessage::Question || m_messageKind == TicketMessage::Refusal) {
        DropMessage();
    }
}

void OrderTicketWidget::SetSending(bool sending)
{
    if (sending) {
        Select(m_code);  // the next order begins there, and Enter again doesn't repeat this one
    }
    m_buy->setEnabled(!sending);
    m_sell->setEnabled(!sending);
}

void OrderTicketWidget::SetAccount(OrderAccount account)
{
    {
        const QSignalBlocker quiet(m_account);
        m_account->setCurrentIndex(static_cast<int>(account));
    }
    ShowAccount();
}

void OrderTicketWidget::ShowStatus(const QString& text)
{
    m_status->SetText(text);
}

void OrderTicketWidget::Warn(const QString& problem)
{
    m_status->Warn(problem);
}

std::string OrderTicketWidget::Side() const
{
    return m_side->currentIndex() == 0 ? "B" : "S";
}

QString OrderTicketWidget::Price() const
{
    return m_price->text();
}

QString OrderTicketWidget::Amount() const
{
    return m_amount->text();
}

OrderAccount OrderTicketWidget::Account() const
{
    return static_cast<OrderAccount>(m_account->currentIndex());
}

bool OrderTicketWidget::OnCredit() const
{
    return m_credit->currentIndex() == 1;
}

QString OrderTicketWidget::MessageText() const
{
    return m_message->isHidden() ? QString() : m_messageText->text();
}

QString OrderTicketWidget::StatusText() const
{
    return m_status->Shown();
}

QSize OrderTicketWidget::sizeHint() const
{
    const int letter = fontMetrics().averageCharWidth();
    return QWidget::sizeHint().expandedTo({letter * 64, fontMetrics().height() * 25});
}

// Into a fresh ticket one types at once.
void OrderTicketWidget::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    if (!window()->focusWidget()) {
        m_code->setFocus();
    }
}

void OrderTicketWidget::keyPressEvent(QKeyEvent* event)
{
    switch (event->key()) {
        case Qt::Key_F2:
        case Qt::Key_F3:
            m_side->setCurrentIndex(event->key() == Qt::Key_F2 ? 0 : 1);
            break;
        case Qt::Key_Escape:
            LeaveMessage();
            break;
        default:
            QWidget::keyPressEvent(event);
    }
}

// Keys of the fields: Enter goes on, Up and Down step.
bool OrderTicketWidget::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::Wheel) {
        return watched == m_account || watched == m_credit;  // no account is changed in passing
    }
    if (event->type() != QEvent::KeyPress) {
        return false;
    }
    const auto* const press = static_cast<QKeyEvent*>(event);
    const int key = press->key();
    if (key == Qt::Key_Return || key == Qt::Key_Enter) {
        return press->isAutoRepeat() || GoOn(watched);
    }
    const bool steps = key == Qt::Key_Up || key == Qt::Key_Down;
    if (steps && (watched == m_price || watched == m_amount)) {
        if (watched == m_amount) {
            m_money->clear();
        }
        Q_EMIT StepWanted(watched == m_price, key == Qt::Key_Up ? 1 : -1);
        return true;
    }
    return false;
}

// False where Enter is the widget's own affair.
bool OrderTicketWidget::GoOn(QObject* from)
{
    if (from == m_code) {
        EnterCode();
        Select(m_price);
    } else if (from == m_price) {
        Select(m_amount);
    } else if (from == m_amount || from == m_money) {
        FocusOrder();
    } else {
        return false;
    }
    return true;
}

}  // namespace panelry
