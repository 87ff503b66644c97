#pragma once

#include <QJsonValue>
#include <QString>

class QWidget;

namespace panelry
{

/// Gives the widget a value as a program does: true or false, a number, a text, an item or tab by text or
/// number. Signals that tell of a user (clicked, activated, textEdited) don't come. Returns why not, or what
/// the widget made of it if that isn't what was asked for; empty if all is well. Application thread.
QString SetValue(QWidget& widget, const QJsonValue& value);

}  // namespace panelry
