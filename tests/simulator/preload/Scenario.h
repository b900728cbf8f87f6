// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <ostream>

/// Typical calls of an application on a unit: devices, settings, locks, the board library, threads and time. Prints
/// each result. The same source runs inside a test program and as a program of its own.
void playScenario(std::ostream& results);
