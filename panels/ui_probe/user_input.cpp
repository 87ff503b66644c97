#include "ui_probe/user_input.h"

#include <QAbstractItemView>
#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QJsonArray>
#include <QKeyEvent>
#include <QKeySequence>
#include <QMenu>
#include <QMenuBar>
#include <QRadioButton>
#include <QStyle>
#include <QStyleHints>
#include <QStyleOptionButton>
#include <QTabBar>
#include <QTabWidget>
#include <QTimer>
#include <QWindow>
#include <memory>
#include <optional>
#include <utility>

#include "ui_probe/item_rows.h"
#include "ui_probe/widget_values.h"

QT_BEGIN_NAMESPACE
// The toolkit's way in for events that no window system has sent. Exported, and used by its own test library,
// in whose header alone they are declared.
Q_GUI_EXPORT void qt_handleMouseEvent(QWindow* window, const QPointF& local, const QPointF& global,
                                      Qt::MouseButtons state, Qt::MouseButton button, QEvent::Type type,
                                      Qt::KeyboardModifiers mods, int timestamp);
Q_GUI_EXPORT void qt_handleKeyEvent(QWindow* window, QEvent::Type t, int k, Qt::KeyboardModifiers mods,
                                    const QString& text, bool autorep, ushort count);
QT_END_NAMESPACE

