#include "hosting/c_qss_widget.h"

#include <QEvent>
#include <QPainter>
#include <QStyle>
#include <QStyleOption>

CQssWidget::CQssWidget(QWidget* parent) : QWidget(parent) {}

void CQssWidget::paintEvent(QPaintEvent* /*event*/)
{
    QStyleOption option;
    option.initFrom(this);
    QPainter painter(this);
    style()->drawPrimitive(QStyle::PE_Widget, &option, &painter, this);
}

void CQssWidget::showEvent(QShowEvent* event)
{
    setAttribute(Qt::WA_Mapped);
    QWidget::showEvent(event);
}

void CQssWidget::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::WindowStateChange) {
        setAttribute(Qt::WA_Mapped);
    }
    QWidget::changeEvent(event);
}
