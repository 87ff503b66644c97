#include "ui_probe/value_setter.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QGroupBox>
#include <QLineEdit>
#include <QMetaProperty>
#include <QTabBar>
#include <QTabWidget>
#include <QVariant>

#include "ui_probe/widget_values.h"

namespace panelry
{

namespace
{

QString Choose(QWidget& widget, const QStringList& choices, const QJsonValue& value)
{
    const int index = value.isString() ? choices.indexOf(value.toString()) : value.toInt(-1);
    if (index < 0 || index >= choices.size()) {
        return QStringLiteral("%1 has no such item").arg(Described(widget));
    }
    widget.setProperty("currentIndex", index);
    return {};
}

QString ChooseItem(QComboBox& combo, const QJsonValue& value)
{
    QStringList items;
    for (int i = 0; i < combo.count(); ++i) {
        items.append(combo.itemText(i));
    }
    if (combo.isEditable() && value.isString() && !items.contains(value.toString())) {
        combo.setEditText(value.toString());
        return {};
    }
    return Choose(combo, items, value);
}

template <class Tabs>
QString ChooseTab(Tabs& tabs, const QJsonValue& value)
{
    QStringList texts;
    for (int i = 0; i < tabs.count(); ++i) {
        texts.append(WithoutMnemonic(tabs.tabText(i)));
    }
    return Choose(tabs, texts, value);
}

bool IsOfKind(const QJsonValue& value, int type)
{
    switch (static_cast<QMetaType::Type>(type)) {
        case QMetaType::Bool:
            return value.isBool();
        case QMetaType::Int:
            return value.isDouble() && value.toInt() == value.toDouble();
        case QMetaType::Double:
            return value.isDouble();
        default:
            return value.isString();
    }
}

QString WriteUserProperty(QWidget& widget, const QJsonValue& value)
{
    const QMetaProperty property = widget.metaObject()->userProperty();
    if (!property.isValid() || !property.isWritable()) {
        return Described(widget) + QStringLiteral(" has no value to set");
    }
    QVariant wanted = value.toVariant();
    if (!IsOfKind(value, property.userType()) || !wanted.convert(property.userType())) {
        return QStringLiteral("the value of %1 is of the type %2")
            .arg(Described(widget), QLatin1String(property.typeName()));
    }
    property.write(&widget, wanted);
    const QVariant taken = property.read(&widget);
    return taken == wanted ? QString()
                           : QStringLiteral("%1 has taken \"%2\"").arg(Described(widget), taken.toString());
}

template <class Checkable>
bool IsUncheckable(const QWidget& widget)
{
    const auto* const checkable = qobject_cast<const Checkable*>(&widget);
    return checkable && !checkable->isCheckable();
}

}  // namespace

QString SetValue(QWidget& widget, const QJsonValue& value)
{
    if (!widget.isEnabled() || widget.property("readOnly").toBool()) {
        return Described(widget) +
               (widget.isEnabled() ? QStringLiteral(" is read-only") : QStringLiteral(" is disabled"));
    }
    if (IsUncheckable<QAbstractButton>(widget) || IsUncheckable<QGroupBox>(widget)) {
        return Described(widget) + QStringLiteral(" can't be checked");
    }
    if (auto* const combo = qobject_cast<QComboBox*>(&widget)) {
        return ChooseItem(*combo, value);
    }
    if (auto* const bar = qobject_cast<QTabBar*>(&widget)) {
        return ChooseTab(*bar, value);
    }
    if (auto* const tabs = qobject_cast<QTabWidget*>(&widget)) {
        return ChooseTab(*tabs, value);
    }
    return WriteUserProperty(widget, value);
}

}  // namespace panelry
