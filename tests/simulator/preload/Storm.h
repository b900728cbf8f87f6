// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <ostream>

/// Opens, queries, duplicates and closes devices and uses the board library, while a signal that restarts no call comes
/// each millisecond. Writes down how often each of these went well.
void playStorm(std::ostream& results);