namespace panelry
{

namespace
{

// Of the events' own clock: real ones lie far enough apart for two presses in a row never to be a double
// click.
int eventTime = 0;

bool IsPopup(const QWidget& widget)
{
    return widget.window()->windowType() == Qt::Popup;
}

bool IsModal(const QWidget& front)
{
    return front.isModal() && !IsPopup(front);
}

bool IsBlockedBy(const QWidget& front, const QWidget& widget)
{
    if (!IsModal(front)) {
        return !IsPopup(widget);
    }
    for (const QWidget* part = &widget; part; part = part->parentWidget()) {
        if (part == &front) {
            return false;
        }
    }
    return front.windowModality() == Qt::ApplicationModal || widget.window()->isAncestorOf(&front);
}

PressPoint Refused(const QString& problem)
{
    return {nullptr, {}, problem};
}

// A check box is as wide as its layout makes it, but only mark and text react.
QRect SensitiveRect(const QWidget& widget)
{
    const bool radio = qobject_cast<const QRadioButton*>(&widget) != nullptr;
    if (!radio && !qobject_cast<const QCheckBox*>(&widget)) {
        return widget.rect();
    }
    const auto& button = static_cast<const QAbstractButton&>(widget);
    QStyleOptionButton option;
    option.initFrom(&button);
    option.text = button.text();
    option.icon = button.icon();
    option.iconSize = button.iconSize();
    return button.style()->subElementRect(
        radio ? QStyle::SE_RadioButtonClickRect : QStyle::SE_CheckBoxClickRect, &option, &button);
}

// What the number or the text `wanted` names among `texts`; -1 for nothing.
int IndexOf(const QJsonValue& wanted, const QStringList& texts)
{
    if (wanted.isString()) {
        return texts.indexOf(wanted.toString());
    }
    const int index = wanted.toInt(-1);
    return index < texts.size() ? index : -1;
}

PressPoint FindCell(QAbstractItemView& view, int row, int column)
{
    const std::vector<ShownRow> rows = ShownRows(view, row, 1);
    const std::vector<int> columns = ShownColumns(view, column + 1);
    if (rows.empty() || column >= static_cast<int>(columns.size())) {
        return Refused(QStringLiteral("there is no cell in row %1, column %2").arg(row).arg(column));
    }
    const QModelIndex index = rows.front().index;
    const QModelIndex cell = index.sibling(index.row(), columns[static_cast<std::size_t>(column)]);
    if (!(cell.flags() & Qt::ItemIsEnabled)) {
        return Refused(QStringLiteral("the cell in row %1, column %2 is disabled").arg(row).arg(column));
    }
    view.scrollTo(cell);
    const QRect shown = view.visualRect(cell) & view.viewport()->rect();
    return {view.viewport(), shown.center(),
            shown.isEmpty() ? QStringLiteral("the cell isn't shown") : QString()};
}

PressPoint FindTab(QWidget& widget, const QJsonValue& wanted)
{
    auto* const tabs = qobject_cast<QTabWidget*>(&widget);
    auto* const bar = tabs ? tabs->tabBar() : qobject_cast<QTabBar*>(&widget);
    if (!bar) {
        return Refused(Described(widget) + QStringLiteral(" has no tabs"));
    }
    QStringList texts;
    for (int i = 0; i < bar->count(); ++i) {
        texts.append(WithoutMnemonic(bar->tabText(i)));
    }
    const int index = IndexOf(wanted, texts);
    if (index < 0 || !bar->isTabEnabled(index)) {
        return Refused(index < 0 ? QStringLiteral("there is no such tab")
                                 : QStringLiteral("that tab is disabled"));
    }
    return {bar, bar->tabRect(index).center(), {}};
}

PressPoint FindEntry(QWidget& widget, const QJsonValue& wanted)
{
    auto* const menu = qobject_cast<QMenu*>(&widget);
    auto* const bar = qobject_cast<QMenuBar*>(&widget);
    if (!menu && !bar) {
        return Refused(Described(widget) + QStringLiteral(" is no menu"));
    }
    const QList<QAction*> entries = ShownEntries(widget);
    QStringList texts;
    for (const QAction* const entry : entries) {
        texts.append(EntryText(*entry));
    }
    const int index = IndexOf(wanted, texts);
    if (index < 0 || !entries[index]->isEnabled()) {
        return Refused(index < 0 ? QStringLiteral("there is no such entry")
                                 : QStringLiteral("that entry is disabled"));
    }
    const QRect rect = menu ? menu->actionGeometry(entries[index]) : bar->actionGeometry(entries[index]);
    return {&widget, rect.center(), {}};
}

PressPoint Named(QWidget& widget, const QJsonObject& request)
{
    if (request.contains(QLatin1String("row"))) {
        auto* const view = qobject_cast<QAbstractItemView*>(&widget);
        return view ? FindCell(*view, request[QLatin1String("row")].toInt(),
                               request[QLatin1String("column")].toInt())
                    : Refused(Described(widget) + QStringLiteral(" has no rows"));
    }
    if (request.contains(QLatin1String("tab"))) {
        return FindTab(widget, request[QLatin1String("tab")]);
    }
    if (request.contains(QLatin1String("entry"))) {
        return FindEntry(widget, request[QLatin1String("entry")]);
    }
    if (request.contains(QLatin1String("at"))) {
        const QJsonArray at = request[QLatin1String("at")].toArray();
        return {&widget, {at[0].toInt(), at[1].toInt()}, {}};
    }
    const QRect seen = SensitiveRect(widget) & UncutRect(widget);
    return {&widget, seen.center(), {}};
}

// One mouse event at a place of a window that may be gone by then.
std::function<void()> MouseEvent(const PressPoint& point, QEvent::Type type, Qt::MouseButton button,
                                 Qt::MouseButtons held, Qt::KeyboardModifiers modifiers, int time)
{
    QWidget* const native =
        point.widget->windowHandle() ? point.widget.data() : point.widget->nativeParentWidget();
    const QPointer<QWindow> window = native->windowHandle();
    const QPointF local = point.widget->mapTo(native, point.at);
    const QPointF global = point.widget->mapToGlobal(point.at);
    return [=] {
        if (window) {
            qt_handleMouseEvent(window, local, global, held, button, type, modifiers, time);
        }
    };
}

Qt::MouseButton ButtonNamed(const QString& name)
{
    if (name == QLatin1String("left")) {
        return Qt::LeftButton;
    }
    if (name == QLatin1String("right")) {
        return Qt::RightButton;
    }
    return name == QLatin1String("middle") ? Qt::MiddleButton : Qt::NoButton;
}

// Nothing if `text` isn't "Ctrl", "Ctrl+Shift" and the like.
std::optional<Qt::KeyboardModifiers> ModifiersNamed(const QString& text)
{
    if (text.isEmpty()) {
        return Qt::KeyboardModifiers();
    }
    const QKeySequence keys =
        QKeySequence::fromString(text + QLatin1String("+A"), QKeySequence::PortableText);
    const int combined = keys[0];
    if (keys.count() != 1 || (combined & ~static_cast<int>(Qt::KeyboardModifierMask)) != Qt::Key_A) {
        return std::nullopt;
    }
    return Qt::KeyboardModifiers(QFlag(combined & static_cast<int>(Qt::KeyboardModifierMask)));
}

// The window that hears the keyboard now.
QWindow* KeyboardWindow()
{
    const QWidget* const popup = QApplication::activePopupWidget();
    return popup ? popup->windowHandle() : QGuiApplication::focusWindow();
}

InputStep KeyStep(int key, Qt::KeyboardModifiers modifiers, const QString& text)
{
    return {[=] {
        for (const QEvent::Type type : {QEvent::KeyPress, QEvent::KeyRelease}) {
            if (QWindow* const window = KeyboardWindow()) {
                qt_handleKeyEvent(window, type, key, modifiers, text, false, 1);
            }
        }
    }};
}

// The text that comes with a key, as keyboards send it.
QString KeyText(int key, Qt::KeyboardModifiers modifiers)
{
    switch (key) {
        case Qt::Key_Return:
        case Qt::Key_Enter:
            return QStringLiteral("\r");
        case Qt::Key_Tab:
            return QStringLiteral("\t");
        case Qt::Key_Backspace:
            return QStringLiteral("\b");
        case Qt::Key_Escape:
            return QStringLiteral("\x1b");
        case Qt::Key_Delete:
            return QStringLiteral("\x7f");
        default:
            break;
    }
    const bool printable = key >= Qt::Key_Space && key < Qt::Key_Escape;
    if (!printable || (modifiers & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier))) {
        return {};
    }
    const QChar character(static_cast<ushort>(key));
    return modifiers & Qt::ShiftModifier ? character : character.toLower();
}

InputStep CharacterStep(const QString& character)
{
    const QChar first = character.front();
    if (first == QLatin1Char('\n')) {
        return KeyStep(Qt::Key_Return, Qt::NoModifier, QStringLiteral("\r"));
    }
    if (first == QLatin1Char('\t')) {
        return KeyStep(Qt::Key_Tab, Qt::NoModifier, character);
    }
    // Characters beyond the keyboard come under their own number, as input methods of window systems send
    // them.
    const int key = first.isHighSurrogate() ? static_cast<int>(Qt::Key_unknown) : first.toUpper().unicode();
    return KeyStep(key, first.isUpper() ? Qt::ShiftModifier : Qt::NoModifier, character);
}

struct InputRun {
    InputSteps steps;
    std::function<void(bool)> done;
    std::size_t next = 0;

