#include "host_tables/tables_widget.h"

#include <QHBoxLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QShortcut>
#include <QSignalBlocker>
#include <QStackedWidget>
#include <QTabBar>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>

#include "common/panel_style.h"
#include "common/status_line.h"
#include "host_tables/host_table_view.h"

namespace panelry
{

namespace
{

constexpr char kContract[] = "2135";
const QLatin1String kPageKey("page");
const QLatin1String kMarginKey("margin");
const QLatin1String kFilterKey("filter");

QString TabStyle()
{
    return QStringLiteral(
               "QTabBar { background: %1; } QTabBar::tab { background: %1; color: %2; border: none; "
               "border-bottom: 2px solid %1; padding: 0.35em 1em; } "
               "QTabBar::tab:selected { color: %3; border-bottom-color: %4; } "
               "QTabBar::tab:focus { border: 1px dotted %4; border-bottom: 2px solid %4; }")
        .arg(QColor(style::kBand).name(), QColor(style::kMutedText).name(), QColor(style::kText).name(),
             QColor(style::kFocus).name());
}

}  // namespace

std::string TableName(const PageSpec& page, bool margin)
{
    return (margin ? "rzrq_" : "") + std::string(page.table);
}

TablesWidget::TablesWidget(TablesSpec spec, QWidget* parent)
    : QWidget(parent),
      m_spec(std::move(spec)),
      m_views(new QStackedWidget(this)),
      m_status(new StatusLine(this))
{
    style::Apply(this, style::kHairline);  // shows through the gaps
    QWidget* const head = BuildHead();
    QWidget* const foot = BuildFoot();
    for (const PageSpec& page : m_spec.pages) {
        m_tables.push_back({MakeTable(page, false), MakeTable(page, true)});
    }
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(1);
    for (QWidget* const part :
         {head, static_cast<QWidget*>(m_views), foot, static_cast<QWidget*>(m_status)}) {
        layout->addWidget(part, part == m_views ? 1 : 0);
    }
    AddShortcuts();
    ShowPage(0, false);
    ShowState();
}

QWidget* TablesWidget::BuildHead()
{
    auto* const head = new QWidget(this);
    style::Apply(head, style::kBand);
    m_tabs = new QTabBar(head);
    m_tabs->setDrawBase(false);
    m_tabs->setExpanding(false);
    m_tabs->setStyleSheet(TabStyle());
    for (const PageSpec& page : m_spec.pages) {
        m_tabs->addTab(QString::fromUtf8(page.title));
    }
    m_account = new QPushButton(head);
    m_account->setObjectName(QStringLiteral("account"));
    m_account->setCheckable(true);
    m_account->setToolTip(QStringLiteral("普通账户与信用账户之间切换（Ctrl+M）"));
    m_filter = new QLineEdit(head);
    m_filter->setObjectName(QStringLiteral("filter"));
    m_filter->setPlaceholderText(QStringLiteral("筛选（Ctrl+F）"));
    m_filter->setClearButtonEnabled(true);
    auto* const layout = new QHBoxLayout(head);
    const int margin = fontMetrics().averageCharWidth() / 2;
    layout->setContentsMargins(margin, 0, margin, 0);
    layout->addWidget(m_tabs);
    layout->addStretch(1);
    layout->addWidget(m_filter);
    layout->addWidget(m_account);
    connect(m_tabs, &QTabBar::currentChanged, this, &TablesWidget::OnPageChanged);
    connect(m_account, &QPushButton::toggled, this, [this](bool checked) {
        m_margin = checked;
        OnPageChanged();
    });
    connect(m_filter, &QLineEdit::textChanged, this, [this](const QString& text) {
        for (const auto& page : m_tables) {
            for (const Table& table : page) {
                table.view->SetFilter(text);
            }
        }
    });
    return head;
}

QWidget* TablesWidget::BuildFoot()
{
    auto* const foot = new QWidget(this);
    style::Apply(foot, style::kBand);
    auto* const layout = new QHBoxLayout(foot);
    const int margin = fontMetrics().averageCharWidth() / 2;
    layout->setContentsMargins(margin, margin, margin, margin);
    layout->addStretch(1);
    auto* const refresh = new QPushButton(QStringLiteral("刷新"), foot);
    refresh->setToolTip(QStringLiteral("重新查询本页（F5）"));
    connect(refresh, &QPushButton::clicked, this, &TablesWidget::RefreshWanted);
    m_cancel = new QPushButton(QStringLiteral("撤单"), foot);
    m_cancel->setObjectName(QStringLiteral("cancel"));
    m_cancel->setToolTip(QStringLiteral("撤销选中的委托（Delete）"));
    connect(m_cancel, &QPushButton::clicked, this, &TablesWidget::CancelSelected);
    layout->addWidget(m_cancel);
    layout->addWidget(refresh);
    return foot;
}

TablesWidget::Table TablesWidget::MakeTable(const PageSpec& page, bool margin)
{
    Table table;
    table.model = new HostTableModel(page.columns, page.keyColumn, this);
    const QString memory = QStringLiteral("%1/%2").arg(QString::fromLatin1(m_spec.name),
                                                       QString::fromStdString(TableName(page, margin)));
    table.view = new HostTableView(table.model, memory, this);
    table.view->setObjectName(QString::fromStdString(TableName(page, margin)));
    table.view->SetEmptyText(QStringLiteral("没有数据"));
    m_views->addWidget(table.view);
    connect(table.view, &HostTableView::RowsChanged, this, &TablesWidget::ShowState);
    connect(table.view, &HostTableView::RemoveWanted, this, &TablesWidget::CancelSelected);
    connect(table.view, &HostTableView::Picked, this,
            [this, model = table.model](int row) { Pick(*model, row); });
    return table;
}

void TablesWidget::AddShortcuts()
{
    const auto add = [this](const QString& keys, auto act) {
        auto* const shortcut = new QShortcut(QKeySequence(keys), this);
        shortcut->setContext(Qt::WidgetWithChildrenShortcut);
        connect(shortcut, &QShortcut::activated, this, act);
    };
    add(QStringLiteral("F5"), [this] { Q_EMIT RefreshWanted(); });
    add(QStringLiteral("Ctrl+M"), [this] { m_account->toggle(); });
    add(QStringLiteral("Ctrl+F"), [this] { m_filter->setFocus(); });
    for (int page = 0; page < m_tabs->count(); ++page) {
        add(QStringLiteral("Ctrl+%1").arg(page + 1), [this, page] {
            ShowPage(page, m_margin);
            View(page, m_margin)->setFocus();
        });
    }
}

void TablesWidget::SetColors(const TableColors& colors)
{
    for (const auto& page : m_tables) {
        for (const Table& table : page) {
            table.model->SetColors(colors);
        }
    }
}

void TablesWidget::SetTable(const std::string& name, const std::shared_ptr<HostTable>& table)
{
    for (std::size_t page = 0; page < m_tables.size(); ++page) {
        for (const bool margin : {false, true}) {
            Table& mine = m_tables[page][margin ? 1U : 0U];
            if (TableName(m_spec.pages[page], margin) == name) {
                mine.came = true;
                mine.outdated = false;
                mine.model->SetTable(table);
                m_done.clear();
            }
        }
    }
    ShowState();
}

void TablesWidget::Warn(const QString& problem)
{
    m_status->Warn(problem);
}

void TablesWidget::Tell(const QString& done)
{
    m_done = done;
    ShowState();
}

void TablesWidget::ShowPage(int page, bool margin)
{
    {
        const QSignalBlocker quietAccount(m_account);  // one change, asked for once
        const QSignalBlocker quietTabs(m_tabs);
        m_account->setChecked(margin);
        m_tabs->setCurrentIndex(page);
        m_margin = margin;
    }
    OnPageChanged();
}

int TablesWidget::Page() const
{
    return m_tabs->currentIndex();
}

void TablesWidget::Outdate()
{
    for (std::size_t page = 0; page < m_tables.size(); ++page) {
        for (Table& table : m_tables[page]) {
            table.outdated = table.outdated || !m_spec.pages[page].cancels;
        }
    }
    if (Of(Page(), m_margin).outdated) {
        Q_EMIT RefreshWanted();
    }
}

// A page that the host hasn't told yet, or not what has happened since, is asked for when somebody looks at it.
void TablesWidget::OnPageChanged()
{
    m_account->setText(m_margin ? QStringLiteral("信用账户") : QStringLiteral("普通账户"));
    if (m_tables.size() != m_spec.pages.size()) {
        return;  // still under construction
    }
    const Table& table = Of(Page(), m_margin);
    m_views->setCurrentWidget(table.view);
    setFocusProxy(table.view);
    m_cancel->setVisible(m_spec.pages[static_cast<std::size_t>(Page())].cancels);
    m_done.clear();
    ShowState();
    if (!table.came || table.outdated) {
        Q_EMIT RefreshWanted();
    }
}

void TablesWidget::CancelSelected()
{
    if (!m_spec.pages[static_cast<std::size_t>(Page())].cancels) {
        return;
    }
    const Table& table = Of(Page(), m_margin);
    std::vector<std::string> contracts;
    for (const int row : table.view->SelectedRows()) {
        contracts.push_back(table.model->HostText(row, kContract));
    }
    if (!contracts.empty()) {
        Q_EMIT CancelWanted(contracts);
    }
}

void TablesWidget::Pick(const HostTableModel& model, int row)
{
    Q_EMIT Picked({{"stockcode", model.HostText(row, "2102")},
                   {"market", model.HostText(row, "32009")},
                   {"stockname", model.HostText(row, "2103")}});
}

void TablesWidget::ShowState()
{
    if (m_tables.size() != m_spec.pages.size()) {
        return;  // still under construction
    }
    const Table& table = Of(Page(), m_margin);
    const int rows = table.model->rowCount();
    const int shown = table.view->ShownRows();
    const auto selected = static_cast<int>(table.view->SelectedRows().size());
    m_cancel->setEnabled(selected > 0);
    QString text = !table.came ? QStringLiteral("等待数据") : QStringLiteral("共 %1 行").arg(rows);
    if (shown != rows) {
        text += QStringLiteral("，筛选后 %1 行").arg(shown);
    }
    if (selected > 1) {
        text += QStringLiteral("，选中 %1 行").arg(selected);
    }
    m_status->SetText(m_done.isEmpty() ? text : text + QStringLiteral(" · ") + m_done);
}

QString TablesWidget::StatusText() const
{
    return m_status->Shown();
}

QSize TablesWidget::sizeHint() const
{
    const QSize table = Of(0, false).view->sizeHint();
    return {std::max(table.width(), layout()->minimumSize().width()),
            table.height() + 3 * m_status->sizeHint().height() + 2 * m_cancel->sizeHint().height()};
}

QVariantMap TablesWidget::ModuleData() const
{
    return {{kPageKey, QString::number(Page())},
            {kMarginKey, m_margin ? QStringLiteral("1") : QStringLiteral("0")},
            {kFilterKey, m_filter->text()}};
}

void TablesWidget::Restore(const QVariantMap& moduleData)
{
    const int page = moduleData.value(kPageKey).toString().toInt();
    const bool margin = moduleData.value(kMarginKey).toString() == QLatin1String("1");
    m_filter->setText(moduleData.value(kFilterKey).toString());
    ShowPage(page >= 0 && page < m_tabs->count() ? page : 0, margin);
}

void TablesWidget::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    if (!window()->focusWidget()) {
        View(Page(), m_margin)->setFocus();  // the arrow keys work at once
    }
}

}  // namespace panelry
