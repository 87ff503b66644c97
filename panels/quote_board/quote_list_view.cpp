#include "quote_board/quote_list_view.h"

#include <QEvent>
#include <QHeaderView>
#include <QPainter>
#include <QStyledItemDelegate>

#include "common/panel_style.h"
#include "quote_board/quote_list_model.h"

namespace panelry
{

namespace
{

constexpr int kRowsWanted = 12;

// A cell in the colour of its tone, selected or not, and the row's part of the focus frame.
class CellPainter : public QStyledItemDelegate
{
public:
    explicit CellPainter(QuoteListView* view) : QStyledItemDelegate(view), m_view(view) {}

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        const bool current = index.row() == m_view->currentIndex().row();
        painter->fillRect(option.rect, QColor(current ? style::kSelection : style::kBackground));
        const int margin = option.fontMetrics.averageCharWidth();
        const QRect text = option.rect.adjusted(margin, 0, -margin, 0);
        const auto tone = static_cast<Tone>(index.data(QuoteListModel::kToneRole).toInt());
        painter->setPen(m_view->Colors().Of(tone));
        const QString shown =
            index.column() == QuoteListModel::kName
                ? option.fontMetrics.elidedText(index.data().toString(), Qt::ElideRight, text.width())
                : index.data().toString();
        painter->setFont(style::Fitting(option.font, shown, text.width()));
        painter->drawText(text, index.data(Qt::TextAlignmentRole).toInt() | Qt::TextSingleLine, shown);
        if (current && m_view->hasFocus()) {
            PaintFocus(*painter, option.rect, index.column());
        }
    }

private:
    // Filled, since a pen's line at a fractional scale runs over into the neighbouring row.
    static void PaintFocus(QPainter& painter, const QRect& cell, int column)
    {
        const QColor color(style::kFocus);
        painter.fillRect(QRect(cell.x(), cell.y(), cell.width(), 1), color);
        painter.fillRect(QRect(cell.x(), cell.bottom(), cell.width(), 1), color);
        if (column == 0) {
            painter.fillRect(QRect(cell.x(), cell.y(), 1, cell.height()), color);
        }
        if (column == QuoteListModel::kColumns - 1) {
            painter.fillRect(QRect(cell.right(), cell.y(), 1, cell.height()), color);
        }
    }

    QuoteListView* m_view;
};

}  // namespace

QuoteListView::QuoteListView(QWidget* parent) : QTableView(parent)
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
}

void QuoteListView::SetColors(const QuoteColors& colors)
{
    m_colors = colors;
    viewport()->update();
}

void QuoteListView::setModel(QAbstractItemModel* model)
{
    QTableView::setModel(model);
    horizontalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    horizontalHeader()->setSectionResizeMode(QuoteListModel::kName, QHeaderView::Stretch);
    Measure();
}

// All sizes come from the font; called again when it changes.
void QuoteListView::Measure()
{
    const QFontMetrics metrics = fontMetrics();
    const int margins = 2 * metrics.averageCharWidth();
    verticalHeader()->setMinimumSectionSize(1);
    verticalHeader()->setDefaultSectionSize(metrics.height() * 8 / 5);
    horizontalHeader()->setStyleSheet(style::HeaderSheet(metrics.averageCharWidth()));
    horizontalHeader()->setFixedHeight(metrics.height() * 7 / 4);
    horizontalHeader()->setMinimumSectionSize(1);
    if (model()) {
        setColumnWidth(QuoteListModel::kCode, metrics.horizontalAdvance(QStringLiteral("600000")) + margins);
        setColumnWidth(QuoteListModel::kLast,
                       metrics.horizontalAdvance(QStringLiteral("10000.00")) + margins);
        setColumnWidth(QuoteListModel::kPercent,
                       metrics.horizontalAdvance(QStringLiteral("+10.00%")) + margins);
    }
    updateGeometry();
}

QSize QuoteListView::sizeHint() const
{
    const QFontMetrics metrics = fontMetrics();
    const QString widest = QStringLiteral("600000") + QStringLiteral("10000.00") + QStringLiteral("+10.00%");
    const int width = metrics.horizontalAdvance(widest) +
                      metrics.horizontalAdvance(QStringLiteral("沪深300ETF")) +
                      2 * QuoteListModel::kColumns * metrics.averageCharWidth();
    return {width + metrics.averageCharWidth(), metrics.height() * 8 / 5 * kRowsWanted};
}

QModelIndex QuoteListView::moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers)
{
    const int rows = model() ? model()->rowCount() : 0;
    switch (action) {
        case MoveHome:
            return rows == 0 ? QModelIndex() : model()->index(0, 0);
        case MoveEnd:
            return rows == 0 ? QModelIndex() : model()->index(rows - 1, 0);
        default:
            return QTableView::moveCursor(action, modifiers);
    }
}

void QuoteListView::keyboardSearch(const QString& search)
{
    // The search runs in the current column, and that is where the mouse was last.
    if (currentIndex().column() != QuoteListModel::kCode) {
        setCurrentIndex(currentIndex().siblingAtColumn(QuoteListModel::kCode));
    }
    QTableView::keyboardSearch(search);
}

void QuoteListView::changeEvent(QEvent* event)
{
    QTableView::changeEvent(event);
    if (event->type() == QEvent::FontChange) {
        Measure();
    }
}

void QuoteListView::focusInEvent(QFocusEvent* event)
{
    QTableView::focusInEvent(event);
    viewport()->update();  // the frame goes round a whole row, not one cell
}

void QuoteListView::focusOutEvent(QFocusEvent* event)
{
    QTableView::focusOutEvent(event);
    viewport()->update();
}

}  // namespace panelry
