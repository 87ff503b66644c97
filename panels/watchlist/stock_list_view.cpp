#include "watchlist/stock_list_view.h"

#include <QApplication>
#include <QHeaderView>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>
#include <QStyledItemDelegate>
#include <algorithm>
#include <cstdlib>

#include "common/panel_style.h"
#include "watchlist/stock_list_model.h"

namespace panelry
{

namespace
{

constexpr int kRowsWanted = 12;
constexpr int kGapLine = 2;  // pixels

// A cell, selected or not, and the row's part of the focus frame.
class CellPainter : public QStyledItemDelegate
{
public:
    explicit CellPainter(StockListView* view) : QStyledItemDelegate(view), m_view(view) {}

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        const bool current = index.row() == m_view->Row();
        painter->fillRect(option.rect, QColor(current ? style::kSelection : style::kBackground));
        const int margin = option.fontMetrics.averageCharWidth();
        const QRect text = option.rect.adjusted(margin, 0, -margin, 0);
        painter->setFont(option.font);
        painter->setPen(QColor(index.column() == StockListModel::kMarket ? style::kMutedText : style::kText));
        painter->drawText(
            text, Qt::AlignVCenter | Qt::TextSingleLine,
            option.fontMetrics.elidedText(index.data().toString(), Qt::ElideRight, text.width()));
        if (current && m_view->hasFocus()) {
            PaintFocus(*painter, option.rect, index.column());
        }
    }

private:
    static void PaintFocus(QPainter& painter, const QRect& cell, int column)
    {
        painter.setPen(QColor(style::kFocus));
        painter.drawLine(cell.topLeft(), cell.topRight());
        painter.drawLine(cell.bottomLeft(), cell.bottomRight());
        if (column == 0) {
            painter.drawLine(cell.topLeft(), cell.bottomLeft());
        }
        if (column == StockListModel::kColumns - 1) {
            painter.drawLine(cell.topRight(), cell.bottomRight());
        }
    }

    StockListView* m_view;
};

}  // namespace

StockListView::StockListView(StockListModel* model, Order order, QWidget* parent)
    : QTableView(parent), m_order(order)
{
    setItemDelegate(new CellPainter(this));
    setFrameShape(QFrame::NoFrame);
    setShowGrid(false);
    setWordWrap(false);
    setSelectionBehavior(SelectRows);
    setSelectionMode(SingleSelection);
    setTabKeyNavigation(false);  // Tab leaves the list
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollMode(ScrollPerPixel);
    verticalHeader()->hide();
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    horizontalHeader()->setSectionsClickable(false);
    horizontalHeader()->setHighlightSections(false);
    setModel(model);
    // The row under the mouse may be another one now.
    connect(model, &QAbstractItemModel::modelReset, this, &StockListView::EndDrag);
    connect(model, &QAbstractItemModel::rowsRemoved, this, &StockListView::EndDrag);
    horizontalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    horizontalHeader()->setSectionResizeMode(StockListModel::kName, QHeaderView::Stretch);
    Measure();
}

void StockListView::SetEmptyText(const QString& text)
{
    m_emptyText = text;
    viewport()->update();
}

void StockListView::SelectRow(int row)
{
    setCurrentIndex(model()->index(row, 0));
}

// All sizes come from the font; called again when it changes.
void StockListView::Measure()
{
    const QFontMetrics metrics = fontMetrics();
    const int margins = 2 * metrics.averageCharWidth();
    verticalHeader()->setMinimumSectionSize(1);
    verticalHeader()->setDefaultSectionSize(metrics.height() * 8 / 5);
    horizontalHeader()->setStyleSheet(style::HeaderSheet(metrics.averageCharWidth()));
    horizontalHeader()->setFixedHeight(metrics.height() * 7 / 4);
    horizontalHeader()->setMinimumSectionSize(1);
    setColumnWidth(StockListModel::kCode, metrics.horizontalAdvance(QStringLiteral("证券代码00")) + margins);
    setColumnWidth(StockListModel::kMarket, metrics.horizontalAdvance(QStringLiteral("上海00")) + margins);
    updateGeometry();
}

QSize StockListView::sizeHint() const
{
    const QFontMetrics metrics = fontMetrics();
    return {metrics.horizontalAdvance(QStringLiteral("证券代码00")) +
                metrics.horizontalAdvance(QStringLiteral("上海00")) +
                metrics.horizontalAdvance(QStringLiteral("华夏上证科创板")) +
                (2 * StockListModel::kColumns + 1) * metrics.averageCharWidth(),
            metrics.height() * 8 / 5 * kRowsWanted};
}

