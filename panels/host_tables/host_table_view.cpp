#include "host_tables/host_table_view.h"

#include <QApplication>
#include <QClipboard>
#include <QHeaderView>
#include <QKeyEvent>
#include <QPainter>
#include <QScrollBar>
#include <QSettings>
#include <algorithm>
#include <utility>

#include "common/panel_style.h"
#include "host_tables/host_table_model.h"
#include "host_tables/table_style.h"

namespace panelry
{

namespace
{

constexpr int kRowsWanted = 10;
constexpr int kRememberAfterMs = 500;

QSettings Memory()
{
    return QSettings(QStringLiteral("userconfig/panels.ini"), QSettings::IniFormat);
}

}  // namespace

HostTableView::HostTableView(HostTableModel* model, QString name, QWidget* parent)
    : QTableView(parent), m_model(model), m_name(std::move(name))
{
    m_proxy.setSourceModel(model);
    m_proxy.setSortRole(HostTableModel::kSortRole);
    m_proxy.setFilterKeyColumn(-1);
    m_proxy.setFilterCaseSensitivity(Qt::CaseInsensitive);
    m_proxy.setSortLocaleAware(true);
    SetUp();
    setModel(&m_proxy);
    horizontalHeader()->setSortIndicator(-1, Qt::AscendingOrder);  // as the host has them
    setSortingEnabled(true);
    Measure();
    Recall();
    connect(model, &QAbstractItemModel::modelAboutToBeReset, this, &HostTableView::BeforeReset);
    connect(&m_proxy, &QAbstractItemModel::modelReset, this, &HostTableView::AfterReset);
    connect(&m_proxy, &QAbstractItemModel::dataChanged, this, &HostTableView::RowsChanged);
    connect(selectionModel(), &QItemSelectionModel::selectionChanged, this, &HostTableView::RowsChanged);
    m_rememberSoon.setSingleShot(true);
    m_rememberSoon.setInterval(kRememberAfterMs);
    connect(&m_rememberSoon, &QTimer::timeout, this, &HostTableView::Remember);
    const auto soon = [this] { m_rememberSoon.start(); };
    connect(horizontalHeader(), &QHeaderView::sectionMoved, this, soon);
    connect(horizontalHeader(), &QHeaderView::sectionResized, this, soon);
    connect(horizontalHeader(), &QHeaderView::sortIndicatorChanged, this, soon);
}

HostTableView::~HostTableView()
{
    if (m_rememberSoon.isActive()) {
        Remember();
    }
}

void HostTableView::SetUp()
{
    setSelectionBehavior(SelectRows);
    setSelectionMode(ExtendedSelection);
    verticalHeader()->hide();
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    horizontalHeader()->setSectionsMovable(true);
}

// All sizes come from the font; the columns' only once, since they are the user's afterwards.
void HostTableView::Measure()
{
    const QFontMetrics metrics = fontMetrics();
    style::ApplyToTable(*this);
    horizontalHeader()->setMinimumSectionSize(3 * metrics.averageCharWidth());
    if (!std::exchange(m_measured, true)) {
        int section = 0;
        for (const ColumnSpec& column : m_model->Columns()) {
            const QString heading = m_model->headerData(section, Qt::Horizontal, Qt::DisplayRole).toString() +
                                    QStringLiteral("00");
            setColumnWidth(section++,
                           std::max(metrics.horizontalAdvance(QString(column.letters, QLatin1Char('0'))),
                                    metrics.horizontalAdvance(heading)) +
                               3 * metrics.averageCharWidth());
        }
    }
    updateGeometry();
}

QSize HostTableView::sizeHint() const
{
    return {std::min(horizontalHeader()->length() + 2, fontMetrics().averageCharWidth() * 140),
            fontMetrics().height() * 8 / 5 * kRowsWanted};
}

void HostTableView::SetFilter(const QString& text)
{
    m_proxy.setFilterFixedString(text);
    Q_EMIT RowsChanged();
    viewport()->update();
}

void HostTableView::SetEmptyText(const QString& text)
{
    m_emptyText = text;
    viewport()->update();
}

std::vector<int> HostTableView::SelectedRows() const
{
    QModelIndexList shown = selectionModel()->selectedRows();
    std::sort(shown.begin(), shown.end(),
              [](const QModelIndex& a, const QModelIndex& b) { return a.row() < b.row(); });
    std::vector<int> rows;
    for (const QModelIndex& index : qAsConst(shown)) {
        rows.push_back(m_proxy.mapToSource(index).row());
    }
    return rows;
}

QString HostTableView::SelectionAsText() const
{
    const std::vector<int> rows = SelectedRows();
    if (rows.empty()) {
        return {};
    }
    const QHeaderView* const header = horizontalHeader();
    QStringList lines(QString{});
    for (std::size_t i = 0; i < rows.size(); ++i) {
        lines.append(QString());
    }
    for (int place = 0; place < header->count(); ++place) {
        const int column = header->logicalIndex(place);
        if (header->isSectionHidden(column)) {
            continue;
        }
        const QString tab = lines[0].isNull() ? QString() : QStringLiteral("\t");
        lines[0] += tab + m_model->headerData(column, Qt::Horizontal, Qt::DisplayRole).toString();
        for (std::size_t i = 0; i < rows.size(); ++i) {
            lines[static_cast<int>(i) + 1] += tab + m_model->index(rows[i], column).data().toString();
        }
    }
    return lines.join(QLatin1Char('\n')) + QLatin1Char('\n');
}

void HostTableView::keyPressEvent(QKeyEvent* event)
{
    const QModelIndex current = currentIndex();
    if (event->matches(QKeySequence::Copy)) {
        QApplication::clipboard()->setText(SelectionAsText());
    } else if (event->key() == Qt::Key_Delete) {
        Q_EMIT RemoveWanted();
    } else if ((event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) && current.isValid()) {
        Q_EMIT Picked(m_proxy.mapToSource(current).row());
    } else {
        QTableView::keyPressEvent(event);
    }
}

void HostTableView::mouseDoubleClickEvent(QMouseEvent* event)
{
    const QModelIndex index = indexAt(event->pos());
    if (event->button() == Qt::LeftButton && index.isValid()) {
        Q_EMIT Picked(m_proxy.mapToSource(index).row());
    }
}

void HostTableView::changeEvent(QEvent* event)
{
    QTableView::changeEvent(event);
    if (event->type() == QEvent::FontChange) {
        Measure();
    }
}

void HostTableView::paintEvent(QPaintEvent* event)
{
    QTableView::paintEvent(event);
    if (m_proxy.rowCount() == 0) {
        QPainter painter(viewport());
        painter.setPen(QColor(style::kMutedText));
        painter.drawText(viewport()->rect(), Qt::AlignCenter | Qt::TextWordWrap,
                         m_model->rowCount() == 0 ? m_emptyText : QStringLiteral("没有符合筛选的行"));
    }
}

void HostTableView::ShowColumns()
{
    for (int column = 0; column < m_model->columnCount(); ++column) {
        setColumnHidden(column, !m_model->HasColumn(column));
    }
}

void HostTableView::Remember()
{
    QSettings memory = Memory();
    memory.setValue(m_name, horizontalHeader()->saveState());
}

// A state of other columns than these isn't taken; the columns' numbers are all that it knows.
void HostTableView::Recall()
{
    const QSettings memory = Memory();
    horizontalHeader()->restoreState(memory.value(m_name).toByteArray());
    m_proxy.sort(horizontalHeader()->sortIndicatorSection(), horizontalHeader()->sortIndicatorOrder());
}

void HostTableView::BeforeReset()
{
    m_selectedKeys.clear();
    for (const int row : SelectedRows()) {
        m_selectedKeys.push_back(m_model->Key(row));
    }
    const QModelIndex current = m_proxy.mapToSource(currentIndex());
    m_currentKey = current.isValid() ? m_model->Key(current.row()) : std::string();
    m_scrolled = verticalScrollBar()->value();
}

// Rows are known by what tells them apart; those that are gone leave the selection.
void HostTableView::AfterReset()
{
    ShowColumns();
    const auto shown = [this](const std::string& key) {
        const int row = m_model->RowOf(key);
        return row < 0 ? QModelIndex() : m_proxy.mapFromSource(m_model->index(row, 0));
    };
    if (const QModelIndex current = shown(m_currentKey); current.isValid()) {
        selectionModel()->setCurrentIndex(current, QItemSelectionModel::NoUpdate);
    }
    for (const std::string& key : m_selectedKeys) {
        if (const QModelIndex index = shown(key); index.isValid()) {
            selectionModel()->select(index, QItemSelectionModel::Select | QItemSelectionModel::Rows);
        }
    }
    updateGeometries();
    verticalScrollBar()->setValue(m_scrolled);
    Q_EMIT RowsChanged();
}

}  // namespace panelry
