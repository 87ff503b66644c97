#include "hot_keys/hot_keys_widget.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QShortcut>
#include <QTime>
#include <QVBoxLayout>
#include <algorithm>

#include "common/panel_style.h"
#include "common/status_line.h"
#include "hot_keys/combination.h"

namespace panelry
{

namespace
{

const QString kCombinationsKey = QStringLiteral("combinations");
const QString kReleasesKey = QStringLiteral("releases");
const QString kMouseKey = QStringLiteral("mouse");

constexpr int kMostLines = 500;
constexpr int kRowsOfList = 4;
constexpr int kRowsOfLog = 9;
constexpr int kLongestCombination = 40;

QString Flag(bool set)
{
    return set ? QStringLiteral("1") : QStringLiteral("0");
}

}  // namespace

HotKeysWidget::HotKeysWidget(QWidget* parent) : QWidget(parent)
{
    BuildUi();
    AddShortcuts();
    ShowState();
}

HotKeysWidget::~HotKeysWidget()
{
    m_combinations->disconnect(this);  // the dying list loses its current row
}

void HotKeysWidget::BuildUi()
{
    style::Apply(this, style::kHairline);  // shows through the gaps
    m_combinations = new QListWidget(this);
    style::Apply(m_combinations);
    m_combinations->setFrameShape(QFrame::NoFrame);
    m_combinations->setUniformItemSizes(true);
    m_combinations->setMinimumHeight(kRowsOfList * fontMetrics().lineSpacing());
    m_combinations->setToolTip(QStringLiteral("Delete：删除选中的组合键"));
    connect(m_combinations, &QListWidget::currentRowChanged, this, &HotKeysWidget::ShowState);

    m_arrivals = new QPlainTextEdit(this);
    style::Apply(m_arrivals);
    m_arrivals->setFrameShape(QFrame::NoFrame);
    m_arrivals->setReadOnly(true);
    m_arrivals->setTabChangesFocus(true);
    m_arrivals->setUndoRedoEnabled(false);
    m_arrivals->setMaximumBlockCount(kMostLines);
    m_arrivals->setPlaceholderText(QStringLiteral("收到的按键和鼠标动作显示在这里，其他窗口在前台时也一样"));
    m_status = new StatusLine(this);

    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(1);
    layout->addWidget(BuildLine());
    layout->addWidget(m_combinations, kRowsOfList);
    layout->addWidget(BuildChoices());
    layout->addWidget(m_arrivals, kRowsOfLog);
    layout->addWidget(m_status);
    setFocusProxy(m_line);
}

QWidget* HotKeysWidget::BuildLine()
{
    auto* const line = new QWidget(this);
    style::Apply(line, style::kBand);
    const int margin = fontMetrics().averageCharWidth();
    auto* const layout = new QHBoxLayout(line);
    layout->setContentsMargins(margin, margin / 2, margin, margin / 2);
    layout->setSpacing(margin / 2);
    m_line = new QLineEdit(line);
    m_line->setObjectName(QStringLiteral("combination"));
    m_line->setPlaceholderText(QStringLiteral("组合键，如 ctrl+shift+a"));
    m_line->setMaxLength(kLongestCombination);
    m_line->setMinimumWidth(fontMetrics().horizontalAdvance(m_line->placeholderText()) + 3 * margin);
    m_add = new QPushButton(QStringLiteral("添加"), line);
    m_add->setObjectName(QStringLiteral("add"));
    m_remove = new QPushButton(QStringLiteral("删除"), line);
    m_remove->setObjectName(QStringLiteral("remove"));
    for (QPushButton* const button : {m_add, m_remove}) {
        button->setAutoDefault(true);  // Enter presses it too
    }
    layout->addWidget(m_line, 1);
    layout->addWidget(m_add);
    layout->addWidget(m_remove);
    connect(m_line, &QLineEdit::returnPressed, this, [this] { Add(m_line->text()); });
    connect(m_line, &QLineEdit::textChanged, this, &HotKeysWidget::ShowState);
    connect(m_add, &QPushButton::clicked, this, [this] { Add(m_line->text()); });
    connect(m_remove, &QPushButton::clicked, this, &HotKeysWidget::RemoveCurrent);
    return line;
}

QWidget* HotKeysWidget::BuildChoices()
{
    auto* const choices = new QWidget(this);
    style::Apply(choices, style::kBand);
    const int margin = fontMetrics().averageCharWidth();
    auto* const layout = new QHBoxLayout(choices);
    layout->setContentsMargins(margin, margin / 2, margin, margin / 2);
    m_releases = new QCheckBox(QStringLiteral("松开也显示"), choices);
    m_releases->setObjectName(QStringLiteral("releases"));
    m_mouse = new QCheckBox(QStringLiteral("鼠标按键和滚轮"), choices);
    m_mouse->setObjectName(QStringLiteral("mouse"));
    for (QCheckBox* const choice : {m_releases, m_mouse}) {
        layout->addWidget(choice);
        connect(choice, &QCheckBox::toggled, this, &HotKeysWidget::WishesChanged);
    }
    layout->addStretch(1);
    return choices;
}

void HotKeysWidget::AddShortcuts()
{
    const auto add = [](const char* keys, QWidget* widget, Qt::ShortcutContext context, auto act) {
        auto* const shortcut = new QShortcut(QKeySequence(QLatin1String(keys)), widget);
        shortcut->setContext(context);
        connect(shortcut, &QShortcut::activated, widget, act);
    };
    add("Delete", m_combinations, Qt::WidgetShortcut, [this] { RemoveCurrent(); });
    add("Ctrl+N", this, Qt::WidgetWithChildrenShortcut, [this] { m_line->setFocus(); });
    add("Ctrl+L", this, Qt::WidgetWithChildrenShortcut, [this] {
        m_arrivals->clear();
        m_arrived = 0;
        ShowState();
    });
}

QSize HotKeysWidget::sizeHint() const
{
    const QSize line = m_line->parentWidget()->sizeHint();
    const QSize choices = m_releases->parentWidget()->sizeHint();
    const int rows = (kRowsOfList + kRowsOfLog) * fontMetrics().lineSpacing();
    return {std::max(line.width(), choices.width()),
            line.height() + choices.height() + rows + m_status->sizeHint().height() + 4};
}

QStringList HotKeysWidget::Combinations() const
{
    QStringList combinations;
    for (int row = 0; row < m_combinations->count(); ++row) {
        combinations.append(m_combinations->item(row)->text());
    }
    return combinations;
}

bool HotKeysWidget::Releases() const
{
    return m_releases->isChecked();
}

bool HotKeysWidget::Mouse() const
{
    return m_mouse->isChecked();
}

void HotKeysWidget::Add(const QString& typed)
{
    const Combination combination = ReadCombination(typed);
    if (!combination.problem.isEmpty()) {
        m_status->Warn(combination.problem);
        m_line->setFocus();
        return;
    }
    const int row = Combinations().indexOf(combination.text);
    m_line->clear();
    if (row >= 0) {
        m_combinations->setCurrentRow(row);
        m_status->Warn(QStringLiteral("%1 已登记").arg(combination.text));
        return;
    }
    m_combinations->addItem(combination.text);
    m_combinations->setCurrentRow(m_combinations->count() - 1);
    ShowState();
    Q_EMIT WishesChanged();
}

void HotKeysWidget::RemoveCurrent()
{
    if (m_combinations->currentRow() < 0) {
        return;
    }
    delete m_combinations->takeItem(m_combinations->currentRow());
    ShowState();
    Q_EMIT WishesChanged();
}

void HotKeysWidget::ShowArrival(const QString& text)
{
    const QString time = QTime::currentTime().toString(QStringLiteral("hh:mm:ss.zzz"));
    m_arrivals->appendPlainText(time + QLatin1Char(' ') + text);
    ++m_arrived;
    ShowState();
}

QStringList HotKeysWidget::Arrivals() const
{
    return m_arrivals->toPlainText().split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

QString HotKeysWidget::StatusText() const
{
    return m_status->Shown();
}

void HotKeysWidget::ShowState()
{
    m_add->setEnabled(!m_line->text().isEmpty());
    m_remove->setEnabled(m_combinations->currentRow() >= 0);
    m_status->SetText(
        QStringLiteral("已登记 %1 个组合键，收到 %2 个事件").arg(m_combinations->count()).arg(m_arrived));
}

QVariantMap HotKeysWidget::ModuleData() const
{
    return {{kCombinationsKey, Combinations().join(QLatin1Char(' '))},
            {kReleasesKey, Flag(Releases())},
            {kMouseKey, Flag(Mouse())}};
}

void HotKeysWidget::Restore(const QVariantMap& moduleData)
{
    const QString combinations = moduleData.value(kCombinationsKey).toString();
    for (const QString& combination : combinations.split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
        Add(combination);
    }
    m_releases->setChecked(moduleData.value(kReleasesKey).toString() == QLatin1String("1"));
    m_mouse->setChecked(moduleData.value(kMouseKey).toString() == QLatin1String("1"));
}

void HotKeysWidget::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    if (!window()->focusWidget()) {
        m_line->setFocus();  // one can type at once
    }
}

}  // namespace panelry
