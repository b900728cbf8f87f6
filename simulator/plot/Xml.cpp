// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/plot/Xml.h"

#include "tools/cli/Printable.h"

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
    for (const char c : cli::printableLines(words)) {
        if (c == '<' || c == '>')
            shown += c == '<' ? "&lt;" : "&gt;";
        else
            shown += c == '&' ? "&amp;" : std::string{c};
    }
    for (const char* const missing : {"\xEF\xBF\xBE", "\xEF\xBF\xBF"}) // U+FFFE and U+FFFF, not in XML
        for (std::size_t at = shown.find(missing); at != std::string::npos; at = shown.find(missing))
            shown.replace(at, 3, "?");
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
