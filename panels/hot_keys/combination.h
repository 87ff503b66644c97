#pragma once

#include <QString>

namespace panelry
{

/// What a user has typed, as the library takes it.
struct Combination {
    QString text;     ///< modifiers in the library's order; empty if there is a problem
    QString problem;  ///< for the user; empty if there is none
};

/// Reads "Shift + ctrl+A" as "ctrl+shift+a": blanks, capitals and the order of the modifiers don't matter. A modifier
/// alone is the key itself: "ctrl" becomes "ctrl+ctrl", which is how its press is named. Any thread.
Combination ReadCombination(const QString& typed);

}  // namespace panelry
