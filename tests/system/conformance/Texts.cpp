// SPDX-License-Identifier: LicenseRef-HXAux
#include "tests/system/conformance/Checks.h"

namespace conformance {

namespace {

std::string narrow(const wchar_t* text)
{
    std::string narrowed;
    for (; *text != L'\0'; ++text)
        narrowed += static_cast<char>(*text); // all are ASCII
    return narrowed;
}

} // namespace

Checks texts()
{
    return {
        {"GetErrorStringA", "Open failed", [] { return std::string{GetErrorStringA(Halvix::ERR_OPEN_FAILED)}; }},
        {"GetErrorStringW", "Open failed", [] { return narrow(GetErrorStringW(Halvix::ERR_OPEN_FAILED)); }},
        {"GetHwErrorStatusStringA", "FPGA CONF Read Error", [] { return std::string{GetHwErrorStatusStringA(1)}; }},
        {"GetHwErrorStatusStringW", "FPGA CONF Read Error", [] { return narrow(GetHwErrorStatusStringW(1)); }},
        {"GetStartupReasonStringA", "Front Panel Button", [] { return std::string{GetStartupReasonStringA(0x55)}; }},
        {"GetStartupReasonStringW", "Front Panel Button", [] { return narrow(GetStartupReasonStringW(0x55)); }},
        {"stdColor", "15 0 0 0 15 0",
         [] {
             std::string rows = shown(stdColor[0]);
             for (int i = 1; i < 6; ++i)
                 rows += " " + shown(stdColor[i]);
             return rows;
         }},
    };
}

} // namespace conformance
