#include "base/wake_up.h"

#include <QCoreApplication>
#include <QEvent>
#include <utility>

namespace panelry
{

namespace
{

QEvent::Type PostedEvent()
{
    static const auto type = static_cast<QEvent::Type>(QEvent::registerEventType());
    return type;
}

}  // namespace

WakeUp::WakeUp(std::function<void()> call) : m_call(std::move(call))
{
    PostedEvent();  // not first on another thread
}

void WakeUp::Post()
{
    QCoreApplication::postEvent(this, new QEvent(PostedEvent()));
}

bool WakeUp::event(QEvent* event)
{
    if (event->type() != PostedEvent()) {
        return QObject::event(event);
    }
    const std::function<void()> call = m_call;  // a copy: this may die in it
    call();
    return true;
}

}  // namespace panelry
