// SPDX-License-Identifier: LicenseRef-HXAux
#include "backlight/Log.h"

#include <cstdarg>
#include <cstdio>

namespace Halvix {

namespace {

using Line = char[121];

[[gnu::format(printf, 2, 0)]] void format(Line& line, const char* text, std::va_list arguments)
{
    if (std::vsnprintf(line, sizeof line, text, arguments) < 0)
        line[0] = '\0';
}

} // namespace

void logSampler(const char* text, ...)
{
    Line line;
    std::va_list arguments;
    va_start(arguments, text);
    format(line, text, arguments);
    va_end(arguments);
    WriteLog(line);
}

void logController(const char* text, ...)
{
    Line line;
    std::va_list arguments;
    va_start(arguments, text);
    format(line, text, arguments);
    va_end(arguments);
    WriteLog2(line);
}

} // namespace Halvix
