#include "hot_keys/event_text.h"

#include "input/key_names.h"

namespace panelry
{

namespace
{

QString ButtonName(unsigned button)
{
    switch (button) {
        case MOUSE_BUTTON1:
            return QStringLiteral("左键");
        case MOUSE_BUTTON2:
            return QStringLiteral("右键");
        case MOUSE_BUTTON3:
            return QStringLiteral("中键");
        default:
            return QStringLiteral("鼠标键 %1").arg(button);
    }
}

QString At(int x, int y)
{
    return QStringLiteral(" (%1, %2)").arg(x).arg(y);
}

QString WheelText(const mouse_wheel_event_data& wheel)
{
    const bool sideways = wheel.direction == WHEEL_HORIZONTAL_DIRECTION;
    const QString back = sideways ? QStringLiteral("滚轮向左") : QStringLiteral("滚轮向上");
    const QString forth = sideways ? QStringLiteral("滚轮向右") : QStringLiteral("滚轮向下");
    return (wheel.rotation < 0 ? back : forth) + At(wheel.x, wheel.y);
}

QString MouseText(const mouse_event_data& mouse, const QString& what)
{
    return ButtonName(mouse.button) + what + At(mouse.x, mouse.y);
}

}  // namespace

QString EventText(const uiohook_event& event)
{
    switch (event.type) {
        case EVENT_KEY_PRESSED:
            return QStringLiteral("按下 ") + QString::fromStdString(KeyEventName(event));
        case EVENT_KEY_RELEASED:
            return QStringLiteral("松开 ") + QString::fromStdString(KeyEventName(event));
        case EVENT_MOUSE_PRESSED:
            return MouseText(event.data.mouse, QStringLiteral("按下"));
        case EVENT_MOUSE_RELEASED:
            return MouseText(event.data.mouse, QStringLiteral("松开"));
        case EVENT_MOUSE_WHEEL:
            return WheelText(event.data.wheel);
        default:
            return QStringLiteral("事件 %1").arg(event.type);
    }
}

}  // namespace panelry
