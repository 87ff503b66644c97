#include "common/frame_commands.h"

#include <QAbstractButton>
#include <QTimer>
#include <QWidget>

namespace panelry
{

namespace
{

void PressLater(QWidget* widget, const QString& buttonName)
{
    QTimer::singleShot(0, widget, [widget, buttonName] {
        auto* const button = widget->window()->findChild<QAbstractButton*>(buttonName);
        if (button && !button->isHidden()) {
            button->click();  // may delete the widget: nothing may follow
        }
    });
}

}  // namespace

bool HandleFrameCommand(int msgId, QWidget* widget)
{
    switch (msgId) {
        case kPressCloneButton:
            PressLater(widget, QStringLiteral("clonebtn_titlebar"));
            return true;
        case kPressCloseButton:
            PressLater(widget, QStringLiteral("closebtn_titlebar"));
            return true;
        default:
            return false;
    }
}

}  // namespace panelry
