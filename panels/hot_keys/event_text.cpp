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
        case EVENT_MOUSE_WHEEL: {
            const mouse_wheel_event_data& wheel = event.data.wheel;
            return (wheel.rotation < 0 ? QStringLiteral("滚轮向上") : QStringLiteral("滚轮向下")) +
                   At(wheel.x, wheel.y);
        }
        default:
            return QStringLiteral("事件 %1").arg(event.type);
    }
}

}  // namespace panelry
