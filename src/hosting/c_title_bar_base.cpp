#include "hosting/c_title_bar_base.h"

#include <QMouseEvent>
#include <QPainter>
#include <QStyle>
#include <QStyleOption>

namespace commui
{

CTitleBarBase::CTitleBarBase(QWidget* parent) : QWidget(parent), m_target(parent) {}

void CTitleBarBase::mousePressEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton) {
        m_pressPoint = event->globalPos();
        if (m_target) {
            m_targetPosition = m_target->pos();
            m_targetWidth = m_target->width();
        }
        m_pressed = true;
        event->ignore();
    }
    QWidget::mousePressEvent(event);
}

void CTitleBarBase::mouseMoveEvent(QMouseEvent* event)
{
    if (m_pressed && m_draggable && m_target) {
        m_currentPoint = event->globalPos();
        if (m_target->width() != m_targetWidth) {
            KeepCursorOnBar();
        }
        m_target->move(m_currentPoint - m_pressPoint + m_targetPosition);
        event->ignore();
    }
    QWidget::mouseMoveEvent(event);
}

// The window changed its width under the drag (a snapped window is restored, say): anchor the drag anew, so
// that the cursor doesn't hang in the air beside the bar.
void CTitleBarBase::KeepCursorOnBar()
{
    m_targetWidth = m_target->width();
    m_targetPosition = m_target->pos();
    const QPoint mapped = m_target->mapFromGlobal(m_currentPoint);
    if (mapped.x() < 0) {
        m_pressPoint = {m_currentPoint.x(), m_currentPoint.y() - mapped.y()};
    } else if (mapped.x() >= m_targetWidth) {
        m_pressPoint = {m_currentPoint.x() - m_targetWidth + 1, m_currentPoint.y() - mapped.y()};
    }
}

void CTitleBarBase::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton) {
        m_pressed = false;
        event->ignore();
        if (m_target) {
            Q_EMIT SignalPosChanged(m_target->mapToGlobal(QPoint(0, 0)));
        }
    }
    QWidget::mouseReleaseEvent(event);
}

void CTitleBarBase::paintEvent(QPaintEvent* /*event*/)
{
    QStyleOption option;
    option.initFrom(this);
    QPainter painter(this);
    style()->drawPrimitive(QStyle::PE_Widget, &option, &painter, this);
}

}  // namespace commui
