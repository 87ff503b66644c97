#include "order_ticket/order_ticket_widget.h"

#include <QFormLayout>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRegularExpressionValidator>
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
constexpr char kDecimal[] = "[0-9]{0,9}(\\.[0-9]{0,4})?";
constexpr char kWhole[] = "[0-9]{0,10}";
constexpr char kCode[] = "[0-9A-Za-z.]{0,12}";

void SetColor(QLabel* label, QRgb color)
{
    QPalette palette = label->palette();
    palette.setColor(QPalette::WindowText, QColor(color));
    label->setPalette(palette);
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
    m_side = new QTabBar(this);
    m_side->addTab(QStringLiteral("买入 F2"));
    m_side->addTab(QStringLiteral("卖出 F3"));
    m_side->setFocusPolicy(Qt::NoFocus);
    m_side->setDrawBase(false);

    m_book = new BookView(this);
    m_choices = new QListWidget(this);
    m_choices->setObjectName(QStringLiteral("choices"));
    m_right = new QStackedWidget(this);
    m_right->addWidget(m_book);
    m_right->addWidget(m_choices);
    m_status = new StatusLine(this);

    auto* const columns = new QHBoxLayout;
    columns->addWidget(BuildFields(), 3);
    columns->addWidget(m_right, 2);
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_side);
    layout->addLayout(columns, 1);
    layout->addWidget(BuildNotice());
    layout->addWidget(m_status);
    setFocusProxy(m_code);
}

