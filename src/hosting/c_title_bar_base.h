#pragma once

#include <QPoint>
#include <QWidget>

namespace commui
{

/// A title bar that drags its window with the left button. There are no limits: a window can be dragged off
/// the screen and comes back when it is shown the next time.
///
/// Ownership: its parent's. Threading: application thread.
class CTitleBarBase : public QWidget
{
    Q_OBJECT

public:
    /// The parent is the window that moves, until SetTarget() names another.
    explicit CTitleBarBase(QWidget* parent = nullptr);

    void SetTarget(QWidget* target) { m_target = target; }
    void SetDraggable(bool draggable) { m_draggable = draggable; }

Q_SIGNALS:
    /// A drag has ended; `pos` is the target's top left corner in global coordinates.
    void SignalPosChanged(QPoint pos);

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void KeepCursorOnBar();

    QWidget* m_target;
    QPoint m_pressPoint;      // global, where the drag is anchored
    QPoint m_currentPoint;    // global, last seen
    QPoint m_targetPosition;  // of the target, at the anchor
    bool m_pressed = false;
    int m_targetWidth = 0;  // at the anchor
    bool m_draggable = true;
};

}  // namespace commui
