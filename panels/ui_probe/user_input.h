#pragma once

#include <QJsonObject>
#include <QPoint>
#include <QPointer>
#include <QString>
#include <QWidget>
#include <functional>
#include <vector>

namespace panelry
{

/// Mouse and keyboard as a user has them: events go the way of those that a window system sends, so that
/// popups, modal windows, shortcuts, focus and context menus do what they do for him. All on the application
/// thread.

/// Why a user can't act on the widget as things stand; empty if he can.
QString WhyOutOfReach(const QWidget& widget);

/// The popup, or else the modal window, that has mouse and keyboard to itself; null if there is none.
QWidget* WindowInFront();

/// Where a press lands.
struct PressPoint {
    QPointer<QWidget> widget;
    QPoint at;        ///< in its coordinates
    QString problem;  ///< why a press can't land there; empty if there is none
};

/// The middle of what can be seen of the widget, or what the request names: "at", "row" with "column", "tab",
/// "entry". May scroll an item view. A point that the press wouldn't reach is a problem.
PressPoint FindPressPoint(QWidget& widget, const QJsonObject& request);

/// One event, or a few that belong together.
struct InputStep {
    std::function<void()> deliver;
    bool isRelease = false;  ///< ends a press: it follows even if that has opened a loop of its own
};
using InputSteps = std::vector<InputStep>;

/// The events of a press and its release, twice for a double click. A problem if "button" or "modifiers"
/// aren't known.
InputSteps PressSteps(const PressPoint& point, const QJsonObject& request, QString& problem);

/// A text, key by key; what the widget holds is selected and removed before if `clear`.
InputSteps TypeSteps(const QString& text, bool clear);

/// "Ctrl+A", "Shift+Tab", "Return". A problem if it is no key.
InputSteps KeySteps(const QString& keys, QString& problem);

/// Delivers, and calls `done` once: behind the last step, or from inside the event loop that a step has
/// opened (a menu, a dialog) with `nested` set. In that case a release that is due is delivered in that loop
/// and all else is dropped. What a step destroys is no matter.
void DeliverInput(InputSteps steps, std::function<void(bool nested)> done);

/// Brings the keyboard to the widget. True once it is there; ask again until it is. Keeps the focus of a
/// child.
bool HasKeyboard(QWidget& widget);

}  // namespace panelry
