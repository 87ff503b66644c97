#pragma once

#include <QColor>
#include <QPoint>
#include <QRect>
#include <QString>
#include <QStringList>

/// The screen as a person has it: looks at windows and moves the mouse, from outside the program under test.
namespace panelry::test::screen
{

/// Windows whose title is exactly `title` and that are on the screen.
QStringList Windows(const QString& title);

QRect Geometry(const QString& window);

/// What the window manager says of a window, e.g. "_NET_WM_STATE".
QString Property(const QString& window, const QString& name);

/// The topmost of all windows.
QString Topmost();

/// xdotool with these words.
void Do(const QString& words);

/// Presses at `from`, moves to `to` in steps, and lets go.
void Drag(const QPoint& from, const QPoint& to, int button = 1);
void Click(const QPoint& at);

/// How much of an area of the screen has exactly this colour, 0 to 1.
double ShareOf(const QColor& color, const QRect& area);

}  // namespace panelry::test::screen
