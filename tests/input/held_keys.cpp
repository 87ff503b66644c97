#include "input/held_keys.h"

#include <X11/Xlib.h>

#include <algorithm>
#include <iterator>

namespace panelry::test
{

bool AnyKeyHeld()
{
    Display* const display = XOpenDisplay(nullptr);
    char keys[32] = {};
    XQueryKeymap(display, keys);
    XCloseDisplay(display);
    return std::any_of(std::begin(keys), std::end(keys), [](char bits) { return bits != 0; });
}

}  // namespace panelry::test
