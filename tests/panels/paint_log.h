#pragma once

#include <QEvent>
#include <QPaintEvent>
#include <QPointer>
#include <QRegion>
#include <QWidget>

/// What of a widget has been painted since the last Clear().
class PaintLog : public QObject
{
public:
    explicit PaintLog(QWidget* widget) { widget->installEventFilter(this); }

    void Clear() { painted = QRegion(); }

    QRegion painted;

protected:
    bool eventFilter(QObject*, QEvent* event) override
    {
        if (event->type() == QEvent::Paint) {
            painted += static_cast<QPaintEvent*>(event)->region();
        }
        return false;
    }
};
