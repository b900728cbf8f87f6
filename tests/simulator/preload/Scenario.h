// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <ostream>

/// What an application does on a unit: devices, settings, locks, the board library, threads and time. Writes down each
/// result. The same source runs inside a test program and as a program of its own.
void playScenario(std::ostream& results);
