#include "hosting/container_widget.h"

#include <QFile>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QStyle>
#include <QTextStream>
#include <QVBoxLayout>
#include <QVariant>

#include "hosting/c_title_bar_base.h"
#include "hosting/dispatch_scope.h"
#include "hosting/event_filter.h"
#include "hosting/frame_owner.h"
#include "hosting/frame_width_event.h"
#include "hosting/message_ids.h"
#include "hosting/widget_properties.h"
#include "services/module_base.h"

namespace
{

constexpr int kTitleBarHeight = 28;
constexpr int kBorder = 1;  // the style's

std::uintptr_t NextLinkKey()
{
    static std::uintptr_t last = 0;
    return ++last;
}

}  // namespace

ContainerWidget::ContainerWidget(QWidget* parent) : CQssWidget(parent), m_linkKey(NextLinkKey())
{
    setObjectName(QStringLiteral("containerwidget"));
    setWindowFlags((windowFlags() & ~(Qt::WindowSystemMenuHint | Qt::WindowMinMaxButtonsHint)) |
                   Qt::FramelessWindowHint | Qt::Window);
    setAttribute(Qt::WA_DeleteOnClose);
    BuildUi();
    connect(m_cloneButton, &QPushButton::clicked, this, &ContainerWidget::OnCloneBtnClicked);
    connect(m_closeButton, &QPushButton::clicked, this, &ContainerWidget::OnCloseBtnClicked);
    LoadTheme(QString());
}

ContainerWidget::~ContainerWidget() = default;

void ContainerWidget::BuildUi()
{
    m_scrollArea = new QScrollArea(this);
    m_scrollArea->setObjectName(QStringLiteral("containerwidget_scrollarea"));
    m_scrollArea->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_scrollArea->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_scrollArea->setWidgetResizable(true);

    m_layout = new QVBoxLayout(this);
    m_layout->setSpacing(0);
    m_layout->setContentsMargins(kBorder, kBorder, kBorder, kBorder);
    BuildTitleBar();
    m_layout->addWidget(m_titleBar);
    m_layout->addWidget(m_scrollArea);
}

void ContainerWidget::BuildTitleBar()
{
    m_titleBar = new commui::CTitleBarBase(this);
    m_titleBar->setObjectName(QStringLiteral("containerwidget_titlebar"));
    m_titleBar->setFixedHeight(kTitleBarHeight);
    auto* const layout = new QHBoxLayout(m_titleBar);
    layout->setSpacing(0);
    layout->setContentsMargins(10, 0, 0, 0);

    m_titleLabel = new QLabel(m_titleBar);
    m_titleLabel->setObjectName(QStringLiteral("titletextlable_titlebar"));
    m_titleLabel->setTextFormat(Qt::PlainText);  // a name is no markup
    layout->addWidget(m_titleLabel);
    layout->addStretch(0);

    m_cloneButton = new QPushButton(m_titleBar);
    m_cloneButton->setFixedSize(kTitleBarHeight, kTitleBarHeight);
    m_cloneButton->setObjectName(QStringLiteral("clonebtn_titlebar"));
    m_cloneButton->setToolTip(QStringLiteral("复制窗口"));
    layout->addWidget(m_cloneButton);
    m_cloneButton->hide();

    m_closeButton = new QPushButton(m_titleBar);
    m_closeButton->setFixedSize(kTitleBarHeight, kTitleBarHeight);
    m_closeButton->setObjectName(QStringLiteral("closebtn_titlebar"));
    m_closeButton->setToolTip(QStringLiteral("关闭窗口"));
    layout->addWidget(m_closeButton);
}

void ContainerWidget::LoadTheme(const QString& name)
{
    QFile file(QStringLiteral(":/Panelry/resources/qss/%1Theme.qss")
                   .arg(name.isEmpty() ? QStringLiteral("White") : name));
    if (!file.open(QIODevice::ReadOnly)) {
        return;
    }
    QTextStream stream(&file);
    setStyleSheet(stream.readAll());
}

void ContainerWidget::SetModule(ModuleBase* module)
{
    m_module = module;
    if (!m_scrollArea || !module) {
        return;
    }
    QWidget* const widget = module->GetWidget();
    if (const std::shared_ptr<InstanceInfo> info = module->GetInstanceInfo()) {
        const QString title = QString::fromUtf8(info->module_title.c_str());
        m_titleLabel->setText(title);
        setWindowTitle(title);
        if (widget) {
            ApplyProperties(widget);
        }
        m_componentId = static_cast<std::int32_t>(info->module_id);
    }
    if (widget) {
        Embed(widget);
    }
}

