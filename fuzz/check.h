#pragma once

#include <cstdio>
#include <cstdlib>

/// Ends the process, and with it the search, where something doesn't hold.
inline void Check(bool holds, const char* what)
{
    if (!holds) {
        std::fprintf(stderr, "%s\n", what);
        std::abort();
    }
}
