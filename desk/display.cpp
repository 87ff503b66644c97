#include "desk/display.h"

#include <cstdio>
#include <cstdlib>

namespace panelry::desk
{

namespace
{

constexpr char kPlatformVariable[] = "QT_QPA_PLATFORM";

std::string Variable(const char* name)
{
    const char* const value = std::getenv(name);
    return value ? value : "";
}

}  // namespace

DisplayChoice ChooseDisplay(const DisplayEnvironment& environment)
{
    if (environment.platform.starts_with("wayland")) {
        return {true, "",
                "QT_QPA_PLATFORM asks for Wayland, where the panels can't place their windows; "
                "xcb (X11, XWayland) can"};
    }
    if (!environment.platform.empty()) {
        return {};
    }
    if (!environment.x11.empty()) {
        return {true, "xcb", ""};
    }
    if (!environment.wayland.empty()) {
        return {false, "",
                "the panels need X11, and there is only Wayland: start XWayland, which sets DISPLAY, "
                "or name another platform in QT_QPA_PLATFORM (offscreen shows nothing)"};
    }
    return {false, "",
            "no display: DISPLAY isn't set. Start an X server (Xvfb is one), "
            "or set QT_QPA_PLATFORM=offscreen to run without windows"};
}

bool PrepareDisplay()
{
    const DisplayChoice choice =
        ChooseDisplay({Variable(kPlatformVariable), Variable("DISPLAY"), Variable("WAYLAND_DISPLAY")});
    if (!choice.advice.empty()) {
        std::fprintf(stderr, "panelry-desk: %s\n", choice.advice.c_str());
    }
    if (!choice.platform.empty()) {
        setenv(kPlatformVariable, choice.platform.c_str(), 1);
    }
    return choice.usable;
}

}  // namespace panelry::desk
