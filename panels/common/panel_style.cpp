#include "common/panel_style.h"

#include <QFontMetrics>
#include <QPalette>
#include <QVariant>
#include <QWidget>
#include <algorithm>

#include "hosting/widget_properties.h"

namespace panelry::style
{

namespace
{

// What the frame adds around the widget: its title bar and its border.
constexpr int kFrameHeightAround = 28 + 2;
constexpr int kFrameWidthAround = 2;

// How far a font may shrink, and in what steps.
constexpr int kSmallestPercent = 30;
constexpr int kStepPercent = 5;

}  // namespace

QFont Scaled(const QFont& font, qreal scale)
{
    QFont scaled = font;
    if (font.pointSizeF() > 0) {
        scaled.setPointSizeF(std::max(1.0, font.pointSizeF() * scale));
    } else {
        scaled.setPixelSize(std::max(1, static_cast<int>(font.pixelSize() * scale)));
    }
    return scaled;
}

QFont Fitting(const QFont& font, const QString& text, int width)
{
    QFont fitting = font;
    // In steps: widths don't follow sizes exactly.
    for (int percent = 100; percent > kSmallestPercent; percent -= kStepPercent) {
        fitting = percent == 100 ? font : Scaled(font, percent / 100.0);
        if (QFontMetrics(fitting).horizontalAdvance(text) <= width) {
            break;
        }
    }
    return fitting;
}

QString HeaderSheet(int padding)
{
    return QStringLiteral(
               "QHeaderView { background: %1; border: none; } "
               "QHeaderView::section { background: %1; color: %2; border: none; padding: 0 %4px; } "
               "QHeaderView::section:horizontal { border-bottom: 1px solid %3; }")
        .arg(QColor(kBand).name(), QColor(kMutedText).name(), QColor(kHairline).name())
        .arg(padding);
}

void Apply(QWidget* widget, QRgb background)
{
    QPalette palette = widget->palette();
    palette.setColor(QPalette::Window, QColor(background));
    palette.setColor(QPalette::Base, QColor(kBackground));
    palette.setColor(QPalette::Highlight, QColor(kSelection));
    for (const QPalette::ColorRole role :
         {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::HighlightedText}) {
        palette.setColor(role, QColor(kText));
    }
    widget->setPalette(palette);
    widget->setAutoFillBackground(true);
}

void SetFrameSize(QWidget* widget, const QSize& size)
{
    widget->setProperty(kFrameWidth, size.width() + kFrameWidthAround);
    widget->setProperty(kFrameHeight, size.height() + kFrameHeightAround);
    widget->resize(size);
}

}  // namespace panelry::style
