#pragma once

class QWidget;

namespace panelry
{

/// The host has no message that clones or closes a frame. A "cmd" with one of these ids asks the panel to
/// press the button of its own frame.
inline constexpr int kPressCloneButton = 9001;
inline constexpr int kPressCloseButton = 9002;

/// True if `msgId` is one of the two; the button is then pressed from the event loop, never from inside this
/// call, since the press may end the panel, and not before the nested event loops (dialogs, menus) of the
/// thread have ended. Nothing is pressed for a panel without a frame, and neither is a button that the frame
/// hides or has disabled. Application thread.
bool HandleFrameCommand(int msgId, QWidget* widget);

}  // namespace panelry
