// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/plot/Xml.h"

#include <array>
#include <cstdarg>
#include <cstdio>

namespace hxsim::xml {

std::string formatted(const char* format, ...)
{
    std::array<char, 512> shown{};
    std::va_list values;
    va_start(values, format);
    std::vsnprintf(shown.data(), shown.size(), format, values);
    va_end(values);
    return shown.data();
}

std::string text(const std::string& words)
{
    std::string shown;
    for (const char c : words) {
        if (c == '<' || c == '>')
            shown += c == '<' ? "&lt;" : "&gt;";
        else if (c == '&')
            shown += "&amp;";
        else
            shown += static_cast<unsigned char>(c) < ' ' && c != '\n' && c != '\t' ? '?' : c;
    }
    return shown;
}

std::string attribute(const std::string& words)
{
    std::string shown;
    for (const char c : text(words))
        shown += c == '"' ? "&quot;" : std::string{c};
    return shown;
}

} // namespace hxsim::xml
