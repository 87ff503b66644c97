#pragma once

#include <string>

namespace panelry::desk
{

/// One line of an inspection.
struct Finding {
    std::string subject;  ///< a file, as its directory names it
    std::string verdict;  ///< one word: taken, skipped, ignored, warning, fine, missing, fatal
    std::string text;
    bool isFault = false;  ///< something that a person will want to change
};

}  // namespace panelry::desk
