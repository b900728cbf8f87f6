// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <cstdio>
#include <cstdlib>

/// A condition that must hold in a fuzz target; a false one is a finding.
#define REQUIRE(condition)                                                                                             \
    do {                                                                                                               \
        if (!(condition)) {                                                                                            \
            std::fprintf(stderr, "%s:%d: not true: %s\n", __FILE__, __LINE__, #condition);                             \
            std::abort();                                                                                              \
        }                                                                                                              \
    } while (false)