    void Tell(bool nested)
    {
        if (const auto told = std::exchange(done, nullptr)) {
            told(nested);
        }
    }

    void TellFromNestedLoop()
    {
        if (done && next < steps.size() && steps[next].isRelease) {
            steps[next++].deliver();
        }
        Tell(true);
    }
};

}  // namespace

QWidget* WindowInFront()
{
    QWidget* const popup = QApplication::activePopupWidget();
    return popup ? popup : QApplication::activeModalWidget();
}

QString WhyOutOfReach(const QWidget& widget)
{
    if (!widget.isVisible() || widget.window()->isMinimized()) {
        return Described(widget) + QStringLiteral(" is hidden");
    }
    if (!IsOnScreen(widget)) {
        return Described(widget) + QStringLiteral(" is cut off by what it stands in");
    }
    if (!widget.isEnabled()) {
        return Described(widget) + QStringLiteral(" is disabled");
    }
    const QWidget* const front = WindowInFront();
    if (front && IsBlockedBy(*front, widget)) {
        return QStringLiteral("%1 is blocked by the %2 %3")
            .arg(Described(widget), IsModal(*front) ? QStringLiteral("modal") : QStringLiteral("popup"),
                 Described(*front));
    }
    return {};
}

PressPoint FindPressPoint(QWidget& widget, const QJsonObject& request)
{
    PressPoint point = Named(widget, request);
    if (!point.problem.isEmpty()) {
        return point;
    }
    if (!UncutRect(*point.widget).contains(point.at)) {
        return Refused(QStringLiteral("that place of %1 can't be seen").arg(Described(widget)));
    }
    QWidget* const window = point.widget->window();
    QWidget* const child = window->childAt(point.widget->mapTo(window, point.at));
    QWidget* const under = child ? child : window;
    if (under != point.widget && !point.widget->isAncestorOf(under)) {
        return Refused(QStringLiteral("%1 is covered by %2").arg(Described(widget), Described(*under)));
    }
    return point;
}

