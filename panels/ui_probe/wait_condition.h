#pragma once

#include <QJsonObject>
#include <QString>
#include <optional>

#include "ui_probe/selector.h"

namespace panelry
{

/// The widget that a request means.
struct Chosen {
    QWidget* widget = nullptr;  ///< for now: gone when its owner likes
    QString problem;            ///< why there is none; empty if there is one
};

/// The one match of `selector`, a text of the request; with the request's "visible" among those on the
/// screen.
Chosen ChooseWidget(const QString& selector, const QJsonObject& request);

/// What a "wait" waits for: a widget, and what has to be so of it.
///
/// Ownership: a value; holds no widget. Threading: application thread.
class WaitCondition
{
public:
    /// Of a request whose keys are of the right types.
    explicit WaitCondition(QJsonObject request) : m_request(std::move(request)) {}

    /// What isn't so yet; empty when all is. `widget` becomes what was found, null for nothing.
    QString Unmet(QWidget*& widget) const;

private:
    QJsonObject m_request;
};

}  // namespace panelry
