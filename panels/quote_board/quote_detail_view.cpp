#include "quote_board/quote_detail_view.h"

#include <QEvent>
#include <QFontMetrics>
#include <QPaintEvent>
#include <QPainter>
#include <algorithm>

#include "common/panel_style.h"

namespace panelry
{

namespace
{

constexpr qreal kNameScale = 1.3;
constexpr qreal kLastScale = 2.5;
constexpr int kBarAlpha = 36;

constexpr int kFigureColumns = 2;
constexpr int kFigureRows = 3;

int RowHeight(const QFontMetrics& metrics)
{
    return metrics.height() * 8 / 5;
}

}  // namespace

QuoteDetailView::QuoteDetailView(QWidget* parent)
    : QWidget(parent),
      m_figures{{{kFaceOpen, QStringLiteral("今开")},
                 {kFaceHigh, QStringLiteral("最高")},
                 {kFacePrevClose, QStringLiteral("昨收")},
                 {kFaceLow, QStringLiteral("最低")},
                 {kFaceVolume, QStringLiteral("成交量")},
                 {kFaceAmplitude, QStringLiteral("振幅")}}}
{
    setAttribute(Qt::WA_OpaquePaintEvent);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Preferred);
    Measure();
}

void QuoteDetailView::SetColors(const QuoteColors& colors)
{
    m_colors = colors;
    update();
}

void QuoteDetailView::SetFace(const QuoteFace& face)
{
    if (m_empty) {
        m_empty = false;
        m_face = face;
        update();
        return;
    }
    for (std::size_t field = 0; field < kFaceFields; ++field) {
        if (m_face.fields[field] != face.fields[field]) {
            update(m_places[field]);
        }
    }
    for (std::size_t row = 0; row < kFaceLevels; ++row) {
        if (m_face.prices[row] != face.prices[row]) {
            update(m_pricePlaces[row]);
        }
        if (m_face.lots[row] != face.lots[row]) {
            update(m_lotsPlaces[row]);
        }
    }
    m_face = face;
}

QSize QuoteDetailView::sizeHint() const
{
    return minimumSizeHint() + QSize(fontMetrics().averageCharWidth() * 2, 0);
}

QSize QuoteDetailView::minimumSizeHint() const
{
    const QFontMetrics metrics = fontMetrics();
    const int value = metrics.horizontalAdvance(QStringLiteral("10000.00"));
    const int figures = kFigureColumns * (m_figureLabelWidth + value + m_margin) + m_margin * 4;
    const int price = QFontMetrics(m_lastFont).horizontalAdvance(QStringLiteral("1000.00")) +
                      metrics.horizontalAdvance(QStringLiteral("+100.00%")) + m_margin * 3;
    const int height = QFontMetrics(m_nameFont).height() + QFontMetrics(m_lastFont).height() +
                       RowHeight(metrics) * (kFigureRows + static_cast<int>(kFaceLevels)) + m_margin * 5;
    return {std::max(figures, price), height};
}

void QuoteDetailView::Measure()
{
    m_nameFont = style::Scaled(font(), kNameScale);
    m_lastFont = style::Scaled(font(), kLastScale);
    m_nameFont.setBold(true);
    m_lastFont.setBold(true);
    m_margin = fontMetrics().averageCharWidth() * 3 / 2;
    m_figureLabelWidth = 0;
    for (const Figure& figure : m_figures) {
        m_figureLabelWidth = std::max(m_figureLabelWidth, fontMetrics().horizontalAdvance(figure.label));
    }
    int y = m_margin / 2;
    PlaceHead(y);
    PlaceFigures(y);
    PlaceLevels(y);
    update();
}

// Name left and code right; below, the price over two thirds and its change beside it.
void QuoteDetailView::PlaceHead(int& y)
{
    const int inner = width() - 2 * m_margin;
    const int codeWidth = fontMetrics().horizontalAdvance(QStringLiteral("00000000"));
    const int nameHeight = QFontMetrics(m_nameFont).height() + m_margin / 2;
    m_places[kFaceName] = QRect(m_margin, y, inner - codeWidth, nameHeight);
    m_places[kFaceCode] = QRect(m_margin + inner - codeWidth, y, codeWidth, nameHeight);
    y += nameHeight;

    const int priceHeight = QFontMetrics(m_lastFont).height();
    const int changeWidth =
        std::max(fontMetrics().horizontalAdvance(QStringLiteral("+1000.00")), inner * 3 / 10);
    const int changeX = m_margin + inner - changeWidth;
    const int line = std::min(fontMetrics().height() * 5 / 4, priceHeight / 2);
    const int changeY = y + (priceHeight - 2 * line) / 2;
    m_places[kFaceLast] = QRect(m_margin, y, inner - changeWidth, priceHeight);
    m_places[kFaceChange] = QRect(changeX, changeY, changeWidth, line);
    m_places[kFacePercent] = QRect(changeX, changeY + line, changeWidth, line);
    y += priceHeight + m_margin / 2;
}

void QuoteDetailView::PlaceFigures(int& y)
{
    m_lines[0] = y;
    y += m_margin / 2;
    const int gap = 2 * m_margin;
    const int columnWidth = (width() - 2 * m_margin - gap) / kFigureColumns;
    const int rowHeight = RowHeight(fontMetrics());
    for (int i = 0; i < kFigureRows * kFigureColumns; ++i) {
        const int x = m_margin + i % kFigureColumns * (columnWidth + gap);
        const QRect cell(x, y + i / kFigureColumns * rowHeight, columnWidth, rowHeight);
        m_places[m_figures[static_cast<std::size_t>(i)].field] =
            cell.adjusted(m_figureLabelWidth + m_margin / 2, 0, 0, 0);
    }
    y += kFigureRows * rowHeight + m_margin / 2;
}

