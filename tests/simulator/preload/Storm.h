// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <ostream>

/// Opens, queries, duplicates and closes devices and uses the board library, under a signal each millisecond that
/// restarts no call. Prints how often each operation succeeded.
void playStorm(std::ostream& results);
