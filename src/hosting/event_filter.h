#pragma once

#include <QObject>
#include <QTime>
#include <functional>

class QWidget;

/// Tells the host that the user is active: a mouse press in any watched widget, at most once in 30 seconds.
///
/// Ownership: its parent's. Threading: application thread.
/// Only the time of day is compared: a press at 23:59:50 keeps reports back until the clock has passed that
/// time again. The first 30 seconds after construction report nothing.
class EventFilter : public QObject
{
    Q_OBJECT

public:
    using Clock = std::function<QTime()>;

    explicit EventFilter(QObject* parent, Clock clock = &QTime::currentTime);

    /// Watches `root` and all widgets that are below it now; later children aren't covered.
    void Watch(QWidget* root);

    /// Never consumes an event.
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    Clock m_clock;
    QTime m_lastReport;
};
