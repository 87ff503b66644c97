#pragma once

#include <QColor>
#include <QFont>

class QSize;
class QString;
class QWidget;

/// What the sample panels share in look. Application thread.
namespace panelry::style
{

inline constexpr QRgb kText = 0xFF1F2A33;
inline constexpr QRgb kMutedText = 0xFF6B7885;
inline constexpr QRgb kWarningText = 0xFFB45309;
inline constexpr QRgb kBackground = 0xFFFFFFFF;
inline constexpr QRgb kBand = 0xFFF4F9FC;      ///< headers and status lines
inline constexpr QRgb kHairline = 0xFFDDE8F0;  ///< between the parts of a panel
inline constexpr QRgb kSelection = 0xFFDCEEFA;
inline constexpr QRgb kFocus = 0xFF2F86BF;  ///< around what has the keyboard

/// `font` in another size.
QFont Scaled(const QFont& font, qreal scale);

/// `font`, or a smaller one in which `text` is at most `width` wide: for numbers, since one that has lost its
/// end is a wrong one.
QFont Fitting(const QFont& font, const QString& text, int width);

/// The style sheet of a table's header, whose headings keep `padding` pixels from both sides, as the cells' texts do.
QString HeaderSheet(int padding);

/// The panels' colours on `widget` and the children that it gets, whatever the desktop's theme.
void Apply(QWidget* widget, QRgb background = kBackground);

/// Tells the frame, and a panel without a frame, how big `widget` wants to be.
void SetFrameSize(QWidget* widget, const QSize& size);

}  // namespace panelry::style
