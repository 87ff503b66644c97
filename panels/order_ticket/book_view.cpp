#include "order_ticket/book_view.h"

#include <QFontMetrics>
#include <QMouseEvent>
#include <QPainter>

#include "common/panel_style.h"
#include "order_ticket/direction_color.h"

namespace panelry
{

namespace
{

constexpr int kRows = 10;
constexpr int kSellRows = 5;

}  // namespace

BookView::BookView(QWidget* parent) : QWidget(parent)
{
    setAttribute(Qt::WA_OpaquePaintEvent);
    setToolTip(QStringLiteral("单击：取该档价格"));
}

void BookView::SetBook(const std::array<BookLevel, 10>& book)
{
    for (int row = 0; row < kRows; ++row) {
        BookLevel& shown = m_book[static_cast<std::size_t>(row)];
        if (shown != book[static_cast<std::size_t>(row)]) {
            shown = book[static_cast<std::size_t>(row)];
            update(RowRect(row));
        }
    }
}

QStringList BookView::Rows() const
{
    QStringList rows;
    for (const BookLevel& level : m_book) {
        rows.append(level.name + QLatin1Char(' ') + level.price + QLatin1Char(' ') + level.amount);
    }
    return rows;
}

QSize BookView::sizeHint() const
{
    const QFontMetrics metrics = fontMetrics();
    return {metrics.horizontalAdvance(QStringLiteral("卖5  12345.678  12345678")),
            metrics.height() * kRows * 5 / 4};
}

QRect BookView::RowRect(int row) const
{
    const int top = height() * row / kRows;
    return {0, top, width(), height() * (row + 1) / kRows - top};
}

void BookView::paintEvent(QPaintEvent* event)
{
    QPainter painter(this);
    painter.fillRect(event->rect(), QColor(style::kBackground));
    const int margin = fontMetrics().averageCharWidth();
    for (int row = 0; row < kRows; ++row) {
        const QRect rect = RowRect(row);
        if (!rect.intersects(event->rect())) {
            continue;
        }
        const BookLevel& level = m_book[static_cast<std::size_t>(row)];
        const QRect inner = rect.adjusted(margin, 0, -margin, 0);
        if (row == kSellRows) {
            painter.fillRect(QRect(rect.topLeft(), QSize(rect.width(), 1)), QColor(style::kHairline));
        }
        painter.setPen(QColor(style::kMutedText));
        painter.drawText(inner, Qt::AlignVCenter | Qt::AlignLeft, level.name);
        painter.setPen(QColor(style::kText));
        painter.drawText(inner, Qt::AlignVCenter | Qt::AlignRight, level.amount);
        painter.setPen(QColor(DirectionColor(level.direction)));
        painter.drawText(inner.adjusted(0, 0, -inner.width() * 2 / 5, 0), Qt::AlignVCenter | Qt::AlignRight,
                         level.price);
    }
}

void BookView::mousePressEvent(QMouseEvent* event)
{
    for (int row = 0; row < kRows; ++row) {
        const QString& price = m_book[static_cast<std::size_t>(row)].price;
        if (RowRect(row).contains(event->pos()) && !price.isEmpty()) {
            Q_EMIT PricePicked(price);
        }
    }
}

}  // namespace panelry