// The levels take what height is left, within reason.
void QuoteDetailView::PlaceLevels(int& y)
{
    m_lines[1] = y;
    y += m_margin / 2;
    const int wanted = RowHeight(fontMetrics());
    const int rowHeight =
        std::clamp((height() - y - m_margin) / static_cast<int>(kFaceLevels), wanted, wanted * 3 / 2);
    const int labelWidth = fontMetrics().horizontalAdvance(LevelLabels()[0]) + m_margin;
    const int priceWidth = fontMetrics().horizontalAdvance(QStringLiteral("10000.000")) + m_margin;
    const int lotsX = m_margin + labelWidth + priceWidth + m_margin;
    for (std::size_t row = 0; row < kFaceLevels; ++row) {
        if (row == kLevels) {
            m_lines[2] = y + m_margin / 4;
            y += m_margin / 2;
        }
        m_labelPlaces[row] = QRect(m_margin, y, labelWidth, rowHeight);
        m_pricePlaces[row] = QRect(m_margin + labelWidth, y, priceWidth, rowHeight);
        m_lotsPlaces[row] = QRect(lotsX, y, width() - m_margin - lotsX, rowHeight);
        y += rowHeight;
    }
}

void QuoteDetailView::paintEvent(QPaintEvent* event)
{
    QPainter painter(this);
    painter.fillRect(event->rect(), QColor(style::kBackground));
    if (m_empty) {
        painter.setPen(QColor(style::kMutedText));
        painter.drawText(rect(), Qt::AlignCenter, QStringLiteral("等待行情推送"));
        return;
    }
    PaintHead(painter, event->region());
    PaintFigures(painter, event->region());
    PaintLevels(painter, event->region());
    for (const int y : m_lines) {
        painter.fillRect(QRect(m_margin, y, width() - 2 * m_margin, 1), QColor(style::kHairline));
    }
}

void QuoteDetailView::PaintHead(QPainter& painter, const QRegion& region) const
{
    const auto paint = [&](FaceField field, Qt::Alignment alignment) {
        if (region.intersects(m_places[field])) {
            PaintCell(painter, m_places[field], m_face.fields[field], alignment);
        }
    };
    paint(kFaceCode, Qt::AlignRight | Qt::AlignVCenter);
    paint(kFaceChange, Qt::AlignRight | Qt::AlignVCenter);
    paint(kFacePercent, Qt::AlignRight | Qt::AlignVCenter);
    painter.setFont(m_nameFont);
    if (region.intersects(m_places[kFaceName])) {
        FaceCell name = m_face.fields[kFaceName];
        name.text = painter.fontMetrics().elidedText(name.text, Qt::ElideRight, m_places[kFaceName].width());
        PaintCell(painter, m_places[kFaceName], name, Qt::AlignLeft | Qt::AlignVCenter);
    }
    painter.setFont(m_lastFont);
    paint(kFaceLast, Qt::AlignLeft | Qt::AlignVCenter);
    painter.setFont(font());
}

void QuoteDetailView::PaintFigures(QPainter& painter, const QRegion& region) const
{
    for (const Figure& figure : m_figures) {
        const QRect value = m_places[figure.field];
        const QRect label = value.adjusted(-m_figureLabelWidth - m_margin / 2, 0, -value.width(), 0);
        if (region.intersects(label)) {
            painter.setPen(QColor(style::kMutedText));
            painter.drawText(label, Qt::AlignLeft | Qt::AlignVCenter, figure.label);
        }
        if (region.intersects(value)) {
            PaintCell(painter, value, m_face.fields[figure.field], Qt::AlignRight | Qt::AlignVCenter);
        }
    }
}

void QuoteDetailView::PaintLevels(QPainter& painter, const QRegion& region) const
{
    for (std::size_t row = 0; row < kFaceLevels; ++row) {
        if (region.intersects(m_labelPlaces[row])) {
            painter.setPen(QColor(style::kMutedText));
            painter.drawText(m_labelPlaces[row], Qt::AlignLeft | Qt::AlignVCenter, LevelLabels()[row]);
        }
        if (region.intersects(m_pricePlaces[row])) {
            PaintCell(painter, m_pricePlaces[row], m_face.prices[row], Qt::AlignRight | Qt::AlignVCenter);
        }
        if (region.intersects(m_lotsPlaces[row])) {
            const QRect place = m_lotsPlaces[row];
            QColor bar = row < kLevels ? m_colors.fall : m_colors.rise;  // sellers press, buyers lift
            bar.setAlpha(kBarAlpha);
            const int length = place.width() * m_face.lots[row].barPermille / 1000;
            painter.fillRect(QRect(place.right() + 1 - length, place.y() + 2, length, place.height() - 4),
                             bar);
            PaintCell(painter, place.adjusted(0, 0, -m_margin / 2, 0), m_face.lots[row],
                      Qt::AlignRight | Qt::AlignVCenter);
        }
    }
}

// In the painter's font, or smaller if it doesn't fit.
void QuoteDetailView::PaintCell(QPainter& painter, const QRect& place, const FaceCell& cell,
                                Qt::Alignment alignment) const
{
    const QFont wanted = painter.font();
    painter.setFont(style::Fitting(wanted, cell.text, place.width()));
    painter.setPen(m_colors.Of(cell.tone));
    painter.drawText(place, static_cast<int>(alignment) | Qt::TextSingleLine, cell.text);
    painter.setFont(wanted);
}

void QuoteDetailView::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    Measure();
}

void QuoteDetailView::changeEvent(QEvent* event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::FontChange) {
        Measure();
        updateGeometry();
    }
}

}  // namespace panelry
