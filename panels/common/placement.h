#pragma once

class QWidget;

namespace panelry
{

/// Lays the frame of a new panel where the host wants it: "init_param" with {"place":[x, y, width, height]}, in
/// hundredths of the primary screen without its bars, each 0 to 100. To be called in Initialize() with the
/// creation text; the frame gets the size as it is made and the position as it is first shown.
/// Anything else in "place" is passed over, and so is a "place" for a clone ("init_data"), which stands beside its
/// source, and the position of a panel without a frame. Application thread.
void PlaceFrame(QWidget* widget, const char* creationText);

}  // namespace panelry
