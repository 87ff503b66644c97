#pragma once

#include <QRect>
#include <QWidget>
#include <array>

#include "quote_board/quote_colors.h"
#include "quote_board/quote_face.h"

namespace panelry
{

/// One stock in full: name, latest price large, the day's figures, five asks above five bids.
///
/// Where each value stands is worked out when size or font change; a new face repaints the values that
/// differ. Ownership: a plain child widget. Threading: application thread.
class QuoteDetailView : public QWidget
{
    Q_OBJECT

public:
    explicit QuoteDetailView(QWidget* parent = nullptr);

    void SetColors(const QuoteColors& colors);
    void SetFace(const QuoteFace& face);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    struct Figure {
        FaceField field;
        QString label;
    };

    void Measure();
    void PlaceHead(int& y);
    void PlaceFigures(int& y);
    void PlaceLevels(int& y);
    void PaintHead(QPainter& painter, const QRegion& region) const;
    void PaintFigures(QPainter& painter, const QRegion& region) const;
    void PaintLevels(QPainter& painter, const QRegion& region) const;
    void PaintCell(QPainter& painter, const QRect& place, const FaceCell& cell,
                   Qt::Alignment alignment) const;

    QuoteFace m_face;
    bool m_empty = true;
    QuoteColors m_colors;

    const std::array<Figure, 6> m_figures;  // row by row, two to a row

    // The layout.
    QFont m_nameFont;
    QFont m_lastFont;
    int m_margin = 0;
    int m_figureLabelWidth = 0;
    std::array<QRect, kFaceFields> m_places;  // of the values
    std::array<QRect, kFaceLevels> m_labelPlaces;
    std::array<QRect, kFaceLevels> m_pricePlaces;
    std::array<QRect, kFaceLevels> m_lotsPlaces;
    std::array<int, 3> m_lines{};  // hairlines, by y
};

}  // namespace panelry