void ContainerWidget::ApplyProperties(QWidget* widget)
{
    const QSize size(widget->property(panelry::kFrameWidth).toInt(),
                     widget->property(panelry::kFrameHeight).toInt());
    resize(size);
    if (widget->property(panelry::kFixedSize).toBool()) {
        setFixedSize(size);
    }
    if (widget->property(panelry::kSupportClone).toBool()) {
        m_cloneButton->show();
    }
    if (widget->property(panelry::kStaysOnTop).toBool()) {
        // Before the first show: changing the flags makes the native window anew.
        setWindowFlags(windowFlags() | Qt::WindowStaysOnTopHint | Qt::SubWindow);
    }
}

void ContainerWidget::Embed(QWidget* widget)
{
    auto* const holder = new QWidget;
    auto* const layout = new QVBoxLayout(holder);
    layout->addWidget(widget);
    layout->setContentsMargins(0, 0, 0, 0);
    m_scrollArea->setWidget(holder);
    (new EventFilter(this))->Watch(this);
}

void ContainerWidget::SetTitle(const QString& text)
{
    if (m_titleLabel && !text.isEmpty()) {
        m_titleLabel->setText(text);
    }
    if (QWidget* const widget = ModuleWidget()) {
        widget->setProperty(panelry::kModuleName, text);
    }
}

void ContainerWidget::SetCloneEnabled(bool enable)
{
    if (!m_cloneButton || m_cloneButton->isEnabled() == enable) {
        return;
    }
    m_cloneButton->setEnabled(enable);
    // Without a new polish the image of the old state stays.
    m_cloneButton->style()->unpolish(m_cloneButton);
    m_cloneButton->style()->polish(m_cloneButton);
    m_cloneButton->update();
}

QWidget* ContainerWidget::ModuleWidget() const
{
    return m_module ? m_module->GetWidget() : nullptr;
}

void ContainerWidget::SendMessage(int cmd, std::string text)
{
    if (m_module && m_owner) {
        m_owner->Deliver(m_module, cmd, text);
    }
}

void ContainerWidget::SendInitData(std::string text)
{
    SendMessage(panelry::kInitData, std::move(text));
}

void ContainerWidget::SendPushData(std::string text)
{
    SendMessage(panelry::kPushData, std::move(text));
}

bool ContainerWidget::event(QEvent* event)
{
    if (event->type() == panelry::FrameWidthEvent::kType) {
        resize(static_cast<panelry::FrameWidthEvent*>(event)->Width(), height());
        return true;
    }
    if (event->type() == QEvent::Close) {
        // A window manager, the end of the session or the panel itself may close a frame too: nobody may find it
        // afterwards.
        const panelry::DispatchScope scope;
        LeaveManager();
    }
    return CQssWidget::event(event);
}

void ContainerWidget::showEvent(QShowEvent* event)
{
    const QRect frame = geometry();
    bool onAScreen = false;
    for (const QScreen* screen : QGuiApplication::screens()) {
        onAScreen = onAScreen || screen->availableGeometry().intersects(frame);
    }
    if (!onAScreen) {
        const QPoint center = QGuiApplication::primaryScreen()->availableGeometry().center();
        move(center.x() - width() / 2, center.y() - height() / 2);
    }
    CQssWidget::showEvent(event);
}

void ContainerWidget::OnCloneBtnClicked()
{
    const panelry::DispatchScope scope;
    if (m_owner) {
        m_owner->CreateContainer(m_componentId, this, std::string());
    }
}

void ContainerWidget::OnCloseBtnClicked()
{
    const panelry::DispatchScope scope;
    const QPointer<ContainerWidget> self(this);
    LeaveManager();
    if (self) {
        close();
    }
}

void ContainerWidget::LeaveManager()
{
    if (std::exchange(m_leaving, true)) {
        return;
    }
    disconnect(m_cloneButton, nullptr, this, nullptr);
    disconnect(m_closeButton, nullptr, this, nullptr);
    ReleaseModuleWidget();
    if (m_owner) {
        m_owner->RemoveContainer(this);
    }
}

void ContainerWidget::ReleaseModuleWidget()
{
    if (QWidget* const widget = ModuleWidget()) {
        widget->setParent(nullptr);
    }
}
