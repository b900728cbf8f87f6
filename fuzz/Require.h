// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <cstdio>
#include <cstdlib>

/// A claim of a fuzz target; a false one is a finding.
#define REQUIRE(claim)                                                                                                 \
    do {                                                                                                               \
        if (!(claim)) {                                                                                                \
            std::fprintf(stderr, "%s:%d: not true: %s\n", __FILE__, __LINE__, #claim);                                 \
            std::abort();                                                                                              \
        }                                                                                                              \
    } while (false)
