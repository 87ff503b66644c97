#pragma once

#include <string>

namespace panelry::desk
{

/// What the panels' windows need from the environment; empty stands for unset.
struct DisplayEnvironment {
    std::string platform;  ///< QT_QPA_PLATFORM
    std::string x11;       ///< DISPLAY
    std::string wayland;   ///< WAYLAND_DISPLAY
};

struct DisplayChoice {
    bool usable = true;
    std::string platform;  ///< to be set as QT_QPA_PLATFORM; empty: leave it
    std::string advice;    ///< for the person; empty: nothing to say
};

/// The panels place their windows themselves, which X11 allows and Wayland doesn't. A platform that is named
/// is respected.
DisplayChoice ChooseDisplay(const DisplayEnvironment& environment);

/// Reads the environment, says the advice on standard error, sets the platform. False: no window can be
/// shown. Called before there is a second thread.
bool PrepareDisplay();

}  // namespace panelry::desk
