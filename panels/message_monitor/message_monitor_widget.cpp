#include "message_monitor/message_monitor_widget.h"

#include <QAction>
#include <QClipboard>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QScrollBar>
#include <QTime>
#include <QToolButton>
#include <QVBoxLayout>

#include "common/panel_style.h"
#include "common/status_line.h"
#include "message_monitor/message_line.h"
#include "message_monitor/message_view.h"

namespace panelry
{

namespace
{

constexpr int kFlushMs = 33;
constexpr int kColumnsWanted = 84;
constexpr int kLinesWanted = 20;

QString BarStyle()
{
    return QStringLiteral(
               "QToolButton { border: 1px solid transparent; border-radius: 3px; padding: 0.2em 0.6em; "
               "color: %1; }"
               "QToolButton:hover { background: %2; }"
               "QToolButton:checked, QToolButton:pressed { background: %3; }"
               "QToolButton:focus { border-color: %4; }")
        .arg(QColor(style::kText).name(), QColor(style::kHairline).name(), QStringLiteral("#CBE7F8"),
             QColor(style::kFocus).name());
}

}  // namespace

MessageMonitorWidget::MessageMonitorWidget(QWidget* parent) : QWidget(parent)
{
    m_flush.setSingleShot(true);
    m_flush.setInterval(kFlushMs);
    connect(&m_flush, &QTimer::timeout, this, &MessageMonitorWidget::Flush);
    BuildUi();
    connect(m_view, &MessageView::CopyWanted, this, &MessageMonitorWidget::Copy);
    connect(m_view->verticalScrollBar(), &QScrollBar::valueChanged, this, &MessageMonitorWidget::ShowState);
    ShowState();
}

void MessageMonitorWidget::BuildUi()
{
    style::Apply(this, style::kHairline);  // shows through the gaps
    auto* const bar = new QWidget(this);
    style::Apply(bar, style::kBand);
    bar->setStyleSheet(BarStyle());
    m_view = new MessageView(kMostLines, this);
    style::Apply(m_view);
    m_status = new StatusLine(this);
    BuildActions(bar);
    setFocusProxy(m_view);

    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(1);
    layout->addWidget(bar);
    layout->addWidget(m_view, 1);
    layout->addWidget(m_status);
}

void MessageMonitorWidget::BuildActions(QWidget* bar)
{
    const int margin = fontMetrics().averageCharWidth() / 2;
    auto* const layout = new QHBoxLayout(bar);
    layout->setContentsMargins(margin, margin / 2, margin, margin / 2);
    layout->setSpacing(margin);

    QAction* const wrap = AddAction(bar, QStringLiteral("自动换行"), QKeySequence(QStringLiteral("Alt+W")),
                                    QStringLiteral("长消息折行显示"));
    wrap->setCheckable(true);
    wrap->setChecked(true);
    connect(wrap, &QAction::toggled, this, &MessageMonitorWidget::SetWrapped);

    QAction* const pause = AddAction(bar, QStringLiteral("暂停"), QKeySequence(QStringLiteral("Alt+P")),
                                     QStringLiteral("新消息先不显示，继续后补上"));
    pause->setCheckable(true);
    connect(pause, &QAction::toggled, this, &MessageMonitorWidget::SetPaused);
    layout->addStretch(1);

    QAction* const copy = AddAction(bar, QStringLiteral("复制"), QKeySequence(QKeySequence::Copy),
                                    QStringLiteral("复制选中的内容，未选中则复制全部"));
    connect(copy, &QAction::triggered, this, &MessageMonitorWidget::Copy);

    QAction* const clear = AddAction(bar, QStringLiteral("清空"), QKeySequence(QStringLiteral("Ctrl+L")),
                                     QStringLiteral("清空全部消息"));
    connect(clear, &QAction::triggered, this, &MessageMonitorWidget::Clear);

    m_view->setContextMenuPolicy(Qt::ActionsContextMenu);
    m_view->addActions({copy, clear, wrap, pause});
}

// An action that works by button, key and menu. The button shows what its tool tip says.
QAction* MessageMonitorWidget::AddAction(QWidget* bar, const QString& text, const QKeySequence& keys,
                                         const QString& toolTip)
{
    auto* const action = new QAction(text, this);
    action->setShortcut(keys);
    action->setShortcutContext(Qt::WidgetWithChildrenShortcut);
    action->setToolTip(QStringLiteral("%1（%2）").arg(toolTip, keys.toString(QKeySequence::NativeText)));
    addAction(action);
    auto* const button = new QToolButton(bar);
    button->setDefaultAction(action);
    button->setFocusPolicy(Qt::TabFocus);
    bar->layout()->addWidget(button);
    return action;
}

QSize MessageMonitorWidget::sizeHint() const
{
    const QFontMetrics metrics = m_view->fontMetrics();
    return {metrics.averageCharWidth() * kColumnsWanted, metrics.lineSpacing() * (kLinesWanted + 4)};
}

void MessageMonitorWidget::Add(int msgId, const QString& text)
{
    ++m_messages;
    m_waiting.Add(MessageLine(QTime::currentTime(), msgId, text));
    if (!m_flush.isActive()) {
        m_flush.start();
    }
}

void MessageMonitorWidget::Flush()
{
    if (!m_paused && m_waiting.Size() > 0) {
        m_view->Append(m_waiting.Take());
    }
    ShowState();
}

void MessageMonitorWidget::SetPaused(bool paused)
{
    m_paused = paused;
    Flush();
}

void MessageMonitorWidget::SetWrapped(bool wrapped)
{
    m_view->setLineWrapMode(wrapped ? QPlainTextEdit::WidgetWidth : QPlainTextEdit::NoWrap);
}

void MessageMonitorWidget::Clear()
{
    m_waiting.Clear();
    m_messages = 0;
    m_view->clear();
    ShowState();
}

void MessageMonitorWidget::Copy()
{
    QGuiApplication::clipboard()->setText(m_view->TextToCopy());
}

void MessageMonitorWidget::ShowState()
{
    QString text = QStringLiteral("%1 条消息").arg(m_messages);
    if (m_messages > static_cast<std::uint64_t>(kMostLines)) {
        text += QStringLiteral(" · 保留最新 %1 条").arg(kMostLines);
    }
    if (m_paused) {
        text += QStringLiteral(" · 已暂停，%1 条待显示").arg(m_waiting.Size());
    } else if (!m_view->IsFollowing()) {
        text += QStringLiteral(" · 已停止滚动，按 End 回到最新");
    }
    m_status->SetText(text);
}

void MessageMonitorWidget::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    if (!window()->focusWidget()) {
        m_view->setFocus();  // the keys work at once
    }
}

}  // namespace panelry
