#pragma once

namespace panelry::desk
{

/// What the program ends with.
enum ExitStatus : int {
    kClean = 0,
    kFaultsFound = 1,  ///< a script line was bad, or an inspection found a fault
    kCannotStart = 2,  ///< wrong usage, no script, no library, no display
};

}  // namespace panelry::desk
