// SPDX-License-Identifier: LicenseRef-HXAux
#include "backlight/Log.h"

namespace Halvix {

// Logging is compiled out. The two functions have their own file so that a program can replace them.

void WriteLog(const char* /*line*/) {}

void WriteLog2(const char* /*line*/) {}

} // namespace Halvix
