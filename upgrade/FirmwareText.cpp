// SPDX-License-Identifier: LicenseRef-HXAux
#include "upgrade/FirmwareText.h"

#include <cstring>

namespace Halvix {

namespace {

struct Plausible {
    int deviceType;
    std::size_t smallest;
    std::size_t largest;
    const char* foreignName;
};
constexpr Plausible kPlausible[] = {
    {0, 95000, 1000000, "Front_uc"},
    {1, 50000, 110000, "SystemSupervisor"},
};

} // namespace

eErr checkFirmwareText(const char* text, std::size_t size, int deviceType)
{
    for (const Plausible& row : kPlausible)
        if (row.deviceType == deviceType)
            return size >= row.smallest && size <= row.largest && std::strstr(text, row.foreignName) == nullptr
                       ? ERR_SUCCESS
                       : ERR_DATATYPE_MISMATCH;
    return ERR_DATATYPE_MISMATCH;
}

} // namespace Halvix