void StockListView::keyPressEvent(QKeyEvent* event)
{
    const int row = Row();
    const bool alt = event->modifiers().testFlag(Qt::AltModifier);
    switch (event->key()) {
        case Qt::Key_Escape:
            if (m_gap == kNone) {
                break;
            }
            EndDrag();
            return;
        case Qt::Key_Return:
        case Qt::Key_Enter:
            if (row >= 0) {
                Q_EMIT PickWanted(row);
            }
            return;
        case Qt::Key_Delete:
            if (row >= 0) {
                Q_EMIT RemoveWanted(row);
            }
            return;
        case Qt::Key_Up:
        case Qt::Key_Down:
            if (!alt) {
                break;
            }
            MoveBy(event->key() == Qt::Key_Up ? -1 : 1);
            return;
        default:
            break;
    }
    QTableView::keyPressEvent(event);
}

void StockListView::MoveBy(int step)
{
    const int from = Row();
    const int to = from + step;
    if (m_order == Order::Users && from >= 0 && to >= 0 && to < model()->rowCount()) {
        Q_EMIT MoveWanted(from, to);
    }
}

void StockListView::keyboardSearch(const QString& search)
{
    // The search runs in the current column, and that is where the mouse was last.
    if (currentIndex().column() != StockListModel::kCode) {
        setCurrentIndex(currentIndex().siblingAtColumn(StockListModel::kCode));
    }
    QTableView::keyboardSearch(search);
}

QModelIndex StockListView::moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers)
{
    const int rows = model()->rowCount();
    switch (action) {
        case MoveHome:
            return model()->index(0, 0);
        case MoveEnd:
            return model()->index(rows - 1, 0);
        case MoveLeft:
        case MoveRight:
            return currentIndex();  // a row is one thing
        default:
            return QTableView::moveCursor(action, modifiers);
    }
}

void StockListView::mousePressEvent(QMouseEvent* event)
{
    QTableView::mousePressEvent(event);
    m_pressedRow = event->button() == Qt::LeftButton ? rowAt(event->pos().y()) : kNone;
    m_pressedY = event->pos().y();
}

// A row follows no selection: while the mouse is down, moving it drags the row or does nothing.
void StockListView::mouseMoveEvent(QMouseEvent* event)
{
    if (m_pressedRow == kNone || m_order == Order::Fixed || !event->buttons().testFlag(Qt::LeftButton)) {
        return;
    }
    const int y = event->pos().y();
    if (m_gap == kNone && std::abs(y - m_pressedY) < QApplication::startDragDistance()) {
        return;
    }
    viewport()->setCursor(Qt::ClosedHandCursor);
    m_gap = GapAt(y);
    if (y < 0 || y >= viewport()->height()) {  // beyond the edge it scrolls on
        QScrollBar* const bar = verticalScrollBar();
        bar->setValue(bar->value() + (y < 0 ? -1 : 1) * verticalHeader()->defaultSectionSize());
    }
    viewport()->update();
}

void StockListView::mouseReleaseEvent(QMouseEvent* event)
{
    QTableView::mouseReleaseEvent(event);
    const int from = m_pressedRow;
    const int gap = m_gap;
    EndDrag();
    if (from == kNone || gap == kNone || event->button() != Qt::LeftButton) {
        return;
    }
    const int to = gap > from ? gap - 1 : gap;  // the row leaves its own place first
    if (to != from && from < model()->rowCount()) {
        Q_EMIT MoveWanted(from, to);
    }
}

void StockListView::mouseDoubleClickEvent(QMouseEvent* event)
{
    const int row = rowAt(event->pos().y());
    if (event->button() == Qt::LeftButton && row >= 0) {
        Q_EMIT PickWanted(row);
    }
}

// Between the rows: 0 is before the first, the number of rows behind the last.
int StockListView::GapAt(int y) const
{
    const int height = verticalHeader()->defaultSectionSize();
    const int gap = (y + verticalOffset() + height / 2) / height;
    return std::clamp(gap, 0, model()->rowCount());
}

void StockListView::EndDrag()
{
    m_pressedRow = kNone;
    m_gap = kNone;
    viewport()->unsetCursor();
    viewport()->update();
}

void StockListView::focusInEvent(QFocusEvent* event)
{
    QTableView::focusInEvent(event);
    viewport()->update();  // the frame goes round a whole row, not one cell
}

void StockListView::focusOutEvent(QFocusEvent* event)
{
    QTableView::focusOutEvent(event);
    EndDrag();
}

void StockListView::changeEvent(QEvent* event)
{
    QTableView::changeEvent(event);
    if (event->type() == QEvent::FontChange) {
        Measure();
    }
}

void StockListView::paintEvent(QPaintEvent* event)
{
    QTableView::paintEvent(event);
    QPainter painter(viewport());
    if (model()->rowCount() == 0) {
        painter.setPen(QColor(style::kMutedText));
        painter.drawText(viewport()->rect(), Qt::AlignCenter | Qt::TextWordWrap, m_emptyText);
    }
    if (m_gap != kNone) {
        const int y = m_gap * verticalHeader()->defaultSectionSize() - verticalOffset();
        painter.fillRect(0, std::max(0, y - kGapLine / 2), viewport()->width(), kGapLine,
                         QColor(style::kFocus));
    }
}

}  // namespace panelry
