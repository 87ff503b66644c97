#pragma once

#include <QJsonObject>
#include <QList>
#include <QRect>
#include <QString>
#include <QStringList>

class QAction;
class QWidget;

namespace panelry
{

/// How much of an item view is read.
struct RowsWanted {
    int first = 0;
    int most = 100;
};

/// What single widgets show, read without changing them. All on the application thread.

/// The text that a user reads on the widget: label, button, what is typed, the chosen item, a group's or
/// window's title. A hidden password stays hidden. What a class of its own paints is known only if it says so
/// by its accessible name or value. Empty where there is none.
QString ShownText(const QWidget& widget);

/// The widget's one value, as its class names it (checked, number, text); null where there is none.
QJsonValue MainValue(const QWidget& widget);

/// What there is beyond text and value: limits, items, tabs, entries of a menu, rows of a table as shown.
/// Sets `truncated` where there was more than wanted or than is read at all; never clears it.
QJsonObject ShownDetails(const QWidget& widget, const RowsWanted& rows, bool& truncated);

/// Properties of classes outside the toolkit and those that were set by name, as far as JSON can tell them.
QJsonObject OwnProperties(const QWidget& widget);

/// The entries of a menu or menu bar that a user sees, separators left out, and how one reads.
QList<QAction*> ShownEntries(const QWidget& menu);
QString EntryText(const QAction& entry);

/// Whether `text` stands, as a whole or as a part, in the widget's text, an item, a tab, an entry or a cell.
bool ShowsText(const QWidget& widget, const QString& text);

/// The part of the widget that isn't cut off by what it stands in; in its own coordinates.
QRect UncutRect(const QWidget& widget);

/// Shown, and not entirely cut off or in a minimized window. Other widgets may cover it.
bool IsOnScreen(const QWidget& widget);

/// "QPushButton#add", for people.
QString Described(const QWidget& widget);

/// "&Save" as it is shown: "Save".
QString WithoutMnemonic(const QString& text);

}  // namespace panelry
