#pragma once

#include <cstdio>
#include <cstdlib>

/// Ends the run as a finding, with `what` on standard error, if a promise of
/// the code under test does not hold.
inline void require(bool holds, const char* what)
{
    if (!holds) {
        std::fprintf(stderr, "broken promise: %s\n", what);
        std::abort();
    }
}
