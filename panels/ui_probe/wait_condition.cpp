#include "ui_probe/wait_condition.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QStringList>
#include <QWidget>

#include "ui_probe/widget_values.h"

namespace panelry
{

namespace
{

constexpr int kMostNamed = 5;

QString AsJson(const QJsonValue& value)
{
    const QByteArray list = QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact);
    return QString::fromUtf8(list.mid(1, list.size() - 2));
}

QString TooMany(const QString& selector, const QVector<QWidget*>& matches)
{
    QStringList names;
    for (const QWidget* const match : matches.mid(0, kMostNamed)) {
        names.append(Described(*match));
    }
    return QStringLiteral("%1 widgets match %2: %3%4; [n] picks one, from 0")
        .arg(matches.size())
        .arg(selector, names.join(QLatin1String(", ")),
             matches.size() > kMostNamed ? QStringLiteral(", ...") : QString());
}

QString UnmetState(const QWidget& widget, const QJsonObject& wanted)
{
    if (wanted.contains(QLatin1String("enabled")) &&
        wanted[QLatin1String("enabled")].toBool() != widget.isEnabled()) {
        return widget.isEnabled() ? QStringLiteral("is enabled") : QStringLiteral("is disabled");
    }
    if (wanted.contains(QLatin1String("focus")) &&
        wanted[QLatin1String("focus")].toBool() != widget.hasFocus()) {
        return widget.hasFocus() ? QStringLiteral("has the keyboard") : QStringLiteral("hasn't the keyboard");
    }
    return {};
}

QString UnmetContents(const QWidget& widget, const QJsonObject& wanted)
{
    if (wanted.contains(QLatin1String("text")) && wanted[QLatin1String("text")] != ShownText(widget)) {
        return QStringLiteral("shows \"%1\"").arg(ShownText(widget));
    }
    if (wanted.contains(QLatin1String("contains")) &&
        !ShowsText(widget, wanted[QLatin1String("contains")].toString())) {
        return QStringLiteral("doesn't show \"%1\"").arg(wanted[QLatin1String("contains")].toString());
    }
    if (wanted.contains(QLatin1String("value")) && wanted[QLatin1String("value")] != MainValue(widget)) {
        return QStringLiteral("has the value %1").arg(AsJson(MainValue(widget)));
    }
    return {};
}

}  // namespace

Chosen ChooseWidget(const QString& selector, const QJsonObject& request)
{
    QString problem;
    const std::optional<Selector> read = Selector::Read(selector, problem);
    if (!read) {
        return {nullptr, problem};
    }
    const QVector<QWidget*> matches = read->Matches(request[QLatin1String("visible")].toBool());
    if (matches.size() == 1) {
        return {matches.front(), {}};
    }
    return {nullptr, matches.isEmpty() ? QStringLiteral("nothing matches %1").arg(selector)
                                       : TooMany(selector, matches)};
}

QString WaitCondition::Unmet(QWidget*& widget) const
{
    const QString text = m_request[QLatin1String("selector")].toString();
    const Chosen chosen = ChooseWidget(text, m_request);
    widget = chosen.widget;
    if (m_request[QLatin1String("gone")].toBool()) {
        QString problem;
        const std::optional<Selector> selector = Selector::Read(text, problem);
        const bool there =
            selector && !selector->Matches(m_request[QLatin1String("visible")].toBool()).isEmpty();
        return there ? QStringLiteral("there still is a match of %1").arg(text) : problem;
    }
    if (!widget) {
        return chosen.problem;
    }
    for (const auto unmet : {&UnmetState, &UnmetContents}) {
        const QString problem = unmet(*widget, m_request);
        if (!problem.isEmpty()) {
            return Described(*widget) + QLatin1Char(' ') + problem;
        }
    }
    return {};
}

}  // namespace panelry
