#include "ui_probe/widget_values.h"

#include <QAbstractItemView>
#include <QAbstractSlider>
#include <QAbstractSpinBox>
#include <QAccessible>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QGroupBox>
#include <QJsonArray>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QMetaProperty>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QRegularExpression>
#include <QSpinBox>
#include <QStackedWidget>
#include <QTabBar>
#include <QTabWidget>
#include <QTextDocumentFragment>
#include <QTextEdit>

#include "ui_probe/item_rows.h"

namespace panelry
{

namespace
{

constexpr int kMostColumns = 100;
constexpr int kMostItems = 1'000;
constexpr int kMostTextLength = 20'000;
constexpr int kMostRowsSearched = 10'000;

template <class W>
const W* As(const QWidget& widget)
{
    return qobject_cast<const W*>(&widget);
}

bool IsToolkitClass(const char* name)
{
    return name[0] == 'Q' && name[1] >= 'A' && name[1] <= 'Z';
}

QString Cut(const QString& text)
{
    return text.size() > kMostTextLength ? text.left(kMostTextLength) + QChar(0x2026) : text;
}

QString LabelText(const QLabel& label)
{
    const bool rich = label.textFormat() == Qt::RichText ||
                      (label.textFormat() == Qt::AutoText && Qt::mightBeRichText(label.text()));
    if (rich) {
        return QTextDocumentFragment::fromHtml(label.text()).toPlainText();
    }
    return label.buddy() ? WithoutMnemonic(label.text()) : label.text();
}

// A class that paints itself may tell screen readers what it shows.
QString AccessibleText(const QWidget& widget)
{
    if (!widget.accessibleName().isEmpty()) {
        return widget.accessibleName();
    }
    if (IsToolkitClass(widget.metaObject()->className())) {
        return {};
    }
    QAccessibleInterface* const told = QAccessible::queryAccessibleInterface(const_cast<QWidget*>(&widget));
    if (!told) {
        return {};
    }
    const QString value = told->text(QAccessible::Value);
    return value.isEmpty() ? told->text(QAccessible::Name) : value;
}

QString InputText(const QWidget& widget)
{
    if (const auto* const line = As<QLineEdit>(widget)) {
        return line->displayText();
    }
    if (const auto* const combo = As<QComboBox>(widget)) {
        return combo->currentText();
    }
    if (const auto* const spin = As<QAbstractSpinBox>(widget)) {
        return spin->text();
    }
    if (const auto* const edit = As<QPlainTextEdit>(widget)) {
        return edit->toPlainText();
    }
    const auto* const edit = As<QTextEdit>(widget);
    return edit ? edit->toPlainText() : QString();
}

QString TitleText(const QWidget& widget)
{
    if (const auto* const group = As<QGroupBox>(widget)) {
        return WithoutMnemonic(group->title());
    }
    if (const auto* const menu = As<QMenu>(widget)) {
        return WithoutMnemonic(menu->title());
    }
    if (const auto* const tabs = As<QTabBar>(widget)) {
        return WithoutMnemonic(tabs->tabText(tabs->currentIndex()));
    }
    return widget.isWindow() ? widget.windowTitle() : QString();
}

QStringList TabTexts(const QWidget& widget)
{
    QStringList texts;
    if (const auto* const bar = As<QTabBar>(widget)) {
        for (int i = 0; i < bar->count(); ++i) {
            texts.append(WithoutMnemonic(bar->tabText(i)));
        }
    } else if (const auto* const tabs = As<QTabWidget>(widget)) {
        for (int i = 0; i < tabs->count(); ++i) {
            texts.append(WithoutMnemonic(tabs->tabText(i)));
        }
    }
    return texts;
}

QStringList ComboTexts(const QComboBox& combo, bool& truncated)
{
    QStringList texts;
    for (int i = 0; i < std::min(combo.count(), kMostItems); ++i) {
        texts.append(combo.itemText(i));
    }
    truncated = truncated || combo.count() > kMostItems;
    return texts;
}

QJsonArray MenuEntries(const QWidget& menu)
{
    QJsonArray entries;
    for (const QAction* const action : ShownEntries(menu)) {
        QJsonObject entry{{QStringLiteral("text"), EntryText(*action)},
                          {QStringLiteral("enabled"), action->isEnabled()}};
        if (action->isCheckable()) {
            entry[QStringLiteral("checked")] = action->isChecked();
        }
        if (!action->shortcut().isEmpty()) {
            entry[QStringLiteral("shortcut")] = action->shortcut().toString(QKeySequence::PortableText);
        }
        entries.append(entry);
    }
    return entries;
}

QJsonArray CellTexts(const QAbstractItemView& view, const ShownRow& row, const std::vector<int>& columns)
{
    QJsonArray cells;
    for (const int column : columns) {
        cells.append(Cut(CellText(view, row.index.sibling(row.index.row(), column))));
    }
    return cells;
}

// The numbers, in the order shown, of a cell; none for a cell that isn't among `rows` and `columns`.
QJsonValue ShownPlace(const QModelIndex& cell, const std::vector<ShownRow>& rows,
                      const std::vector<int>& columns, int firstRow)
{
    const QModelIndex head = cell.sibling(cell.row(), 0);
    const auto row = std::find_if(rows.begin(), rows.end(),
                                  [&head](const ShownRow& shown) { return shown.index == head; });
    const auto column = std::find(columns.begin(), columns.end(), cell.column());
    if (!cell.isValid() || row == rows.end() || column == columns.end()) {
        return QJsonValue::Null;
    }
    return QJsonArray{firstRow + static_cast<int>(row - rows.begin()),
                      static_cast<int>(column - columns.begin())};
}

QJsonObject TableDetails(const QAbstractItemView& view, const RowsWanted& wanted, bool& truncated)
{
    if (!view.model()) {
        return {};
    }
    std::vector<int> columns = ShownColumns(view, kMostColumns + 1);
    if (static_cast<int>(columns.size()) > kMostColumns) {
        truncated = true;
        columns.pop_back();
    }
    std::vector<ShownRow> rows = ShownRows(view, wanted.first, wanted.most + 1);
    if (static_cast<int>(rows.size()) > wanted.most) {
        truncated = true;
        rows.pop_back();
    }
    QJsonArray headings;
    for (const int column : columns) {
        headings.append(HeadingText(view, column));
    }
    QJsonArray cells;
    QJsonArray depths;
    QJsonArray selected;
    for (std::size_t i = 0; i < rows.size(); ++i) {
        cells.append(CellTexts(view, rows[i], columns));
        depths.append(rows[i].depth);
        const QItemSelectionModel* const selection = view.selectionModel();
        if (selection->rowIntersectsSelection(rows[i].index.row(), rows[i].index.parent())) {
            selected.append(wanted.first + static_cast<int>(i));
        }
    }
    return {{QStringLiteral("headings"), headings},
            {QStringLiteral("rows"), cells},
            {QStringLiteral("depths"), depths},
            {QStringLiteral("first_row"), wanted.first},
            {QStringLiteral("model_rows"), view.model()->rowCount(view.rootIndex())},
            {QStringLiteral("current"), ShownPlace(view.currentIndex(), rows, columns, wanted.first)},
            {QStringLiteral("selected_rows"), selected}};
}

template <class Ranged>
QJsonObject Range(const Ranged& ranged)
{
    return {{QStringLiteral("minimum"), ranged.minimum()}, {QStringLiteral("maximum"), ranged.maximum()}};
}

QJsonObject TextDetails(const QWidget& widget)
{
    QJsonObject details;
    for (const char* const name : {"placeholderText", "readOnly", "editable"}) {
        const QVariant value = widget.property(name);
        if (!value.toString().isEmpty()) {
            details[QLatin1String(name)] = QJsonValue::fromVariant(value);
        }
    }
    return details;
}

void Merge(QJsonObject& into, const QJsonObject& more)
{
    for (auto it = more.begin(); it != more.end(); ++it) {
        into[it.key()] = it.value();
    }
}

QJsonObject NumberDetails(const QWidget& widget)
{
    if (const auto* const spin = As<QSpinBox>(widget)) {
        return Range(*spin);
    }
    if (const auto* const spin = As<QDoubleSpinBox>(widget)) {
        return Range(*spin);
    }
    if (const auto* const slider = As<QAbstractSlider>(widget)) {
        return Range(*slider);
    }
    const auto* const bar = As<QProgressBar>(widget);
    return bar ? Range(*bar) : QJsonObject();
}

// As JSON; undefined for what JSON can't tell.
QJsonValue Told(const QVariant& value)
{
    switch (static_cast<QMetaType::Type>(value.userType())) {
        case QMetaType::QString:
            return Cut(value.toString());
        case QMetaType::Bool:
        case QMetaType::Int:
        case QMetaType::UInt:
        case QMetaType::LongLong:
        case QMetaType::ULongLong:
        case QMetaType::Double:
        case QMetaType::Float:
        case QMetaType::QStringList:
        case QMetaType::QVariantList:
        case QMetaType::QVariantMap:
        case QMetaType::QDate:
        case QMetaType::QTime:
        case QMetaType::QDateTime:
            return QJsonValue::fromVariant(value);
        default:
            return QJsonValue::Undefined;
    }
}

bool AnyContains(const QStringList& texts, const QString& text)
{
    return !texts.filter(text, Qt::CaseSensitive).isEmpty();
}

bool CellsShowText(const QAbstractItemView& view, const QString& text)
{
    const std::vector<int> columns = ShownColumns(view, kMostColumns);
    for (const ShownRow& row : ShownRows(view, 0, kMostRowsSearched)) {
        for (const int column : columns) {
            if (CellText(view, row.index.sibling(row.index.row(), column)).contains(text)) {
                return true;
            }
        }
    }
    return false;
}

}  // namespace

QString WithoutMnemonic(const QString& text)
{
    static const QRegularExpression mnemonic(QStringLiteral("&(.)"));
    return QString(text).replace(mnemonic, QStringLiteral("\\1"));
}

QList<QAction*> ShownEntries(const QWidget& menu)
{
    QList<QAction*> entries;
    for (QAction* const action : menu.actions()) {
        if (action->isVisible() && !action->isSeparator()) {
            entries.append(action);
        }
    }
    return entries;
}

QString EntryText(const QAction& entry)
{
    return WithoutMnemonic(entry.text().section(QLatin1Char('\t'), 0, 0));  // behind it stand the keys
}

QString ShownText(const QWidget& widget)
{
    if (const auto* const button = As<QAbstractButton>(widget)) {
        const QString text = WithoutMnemonic(button->text());
        return Cut(text.isEmpty() ? button->accessibleName() : text);
    }
    if (const auto* const label = As<QLabel>(widget)) {
        return Cut(LabelText(*label));
    }
    if (const auto* const bar = As<QProgressBar>(widget)) {
        return bar->text();
    }
    for (const auto read : {&InputText, &TitleText, &AccessibleText}) {
        const QString text = read(widget);
        if (!text.isEmpty()) {
            return Cut(text);
        }
    }
    return {};
}

QJsonValue MainValue(const QWidget& widget)
{
    if (const auto* const button = As<QAbstractButton>(widget)) {
        return button->isCheckable() ? QJsonValue(button->isChecked()) : QJsonValue::Null;
    }
    if (const auto* const group = As<QGroupBox>(widget)) {
        return group->isCheckable() ? QJsonValue(group->isChecked()) : QJsonValue::Null;
    }
    if (As<QLineEdit>(widget) || As<QPlainTextEdit>(widget) || As<QTextEdit>(widget)) {
        return Cut(InputText(widget));
    }
    if (As<QTabBar>(widget) || As<QTabWidget>(widget) || As<QStackedWidget>(widget)) {
        return QJsonValue::fromVariant(widget.property("currentIndex"));
    }
    const QMetaProperty user = widget.metaObject()->userProperty();
    const QJsonValue value = user.isValid() ? Told(user.read(&widget)) : QJsonValue();
    return value.isUndefined() ? QJsonValue::Null : value;
}

QJsonObject ShownDetails(const QWidget& widget, const RowsWanted& rows, bool& truncated)
{
    if (const auto* const view = As<QAbstractItemView>(widget)) {
        return TableDetails(*view, rows, truncated);
    }
    QJsonObject details = NumberDetails(widget);
    Merge(details, TextDetails(widget));
    if (const auto* const combo = As<QComboBox>(widget)) {
        details[QStringLiteral("index")] = combo->currentIndex();
        details[QStringLiteral("items")] = QJsonArray::fromStringList(ComboTexts(*combo, truncated));
    }
    if (As<QTabBar>(widget) || As<QTabWidget>(widget)) {
        details[QStringLiteral("tabs")] = QJsonArray::fromStringList(TabTexts(widget));
    }
    if (As<QMenu>(widget) || As<QMenuBar>(widget)) {
        details[QStringLiteral("entries")] = MenuEntries(widget);
    }
    return details;
}

QJsonObject OwnProperties(const QWidget& widget)
{
    QJsonObject properties;
    const auto add = [&properties](const char* name, const QVariant& value) {
        const QJsonValue told = Told(value);
        if (!told.isUndefined()) {
            properties[QString::fromUtf8(name)] = told;
        }
    };
    for (const QMetaObject* meta = widget.metaObject(); meta && !IsToolkitClass(meta->className());
         meta = meta->superClass()) {
        for (int i = meta->propertyOffset(); i < meta->propertyCount(); ++i) {
            add(meta->property(i).name(), meta->property(i).read(&widget));
        }
    }
    for (const QByteArray& name : widget.dynamicPropertyNames()) {
        if (!name.startsWith("_q_")) {  // the toolkit's own
            add(name.constData(), widget.property(name.constData()));
        }
    }
    return properties;
}

bool ShowsText(const QWidget& widget, const QString& text)
{
    if (ShownText(widget).contains(text) || AnyContains(TabTexts(widget), text)) {
        return true;
    }
    if (const auto* const view = As<QAbstractItemView>(widget)) {
        return CellsShowText(*view, text);
    }
    bool truncated = false;
    if (const auto* const combo = As<QComboBox>(widget)) {
        return AnyContains(ComboTexts(*combo, truncated), text);
    }
    QStringList entries;
    for (const QAction* const action : ShownEntries(widget)) {
        entries.append(EntryText(*action));
    }
    return As<QMenu>(widget) && AnyContains(entries, text);
}

QRect UncutRect(const QWidget& widget)
{
    QRect rect = widget.rect();
    QPoint offset;
    for (const QWidget* part = &widget; !part->isWindow() && part->parentWidget();
         part = part->parentWidget()) {
        offset += part->pos();
        rect &= part->parentWidget()->rect().translated(-offset);
    }
    return rect;
}

bool IsOnScreen(const QWidget& widget)
{
    return widget.isVisible() && !widget.window()->isMinimized() && !UncutRect(widget).isEmpty();
}

QString Described(const QWidget& widget)
{
    const QString className = QString::fromLatin1(widget.metaObject()->className());
    return widget.objectName().isEmpty() ? className : className + QLatin1Char('#') + widget.objectName();
}

}  // namespace panelry
