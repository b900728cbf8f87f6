// SPDX-License-Identifier: LicenseRef-HXAux
#include "settings/IniSettings.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <locale.h>
#include <string_view>

// How the file's numbers are read and written: as the streams of C++ do it in the classic locale.

namespace Halvix {

namespace {

/// The C locale for the calling thread, for a scope: the application's locale must not change the file.
class ClassicLocale {
public:
    // The C library has this locale ready: nothing is allocated, and nothing can fail.
    ClassicLocale() : previous_{::uselocale(::newlocale(LC_ALL_MASK, "C", nullptr))} {}
    ~ClassicLocale() { ::uselocale(previous_); }
    ClassicLocale(const ClassicLocale&) = delete;
    ClassicLocale& operator=(const ClassicLocale&) = delete;

private:
    locale_t previous_;
};

/// The characters of a floating-point number at the start of a text, by the rules of a stream: it takes an exponent's
/// sign or an "e" although no digits follow, and no letters ("inf", "0x") at all.
std::string realAtStart(const std::string& text)
{
    std::size_t at = std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size());
    const std::size_t start = at;
    const auto skip = [&](std::string_view characters) {
        const bool found = at < text.size() && characters.find(text[at]) != std::string_view::npos;
        at += found ? 1 : 0;
        return found;
    };
    const auto skipDigits = [&] {
        const std::size_t from = at;
        at = std::min(text.find_first_not_of("0123456789", at), text.size());
        return at != from;
    };
    skip("+-");
    bool digits = skipDigits();
    if (skip("."))
        digits |= skipDigits();
    if (digits && skip("eE")) {
        skip("+-");
        skipDigits();
    }
    return text.substr(start, at - start);
}

} // namespace

eErr IniSettings::ConvertLongToStr(unsigned long value, std::string* text)
{
    char digits[24];
    (void)std::snprintf(digits, sizeof digits, "%lu", value);
    *text = digits;
    return ERR_SUCCESS;
}

eErr IniSettings::ConvertStrToLong(unsigned long* value, std::string text)
{
    const ClassicLocale classic;
    char* end = nullptr;
    errno = 0;
    const unsigned long read = std::strtoul(text.c_str(), &end, 10);
    if (end == text.c_str() || errno == ERANGE)
        return ERR_DATATYPE_MISMATCH;
    *value = read;
    return ERR_SUCCESS;
}

eErr IniSettings::ConvertDoubleToStr(double value, std::string* text)
{
    const ClassicLocale classic;
    char digits[24];
    (void)std::snprintf(digits, sizeof digits, "%g", value);
    *text = digits;
    return ERR_SUCCESS;
}

eErr IniSettings::ConvertStrToDouble(double* value, std::string text)
{
    const ClassicLocale classic;
    const std::string number = realAtStart(text);
    char* end = nullptr;
    const double read = std::strtod(number.c_str(), &end);
    if (number.empty() || *end != '\0' || std::isinf(read))
        return ERR_DATATYPE_MISMATCH;
    *value = read;
    return ERR_SUCCESS;
}

} // namespace Halvix
