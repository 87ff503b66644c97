#include "common/frame_commands.h"

#include <QAbstractButton>
#include <QThread>
#include <QTimer>
#include <QWidget>

namespace panelry
{

namespace
{

constexpr int kRetryMs = 10;

// The press may delete the panel. In a nested event loop the panel may be what runs it (a menu, a dialog), and
// nothing tells when that ends.
void PressLater(QWidget* widget, const QString& buttonName, int delayMs = 0)
{
    QTimer::singleShot(delayMs, widget, [widget, buttonName] {
        if (QThread::currentThread()->loopLevel() > 1) {
            PressLater(widget, buttonName, kRetryMs);
            return;
        }
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
