#pragma once

#include <QJsonObject>
#include <QString>

namespace panelry
{

/// What is wrong with a request as such: its name, a key that it doesn't have or lacks, a value of another
/// type. Empty if it can be carried out. Any thread.
QString RequestProblem(const QJsonObject& request);

}  // namespace panelry
