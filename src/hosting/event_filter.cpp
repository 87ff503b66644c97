#include "hosting/event_filter.h"

#include <QEvent>
#include <QWidget>
#include <utility>

#include "hosting/host_call.h"

namespace
{
constexpr int kQuietSeconds = 30;
}

EventFilter::EventFilter(QObject* parent, Clock clock)
    : QObject(parent), m_clock(std::move(clock)), m_lastReport(m_clock())
{
}

void EventFilter::Watch(QWidget* root)
{
    root->installEventFilter(this);
    for (QWidget* child : root->findChildren<QWidget*>()) {
        child->installEventFilter(this);
    }
}

bool EventFilter::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::MouseButtonPress) {
        const QTime now = m_clock();
        if (m_lastReport.secsTo(now) >= kQuietSeconds) {
            m_lastReport = now;  // before the call: the host may do anything in it
            panelry::CallHost(panelry::bridge::kUserActive, nullptr);
        }
    }
    return QObject::eventFilter(watched, event);
}