QWidget* OrderTicketWidget::BuildFields()
{
    auto* const fields = new QWidget(this);
    auto* const form = new QFormLayout(fields);
    const int margin = fontMetrics().averageCharWidth();
    form->setContentsMargins(margin, margin, margin, margin);
    form->setVerticalSpacing(margin / 2);
    m_code = AddField(form, QStringLiteral("代码"), "code", kCode);
    m_name = AddLabel(form, QStringLiteral("名称"));
    m_latest = AddLabel(form, QStringLiteral("现价"));
    m_latest->setObjectName(QStringLiteral("latest"));
    m_limits = AddLabel(form, QStringLiteral("涨跌停"));
    m_protected = AddLabel(form, QStringLiteral("卖限 – 买限"));
    m_price = AddField(form, QStringLiteral("价格"), "price", kDecimal);
    m_amount = AddField(form, QStringLiteral("数量"), "amount", kWhole);
    m_money = AddField(form, QStringLiteral("金额"), "money", kDecimal);
    m_money->setPlaceholderText(QStringLiteral("按金额算数量"));
    m_usable = AddLabel(form, QString());
    m_usable->setObjectName(QStringLiteral("usable"));
    m_steps = AddLabel(form, QStringLiteral("步长"));
    m_steps->setObjectName(QStringLiteral("steps"));
    m_order = new QPushButton(fields);
    m_order->setObjectName(QStringLiteral("order"));
    m_order->setAutoDefault(true);  // Enter presses it too
    form->addRow(m_order);
    return fields;
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

QWidget* OrderTicketWidget::BuildNotice()
{
    m_notice = new QWidget(this);
    style::Apply(m_notice, style::kSelection);
    m_noticeText = new QLabel(m_notice);
    m_noticeText->setObjectName(QStringLiteral("notice"));
    m_noticeText->setTextFormat(Qt::PlainText);  // the host's words aren't markup
    m_noticeText->setWordWrap(true);
    m_confirm = new QPushButton(QStringLiteral("继续委托"), m_notice);
    m_confirm->setObjectName(QStringLiteral("confirm"));
    m_confirm->setAutoDefault(true);
    auto* const back = new QPushButton(QStringLiteral("返回"), m_notice);
    back->setObjectName(QStringLiteral("back"));
    back->setAutoDefault(true);
    connect(m_confirm, &QPushButton::clicked, this, [this] {
        HideNotice();
        Q_EMIT OrderConfirmed();
    });
    connect(back, &QPushButton::clicked, this, &OrderTicketWidget::HideNotice);
    auto* const buttons = new QVBoxLayout;
    buttons->addWidget(m_confirm);
    buttons->addWidget(back);
    buttons->addStretch(1);
    auto* const layout = new QHBoxLayout(m_notice);
    layout->addWidget(m_noticeText, 1);
    layout->addLayout(buttons);
    m_notice->hide();
    return m_notice;
}

void OrderTicketWidget::ConnectFields()
{
    connect(m_side, &QTabBar::currentChanged, this, [this] {
        ShowSide();
        HideNotice();
        Q_EMIT SideChanged();
    });
    connect(m_code, &QLineEdit::textEdited, this, [this](const QString& code) {
        if (code.size() == kCodeLength) {
            EnterCode();
        } else if (!m_enteredCode.isEmpty()) {
            Q_EMIT CodeLeft();  // or the order would be for another stock than the one that is read
        }
    });
    // What was asked was asked of the order as it stood.
    connect(m_price, &QLineEdit::textChanged, this, &OrderTicketWidget::DropNotice);
    connect(m_amount, &QLineEdit::textChanged, this, &OrderTicketWidget::DropNotice);
    connect(m_price, &QLineEdit::textEdited, this, &OrderTicketWidget::PriceChanged);
    connect(m_money, &QLineEdit::textEdited, this, &OrderTicketWidget::MoneyEntered);
    connect(m_book, &BookView::PricePicked, this, [this](const QString& price) {
        SetPrice(price);
        Q_EMIT PriceChanged();
        Select(m_amount);
    });
    connect(m_choices, &QListWidget::itemActivated, this,
            [this](QListWidgetItem* item) { Q_EMIT ChoicePicked(m_choices->row(item)); });
    connect(m_order, &QPushButton::clicked, this, &OrderTicketWidget::OrderWanted);
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
    m_order->setText(buys ? QStringLiteral("买入") : QStringLiteral("卖出"));
    SetColor(m_name, buys ? kUp : kDown);
}

void OrderTicketWidget::Select(QLineEdit* field)
{
    field->setFocus();
    field->selectAll();
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
    for (QLineEdit* const field : {m_price, m_amount, m_money}) {
        field->clear();
    }
    DropNotice();
    m_right->setCurrentWidget(m_book);
    ShowFace({});
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

void OrderTicketWidget::ShowNotice(const QString& words, bool confirm)
{
    m_noticeText->setText(words.trimmed());
    m_confirm->setVisible(confirm);
    m_notice->show();
    // On the way back: Enter twice in a row doesn't confirm what nobody has read.
    m_notice->findChild<QPushButton*>(QStringLiteral("back"))->setFocus();
}

void OrderTicketWidget::HideNotice()
{
    if (!m_notice->isHidden()) {
        DropNotice();
        Select(m_price);
    }
}

void OrderTicketWidget::DropNotice()
{
    m_notice->hide();
    m_noticeText->clear();
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

QString OrderTicketWidget::NoticeText() const
{
    return m_notice->isHidden() ? QString() : m_noticeText->text();
}

QString OrderTicketWidget::StatusText() const
{
    return m_status->Shown();
}

QSize OrderTicketWidget::sizeHint() const
{
    const int letter = fontMetrics().averageCharWidth();
    return QWidget::sizeHint().expandedTo({letter * 64, fontMetrics().height() * 22});
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
            HideNotice();
            break;
        default:
            QWidget::keyPressEvent(event);
    }
}

// Keys of the fields: Enter goes on, Up and Down step.
bool OrderTicketWidget::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() != QEvent::KeyPress) {
        return false;
    }
    const int key = static_cast<QKeyEvent*>(event)->key();
    if (key == Qt::Key_Return || key == Qt::Key_Enter) {
        if (watched == m_code) {
            EnterCode();
            Select(m_price);
        } else if (watched == m_price) {
            Select(m_amount);
        } else {
            Q_EMIT OrderWanted();
        }
        return true;
    }
    const bool steps = key == Qt::Key_Up || key == Qt::Key_Down;
    if (steps && (watched == m_price || watched == m_amount)) {
        Q_EMIT StepWanted(watched == m_price, key == Qt::Key_Up ? 1 : -1);
        return true;
    }
    return false;
}

}  // namespace panelry
