#include "ui_probe/widget_reader.h"

#include <QWidget>
#include <algorithm>

namespace panelry
{

namespace
{

constexpr int kMostWidgets = 2'000;

QJsonArray Numbers(const QPoint& at, const QSize& size)
{
    return {at.x(), at.y(), size.width(), size.height()};
}

QVector<QWidget*> ChildWidgets(const QWidget& widget)
{
    QVector<QWidget*> children;
    for (QObject* const child : widget.children()) {
        if (child->isWidgetType()) {
            children.append(static_cast<QWidget*>(child));
        }
    }
    return children;
}

}  // namespace

QJsonObject WidgetReader::ReadOne(const QWidget& widget)
{
    QJsonObject told{{QStringLiteral("class"), QString::fromLatin1(widget.metaObject()->className())},
                     {QStringLiteral("name"), widget.objectName()},
                     {QStringLiteral("text"), ShownText(widget)},
                     {QStringLiteral("visible"), widget.isVisible()},
                     {QStringLiteral("on_screen"), IsOnScreen(widget)},
                     {QStringLiteral("enabled"), widget.isEnabled()},
                     {QStringLiteral("focus"), widget.hasFocus()},
                     {QStringLiteral("geometry"), Numbers(widget.pos(), widget.size())},
                     {QStringLiteral("global"), Numbers(widget.mapToGlobal(QPoint()), widget.size())}};
    const auto addFilled = [&told](const char* key, const QJsonValue& value, bool filled) {
        if (filled) {
            told[QLatin1String(key)] = value;
        }
    };
    const QJsonValue value = MainValue(widget);
    addFilled("value", value, !value.isNull());
    const QJsonObject details = ShownDetails(widget, m_options.rows, m_truncated);
    addFilled("details", details, !details.isEmpty());
    const QJsonObject properties = OwnProperties(widget);
    addFilled("properties", properties, !properties.isEmpty());
    addFilled("tool_tip", widget.toolTip(), !widget.toolTip().isEmpty());
    addFilled("window", true, widget.isWindow());
    return told;
}

QJsonObject WidgetReader::ReadTree(const QWidget& widget, int depth)
{
    ++m_read;
    QJsonObject told = ReadOne(widget);
    const QVector<QWidget*> children = ChildWidgets(widget);
    if (children.isEmpty()) {
        return told;
    }
    if (depth == 0) {
        told[QStringLiteral("children_left_out")] = children.size();
    } else {
        told[QStringLiteral("children")] = ReadAll(children, depth - 1);
    }
    return told;
}

template <class Widgets>
QJsonArray WidgetReader::ReadAll(const Widgets& widgets, int depth)
{
    QJsonArray told;
    for (const QWidget* const widget : widgets) {
        if (!IsWanted(*widget)) {
            continue;
        }
        if (m_read >= kMostWidgets) {
            m_truncated = true;
            break;
        }
        told.append(ReadTree(*widget, depth));
    }
    return told;
}

bool WidgetReader::IsWanted(const QWidget& widget) const
{
    if (!m_options.onScreenOnly || IsOnScreen(widget)) {
        return true;
    }
    const QVector<QWidget*> children = ChildWidgets(widget);  // a dialog is shown without its parent
    return std::any_of(children.begin(), children.end(),
                       [this](const QWidget* child) { return IsWanted(*child); });
}

}  // namespace panelry
