// SPDX-License-Identifier: LicenseRef-HXAux
#include "backlight/Log.h"

namespace Halvix {

// Logging is compiled out. The two stand alone in this file so that a program can bring its own.

void WriteLog(const char* /*line*/) {}

void WriteLog2(const char* /*line*/) {}

} // namespace Halvix