InputSteps PressSteps(const PressPoint& point, const QJsonObject& request, QString& problem)
{
    const Qt::MouseButton button =
        ButtonNamed(request[QLatin1String("button")].toString(QStringLiteral("left")));
    const auto modifiers = ModifiersNamed(request[QLatin1String("modifiers")].toString());
    if (button == Qt::NoButton || !modifiers) {
        problem = button == Qt::NoButton ? QStringLiteral("\"button\" is left, right or middle")
                                         : QStringLiteral("\"modifiers\" are such as Ctrl+Shift");
        return {};
    }
    const auto event = [&](QEvent::Type type, Qt::MouseButton which, Qt::MouseButtons held) {
        return MouseEvent(point, type, which, held, *modifiers, ++eventTime);
    };
    InputSteps steps{{event(QEvent::MouseMove, Qt::NoButton, Qt::NoButton)}};
    for (int left = request[QLatin1String("double")].toBool() ? 2 : 1; left > 0; --left) {
        steps.push_back({event(QEvent::MouseButtonPress, button, button)});
        steps.push_back({event(QEvent::MouseButtonRelease, button, Qt::NoButton), true});
    }
    eventTime += 2 * QGuiApplication::styleHints()->mouseDoubleClickInterval();
    return steps;
}

InputSteps TypeSteps(const QString& text, bool clear)
{
    InputSteps steps;
    if (clear) {
        steps.push_back(KeyStep(Qt::Key_A, Qt::ControlModifier, {}));
        steps.push_back(KeyStep(Qt::Key_Delete, Qt::NoModifier, QStringLiteral("\x7f")));
    }
    for (int i = 0; i < text.size();) {
        const int length = text[i].isHighSurrogate() && i + 1 < text.size() ? 2 : 1;
        steps.push_back(CharacterStep(text.mid(i, length)));
        i += length;
    }
    return steps;
}

InputSteps KeySteps(const QString& keys, QString& problem)
{
    const QKeySequence sequence = QKeySequence::fromString(keys, QKeySequence::PortableText);
    InputSteps steps;
    for (int i = 0; i < sequence.count(); ++i) {
        const int combined = sequence[static_cast<uint>(i)];
        const int key = combined & ~static_cast<int>(Qt::KeyboardModifierMask);
        const Qt::KeyboardModifiers modifiers(QFlag(combined & static_cast<int>(Qt::KeyboardModifierMask)));
        if (key == 0 || key == Qt::Key_unknown) {
            steps.clear();
            break;
        }
        steps.push_back(KeyStep(key, modifiers, KeyText(key, modifiers)));
    }
    if (steps.empty()) {
        problem = QStringLiteral("\"%1\" is no key").arg(keys);
    }
    return steps;
}

void DeliverInput(InputSteps steps, std::function<void(bool)> done)
{
    // The timer finds the run alive only if it fires below a step, from that step's own loop.
    const auto run = std::make_shared<InputRun>(InputRun{std::move(steps), std::move(done)});
    QTimer::singleShot(0, [running = std::weak_ptr<InputRun>(run)] {
        if (const auto nested = running.lock()) {
            nested->TellFromNestedLoop();
        }
    });
    while (run->done && run->next < run->steps.size()) {
        run->steps[run->next++].deliver();
    }
    run->Tell(false);
}

bool HasKeyboard(QWidget& widget)
{
    QWidget* const window = widget.window();
    if (!IsPopup(widget) && QGuiApplication::focusWindow() != window->windowHandle()) {
        window->raise();
        window->activateWindow();
        return false;
    }
    const QWidget* focus = window->focusWidget();
    if (focus && (focus == &widget || widget.isAncestorOf(focus))) {
        return true;
    }
    widget.setFocus(Qt::OtherFocusReason);
    const QWidget* taker = &widget;
    while (taker->focusProxy()) {
        taker = taker->focusProxy();
    }
    focus = window->focusWidget();
    return focus && (focus == taker || taker->isAncestorOf(focus));
}

}  // namespace panelry
