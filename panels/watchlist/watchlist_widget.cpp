#include "watchlist/watchlist_widget.h"

#include <QHBoxLayout>
#include <QPushButton>
#include <QShortcut>
#include <QStackedWidget>
#include <QTabBar>
#include <QVBoxLayout>
#include <algorithm>

#include "common/panel_style.h"
#include "common/status_line.h"
#include "watchlist/add_line.h"
#include "watchlist/stock_list_model.h"
#include "watchlist/stock_list_view.h"

namespace panelry
{

namespace
{

constexpr char kTabKey[] = "tab";

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

// "600000 浦发银行"
QString NameOf(const StringMap& stock)
{
    return QString::fromStdString(FieldOf(stock, "stockcode") + ' ' + FieldOf(stock, "stockname")).trimmed();
}

}  // namespace

WatchlistWidget::WatchlistWidget(QWidget* parent) : QWidget(parent)
{
    BuildUi();
    AddShortcuts();
    ShowState();
}

void WatchlistWidget::BuildUi()
{
    style::Apply(this, style::kHairline);  // shows through the gaps
    m_models[kWatchlist] = new StockListModel(this);
    m_models[kLatest] = new StockListModel(this);
    m_views[kWatchlist] = new StockListView(m_models[kWatchlist], StockListView::Order::Users, this);
    m_views[kLatest] = new StockListView(m_models[kLatest], StockListView::Order::Fixed, this);
    m_views[kWatchlist]->SetEmptyText(QStringLiteral("还没有自选股\n在下方输入代码后按回车添加"));
    m_views[kLatest]->SetEmptyText(QStringLiteral("还没有浏览过证券"));
    m_views[kWatchlist]->setToolTip(
        QStringLiteral("双击或回车：选中　Delete：删除　拖动或 Alt+↑/↓：调整顺序"));
    m_status = new StatusLine(this);

    m_pages = new QStackedWidget(this);
    m_pages->addWidget(BuildPage(kWatchlist, BuildWatchlistFoot()));
    m_pages->addWidget(BuildPage(kLatest, BuildLatestFoot()));
    BuildTabs();

    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(1);
    layout->addWidget(m_tabs);
    layout->addWidget(m_pages, 1);
    layout->addWidget(m_status);
    setFocusProxy(m_views[kWatchlist]);
}

void WatchlistWidget::BuildTabs()
{
    m_tabs = new QTabBar(this);
    m_tabs->setDrawBase(false);
    m_tabs->setExpanding(false);
    m_tabs->setStyleSheet(TabStyle());
    style::Apply(m_tabs, style::kBand);
    m_tabs->addTab(QString());
    m_tabs->addTab(QString());
    connect(m_tabs, &QTabBar::currentChanged, this, [this](int tab) {
        m_pages->setCurrentIndex(tab);
        setFocusProxy(m_views[tab]);
        ShowState();
    });
}

QWidget* WatchlistWidget::BuildPage(Tab tab, QWidget* foot)
{
    StockListView* const view = m_views[tab];
    style::Apply(view);
    connect(view, &StockListView::PickWanted, this, [this, tab](int row) { Pick(tab, row); });
    connect(view->selectionModel(), &QItemSelectionModel::currentChanged, this, &WatchlistWidget::ShowState);
    auto* const page = new QWidget(m_pages);
    auto* const layout = new QVBoxLayout(page);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(1);
    layout->addWidget(view, 1);
    layout->addWidget(foot);
    return page;
}

QWidget* WatchlistWidget::BuildWatchlistFoot()
{
    m_addLine = new AddLine(this);
    connect(m_addLine, &AddLine::AddWanted, this, &WatchlistWidget::AddWanted);
    m_remove = new QPushButton(QStringLiteral("删除"), m_addLine);
    m_remove->setToolTip(QStringLiteral("从自选股中删除选中的一行（Delete）"));
    m_addLine->layout()->addWidget(m_remove);
    StockListView* const view = m_views[kWatchlist];
    connect(m_remove, &QPushButton::clicked, this, [this, view] { Remove(view->Row()); });
    connect(view, &StockListView::RemoveWanted, this, &WatchlistWidget::Remove);
    connect(view, &StockListView::MoveWanted, this, &WatchlistWidget::MoveWanted);
    return m_addLine;
}

QWidget* WatchlistWidget::BuildLatestFoot()
{
    auto* const foot = new QWidget(this);
    style::Apply(foot, style::kBand);
    auto* const layout = new QHBoxLayout(foot);
    layout->setContentsMargins(m_addLine->layout()->contentsMargins());
    layout->addStretch(1);
    m_addLatest = new QPushButton(QStringLiteral("加入自选"), foot);
    layout->addWidget(m_addLatest);
    connect(m_addLatest, &QPushButton::clicked, this, &WatchlistWidget::AddCurrentLatest);
    return foot;
}

void WatchlistWidget::AddShortcuts()
{
    const auto add = [this](const char* keys, auto act) {
        auto* const shortcut = new QShortcut(QKeySequence(QLatin1String(keys)), this);
        shortcut->setContext(Qt::WidgetWithChildrenShortcut);
        connect(shortcut, &QShortcut::activated, this, act);
    };
    const auto go = [this](Tab tab) {
        ShowTab(tab);
        m_views[tab]->setFocus();
    };
    add("Ctrl+1", [go] { go(kWatchlist); });
    add("Ctrl+2", [go] { go(kLatest); });
    add("Ctrl+N", [this] {
        ShowTab(kWatchlist);
        m_addLine->StartAnew();
    });
}

QSize WatchlistWidget::sizeHint() const
{
    const QSize list = m_views[kWatchlist]->sizeHint();
    const int width = std::max(list.width(), m_addLine->sizeHint().width());
    return {width, m_tabs->sizeHint().height() + list.height() + m_addLine->sizeHint().height() +
                       m_status->sizeHint().height() + 3};
}

void WatchlistWidget::SetWatchlist(const StockList& stocks)
{
    SetStocks(kWatchlist, stocks);
}

void WatchlistWidget::SetLatest(const StockList& stocks)
{
    SetStocks(kLatest, stocks);
}

// The current stock stays current wherever it has gone; if it has gone altogether, its neighbour takes over.
void WatchlistWidget::SetStocks(Tab tab, const StockList& stocks)
{
    StockListModel* const model = m_models[tab];
    StockListView* const view = m_views[tab];
    const int before = view->Row();
    const StringMap current = before < 0 ? StringMap() : model->Stocks()[static_cast<std::size_t>(before)];
    model->SetStocks(stocks);
    if (!stocks.empty()) {
        const int row = before < 0 ? 0 : model->RowOf(current);
        view->SelectRow(row >= 0 ? row : std::min(before, static_cast<int>(stocks.size()) - 1));
    }
    ShowState();
}

void WatchlistWidget::ShowSelected(const StringMap& stock)
{
    for (const Tab tab : {kWatchlist, kLatest}) {
        const int row = m_models[tab]->RowOf(stock);
        if (row >= 0) {
            m_views[tab]->SelectRow(row);
        }
    }
    m_addLine->Offer(stock);
}

void WatchlistWidget::ShowAdded(const StringMap& stock, bool isNew)
{
    const int row = m_models[kWatchlist]->RowOf(stock);
    if (row >= 0) {
        m_views[kWatchlist]->SelectRow(row);
    }
    if (!isNew) {
        Warn(QStringLiteral("%1 已在自选股中").arg(NameOf(stock)));
    }
    if (Current() == kWatchlist) {
        m_addLine->StartAnew();
    }
}

void WatchlistWidget::Warn(const QString& problem)
{
    m_status->Warn(problem);
}

void WatchlistWidget::ShowTab(Tab tab)
{
    m_tabs->setCurrentIndex(tab);
}

QString WatchlistWidget::StatusText() const
{
    return m_status->Shown();
}

void WatchlistWidget::Pick(Tab tab, int row)
{
    // A copy: the pick changes the lists.
    const StringMap stock = m_models[tab]->Stocks()[static_cast<std::size_t>(row)];
    Q_EMIT Picked(stock, tab == kLatest);
}

void WatchlistWidget::Remove(int row)
{
    if (row >= 0) {
        const StringMap stock = m_models[kWatchlist]->Stocks()[static_cast<std::size_t>(row)];
        Q_EMIT RemoveWanted(stock);
    }
}

void WatchlistWidget::AddCurrentLatest()
{
    const int row = m_views[kLatest]->Row();
    if (row >= 0) {
        const StringMap stock = m_models[kLatest]->Stocks()[static_cast<std::size_t>(row)];
        Q_EMIT AddWanted(stock);
    }
}

void WatchlistWidget::ShowState()
{
    if (!m_status || !m_tabs || !m_addLatest) {
        return;  // still under construction
    }
    m_tabs->setTabText(kWatchlist, QStringLiteral("自选股 %1").arg(m_models[kWatchlist]->rowCount()));
    m_tabs->setTabText(kLatest, QStringLiteral("最近浏览 %1").arg(m_models[kLatest]->rowCount()));
    m_remove->setEnabled(m_views[kWatchlist]->Row() >= 0);
    m_addLatest->setEnabled(m_views[kLatest]->Row() >= 0);
    const Tab tab = Current();
    const int row = m_views[tab]->Row();
    const int rows = m_models[tab]->rowCount();
    m_status->SetText(rows == 0 ? QStringLiteral("没有证券")
                                : QStringLiteral("第 %1 只，共 %2 只").arg(row + 1).arg(rows));
}

WatchlistWidget::Tab WatchlistWidget::Current() const
{
    return static_cast<Tab>(m_tabs->currentIndex());
}

QVariantMap WatchlistWidget::ModuleData() const
{
    return {{QLatin1String(kTabKey), QString::number(m_tabs->currentIndex())}};
}

void WatchlistWidget::Restore(const QVariantMap& moduleData)
{
    ShowTab(moduleData.value(QLatin1String(kTabKey)).toString() == QLatin1String("1") ? kLatest : kWatchlist);
}

void WatchlistWidget::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    if (!window()->focusWidget()) {
        m_views[Current()]->setFocus();  // the arrow keys work at once
    }
}

}  // namespace panelry
