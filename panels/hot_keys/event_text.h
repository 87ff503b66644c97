#pragma once

#include <uiohook.h>

#include <QString>

namespace panelry
{

/// An event in a few words: "按下 ctrl+shift+a", "左键按下 (120, 80)". Any thread.
QString EventText(const uiohook_event& event);

}  // namespace panelry
